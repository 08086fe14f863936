#include "scheduling/clsTareasPendientes.h"

#include "base/Conversiones.h"
#include "base/Error.h"
#include "base/Movil.h"
#include "base/RegistroActividad.h"
#include "base/Reloj.h"
#include "db/Bandeja.h"
#include "db/Conexion.h"
#include "db/EscrituraPorTurnos.h"
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

// One row's run, as a step of a write: one outbox row per recipient, a
// stretch of recipients at a time, `ultima()` written as the row's last
// run with each one, then `despues` (its next run), all under a savepoint
// of its own. With no recipient the last run stays unwritten, so the row
// stays due. Each
// recipient has its own text and goes out through its contact's account;
// a recipient whose contact is gone falls away in the join. With
// `pasarFallos`, a row that fails is undone and stays due without taking
// the others with it; otherwise the failure goes to the caller.
EscrituraPorTurnos::Paso pasoDisparo(int32_t codigo, std::function<QDateTime()> ultima,
                                     bool pasarFallos, std::function<void()> despues,
                                     std::shared_ptr<EntradaBandeja> entrada) {
    BaseDatos& db = Conexion();
    auto fase = std::make_shared<int>(0);
    EscrituraPorTurnos::Paso destinatarios = EscrituraPorTurnos::porTramos(
        db, {u"AboAuto"_s, u"id_AboAuto"_s, u"Automatico = ?"_s, {codigo}},
        [&db, codigo, ultima = std::move(ultima), pasarFallos, entrada](const QVariant& desde,
                                                                        const QVariant& hasta) {
            // A stretch that can't be read undoes the run: none of it is
            // lost, and the row stays due.
            const ResultadoConsulta destinos = db.query(
                u"Select AboAuto.abonado, AboAuto.mensaje, Abonados.canal from AboAuto, Abonados "
                u"where AboAuto.abonado=Abonados.codigo And automatico=? "
                u"And id_AboAuto Between ? And ? Order By id_AboAuto"_s,
                {codigo, desde, hasta});
            for (int i = 0; i < destinos.recordCount(); ++i) {
                int16_t canal = 0;
                ejecutar(pasarFallos, [&] { canal = aEntero16(destinos.value(i, 2)); });
                const QString numero =
                    Movil::leer(Movil::Via::Programado, textoDe(destinos.value(i, 0))).numero;
                ejecutar(pasarFallos, [&] {
                    if (!entrada->poner(numero, textoDe(destinos.value(i, 1)), canal))
                        msLog(u"Número no válido --> "_s + numero);
                });
                // Once for each recipient, not once for the run.
                ejecutar(pasarFallos, [&] {
                    db.exec(u"update automaticos set ultimatarea=? where codigo=?"_s,
                            {ultima(), codigo});
                });
                // The engine undid the whole write (a full disk): nothing
                // may go in alone after it.
                if (!db.enTransaccion())
                    throw ErrorBD(u"La base de datos deshizo el envío programado"_s,
                                  ErrNum::BaseDatos);
            }
        });
    return [&db, pasarFallos, despues = std::move(despues),
            destinatarios = std::move(destinatarios), fase] {
        const QString punto = u"disparo"_s;
        try {
            if (*fase == 0) {
                db.savepoint(punto);
                *fase = 1;
                return true;
            }
            if (destinatarios()) return true;
            despues();
            db.release(punto);
        } catch (const ErrorQuelmo&) {
            if (!pasarFallos) throw;
            ejecutar(pasarFallos, [&] {
                db.rollbackTo(punto);
                db.release(punto);
            });
            if (!db.enTransaccion()) throw;
        }
        return false;
    };
}

}  // namespace

QCoro::Task<int16_t> clsTareasPendientes::ReLoad(int filasRepaso) {
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
        QCoro::Task<int16_t> repaso = Repasar(filasRepaso, 0);
        cuenta = co_await repaso;
        if (ProximasTareas::repasadoHasta()) programarRepaso();
    }
    // Only the rows whose next run may have come: the tick costs what is
    // due, not what is stored. During a re-work the rows not yet reached
    // hold values that can't be trusted either way: the re-work judges
    // them when it reaches them, with the clock of then.
    const QDateTime ahora = Reloj::now();
    clsTareasPendientes tic;
    ejecutar(pasar, [&] {
        const QString donde = u"WHERE RevisarTarea <= ? AND tareaProgramada=true"_s;
        tic.m_activas =
            repasado ? Conexion().query(ProximasTareas::seleccion() + donde + u" AND Codigo <= ?"_s,
                                        {ahora, qlonglong(*repasado)})
                     : Conexion().query(ProximasTareas::seleccion() + donde, {ahora});
    });
    QCoro::Task<int16_t> juicio = tic.juzgar(ahora, nullptr);
    const int16_t disparadas = co_await juicio;
    co_return int16_t(cuenta + disparadas);
}

QCoro::Task<int16_t> clsTareasPendientes::Repasar(int filasMax, qint64 msMax) {
    constexpr bool pasar = true;
    // Another open or another jump meanwhile starts it over.
    ejecutar(pasar, [] { ProximasTareas::ponerAlDia(); });
    const std::optional<int64_t> desde = ProximasTareas::repasadoHasta();
    if (!desde) co_return int16_t(0);
    QElapsedTimer reloj;
    reloj.start();
    const QDateTime ahora = Reloj::now();
    clsTareasPendientes repaso;
    bool leido = false;
    ejecutar(pasar, [&] {
        repaso.m_activas = Conexion().query(ProximasTareas::seleccion() +
                                                u"WHERE Codigo > ? AND tareaProgramada=true "
                                                u"ORDER BY Codigo LIMIT ?"_s,
                                            {qlonglong(*desde), filasMax});
        leido = true;
    });
    // An unreadable table is tried again at the next turn.
    if (!leido) co_return int16_t(0);
    const ResultadoConsulta& activas = repaso.m_activas;
    int hechas = activas.recordCount();
    const bool fin = hechas < filasMax;
    const QElapsedTimer* limite = msMax > 0 ? &reloj : nullptr;
    // Run inside the write, while this frame waits for it.
    std::function<void()> ademas = [&] {
        // A row switched off in the range reached keeps no next run.
        const bool todo = fin && hechas == activas.recordCount();
        const QString rango = todo ? u"Codigo > ?"_s : u"Codigo > ? AND Codigo <= ?"_s;
        QVariantList params{qlonglong(*desde)};
        if (!todo)
            params << qlonglong(hechas ? ProximasTareas::codigoDe(activas, hechas - 1) : *desde);
        Conexion().exec(
            u"UPDATE Automaticos SET ProximaTarea = NULL, RevisarTarea = NULL "
            u"WHERE "_s +
                rango +
                u" AND NOT coalesce(tareaProgramada=true, 0) "
                u"AND (ProximaTarea IS NOT NULL OR RevisarTarea IS NOT NULL)"_s,
            params);
    };
    QCoro::Task<int16_t> juicio = repaso.juzgar(ahora, limite, msMax, &hechas, ademas);
    const int16_t cuenta = co_await juicio;
    // A slice that could not be written is done again at the next turn.
    if (!repaso.m_escrito) co_return cuenta;
    const bool todo = fin && hechas == activas.recordCount();
    ProximasTareas::repasado(hechas ? ProximasTareas::codigoDe(activas, hechas - 1) : *desde, todo);
    co_return cuenta;
}

void clsTareasPendientes::programarRepaso(int esperaMs) {
    // Until the slice's write is stored: one slice at a time.
    static bool programado = false;
    QCoreApplication* app = QCoreApplication::instance();
    if (programado || !app) return;
    programado = true;
    // A few milliseconds at a time, each from the event loop: the window
    // answers between two.
    QTimer::singleShot(esperaMs, app, [app] {
        const std::optional<int64_t> antes = ProximasTareas::repasadoHasta();
        QCoro::Task<int16_t> repaso = [] {
            // A lock another program holds is not waited for here, on the
            // window's thread: the slice fails at once and comes again.
            BaseDatos& db = Conexion();
            const int espera = db.espera();
            db.establecerEspera(0);
            const auto volver = qScopeGuard([&db, espera] { db.establecerEspera(espera); });
            return Repasar();
        }();
        QCoro::connect(std::move(repaso), app, [antes](int16_t) {
            programado = false;
            const std::optional<int64_t> ahora = ProximasTareas::repasadoHasta();
            // A slice that could not be written (the file locked by another
            // program) is tried again a second later, not at once.
            if (ahora) programarRepaso(ahora == antes ? 1000 : 0);
        });
    });
}

QCoro::Task<int16_t> clsTareasPendientes::juzgar(QDateTime ahora, const QElapsedTimer* reloj,
                                                 qint64 msMax, int* filas,
                                                 std::function<void()> ademas) {
    constexpr bool pasar = true;
    const int total = filas ? *filas : m_activas.recordCount();
    if (!(total > 0) && !ademas) co_return int16_t(0);

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
    if (m_escrito) co_return cuenta;

    // One commit for the tick, written over turns when a run has many
    // recipients. A row's outbox rows, its last run and its next run go in
    // together, under a savepoint of their own: a kill sends no run twice
    // and loses none, and a row that fails stays due without taking the
    // others with it.
    BaseDatos& db = Conexion();
    auto entrada = std::make_shared<EntradaBandeja>(db);
    std::vector<EscrituraPorTurnos::Paso> pasos;
    for (const Disparo& d : std::as_const(disparos))
        pasos.push_back(pasoDisparo(
            d.codigo, [planeada = d.planeada] { return planeada; }, pasar,
            [codigo = d.codigo, nueva = d.nueva] { ProximasTareas::escribir(codigo, nueva); },
            entrada));
    if (!cambios.isEmpty())
        pasos.push_back([cambios] {
            for (const auto& [codigo, p] : cambios)
                ejecutar(pasar, [&] { ProximasTareas::escribir(codigo, p); });
            return false;
        });
    if (ademas)
        pasos.push_back([ademas] {
            ejecutar(pasar, ademas);
            return false;
        });
    // What a re-work writes and fires nothing is worked out again at the
    // next open if lost: its commit skips the disk sync (10-20 ms) and the
    // next synced commit takes it along.
    const bool sinSincronizar = ademas && disparos.isEmpty();
    if (sinSincronizar) ejecutar(pasar, [&] { db.exec(u"PRAGMA synchronous=NORMAL"_s); });
    QCoro::Task<std::optional<ErrorBD>> escritura =
        EscrituraPorTurnos::escrito(db, std::move(pasos));
    const std::optional<ErrorBD> fallo = co_await escritura;
    m_escrito = !fallo;
    // The screens hear of the rows once they are committed.
    entrada.reset();
    if (sinSincronizar) ejecutar(pasar, [&] { db.exec(u"PRAGMA synchronous=FULL"_s); });
    co_return cuenta;
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
        // The time of sending stands as the last run.
        ++cuenta;
        {
            auto entrada = std::make_shared<EntradaBandeja>(Conexion());
            const EscrituraPorTurnos::Paso disparo = pasoDisparo(
                codigo, [] { return Reloj::now(); }, false,
                [codigo] { ProximasTareas::guardar(codigo); }, entrada);
            while (disparo()) {
            }
            t.commit();
        }
    }
    return cuenta;
}
