#pragma once

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

    // Takes the lock and starts listening for a second start; false when
    // another program of this user holds the lock.
    bool adquirir();

    // A second start asks the running one for its window. Waits at most
    // `esperaMs` for an answer (the first may still be starting).
    static Respuesta pedirVentana(int esperaMs = 5000);
    // A second start of the window: the running program shows its window,
    // or the user learns why none comes (through the prompt interface).
    static void cederAlPrimero();
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
};
