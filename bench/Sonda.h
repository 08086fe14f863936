#pragma once

// What the benches share: how long the window's event loop stalled while
// a step ran.

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>

// Records the largest lateness of a 10 ms timer while it runs: the longest
// time a user's click or a repaint would have waited.
class Sonda {
  public:
    Sonda() {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(10);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            const qint64 ahora = m_reloj.elapsed();
            m_peor = std::max(m_peor, ahora - m_ultimo - 10);
            m_ultimo = ahora;
        });
    }
    void empezar() {
        m_peor = 0;
        m_reloj.start();
        m_ultimo = 0;
        m_timer.start();
    }
    // The largest stall, including the one the last tick has not seen yet.
    qint64 terminar() {
        m_peor = std::max(m_peor, m_reloj.elapsed() - m_ultimo - 10);
        m_timer.stop();
        return std::max<qint64>(m_peor, 0);
    }

  private:
    QTimer m_timer;
    QElapsedTimer m_reloj;
    qint64 m_ultimo = 0;
    qint64 m_peor = 0;
};
