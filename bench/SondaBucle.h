// What the benches share to see the window's event loop stall: a 10 ms
// timer whose largest lateness is the longest time a user's click or a
// repaint would have waited.
#pragma once

#include "widgets/ModeloPaginado.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>

// Records the largest lateness of a 10 ms timer while it runs.
class Sonda {
  public:
    Sonda() {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(10);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            const qint64 ahora = m_reloj.elapsed();
            anotar(ahora);
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
    // With SONDA_MS set, each stall over it is printed with the monotonic
    // clock's times, to be matched with a profiler's samples.
    void anotar(qint64 ahora) const {
        static const int umbral = qEnvironmentVariableIntValue("SONDA_MS");
        if (umbral <= 0 || ahora - m_ultimo - 10 < umbral) return;
        timespec ts;
        clock_gettime(CLOCK_MONOTONIC, &ts);
        const double fin = ts.tv_sec + ts.tv_nsec / 1e9;
        std::fprintf(stderr, "stall %lld ms %.6f-%.6f\n",
                     static_cast<long long>(ahora - m_ultimo - 10),
                     fin - (ahora - m_ultimo) / 1000.0, fin);
    }
    QTimer m_timer;
    QElapsedTimer m_reloj;
    qint64 m_ultimo = 0;
    qint64 m_peor = 0;
};

// The largest stall while `trabajo` runs from the event loop, as a timer's
// or a click's handler runs, with the probe going before and after it.
inline qint64 estancamientoDe(const std::function<void()>& trabajo) {
    Sonda sonda;
    QEventLoop bucle;
    sonda.empezar();
    QTimer::singleShot(30, &bucle, [&] {
        trabajo();
        QTimer::singleShot(30, &bucle, &QEventLoop::quit);
    });
    bucle.exec();
    return sonda.terminar();
}

// Lets a list read over turns what its lines show, as the window would
// while the user waits for them.
inline void esperarLineas(const QAbstractItemModel* modelo) {
    QCoreApplication::processEvents();
    const auto* m = qobject_cast<const ModeloPaginado*>(modelo);
    while (m && m->leyendo()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}
