#include "db/EscrituraPorTurnos.h"

#include "base/Conversiones.h"
#include "base/Error.h"

#include <sqlite3.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QScopeGuard>
#include <QTimer>
#include <algorithm>
#include <coroutine>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace EscrituraPorTurnos {

namespace {
// What a turn gives the write before the window gets the loop back; a
// step begun in time runs to its end.
constexpr qint64 kTurnoMs = 12;
// The first turn of a write in one transaction, run by the caller's
// click, has more: most such writes end in it, before the click returns.
constexpr qint64 kPrimerTurnoMs = 30;
// What a stretch aims at, well inside a turn.
constexpr qint64 kRangoMs = 6;
// The engine's own pages of log before it copies them into the file.
constexpr int kCopiaDiario = 1000;
const QString kTextoCerrada = u"La conexión con la base de datos se cerró"_s;

struct Estado {
    BaseDatos* db = nullptr;
    unsigned long long apertura = 0;
    std::vector<Paso> pasos;
    size_t siguiente = 0;
    // In one transaction that holds the connection (escribir); else each
    // statement or step's own transaction stands alone (porTurnos).
    bool transaccion = true;
    // Turns begun: the first runs in the caller's click.
    int turnos = 0;
    // What the first turn gives the steps.
    qint64 primerTurno = kTurnoMs;
    Final alTerminar;
};

// The engine's own copy of the log after a commit, off while a write is
// held, is back once it ends: a large write had its copy on the commit's
// thread, and a small one left little in the log, copied when it has
// grown, as after any commit.
void copiarDiario(BaseDatos& db, unsigned long long apertura) {
    if (db.isOpen() && db.apertura() == apertura)
        sqlite3_wal_autocheckpoint(db.handle(), kCopiaDiario);
}

void terminar(const std::shared_ptr<Estado>& e, const ErrorBD* fallo) {
    BaseDatos& db = *e->db;
    // Closed and opened again (another file chosen), the connection is no
    // longer the one this write held: closing undid it and let it go.
    if (e->transaccion && db.isOpen() && db.apertura() == e->apertura) {
        if (fallo) {
            db.pasoPropio(true);
            try {
                db.rollback();
            } catch (const ErrorBD&) {
                // The engine already undid it (a commit that failed).
            }
        }
        db.retener(false);
        copiarDiario(db, e->apertura);
    }
    // A write that ended in the caller's click tells it at once. One that
    // took several turns tells in a turn of its own: what the caller does
    // then (a list read again and painted) is not added to the last step.
    if (e->turnos <= 1) {
        e->alTerminar(fallo);
        return;
    }
    std::optional<ErrorBD> copia;
    if (fallo) copia = *fallo;
    QTimer::singleShot(1, QCoreApplication::instance(),
                       [e, copia = std::move(copia)] { e->alTerminar(copia ? &*copia : nullptr); });
}

// The turn being run, for alEmpezarTurno: the steps called in it so far
// (none outside a turn), and whether one asked to end it.
int t_llamadas = 0;
bool t_ceder = false;

void turno(const std::shared_ptr<Estado>& e) {
    BaseDatos& db = *e->db;
    // Steps of their own wait while a long write holds the connection: what
    // they write would be refused, and what they read is half done.
    if (!e->transaccion && db.retenida()) {
        QTimer::singleShot(20, QCoreApplication::instance(), [e] { turno(e); });
        return;
    }
    QElapsedTimer reloj;
    reloj.start();
    bool hecho = false;
    try {
        // Closed meanwhile (its file taken away), the engine undid it.
        if (!db.isOpen() || db.apertura() != e->apertura)
            throw ErrorBD(kTextoCerrada, ErrNum::BaseDatos);
        db.pasoPropio(e->transaccion);
        // Only a write a click waits for (escribir) has a longer first
        // turn: steps that commit each on their own, and writes that are
        // awaited, gain nothing by ending in the call.
        const qint64 turno = ++e->turnos == 1 ? e->primerTurno : kTurnoMs;
        // Kept for a turn run from within a step, which has its own.
        const auto fin = qScopeGuard([llamadas = t_llamadas, ceder = t_ceder] {
            t_llamadas = llamadas;
            t_ceder = ceder;
        });
        t_llamadas = 0;
        t_ceder = false;
        while (e->siguiente < e->pasos.size() && reloj.elapsed() < turno && !t_ceder) {
            ++t_llamadas;
            if (!e->pasos[e->siguiente]()) ++e->siguiente;
        }
        // The commit writes what the steps left in memory. Unless the
        // write was small, it and the log's copy after it are calls of
        // tens of milliseconds: they run on a thread of their own while
        // the connection stays held.
        if (e->siguiente == e->pasos.size()) {
            if (e->transaccion && (e->turnos > 1 || reloj.elapsed() >= turno / 2)) {
                db.pasoPropio(false);
                db.confirmarEnOtroHilo(true, [e](const ErrorBD* fallo) { terminar(e, fallo); });
                return;
            }
            if (e->transaccion) db.commit();
            hecho = true;
        }
        db.pasoPropio(false);
    } catch (const ErrorBD& fallo) {
        terminar(e, &fallo);
        return;
    } catch (...) {
        // Nothing may leave the transaction open behind it.
        const ErrorBD fallo(u"Error inesperado al guardar el cambio"_s, ErrNum::BaseDatos);
        terminar(e, &fallo);
        return;
    }
    if (!hecho) {
        // A timer, not a zero delay: that would be a posted event, and a
        // chain of them keeps the program's own timers waiting.
        QTimer::singleShot(1, QCoreApplication::instance(), [e] { turno(e); });
        return;
    }
    terminar(e, nullptr);
}

void empezar(BaseDatos& db, std::vector<Paso> pasos, Final alTerminar, bool transaccion,
             qint64 primerTurno = kTurnoMs) {
    auto e = std::make_shared<Estado>();
    e->primerTurno = primerTurno;
    e->db = &db;
    e->apertura = db.apertura();
    e->pasos = std::move(pasos);
    e->alTerminar = std::move(alTerminar);
    e->transaccion = transaccion;
    turno(e);
}

// The write lock, taken without the window waiting for another program
// that holds it: a try every 50 ms for as long as a statement would wait.
void tomar(BaseDatos& db, unsigned long long apertura, QDeadlineTimer limite, qint64 primerTurno,
           std::vector<Paso> pasos, Final alTerminar) {
    const int espera = db.espera();
    db.establecerEspera(0);
    try {
        db.begin();
        db.establecerEspera(espera);
    } catch (const ErrorBD& fallo) {
        db.establecerEspera(espera);
        // Held by another write of ours, it is waited for however long it
        // takes: it ends in turns of its own, and failing now would lose
        // what the user asked for. The wait for another program starts
        // after it. A caller that waits for nothing (a slice of a re-work,
        // which comes again) fails at once, as before another program.
        const bool nuestra = db.retenida() && espera > 0;
        if (!db.lastWasBusy() || (!nuestra && limite.hasExpired())) {
            alTerminar(&fallo);
            return;
        }
        if (nuestra) limite = QDeadlineTimer(espera);
        QTimer::singleShot(nuestra ? 20 : 50, QCoreApplication::instance(),
                           [&db, apertura, limite, primerTurno, pasos = std::move(pasos),
                            alTerminar = std::move(alTerminar)]() mutable {
                               if (!db.isOpen() || db.apertura() != apertura) {
                                   const ErrorBD cerrada(kTextoCerrada, ErrNum::BaseDatos);
                                   alTerminar(&cerrada);
                                   return;
                               }
                               tomar(db, apertura, limite, primerTurno, std::move(pasos),
                                     std::move(alTerminar));
                           });
        return;
    }
    db.retener(true);
    sqlite3_wal_autocheckpoint(db.handle(), 0);
    empezar(db, std::move(pasos), std::move(alTerminar), true, primerTurno);
}
}  // namespace

void escribir(BaseDatos& db, std::vector<Paso> pasos, Final alTerminar) {
    tomar(db, db.apertura(), QDeadlineTimer(db.espera()), kPrimerTurnoMs, std::move(pasos),
          std::move(alTerminar));
}

namespace {
// Awaits a write: the coroutine goes on where the write ends, at once when
// it ended within the call.
struct EsperaEscritura {
    struct Estado {
        std::optional<ErrorBD> fallo;
        bool terminada = false;
        std::coroutine_handle<> continuar;
    };
    BaseDatos& db;
    std::vector<Paso> pasos;
    std::shared_ptr<Estado> e = std::make_shared<Estado>();
    bool await_ready() const noexcept { return false; }
    bool await_suspend(std::coroutine_handle<> continuar) {
        auto estado = e;
        // Awaited, it has no click to end in: its first turn is as short
        // as the others (the transmitter's tick, the re-work of next runs).
        tomar(db, db.apertura(), QDeadlineTimer(db.espera()), kTurnoMs, std::move(pasos),
              [estado](const ErrorBD* fallo) {
                  if (fallo) estado->fallo = *fallo;
                  estado->terminada = true;
                  if (estado->continuar) estado->continuar.resume();
              });
        if (e->terminada) return false;
        e->continuar = continuar;
        return true;
    }
    std::optional<ErrorBD> await_resume() { return std::move(e->fallo); }
};
}  // namespace

QCoro::Task<std::optional<ErrorBD>> escrito(BaseDatos& db, std::vector<Paso> pasos) {
    // Named, never a temporary of the co_await: g++ 12 destroys such a
    // temporary twice.
    EsperaEscritura espera{db, std::move(pasos)};
    co_return co_await espera;
}

void porTurnos(BaseDatos& db, std::vector<Paso> pasos, Final alTerminar) {
    empezar(db, std::move(pasos), std::move(alTerminar), false);
}

bool alEmpezarTurno() {
    if (t_llamadas <= 1) return true;
    t_ceder = true;
    return false;
}

Paso sentencia(BaseDatos& db, QString sql, QVariantList params) {
    return [&db, sql = std::move(sql), params = std::move(params)] {
        db.exec(sql, params);
        return false;
    };
}

namespace {
// The first column of the first row; null when there is none.
QVariant primero(const ResultadoConsulta& r) {
    return r.isEmpty() ? QVariant() : r.value(0, 0);
}
}  // namespace

Paso porTramos(BaseDatos& db, const Recorrido& recorrido, Tramo tramo) {
    struct Estado {
        bool empezado = false;
        QVariant desde;
        qint64 largo = 1024;
    };
    auto t = std::make_shared<Estado>();
    const QString& c = recorrido.columna;
    const QString desde = u" FROM "_s + recorrido.tabla + u" WHERE "_s +
                          (recorrido.donde.isEmpty() ? u"1"_s : recorrido.donde) + u" AND "_s;
    const QString primeroSql = u"SELECT min("_s + c + u")"_s + desde + c + u" IS NOT NULL"_s;
    const QString ultimoSql = u"SELECT max("_s + c + u")"_s + desde + c + u" IS NOT NULL"_s;
    const QString hastaSql =
        u"SELECT "_s + c + desde + c + u" >= ? ORDER BY "_s + c + u" LIMIT 1 OFFSET ?"_s;
    const QString siguienteSql =
        u"SELECT "_s + c + desde + c + u" > ? ORDER BY "_s + c + u" LIMIT 1"_s;
    const QVariantList donde = recorrido.params;
    return [&db, tramo = std::move(tramo), primeroSql, ultimoSql, hastaSql, siguienteSql, donde,
            t] {
        if (!t->empezado) {
            t->empezado = true;
            t->desde = primero(db.query(primeroSql, donde));
        }
        if (t->desde.isNull()) return false;
        // Finding the stretch's end walks its rows too: part of its cost.
        QElapsedTimer reloj;
        reloj.start();
        QVariant hasta = primero(db.query(hastaSql, donde + QVariantList{t->desde, t->largo - 1}));
        if (hasta.isNull()) hasta = primero(db.query(ultimoSql, donde));
        tramo(t->desde, hasta);
        // The next stretch as long as fits the aim, growing by four at most.
        const qint64 ms = std::max<qint64>(1, reloj.elapsed());
        t->largo = std::clamp<qint64>(t->largo * kRangoMs / ms, 256, t->largo * 4);
        t->desde = primero(db.query(siguienteSql, donde + QVariantList{hasta}));
        return !t->desde.isNull();
    };
}

Paso porTramos(BaseDatos& db, QString sql, QVariantList params, const Recorrido& recorrido,
               int* filas) {
    return porTramos(db, recorrido,
                     [&db, sql = std::move(sql), params = std::move(params), filas](
                         const QVariant& desde, const QVariant& hasta) {
                         const int n = db.exec(sql, params + QVariantList{desde, hasta});
                         if (filas) *filas += n;
                     });
}

Paso contar(BaseDatos& db, QString sql, QVariantList params, const Recorrido& recorrido,
            int* filas) {
    return porTramos(
        db, recorrido,
        [&db, sql = std::move(sql), params = std::move(params), filas](const QVariant& desde,
                                                                       const QVariant& hasta) {
            *filas += int(primero(db.query(sql, params + QVariantList{desde, hasta})).toLongLong());
        });
}

Paso vaciar(BaseDatos& db, QString tabla, int* filas) {
    struct Vaciado {
        bool empezado = false, grande = false, ampliada = false, leida = false, vaciada = false,
             soltada = false;
        Paso leer;
        QStringList nombres, sql;
        qsizetype quitados = 0, hechos = 0;
    };
    auto x = std::make_shared<Vaciado>();
    // The table's pages read into memory over turns before it is emptied:
    // a million rows then go in 30 ms instead of 60-150 spent reading every
    // page from the file in that one call. Finding where each stretch ends
    // reads its rows: nothing more is needed.
    x->leer = porTramos(db, {tabla, u"rowid"_s}, [](const QVariant&, const QVariant&) {});
    return [&db, tabla = std::move(tabla), filas, x] {
        if (!x->empezado) {
            // Those made by a statement; a key's own index goes with the rows.
            const ResultadoConsulta r = db.query(
                u"SELECT name, sql FROM sqlite_master WHERE type = 'index' AND tbl_name = ? "
                u"AND sql IS NOT NULL"_s,
                {tabla});
            for (int i = 0; i < r.recordCount(); ++i) {
                x->nombres.append(r.value(i, 0).toString());
                x->sql.append(r.value(i, 1).toString());
            }
            // Rows by the hundred thousand: each index dropped, the rows
            // and their pages let go take tens of milliseconds, a turn each.
            // The first and last row numbers tell: asked apart, each is one
            // look down the table's tree; max - min in one select walks
            // every row.
            x->grande =
                numeroDe(primero(db.query(u"SELECT (SELECT max(rowid) FROM "_s + tabla +
                                          u") - (SELECT min(rowid) FROM "_s + tabla + u")"_s))) >
                100000;
            x->empezado = true;
            return true;
        }
        // Each long call at the start of a turn, alone in it.
        const auto aplazar = [&x] { return x->grande && !alEmpezarTurno(); };
        if (x->quitados < x->nombres.size()) {
            if (aplazar()) return true;
            db.exec(u"DROP INDEX \""_s + x->nombres.at(x->quitados++) + u'"');
        } else if (!x->leida) {
            // Only after the indexes: dropped while the memory grows, an
            // index takes twice as long as through the usual pages.
            if (!x->ampliada) db.memoriaParaVaciar(true);
            x->ampliada = true;
            x->leida = !x->leer();
        } else if (!x->vaciada) {
            if (aplazar()) return true;
            const int n = db.exec(u"DELETE FROM "_s + tabla);
            if (filas) *filas += n;
            x->vaciada = true;
        } else if (!x->soltada) {
            if (aplazar()) return true;
            db.memoriaParaVaciar(false);
            x->soltada = true;
        } else if (x->hechos < x->sql.size()) {
            db.exec(x->sql.at(x->hechos++));
        }
        return x->hechos < x->sql.size() || !x->soltada;
    };
}

}  // namespace EscrituraPorTurnos
