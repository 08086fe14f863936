#include "delivery/Intercambio.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QEventLoop>
#include <QList>
#include <QPointer>
#include <QThread>
#include <QTimer>
#include <QVariant>
#include <exception>

namespace Intercambio {

namespace {

struct EnCurso {
    Clase clase;
    Transporte::Cancelacion cancelacion;
    QPointer<QEventLoop> bucle;  // the wait to wake when it is given up
    const Encargo* encargo;      // the screen it answers to, if any
};

// Waits in progress, one inside the other (a tick's batch may wait inside
// a screen's balance query): an exchange belongs to the screen whose action
// started it at the same depth, never to one further out.
int g_nivel = 0;

QList<Encargo*>& encargos() {
    static QList<Encargo*> l;
    return l;
}

Encargo* encargoActual() {
    const QList<Encargo*>& l = encargos();
    for (auto i = l.rbegin(); i != l.rend(); ++i)
        if ((*i)->nivel() == g_nivel) return *i;
    return nullptr;
}

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
        Encargo* encargo = encargoActual();
        if (encargo && encargo->abandonada()) c.cancelar();
        lista().append({clase, c, bucle, encargo});
        ++g_nivel;
    }
    ~Inscripcion() {
        --g_nivel;
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
        // Something may end every event loop (the application quitting,
        // after which a loop returns at once): the transfer is then
        // cancelled, and ends within a tenth of a second.
        while (!hilo->isFinished()) {
            bucle.exec();
            hilo->wait(QDeadlineTimer(10));
        }
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

namespace {

// Watches the screen and the windows that hold it.
class Vigia : public QObject {
  public:
    Vigia(Encargo* encargo, QObject* pantalla) : m_encargo(encargo), m_pantalla(pantalla) {}

  protected:
    bool eventFilter(QObject* objeto, QEvent* e) override {
        if (e->type() == QEvent::DeferredDelete) {
            m_encargo->retener(objeto);
            return true;
        }
        // A modal screen closes by hiding; a child window by its deletion.
        if (e->type() == QEvent::Hide && objeto == m_pantalla &&
            m_pantalla->property("modal").toBool())
            m_encargo->abandonar();
        return false;
    }

  private:
    Encargo* m_encargo;
    QObject* m_pantalla;
};

}  // namespace

bool respuestaDescartada() {
    const Encargo* e = encargoActual();
    return e && e->abandonada();
}

Encargo::Encargo(QObject* pantalla)
    : m_pantalla(pantalla), m_vigia(new Vigia(this, pantalla)), m_nivel(g_nivel) {
    // The top window stays out: its end is the program's.
    for (QObject* o = pantalla; o && o->parent(); o = o->parent()) o->installEventFilter(m_vigia);
    encargos().append(this);
}

Encargo::~Encargo() {
    encargos().removeOne(this);
    delete m_vigia;
    for (const QPointer<QObject>& o : std::as_const(m_retenidos))
        if (o) o->deleteLater();
}

void Encargo::abandonar() {
    m_abandonada = true;
    for (const EnCurso& e : std::as_const(lista()))
        if (e.encargo == this) cancelar(e);
}

void Encargo::retener(QObject* objeto) {
    if (!m_retenidos.contains(objeto)) m_retenidos.append(objeto);
    abandonar();
}

}  // namespace Intercambio
