#include "delivery/Intercambio.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QList>
#include <QPointer>
#include <QThread>
#include <QTimer>
#include <exception>

namespace Intercambio {

namespace {

struct EnCurso {
    Clase clase;
    Transporte::Cancelacion cancelacion;
    QPointer<QEventLoop> bucle;  // the wait to wake when it is given up
};

// Touched on the window's thread only.
QList<EnCurso>& lista() {
    static QList<EnCurso> l;
    return l;
}

// An exchange is listed as in flight for exactly as long as it waits.
class Inscripcion {
  public:
    Inscripcion(Clase clase, const Transporte::Cancelacion& c, QEventLoop* bucle)
        : m_cancelacion(c) {
        lista().append({clase, c, bucle});
    }
    ~Inscripcion() {
        lista().removeIf([this](const EnCurso& e) { return e.cancelacion == m_cancelacion; });
    }
    Inscripcion(const Inscripcion&) = delete;
    Inscripcion& operator=(const Inscripcion&) = delete;

  private:
    Transporte::Cancelacion m_cancelacion;
};

void cancelar(const EnCurso& e) {
    e.cancelacion.cancelar();
    if (e.bucle) e.bucle->quit();
}

}  // namespace

void esperar(Clase clase, const Transporte::Cancelacion& cancelacion,
             const std::function<void()>& trabajo) {
    std::exception_ptr fallo;
    auto envoltura = [&trabajo, &fallo] {
        try {
            trabajo();
        } catch (...) {
            fallo = std::current_exception();
        }
    };
    if (!QCoreApplication::instance()) {
        // Nothing to keep turning (a benchmark without an application).
        envoltura();
    } else {
        QEventLoop bucle;
        const Inscripcion inscripcion(clase, cancelacion, nullptr);
        QThread* hilo = QThread::create(envoltura);
        QObject::connect(hilo, &QThread::finished, &bucle, &QEventLoop::quit);
        hilo->start();
        // Something may end every event loop (the application quitting):
        // the transfer is then cancelled, and ends within a tenth of a second.
        while (!hilo->isFinished()) bucle.exec();
        hilo->wait();
        delete hilo;
    }
    if (fallo) std::rethrow_exception(fallo);
}

bool pausa(Clase clase, int ms) {
    const Transporte::Cancelacion cancelacion;
    if (!QCoreApplication::instance()) {
        QThread::msleep(ms);
        return true;
    }
    QEventLoop bucle;
    const Inscripcion inscripcion(clase, cancelacion, &bucle);
    // Precise: a coarse timer may fire early, and the pacing is a promise.
    QTimer::singleShot(ms, Qt::PreciseTimer, &bucle, &QEventLoop::quit);
    bucle.exec();
    return !cancelacion.cancelada();
}

void abandonar(Clase clase) {
    for (const EnCurso& e : std::as_const(lista()))
        if (e.clase == clase) cancelar(e);
}

void abandonarTodo() {
    for (const EnCurso& e : std::as_const(lista())) cancelar(e);
}

int enCurso() {
    return int(lista().size());
}

}  // namespace Intercambio
