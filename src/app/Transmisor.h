#pragma once

#include <QObject>
#include <QTimer>
#include <optional>

// The transmitter's engine: `Timer1` and its tick. The main window owns
// one; headless mode owns one without a window.
class Transmisor : public QObject {
    Q_OBJECT
  public:
    explicit Transmisor(QObject* parent = nullptr);

    // Reads `Tr`/`Interval` (at least 15 s, else 60, saved back), sets the
    // timer and restarts the interval.
    void armarTemporizador();
    // Sets the interval in seconds and restarts it (options screen).
    void establecerIntervalo(int segundos);
    // The tick: timer off, scheduled poll, SendMessage, timer on.
    void Timer1_Timer();
    // Runs the tick at once.
    void msForzarEnvio() { Timer1_Timer(); }

    QTimer& Timer1() { return m_timer; }

    // Once set, no new run starts (headless stop on a signal).
    void detener();
    bool detenido() const { return m_detenido; }

  Q_SIGNALS:
    void tickTerminado();

  private:
    QTimer m_timer;
    bool m_detenido = false;
};

// `Tr`/`Interval` in seconds: below 15 or not a number means 60, and the
// value is saved back; none when the number is too large for the setting.
std::optional<int> leerIntervalo();
