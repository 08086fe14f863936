#pragma once

#include <QObject>
#include <QString>

// What the core tells the screens: a routine that changed something a
// screen shows emits here, and the screens that care connect. Nobody
// listening (headless mode, logic tests) is no failure.
class Avisos : public QObject {
    Q_OBJECT
  public:
    static Avisos& instancia();

  Q_SIGNALS:
    // The accounts, their balances or the principal account changed.
    void cuentasCambiadas();
    // A contact was added or changed.
    void contactosCambiados();
    // Rows were added to or taken from the outbox.
    void bandejaCambiada();
    // The account picker chose the account of the compose screen.
    void cuentaElegida(int canal);
    // A picker chose a text for the compose screen.
    void textoElegido(const QString& texto);
    // A screen asks for a transmitter run now ("send now").
    void envioPedido();
    // The options set a new sending interval, in seconds, counted from now.
    void intervaloCambiado(int segundos);
    // The options were saved: the background picture may be another.
    void opcionesGuardadas();
    // The import's selection screen ended the watch: the cycle stops until
    // the switch or a restart starts it again.
    void cicloDetenido();
    // A screen read the interval: the cycle takes it, counted from now if
    // it runs; a stopped cycle stays stopped.
    void intervaloLeido(int segundos);
    // The database file, or its log, was removed or replaced by another
    // program while open: the connection was closed and writes stop.
    void baseDatosPerdida(const QString& ruta);

  private:
    Avisos() = default;
};
