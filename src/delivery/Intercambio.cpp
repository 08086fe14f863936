#include "delivery/Intercambio.h"

#include <QCoreApplication>
#include <QEvent>
#include <QList>
#include <QThread>
#include <QTimer>
#include <QVariant>
#include <coroutine>
#include <exception>

namespace Intercambio {

namespace {

struct EnCurso {
    quint64 id;
    Clase clase;
    Transporte::Cancelacion cancelacion;
    QThread* hilo;                    // the transfer's thread, for an exchange
    std::function<void()> despertar;  // ends a pause at once
};

// Touched on the window's thread only.
QList<EnCurso>& lista() {
    static QList<EnCurso> l;
    return l;
}

quint64 inscribir(Clase clase, const Transporte::Cancelacion& c, QThread* hilo,
                  std::function<void()> despertar) {
    static quint64 siguiente = 0;
    lista().append({++siguiente, clase, c, hilo, std::move(despertar)});
    return siguiente;
}

void borrar(quint64 id) {
    lista().removeIf([id](const EnCurso& e) { return e.id == id; });
}

void cancelar(const EnCurso& e) {
    e.cancelacion.cancelar();
    if (e.despertar) e.despertar();
}

// A transfer given up at the end of the program still has its thread: the
// process waits for it (it ends within a tenth of a second once cancelled)
// instead of destroying a running thread.
void esperarHilosAlSalir() {
    for (const EnCurso& e : std::as_const(lista())) {
        e.cancelacion.cancelar();
        if (e.hilo) e.hilo->wait();
    }
}

void prepararSalida() {
    static bool hecho = false;
    if (hecho) return;
    hecho = true;
    qAddPostRoutine(esperarHilosAlSalir);
}

// Resumes the coroutine when the thread has ended, from the event loop of
// the window's thread (the connection is queued: `finished` is emitted on
// the transfer's thread).
struct EsperaHilo {
    Clase clase;
    Transporte::Cancelacion cancelacion;
    std::function<void()> trabajo;

    // Without an application (a benchmark) there is no loop to resume from:
    // the transfer runs here.
    bool await_ready() {
        if (QCoreApplication::instance()) return false;
        trabajo();
        return true;
    }
    void await_suspend(std::coroutine_handle<> continuar) {
        prepararSalida();
        QThread* hilo = QThread::create(std::move(trabajo));
        const quint64 id = inscribir(clase, cancelacion, hilo, {});
        QObject::connect(
            hilo, &QThread::finished, QCoreApplication::instance(),
            [hilo, id, continuar] {
                borrar(id);
                hilo->wait();  // past its last instruction already
                delete hilo;
                continuar.resume();
            },
            Qt::QueuedConnection);
        hilo->start();
    }
    void await_resume() const noexcept {}
};

struct EsperaPausa {
    Clase clase;
    int ms;
    Transporte::Cancelacion cancelacion;

    bool await_ready() {
        if (QCoreApplication::instance()) return false;
        // espera-justificada: no application, so no window and no loop.
        QThread::msleep(ms);
        return true;
    }
    void await_suspend(std::coroutine_handle<> continuar) {
        auto* temporizador = new QTimer;
        temporizador->setSingleShot(true);
        // Precise: a coarse timer may fire early, and the pacing is a promise.
        temporizador->setTimerType(Qt::PreciseTimer);
        // Given up, it ends at the next turn of the loop, never inside the
        // call that gave it up.
        const quint64 id =
            inscribir(clase, cancelacion, nullptr, [temporizador] { temporizador->start(0); });
        QObject::connect(temporizador, &QTimer::timeout, temporizador,
                         [temporizador, id, continuar] {
                             borrar(id);
                             temporizador->deleteLater();
                             continuar.resume();
                         });
        temporizador->start(ms);
    }
    bool await_resume() const noexcept { return !cancelacion.cancelada(); }
};

}  // namespace

// The awaiters are named objects, never temporaries of the co_await
// expression: g++ 12 destroys such a temporary twice.
QCoro::Task<> enHilo(Clase clase, Transporte::Cancelacion cancelacion,
                     std::function<void()> trabajo) {
    std::exception_ptr fallo;
    EsperaHilo espera{clase, cancelacion, [&trabajo, &fallo] {
                          try {
                              trabajo();
                          } catch (...) {
                              fallo = std::current_exception();
                          }
                      }};
    co_await espera;
    if (fallo) std::rethrow_exception(fallo);
}

QCoro::Task<bool> pausa(Clase clase, int ms, Transporte::Cancelacion cancelacion) {
    if (cancelacion.cancelada()) co_return false;
    EsperaPausa espera{clase, ms, cancelacion};
    const bool cumplida = co_await espera;
    co_return cumplida;
}

void abandonar(Clase clase) {
    for (const EnCurso& e : QList<EnCurso>(lista()))
        if (e.clase == clase) cancelar(e);
}

void abandonarTodo() {
    for (const EnCurso& e : QList<EnCurso>(lista())) cancelar(e);
}

int enCurso() {
    return int(lista().size());
}

namespace {

// Watches a screen: a modal one closes by hiding, a child window by its
// deletion; either gives up what its action waits for.
class Vigia : public QObject {
  public:
    Vigia(QObject* pantalla, Transporte::Cancelacion c) : m_cancelacion(std::move(c)) {
        pantalla->installEventFilter(this);
        connect(pantalla, &QObject::destroyed, this, [this] { abandonar(); });
    }

    void abandonar() {
        m_cancelacion.cancelar();
        for (const EnCurso& e : QList<EnCurso>(lista()))
            if (e.cancelacion == m_cancelacion) cancelar(e);
    }

  protected:
    bool eventFilter(QObject* objeto, QEvent* e) override {
        if (e->type() == QEvent::Hide && objeto->property("modal").toBool()) abandonar();
        return false;
    }

  private:
    Transporte::Cancelacion m_cancelacion;
};

}  // namespace

Encargo::Encargo(QObject* pantalla) : m_vigia(new Vigia(pantalla, m_cancelacion)) {}

Encargo::~Encargo() {
    delete m_vigia;
}

}  // namespace Intercambio
