#pragma once

#include <QString>
#include <QVariant>
#include <array>
#include <cstdint>
#include <map>
#include <vector>

// The sent history (HEnvios) as the history screen lists it, and what the
// user can do from there: queue a past message again, delete history.

// The rows of HEnvios as the history screen lists them. A heavy user's
// history holds a million rows, so nothing is read until it is shown: the
// list knows its count and reads the rows a page at a time, in the order
// the engine gives (the date's index for the date, a bounded sort for the
// other columns). The rows stay those of the moment of `cargar`: what the
// batch sender delivers later shows at the next fill.
class Historico {
  public:
    enum Columna { Enviado = 0, Numero, Cuenta, Mensaje, Resultado, Id, kColumnas };

    // Counts the table and starts over newest first (the "id" column,
    // descending); throws ErrorBD.
    void cargar();
    void limpiar();

    int filas() const { return m_filas; }
    // The text of a cell as the list shows it; empty when the row can't
    // be read.
    QString texto(int fila, int columna) const;

    // Reorders the rows by a column: "Enviado" and "id" by the date, the
    // others by their text with the lists' rule (case and accents don't
    // count, "ñ" after "n"). Rows that compare equal go by their age, in
    // the same direction.
    void ordenar(int columna, bool descendente);

  private:
    struct Fila {
        int64_t rowid = 0;
        int64_t fecha = 0;              // yyyyMMddhhmmss, 0 when none
        std::array<QString, 4> textos;  // Numero .. Resultado
    };
    struct Pagina {
        int numero = -1;
        std::vector<Fila> filas;
    };
    // Where a page of a text order ended: the next one starts after it.
    struct Ancla {
        QString clave;
        int64_t rowid = 0;
    };

    const Fila* fila(int n) const;
    std::vector<Fila> leerPagina(int numero) const;
    std::vector<Fila> leerFilas(const QString& sql, const QVariantList& params) const;
    std::vector<Fila> leerPorRowid(const int64_t* ids, size_t n) const;
    std::vector<int64_t> leerRowids(const QString& sql, const QVariantList& params) const;
    void leerOrdenCompleto() const;
    QString ordenSql() const;
    void vaciarPaginas();

    int m_filas = 0;
    int64_t m_tope = 0;  // the highest rowid at `cargar`: later rows don't show
    int m_columna = Id;
    bool m_descendente = true;
    // The few pages last shown, the latest first.
    mutable std::vector<Pagina> m_paginas;
    mutable std::map<int, Ancla> m_anclas;
    // Every rowid in a text order, read only when the user jumps far into
    // it; a date order never needs it.
    mutable std::vector<int64_t> m_orden;
};

// The sort key of the date column: "yyyymmddhhnnss".
QString idDeFecha(int64_t fecha);

// Queues the row's message once more, after asking, through today's
// principal account (0 when there is none); tells the user how it went.
// True when a row went into the outbox.
bool msReenviarMensaje(const QString& numero, const QString& mensaje, const QString& fecha);

// Deletes what is older than the day `fecha` ("dd/MM/yyyy"), after asking:
// messages of that day itself stay. True when the delete was reached (the
// list is to be read again), false when the date isn't valid or the user
// said no.
bool msBorrarAnteriores(const QString& fecha);
// Deletes the whole history after asking; true when the delete was reached.
bool msBorrarTodos();
