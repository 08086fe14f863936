#pragma once

#include <QObject>

// The transmitter switch (`Tr`/`Activo`): the one owner of the stored
// state. The frame's menu, the tray, the toolbar and the compose screen
// show it by listening to `cambiado`; the batch sender asks `paraEnvio`.
class Interruptor : public QObject {
    Q_OBJECT
  public:
    static Interruptor& instancia();

    // What the windows show. Never written counts as on, so a fresh
    // installation shows the switch the way it is meant to be used.
    bool paraVentana() const;
    // What a transmitter run obeys. Never written counts as off: nothing
    // leaves until the user (or the demo set-up) has turned it on. Throws
    // ErrorQuelmo for a stored value that is no number.
    bool paraEnvio() const;

    // Stores the new state and tells every listener.
    void establecer(bool activo);
    // Turns over what the windows show.
    void alternar() { establecer(!paraVentana()); }

  Q_SIGNALS:
    void cambiado(bool activo);

  private:
    Interruptor() = default;
};
