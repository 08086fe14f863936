// Figures for the sent history with a heavy user's million rows: opening
// the screen, header clicks, deleting the older half, and the emergency
// screen over 2,000 multi-sends. Beside each figure, the bare SQL that it
// needs, from the same run.
#include "SondaBucle.h"
#include "TestSupportGui.h"
#include "db/Conexion.h"
#include "history/frmEmergencias.h"
#include "history/frmHEnvios.h"
#include "widgets/Listado.h"

#include <sqlite3.h>
#include <QApplication>
#include <QDateEdit>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QHeaderView>
#include <QPushButton>
#include <QRadioButton>
#include <cstdio>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {

constexpr int kFilas = 1000000;

// A million rows over three years, a message every 94 seconds, to 20,000
// numbers, with texts of 40 to 120 characters; one row in ten has no
// sender text, as older rows don't.
void llenarHistorico() {
    BaseDatos& bd = Conexion();
    bd.begin();
    bd.exec(
        u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < ?) "
        u"INSERT INTO HEnvios (Abonado, Registro, Mensaje, Resultado, Canal, crem) "
        u"SELECT '0034' || (600000000 + (i * 7919) % 20000), "
        u"datetime('2023-01-01 08:00:00', '+' || (i * 94) || ' seconds'), "
        u"substr('Estimado cliente ' || (i * 104729 % 1000003) || ': su pedido está listo "
        u"para recoger en nuestra tienda. Horario de 9 a 14 y de 17 a 20 h. Gracias por su "
        u"confianza, Ñandú S.L.', 1, 40 + i % 81), "
        u"CASE WHEN i % 97 = 0 THEN 'Número rechazado por la plataforma' "
        u"ELSE 'Mensaje aceptado' END, i % 3, "
        u"CASE WHEN i % 10 = 0 THEN NULL ELSE 'Tienda ' || (i % 3) END FROM n"_s,
        {kFilas - 1});
    bd.commit();
}

long long memoriaKb(const char* campo) {
    QFile f(u"/proc/self/status"_s);
    if (!f.open(QIODevice::ReadOnly)) return -1;
    for (const QByteArray& l : f.readAll().split('\n'))
        if (l.startsWith(campo))
            return l.mid(qsizetype(qstrlen(campo))).trimmed().split(' ')[0].toLongLong();
    return -1;
}

// Wall-clock and processor time of one step: on a machine shared with
// other work the second tells what the step itself costs.
class Reloj {
  public:
    Reloj() { reiniciar(); }
    void reiniciar() {
        m_sonda.empezar();
        m_pared.start();
        m_cpu = std::clock();
    }
    qint64 pared() const { return m_pared.elapsed(); }
    qint64 cpu() const { return qint64(std::clock() - m_cpu) * 1000 / CLOCKS_PER_SEC; }
    // The window's largest stall since `reiniciar`.
    qint64 estanca() const { return m_sonda.terminar(); }

  private:
    QElapsedTimer m_pared;
    std::clock_t m_cpu;
    mutable Sonda m_sonda;
};

struct Medida {
    qint64 pared = 0, cpu = 0, estanca = -1;
    Medida operator+(const Medida& o) const { return {pared + o.pared, cpu + o.cpu}; }
};

Medida medir(const Reloj& r) {
    return {r.pared(), r.cpu(), r.estanca()};
}

// Steps through every row of a statement without keeping anything.
Medida sqlDesnudo(const char* sql) {
    Reloj t;
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(Conexion().handle(), sql, -1, &s, nullptr);
    while (sqlite3_step(s) == SQLITE_ROW) {
        for (int i = 0; i < sqlite3_column_count(s); ++i) sqlite3_column_text(s, i);
    }
    sqlite3_finalize(s);
    return medir(t);
}

void cifra(const char* que, Medida m, Medida sql, const char* sqlQue) {
    std::printf("%-40s %6lld ms (cpu %6lld, stall %5lld) | bare SQL %-34s %6lld ms (cpu %6lld)\n",
                que, static_cast<long long>(m.pared), static_cast<long long>(m.cpu),
                static_cast<long long>(m.estanca), sqlQue, static_cast<long long>(sql.pared),
                static_cast<long long>(sql.cpu));
}

}  // namespace

int main(int argc, char** argv) {
    BancoPantallas banco(argc, argv);
    QElapsedTimer t;
    t.start();
    llenarHistorico();
    std::printf("bench_history: %d rows in HEnvios (filled in %lld ms)\n", kFilas,
                static_cast<long long>(t.elapsed()));

    // What the list needs to show its first rows: the count, and the
    // newest page by the date's index.
    const char* cuenta = "SELECT count(*), max(rowid) FROM HEnvios";
    const char* primeraPagina =
        "SELECT rowid, Registro, Abonado, coalesce(crem, Canal), Mensaje, Resultado FROM HEnvios "
        "ORDER BY Registro DESC, rowid DESC LIMIT 1000";
    const Medida sqlAbrir = sqlDesnudo(cuenta) + sqlDesnudo(primeraPagina);
    const long long antes = memoriaKb("VmRSS:");
    Reloj r;
    auto* pantalla = new frmHEnvios;
    pantalla->show();
    // Until the rows are counted (over turns) and the first page shown.
    const auto mostrada = [&] {
        while (pantalla->ocupada()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::processEvents();
    };
    mostrada();
    const Medida abrir = medir(r);
    const long long despues = memoriaKb("VmRSS:");
    cifra("frmHEnvios open (count, first page)", abrir, sqlAbrir, "(count + newest 1,000)");
    std::printf(
        "  memory: %lld MB resident after opening (%lld MB more than before; peak %lld MB)\n",
        despues / 1024, (despues - antes) / 1024, memoriaKb("VmHWM:") / 1024);

    // A header click reads the first page of the new order: by the date's
    // index, or by one walk of the table that keeps the rowids of only the
    // first 1,000, whose rows are then read by rowid.
    const struct {
        int columna;
        const char* que;
        const char* sql;
        const char* sqlQue;
    } clics[] = {
        {0, "header Enviado (oldest first)",
         "SELECT * FROM HEnvios ORDER BY Registro, rowid LIMIT 1000", "(oldest 1,000)"},
        {0, "header Enviado again (newest first)",
         "SELECT * FROM HEnvios ORDER BY Registro DESC, rowid DESC LIMIT 1000", "(newest 1,000)"},
        {1, "header Número",
         "SELECT rowid FROM HEnvios ORDER BY Abonado COLLATE REGLA_LISTAS, rowid LIMIT 1000",
         "(rowids of first 1,000 by Abonado)"},
        {3, "header Mensaje",
         "SELECT rowid FROM HEnvios ORDER BY Mensaje COLLATE REGLA_LISTAS, rowid LIMIT 1000",
         "(rowids of first 1,000 by Mensaje)"},
        {4, "header Resultado",
         "SELECT rowid FROM HEnvios ORDER BY Resultado COLLATE REGLA_LISTAS, rowid LIMIT 1000",
         "(rowids of first 1,000 by Resultado)"},
        {2, "header Cuenta (Remitente)",
         "SELECT rowid FROM HEnvios ORDER BY coalesce(crem, CAST(Canal AS TEXT)) COLLATE "
         "REGLA_LISTAS, rowid LIMIT 1000",
         "(rowids of first 1,000 by crem/Canal)"},
    };
    for (const auto& c : clics) {
        const Medida sql = sqlDesnudo(c.sql);
        r.reiniciar();
        Q_EMIT pantalla->ListView1->header()->sectionClicked(c.columna);
        esperarLineas(pantalla->ListView1->model());
        cifra(c.que, medir(r), sql, c.sqlQue);
    }

    // Scrolling: the next page of a text order goes on from where the
    // last one ended; a jump far into it reads the whole order once.
    VistaLineas* lista = pantalla->ListView1;
    auto desplazar = [&](int fila) {
        r.reiniciar();
        lista->scrollTo(lista->model()->index(fila, 0), QAbstractItemView::PositionAtTop);
        esperarLineas(lista->model());
        return medir(r);
    };
    Q_EMIT lista->header()->sectionClicked(3);
    QCoreApplication::processEvents();
    const Medida sqlSiguiente = sqlDesnudo(
        "SELECT rowid FROM HEnvios ORDER BY Mensaje COLLATE REGLA_LISTAS, rowid LIMIT 1000 OFFSET "
        "1000");
    cifra("scroll to row 1,000 (Mensaje order)", desplazar(1000), sqlSiguiente,
          "(rowids of second 1,000)");
    const Medida sqlTodo =
        sqlDesnudo("SELECT rowid FROM HEnvios ORDER BY Mensaje COLLATE REGLA_LISTAS, rowid");
    cifra("jump to row 500,000 (Mensaje order)", desplazar(kFilas / 2), sqlTodo,
          "(every rowid by Mensaje)");
    Q_EMIT lista->header()->sectionClicked(0);
    QCoreApplication::processEvents();
    const Medida sqlMedio =
        sqlDesnudo("SELECT * FROM HEnvios ORDER BY Registro, rowid LIMIT 1000 OFFSET 500000");
    cifra("jump to row 500,000 (date order)", desplazar(kFilas / 2), sqlMedio,
          "(1,000 rows from the middle)");
    // Pages no header click has read: the rows far down an index's order.
    const Medida sqlLejos =
        sqlDesnudo("SELECT * FROM HEnvios ORDER BY Registro, rowid LIMIT 1000 OFFSET 900000");
    cifra("jump to row 900,000 (date order)", desplazar(kFilas * 9 / 10), sqlLejos,
          "(1,000 rows near the end)");
    cifra("jump back to row 700,000", desplazar(kFilas * 7 / 10), {}, "");
    cifra("scroll on to row 701,000", desplazar(kFilas * 7 / 10 + 1000), {}, "");
    std::printf("  memory: %lld MB resident after the jumps (peak %lld MB)\n",
                memoriaKb("VmRSS:") / 1024, memoriaKb("VmHWM:") / 1024);

    // The day in the middle: half the rows are older.
    const QString medio =
        Conexion()
            .query(
                u"SELECT substr(Registro, 1, 10) FROM HEnvios ORDER BY Registro LIMIT 1 "
                u"OFFSET ?"_s,
                {kFilas / 2})
            .value(0, 0)
            .toString();
    const QDate dia = QDate::fromString(medio, u"yyyy-MM-dd"_s);
    BaseDatos& bd = Conexion();
    bd.begin();
    r.reiniciar();
    const int borrables =
        bd.exec(u"DELETE FROM HEnvios WHERE Registro < ?"_s, {dia.toString(u"yyyy-MM-dd"_s)});
    const Medida sqlBorrar = medir(r);
    bd.rollback();
    // What that statement put into the log is no one's to sync.
    bd.query(u"PRAGMA wal_checkpoint(TRUNCATE)"_s);
    pantalla->Option1_1->setChecked(true);
    pantalla->txtfecha->setDate(dia);
    banco.ui.answers = {Msg::Yes};
    // Deleted over several turns; what it leaves for the turns after (the
    // log's copy into the file) stalls the window too.
    const auto borrarEnPantalla = [&] {
        r.reiniciar();
        pantalla->XPButton1->click();
        while (pantalla->ocupada()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        const qint64 borrado = r.pared();
        for (QDeadlineTimer resto(50); !resto.hasExpired();)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, resto.remainingTime());
        Medida m = medir(r);
        m.pared = borrado;
        return m;
    };
    const Medida borrarYRecargar = borrarEnPantalla();
    const Medida sqlRecargar = sqlDesnudo(cuenta) + sqlDesnudo(primeraPagina);
    // The list part alone, again on the rows that are left.
    r.reiniciar();
    pantalla->msCargarHistorico();
    mostrada();
    const Medida recargar = medir(r);
    std::printf("delete older than %s: %d rows removed, %d left\n",
                qPrintable(dia.toString(u"dd/MM/yyyy"_s)), borrables,
                int(pantalla->ListView1->model()->rowCount()));
    cifra("delete older than + list back", borrarYRecargar, sqlBorrar, "(DELETE, rolled back)");
    cifra("  of which the list back", recargar, sqlRecargar, "(count + newest 1,000)");

    bd.exec(u"DELETE FROM HEnvios"_s);
    llenarHistorico();
    const int todas = int(bd.query(u"SELECT count(*) FROM HEnvios"_s).value(0, 0).toInt());
    pantalla->msCargarHistorico();
    mostrada();
    pantalla->Option1_0->setChecked(true);
    banco.ui.answers = {Msg::Yes};
    const Medida vaciar = borrarEnPantalla();
    std::printf("delete everything: %d rows, %d left\n", todas,
                int(pantalla->ListView1->model()->rowCount()));
    cifra("delete everything + list back", vaciar, {}, "");
    // The table is read into memory before it is emptied, and let go after.
    std::printf("  memory: %lld MB resident after emptying (peak %lld MB)\n",
                memoriaKb("VmRSS:") / 1024, memoriaKb("VmHWM:") / 1024);
    delete pantalla;

    // 2,000 multi-sends of every kind of schedule, ten recipients each.
    bd.begin();
    bd.exec(
        u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 2000) "
        u"INSERT INTO Automaticos (Codigo, Nombre, TareaProgramada, Hora, Periodicidad, "
        u"FechaIni, FechaFin, Cada, DiasSemana, MensualEsDia, MensualDiaMes, MensualNumSemana, "
        u"MensualDiaSemana, AnualDia, AnualMes, UltimaTarea) "
        u"SELECT i, 'Programado ' || i, i % 7 <> 0, '2006-01-02 09:00:00', i % 5, "
        u"'2023-01-01 00:00:00', '9999-12-31 00:00:00', 1 + i % 3, 1 + i % 127, i % 2, "
        u"1 + i % 28, 1 + i % 5, 1 + i % 7, 1 + i % 28, 1 + i % 12, "
        u"CASE WHEN i % 3 = 0 THEN NULL ELSE '2024-05-01 09:00:00' END FROM n"_s);
    bd.exec(
        u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 19999) "
        u"INSERT INTO AboAuto (Automatico, Abonado, Mensaje) "
        u"SELECT 1 + i / 10, '0034' || (600000000 + i), 'Aviso ' || i FROM n"_s);
    bd.commit();
    const Medida sqlEmergencias = sqlDesnudo(
        "SELECT *, (SELECT count(Automatico) FROM AboAuto WHERE Automatico = "
        "Automaticos.Codigo) FROM Automaticos ORDER BY Codigo");
    r.reiniciar();
    auto* emergencias = new frmEmergencias;
    emergencias->show();
    QCoreApplication::processEvents();
    cifra("frmEmergencias open (2,000 multi-sends)", medir(r), sqlEmergencias,
          "(rows with their counts)");
    std::printf("  %d lines\n", emergencias->ListView1->modelo()->rowCount());
    delete emergencias;
    return 0;
}
