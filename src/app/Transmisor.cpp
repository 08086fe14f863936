#include "app/Transmisor.h"

#include "base/Ajustes.h"
#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "base/Error.h"
#include "base/Interruptor.h"
#include "base/Reloj.h"
#include "db/Conexion.h"
#include "delivery/Intercambio.h"
#include "delivery/mdoSendRavion.h"
#include "scheduling/clsTareasPendientes.h"

using namespace Qt::StringLiterals;

Transmisor::Transmisor(QObject* parent) : QObject(parent) {
    m_timer.setObjectName(u"Timer1"_s);
    m_timer.setInterval(30000);
    connect(&m_timer, &QTimer::timeout, this, &Transmisor::Timer1_Timer);
    m_seguido.setSingleShot(true);
    m_seguido.setInterval(0);
    connect(&m_seguido, &QTimer::timeout, this, &Transmisor::Timer1_Timer);
    // The screens' "send now" buttons reach the timer this way.
    connect(&Avisos::instancia(), &Avisos::envioPedido, this, &Transmisor::msForzarEnvio);
    connect(&Avisos::instancia(), &Avisos::intervaloCambiado, this,
            &Transmisor::establecerIntervalo);
    connect(&Avisos::instancia(), &Avisos::cicloDetenido, this, [this] {
        m_timer.stop();
        m_seguido.stop();
    });
    // Switched off, the batch in flight is given up; a screen's balance
    // query goes on.
    connect(&Interruptor::instancia(), &Interruptor::cambiado, this, [](bool activo) {
        if (!activo) Intercambio::abandonar(Intercambio::Clase::Envio);
    });
    connect(&Avisos::instancia(), &Avisos::intervaloLeido, this,
            [this](int segundos) { m_timer.setInterval(segundos * 1000); });
}

std::optional<int> leerIntervalo() {
    // The transmitter writes back what it runs by.
    const std::optional<int> segundos = Ajustes::intervalo();
    if (segundos) Ajustes::guardarIntervalo(*segundos);
    return segundos;
}

void Transmisor::armarTemporizador() {
    const std::optional<int> segundos = leerIntervalo();
    if (!segundos) {
        // Too large for the setting's type: the timer keeps its value.
        m_timer.stop();
        m_timer.start();
        return;
    }
    establecerIntervalo(*segundos);
}

void Transmisor::establecerIntervalo(int segundos) {
    // The options screen can be saved in the middle of a run (the run
    // yields to the screens): the new interval then starts when the run
    // ends, as every interval does, and no tick comes inside this one.
    m_timer.setInterval(segundos * 1000);
    if (m_enTick) return;
    m_timer.stop();
    if (!m_detenido) m_timer.start();
}

void Transmisor::Timer1_Timer() {
    // A "send now" in the middle of a run is no second run.
    if (m_detenido || m_enTick) return;
    // A large change of ours is being written over several turns: the run
    // comes as soon as it is stored, not into it.
    if (Conexion().retenida()) {
        QTimer::singleShot(20, this, &Transmisor::Timer1_Timer);
        return;
    }
    m_enTick = true;
    // No tick can come while this one runs.
    m_timer.stop();
    m_seguido.stop();
    // Scheduled messages go into the outbox whatever the switch says, and
    // what fell due goes out in this run, once it is stored.
    QCoro::connect(clsTareasPendientes::ReLoad(), this, [this](int16_t) {
        if (m_detenido) {
            terminarTick(false);
            return;
        }
        // The run goes on from the event loop as its exchanges end; the
        // tick ends with it.
        QCoro::connect(SendMessage(), this, [this](bool lleno) { terminarTick(lleno); });
    });
}

void Transmisor::terminarTick(bool lleno) {
    m_enTick = false;
    if (!m_detenido) {
        if (lleno && modoContinuo())
            m_seguido.start();
        else
            m_timer.start();  // a full interval from now
    }
    Q_EMIT tickTerminado();
}

void Transmisor::detener() {
    m_detenido = true;
    // Stopping never waits for the platform: every exchange in flight is
    // given up, and its rows go again under the same references.
    Intercambio::abandonarTodo();
    m_timer.stop();
    m_seguido.stop();
}

namespace {
bool g_continuoPorOrden = false;
}

void Transmisor::continuoPorOrden(bool activo) {
    g_continuoPorOrden = activo;
}

bool Transmisor::modoContinuo() {
    // Read at every run, so the setting takes effect without a restart.
    return g_continuoPorOrden || Ajustes::transmisorContinuo();
}
