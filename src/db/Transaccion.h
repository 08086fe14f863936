#pragma once

#include "db/BaseDatos.h"

// A write transaction that ends on every way out of its scope: committed
// by commit(), rolled back when the scope is left otherwise, by an
// exception of any kind. The write lock is taken at once (BEGIN IMMEDIATE),
// so a lock held elsewhere fails here, before anything was done under it.
class Transaccion {
  public:
    explicit Transaccion(BaseDatos& db);
    ~Transaccion();
    Transaccion(const Transaccion&) = delete;
    Transaccion& operator=(const Transaccion&) = delete;

    // A commit that fails rolls back and throws: no transaction stays open
    // to swallow the writes of later runs.
    void commit();

  private:
    BaseDatos& m_db;
    bool m_abierta = true;
};
