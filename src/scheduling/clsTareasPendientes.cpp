#include "scheduling/clsTareasPendientes.h"

#include "base/Conversiones.h"
#include "base/Error.h"
#include "base/Movil.h"
#include "base/RegistroActividad.h"
#include "base/Reloj.h"
#include "db/Bandeja.h"
#include "db/Conexion.h"
#include "db/Transaccion.h"
#include "scheduling/ProximasTareas.h"
#include "scheduling/clsNextTarea.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QScopeGuard>
#include <QTimer>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The active rows, with what the calculator reads of each, so that a walk
// reads the table once.
QString activas() {
    return u"SELECT "_s + clsNextTarea::columnasFila() +
           u", Codigo FROM Automaticos WHERE tareaProgramada=true"_s;
}

// Runs `paso`; with `pasarFallos` a failure is passed over and the next
// statement runs, otherwise it goes to the caller.
template <typename F>
void ejecutar(bool pasarFallos, F&& paso) {
    if (!pasarFallos) {
        paso();
        return;
    }
    try {
        paso();
    } catch (const ErrorQuelmo&) {
        // Silent on purpose: the caller asked for this step to be passed over.
    }
}

// A run of today that has come and not yet gone out.
bool pendienteHoy(const clsNextTarea& tarea) {
    return Reloj::now() >= tarea.FechaProximaTarea() && tarea.HayTarea() &&
           tarea.FechaProximaTarea() > tarea.UltimaTarea();
}

}  // namespace

void clsTareasPendientes::dispararFila(int32_t codigo, const std::function<QDateTime()>& ultima,
                                       bool pasarFallos) {
    BaseDatos& db = Conexion();
    // A recipient whose contact is gone falls away in the join.
    ResultadoConsulta destinos;
    ejecutar(pasarFallos, [&] {
        destinos = db.query(
            u"Select AboAuto.abonado, AboAuto.mensaje,Abonados.canal from AboAuto, Abonados "
            u"where AboAuto.abonado=Abonados.codigo And automatico=?"_s,
            {codigo});
    });
    // Nothing to queue: the last run stays unwritten, so the row stays due.
    if (destinos.recordCount() < 1) return;

    QString numero;
    QString mensaje;
    int16_t canal = 0;
    EntradaBandeja entrada(db);
    for (int i = 0; i < destinos.recordCount(); ++i) {
        // Each recipient has its own text, and goes out through its
        // contact's account.
        numero = textoDe(destinos.value(i, 0));
        mensaje = textoDe(destinos.value(i, 1));
        ejecutar(pasarFallos, [&] { canal = aEntero16(destinos.value(i, 2)); });
        numero = Movil::leer(Movil::Via::Programado, numero).numero;
        ejecutar(pasarFallos, [&] {
            if (!entrada.poner(numero, mensaje, canal)) msLog(u"Número no válido --> "_s + numero);
        });
        // Once for each recipient, not once for the run.
        ejecutar(pasarFallos, [&] {
            db.exec(u"update automaticos set ultimatarea=? where codigo=?"_s, {ultima(), codigo});
        });
    }
}

int16_t clsTareasPendientes::ReLoad(int filasRepaso) {
    // From here on a failing statement is passed over: one bad row must
    // not keep the others from going out.
    constexpr bool pasar = true;
    ejecutar(pasar, [] { ProximasTareas::ponerAlDia(); });
    // A re-work under way goes on by a slice of rows first: a small table
    // is done within the tick, a large one goes on from the event loop.
    // The slice judges its rows; the tick, those reached before it.
    int16_t cuenta = 0;
    const std::optional<int64_t> repasado = ProximasTareas::repasadoHasta();
    if (repasado) {
        cuenta = Repasar(filasRepaso, 0);
        if (ProximasTareas::repasadoHasta()) programarRepaso();
    }
    // Only the rows whose next run may have come: the tick costs what is
    // due, not what is stored. During a re-work the rows not yet reached
    // hold values that can't be trusted either way: the re-work judges
    // them when it reaches them, with the clock of then.
    const QDateTime ahora = Reloj::now();
    m_activas = ResultadoConsulta();
    ejecutar(pasar, [&] {
        const QString donde = u"WHERE RevisarTarea <= ? AND tareaProgramada=true"_s;
        m_activas =
            repasado ? Conexion().query(ProximasTareas::seleccion() + donde + u" AND Codigo <= ?"_s,
                                        {ahora, qlonglong(*repasado)})
                     : Conexion().query(ProximasTareas::seleccion() + donde, {ahora});
    });
    return int16_t(cuenta + juzgar(ahora, nullptr));
}

int16_t clsTareasPendientes::Repasar(int filasMax, qint64 msMax) {
    constexpr bool pasar = true;
    // Another open or another jump meanwhile starts it over.
    ejecutar(pasar, [] { ProximasTareas::ponerAlDia(); });
    const std::optional<int64_t> desde = ProximasTareas::repasadoHasta();
    if (!desde) return 0;
    QElapsedTimer reloj;
    reloj.start();
    const QDateTime ahora = Reloj::now();
    m_activas = ResultadoConsulta();
    bool leido = false;
    ejecutar(pasar, [&] {
        m_activas = Conexion().query(ProximasTareas::seleccion() +
                                         u"WHERE Codigo > ? AND tareaProgramada=true "
                                         u"ORDER BY Codigo LIMIT ?"_s,
                                     {qlonglong(*desde), filasMax});
        leido = true;
    });
    // An unreadable table is tried again at the next turn.
    if (!leido) return 0;
    int hechas = m_activas.recordCount();
    const bool fin = hechas < filasMax;
    const QElapsedTimer* limite = msMax > 0 ? &reloj : nullptr;
    const int16_t cuenta = juzgar(ahora, limite, msMax, &hechas, [&] {
        // A row switched off in the range reached keeps no next run.
        const bool todo = fin && hechas == m_activas.recordCount();
        const QString rango = todo ? u"Codigo > ?"_s : u"Codigo > ? AND Codigo <= ?"_s;
        QVariantList params{qlonglong(*desde)};
        if (!todo)
            params << qlonglong(hechas ? ProximasTareas::codigoDe(m_activas, hechas - 1) : *desde);
        Conexion().exec(
            u"UPDATE Automaticos SET ProximaTarea = NULL, RevisarTarea = NULL "
            u"WHERE "_s +
                rango +
                u" AND NOT coalesce(tareaProgramada=true, 0) "
                u"AND (ProximaTarea IS NOT NULL OR RevisarTarea IS NOT NULL)"_s,
            params);
    });
    // A slice that could not be written is done again at the next turn.
    if (!m_escrito) return cuenta;
    const bool todo = fin && hechas == m_activas.recordCount();
    ProximasTareas::repasado(hechas ? ProximasTareas::codigoDe(m_activas, hechas - 1) : *desde,
                             todo);
    return cuenta;
}

void clsTareasPendientes::programarRepaso(int esperaMs) {
    static bool programado = false;
    QCoreApplication* app = QCoreApplication::instance();
    if (programado || !app) return;
    programado = true;
    // A few milliseconds at a time, each from the event loop: the window
    // answers between two.
    QTimer::singleShot(esperaMs, app, [] {
        programado = false;
        const std::optional<int64_t> antes = ProximasTareas::repasadoHasta();
        {
            // A lock another program holds is not waited for here, on the
            // window's thread: the slice fails at once and comes again.
            BaseDatos& db = Conexion();
            const int espera = db.espera();
            db.establecerEspera(0);
            const auto volver = qScopeGuard([&db, espera] { db.establecerEspera(espera); });
            clsTareasPendientes().Repasar();
        }
        const std::optional<int64_t> ahora = ProximasTareas::repasadoHasta();
        // A slice that could not be written (the file locked by another
        // program) is tried again a second later, not at once.
        if (ahora) programarRepaso(ahora == antes ? 1000 : 0);
    });
}

int16_t clsTareasPendientes::juzgar(const QDateTime& ahora, const QElapsedTimer* reloj,
                                    qint64 msMax, int* filas, const std::function<void()>& ademas) {
    constexpr bool pasar = true;
    const int total = filas ? *filas : m_activas.recordCount();
    if (!(total > 0) && !ademas) return 0;

    // In the order of the codes, as a walk over the whole table went.
    QVector<std::pair<int32_t, int>> orden;
    for (int i = 0; i < total; ++i)
        ejecutar(pasar, [&] { orden.append({ProximasTareas::codigoDe(m_activas, i), i}); });
    std::sort(orden.begin(), orden.end());

    int16_t cuenta = 0;
    struct Disparo {
        int32_t codigo;
        QDateTime planeada;
        ProximaGuardada nueva;
    };
    QVector<Disparo> disparos;
    QVector<std::pair<int32_t, ProximaGuardada>> cambios;
    int hechas = 0;
    for (const auto& [codigo, i] : orden) {
        // A slice of a re-work stops at its time; the rows after wait for
        // the next slice (a slice reads them in the order of the codes).
        if (reloj && hechas > 0 && reloj->elapsed() >= msMax) break;
        ++hechas;
        // A row without a next run of its own (a failed calculation) is
        // never fired on what another row left in the calculator.
        clsNextTarea tarea;
        bool fallo = true, calculada = false;
        ProximaGuardada nueva;
        ejecutar(pasar, [&] {
            nueva = ProximasTareas::calcular(tarea, codigo, m_activas, i, ahora, &fallo);
            calculada = true;
        });
        const QDateTime& ultima = tarea.m_ultimaTarea;
        const bool hay = !fallo && tarea.HayTarea();
        const QDateTime& fecha = tarea.m_fechaProximaTarea;
        // Strictly after the last run, so the second tick of the minute
        // finds it already done. The planned time stands as the last run.
        if (hay && fecha > ultima && tarea.m_reloj >= fecha) {
            ++cuenta;
            disparos.append({codigo, tarea.FechaProximaTarea(), nueva});
        } else if (calculada && !(nueva == ProximasTareas::guardadaEn(m_activas, i))) {
            cambios.append({codigo, nueva});
        }
    }
    if (filas) *filas = hechas;
    m_escrito = disparos.isEmpty() && cambios.isEmpty() && !ademas;
    if (m_escrito) return cuenta;

    // One commit for the tick. A row's outbox rows, its last run and its
    // next run go in together, under a savepoint of their own: a kill
    // sends no run twice and loses none, and a row that fails stays due
    // without taking the others with it.
    // What a re-work writes and fires nothing is worked out again at the
    // next open if lost: its commit skips the disk sync (10-20 ms) and the
    // next synced commit takes it along.
    BaseDatos& db = Conexion();
    const bool sinSincronizar = ademas && disparos.isEmpty();
    if (sinSincronizar) ejecutar(pasar, [&] { db.exec(u"PRAGMA synchronous=NORMAL"_s); });
    ejecutar(pasar, [&] {
        Transaccion t(db);
        const QString punto = u"disparo"_s;
        for (const Disparo& d : std::as_const(disparos)) {
            try {
                db.savepoint(punto);
                dispararFila(
                    d.codigo, [&] { return d.planeada; }, pasar);
                ProximasTareas::escribir(d.codigo, d.nueva);
                db.release(punto);
            } catch (const ErrorQuelmo&) {
                ejecutar(pasar, [&] {
                    db.rollbackTo(punto);
                    db.release(punto);
                });
            }
        }
        for (const auto& [codigo, p] : std::as_const(cambios))
            ejecutar(pasar, [&] { ProximasTareas::escribir(codigo, p); });
        if (ademas) ejecutar(pasar, ademas);
        t.commit();
        m_escrito = true;
    });
    if (sinSincronizar) ejecutar(pasar, [&] { db.exec(u"PRAGMA synchronous=FULL"_s); });
    return cuenta;
}

QString preguntaPendientes() {
    return u"Tiene mensajes programados para hoy pendientes de enviar\n\n"
           u"¿Desea enviarlos ahora?"_s;
}

bool clsTareasPendientes::HayPendientesHoy() {
    try {
        m_activas = Conexion().query(activas());
        clsNextTarea tarea;
        for (int i = 0; i < m_activas.recordCount(); ++i) {
            tarea.setFila(ProximasTareas::codigoDe(m_activas, i), m_activas, i);
            tarea.CalcularProximaTarea2();
            // Only today's runs are offered; the first of another day ends
            // the walk.
            if (pendienteHoy(tarea)) return Reloj::now().date() == tarea.FechaProximaTarea().date();
        }
    } catch (const ErrorQuelmo&) {
        // The start-up passes over a failure: nothing is offered.
    }
    return false;
}

int16_t clsTareasPendientes::EnviarPendientes() {
    // The start-up passes over a failure: the walk ends there, and the
    // later rows wait for the next start.
    try {
        return recorrerPendientes();
    } catch (const ErrorQuelmo&) {
        return 0;
    }
}

int16_t clsTareasPendientes::recorrerPendientes() {
    m_activas = Conexion().query(activas());
    clsNextTarea tarea;
    int16_t cuenta = 0;
    for (int i = 0; i < m_activas.recordCount(); ++i) {
        const int32_t codigo = ProximasTareas::codigoDe(m_activas, i);
        tarea.setFila(codigo, m_activas, i);
        tarea.CalcularProximaTarea2();
        if (!pendienteHoy(tarea)) continue;
        // The rows were read before the transaction, and the timer ticks
        // meanwhile: a tick may have fired this row since. It is judged
        // again on what the database holds, in the transaction that fires it.
        Transaccion t(Conexion());
        tarea.setCodigo(codigo);
        tarea.CalcularProximaTarea2();
        if (!pendienteHoy(tarea)) continue;
        // The time of sending stands as the last run, read for each recipient.
        ++cuenta;
        dispararFila(
            codigo, [] { return Reloj::now(); }, false);
        ProximasTareas::guardar(codigo);
        t.commit();
    }
    return cuenta;
}
