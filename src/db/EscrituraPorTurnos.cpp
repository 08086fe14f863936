#include "db/EscrituraPorTurnos.h"

#include "base/Error.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace EscrituraPorTurnos {

namespace {
// What a turn gives the write before the window gets the loop back; a
// step begun in time runs to its end.
constexpr qint64 kTurnoMs = 12;
// What a range aims at, well inside a turn.
constexpr qint64 kRangoMs = 6;

struct Estado {
    BaseDatos* db = nullptr;
    unsigned long long apertura = 0;
    std::vector<Paso> pasos;
    size_t siguiente = 0;
    Final alTerminar;
};

void terminar(const std::shared_ptr<Estado>& e, const ErrorBD* fallo) {
    BaseDatos& db = *e->db;
    if (fallo && db.isOpen()) {
        db.pasoPropio(true);
        try {
            db.rollback();
        } catch (const ErrorBD&) {
            // The engine already undid it (a commit that failed).
        }
    }
    db.retener(false);
    e->alTerminar(fallo);
}

void turno(const std::shared_ptr<Estado>& e) {
    BaseDatos& db = *e->db;
    QElapsedTimer reloj;
    reloj.start();
    try {
        // Closed meanwhile (its file taken away), the engine undid it.
        if (!db.isOpen() || db.apertura() != e->apertura)
            throw ErrorBD(u"La conexión con la base de datos se cerró"_s, ErrNum::BaseDatos);
        db.pasoPropio(true);
        while (e->siguiente < e->pasos.size() && reloj.elapsed() < kTurnoMs)
            if (!e->pasos[e->siguiente]()) ++e->siguiente;
        if (e->siguiente == e->pasos.size()) db.commit();
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
    if (e->siguiente < e->pasos.size()) {
        QTimer::singleShot(0, QCoreApplication::instance(), [e] { turno(e); });
        return;
    }
    terminar(e, nullptr);
}
}  // namespace

void escribir(BaseDatos& db, std::vector<Paso> pasos, Final alTerminar) {
    try {
        db.begin();
    } catch (const ErrorBD& fallo) {
        alTerminar(&fallo);
        return;
    }
    db.retener(true);
    auto e = std::make_shared<Estado>();
    e->db = &db;
    e->apertura = db.apertura();
    e->pasos = std::move(pasos);
    e->alTerminar = std::move(alTerminar);
    turno(e);
}

Paso sentencia(BaseDatos& db, QString sql, QVariantList params) {
    return [&db, sql = std::move(sql), params = std::move(params)] {
        db.exec(sql, params);
        return false;
    };
}

Paso porRangos(BaseDatos& db, QString sql, QVariantList params, QString limites, int* filas) {
    struct Rango {
        bool leido = false;
        qint64 desde = 0, hasta = -1, ancho = 1024;
    };
    auto r = std::make_shared<Rango>();
    return [&db, sql = std::move(sql), params = std::move(params), limites = std::move(limites),
            filas, r] {
        if (!r->leido) {
            const ResultadoConsulta l = db.query(limites);
            r->leido = true;
            if (l.isEmpty() || l.value(0, 0).isNull()) return false;
            r->desde = l.value(0, 0).toLongLong();
            r->hasta = l.value(0, 1).toLongLong();
        }
        if (r->desde > r->hasta) return false;
        const qint64 fin = std::min(r->hasta, r->desde + r->ancho - 1);
        QElapsedTimer reloj;
        reloj.start();
        const int n = db.exec(sql, params + QVariantList{r->desde, fin});
        if (filas) *filas += n;
        // The next range as wide as fits the aim, growing by four at most:
        // the numbers may be dense here and sparse there.
        const qint64 ms = std::max<qint64>(1, reloj.elapsed());
        r->ancho = std::clamp<qint64>(r->ancho * kRangoMs / ms, 256, r->ancho * 4);
        r->desde = fin + 1;
        return fin < r->hasta;
    };
}

QString limitesDe(const QString& tabla) {
    // Apart: together in one SELECT they would walk every row.
    return u"SELECT (SELECT min(rowid) FROM "_s + tabla + u"), (SELECT max(rowid) FROM "_s + tabla +
           u')';
}

Paso vaciar(BaseDatos& db, QString tabla, int* filas) {
    struct Indices {
        bool leidos = false;
        QStringList nombres, sql;
        qsizetype quitados = 0, hechos = 0;
        bool vaciada = false;
    };
    auto x = std::make_shared<Indices>();
    return [&db, tabla = std::move(tabla), filas, x] {
        if (!x->leidos) {
            // Those made by a statement; a key's own index goes with the rows.
            const ResultadoConsulta r = db.query(
                u"SELECT name, sql FROM sqlite_master WHERE type = 'index' AND tbl_name = ? "
                u"AND sql IS NOT NULL"_s,
                {tabla});
            for (int i = 0; i < r.recordCount(); ++i) {
                x->nombres.append(r.value(i, 0).toString());
                x->sql.append(r.value(i, 1).toString());
            }
            x->leidos = true;
        } else if (x->quitados < x->nombres.size()) {
            db.exec(u"DROP INDEX \""_s + x->nombres.at(x->quitados++) + u'"');
        } else if (!x->vaciada) {
            const int n = db.exec(u"DELETE FROM "_s + tabla);
            if (filas) *filas += n;
            x->vaciada = true;
        } else if (x->hechos < x->sql.size()) {
            db.exec(x->sql.at(x->hechos++));
        }
        return x->hechos < x->sql.size() || !x->vaciada;
    };
}

}  // namespace EscrituraPorTurnos
