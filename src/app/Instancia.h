#pragma once

#include "base/Hecho.h"

#include <QLockFile>
#include <QObject>
#include <QString>

class QLocalServer;

// One program per user. The lock file tells that another one runs; a local
// socket beside it lets a second start reach the running one, so that the
// window comes forward instead of the second start ending without a word.
class Instancia : public QObject {
    Q_OBJECT
  public:
    // What the running program is: its answer to a second start.
    enum class Papel { Ventana, SinVentana };
    // What a second start learnt from the running one.
    enum class Respuesta { VentanaMostrada, SinVentana, SinRespuesta };

    explicit Instancia(Papel papel, QObject* parent = nullptr);
    ~Instancia() override;

    // Takes the lock and starts listening for a second start.
    enum class Toma {
        Tomada,        // this program runs
        OtraEnMarcha,  // another program of this user holds the lock
        SinCarpeta,    // the data folder can't take the lock (unwritable, full)
    };
    Toma adquirir();
    // Why the lock could not be taken, in one Spanish line with the folder
    // and the system's words (empty after Tomada or OtraEnMarcha).
    const QString& motivo() const { return m_motivo; }

    // A second start asks the running one for its window. Waits at most
    // `esperaMs` for an answer (the first may still be starting).
    static Respuesta pedirVentana(int esperaMs = 5000);
    // A second start of the window: the running program shows its window,
    // or why none comes, for the caller to tell the user.
    static Hecho cederAlPrimero();
    // Where the running program listens.
    static QString nombreServidor();

  Q_SIGNALS:
    // A second start of the window asked for this program's window.
    void ventanaPedida();

  private:
    void atender();

    Papel m_papel;
    QLockFile m_bloqueo;
    QLocalServer* m_servidor = nullptr;
    QString m_motivo;
};
