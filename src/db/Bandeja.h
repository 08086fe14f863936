#pragma once

#include <QString>
#include <QVariant>

class BaseDatos;

// The one way into the outbox. Every route (the compose screen, an import
// line, a scheduled run, an emergency send, a resend from the history) puts
// its messages through an EntradaBandeja: each row waits for its first
// exchange, stamped with the time it went in, and only with a destination
// the batch sender will send to. Once the routine is done with it, the
// screens are told, once, that the outbox changed.
class EntradaBandeja {
  public:
    explicit EntradaBandeja(BaseDatos& bd);
    // Tells the screens, when anything went in. Keep it in the scope of the
    // routine's transaction, or after it, so they read committed rows.
    ~EntradaBandeja();
    EntradaBandeja(const EntradaBandeja&) = delete;
    EntradaBandeja& operator=(const EntradaBandeja&) = delete;

    // Puts one message in the outbox under account `canal`, stamped
    // `registro` (now when null). False, with nothing written, for a
    // destination the sender would refuse: it would wait there for ever.
    // A write the database refuses throws ErrorBD.
    bool poner(const QString& destino, const QString& texto, const QVariant& canal,
               const QVariant& registro = QVariant());
    int puestos() const { return m_puestos; }

  private:
    BaseDatos& m_bd;
    int m_puestos = 0;
};
