#include "app/Transmisor.h"

#include "base/Ajustes.h"
#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "base/Error.h"
#include "base/Reloj.h"
#include "delivery/mdoSendRavion.h"
#include "scheduling/clsTareasPendientes.h"

using namespace Qt::StringLiterals;

Transmisor::Transmisor(QObject* parent) : QObject(parent) {
    m_timer.setObjectName(u"Timer1"_s);
    m_timer.setInterval(30000);
    connect(&m_timer, &QTimer::timeout, this, &Transmisor::Timer1_Timer);
    // The screens' "send now" buttons reach the timer this way.
    connect(&Avisos::instancia(), &Avisos::envioPedido, this, &Transmisor::msForzarEnvio);
    connect(&Avisos::instancia(), &Avisos::intervaloCambiado, this,
            &Transmisor::establecerIntervalo);
    connect(&Avisos::instancia(), &Avisos::cicloDetenido, &m_timer, &QTimer::stop);
    connect(&Avisos::instancia(), &Avisos::intervaloLeido, this,
            [this](int segundos) { m_timer.setInterval(segundos * 1000); });
}

std::optional<int> leerIntervalo() {
    const QString leido = Ajustes::getSetting(u"Tr"_s, u"Interval"_s, u"60"_s);
    int segundos = 60;
    if (esNumerico(leido)) {
        try {
            segundos = aEntero16(leido);
        } catch (const ErrorQuelmo&) {
            return std::nullopt;
        }
        if (segundos < 15) segundos = 60;
    }
    Ajustes::saveSetting(u"Tr"_s, u"Interval"_s, QString::number(segundos));
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
    m_timer.setInterval(segundos * 1000);
    m_timer.stop();
    if (!m_detenido) m_timer.start();
}

void Transmisor::Timer1_Timer() {
    if (m_detenido) return;
    // No tick can come while this one runs.
    m_timer.stop();
    // Scheduled messages go into the outbox whatever the switch says.
    clsTareasPendientes().ReLoad();
    SendMessage();
    // A full interval from now.
    if (!m_detenido) m_timer.start();
    Q_EMIT tickTerminado();
}

void Transmisor::detener() {
    m_detenido = true;
    m_timer.stop();
}
