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
    // Sets the interval in seconds and restarts it (options screen); during
    // a tick it only takes effect when the tick ends.
    void establecerIntervalo(int segundos);
    // The tick: timer off, scheduled poll, then SendMessage started; when
    // the run ends, timer on and tickTerminado.
    void Timer1_Timer();
    // A tick is under way (its run waits for the platform).
    bool enTick() const { return m_enTick; }
    // Runs the tick at once.
    void msForzarEnvio() { Timer1_Timer(); }

    QTimer& Timer1() { return m_timer; }
    int intervaloSegundos() const { return m_timer.interval() / 1000; }

    // Once set, no new run starts (headless stop on a signal).
    void detener();
    bool detenido() const { return m_detenido; }

    // Continuous mode (`Tr`/`Continuo` = 1, or the command line's
    // --continuous for this process): after a run in which an account's
    // batch went out full and more of its rows wait, the next run follows
    // at once, paced only by the batch sender's one exchange a second.
    static void continuoPorOrden(bool activo);
    static bool modoContinuo();

  Q_SIGNALS:
    void tickTerminado();

  private:
    void terminarTick(bool lleno);

    QTimer m_timer;
    // The run that follows at once in continuous mode; Timer1 keeps its
    // interval for when the outbox has drained.
    QTimer m_seguido;
    bool m_detenido = false;
    bool m_enTick = false;
};

// `Tr`/`Interval` in seconds: below 15 or not a number means 60, and the
// value is saved back; none when the number is too large for the setting.
std::optional<int> leerIntervalo();
