// The next runs kept in the database: the tick reads only the rows whose
// run may have come and still fires exactly what a walk over every row
// would, whatever the clock and the time zone do; the list shows what the
// calculation gives; saving and the upgrade keep them.
#include "TestSupport.h"
#include "base/Reloj.h"
#include "db/Conexion.h"
#include "db/ListaPaginada.h"
#include "db/mdoDB.h"
#include "scheduling/ProximasTareas.h"
#include "scheduling/clsNextTarea.h"
#include "scheduling/clsTareasPendientes.h"
#include "scheduling/mdoProgramacion.h"

#include <ctime>

using namespace Qt::StringLiterals;
using prueba::bd;
using prueba::en;
using prueba::programa;

namespace {

// Every kind, with the edge cases of the calculation: a day the month
// lacks, 00:00, an end that a daily schedule of every few days comes back
// from, runs inside the hour that daylight saving skips or repeats.
const QStringList kProgramas = {
    u"Periodicidad=0 FechaIni=2006-03-15 Hora=10:00"_s,
    u"Periodicidad=0 FechaIni=2006-03-26 Hora=02:30"_s,
    u"Periodicidad=0 FechaIni=2006-10-29 Hora=02:30"_s,
    u"Periodicidad=1 Cada=3"_s,
    u"Periodicidad=1 Hora=00:00"_s,
    u"Periodicidad=1 Cada=2 Hora=00:00"_s,
    u"Periodicidad=1 Hora=02:30"_s,
    u"Periodicidad=1 Cada=3 FechaFin=2006-03-18"_s,
    u"Periodicidad=1 FechaIni=2006-03-16 Hora=10:00"_s,
    u"Periodicidad=2 DiasSemana=17"_s,
    u"Periodicidad=2 DiasSemana=4 Hora=10:00"_s,
    u"Periodicidad=2 DiasSemana=1 FechaIni=2006-03-22"_s,
    u"Periodicidad=2 DiasSemana=127 Hora=02:30"_s,
    u"Periodicidad=2 DiasSemana=4 FechaFin=2006-03-20"_s,
    u"Periodicidad=3 MensualEsDia=1 MensualDiaMes=15 Hora=11:00"_s,
    u"Periodicidad=3 MensualEsDia=1 MensualDiaMes=31"_s,
    u"Periodicidad=3 MensualEsDia=1 MensualDiaMes=1 Hora=00:00"_s,
    u"Periodicidad=3 MensualNumSemana=2 MensualDiaSemana=2 Hora=00:00"_s,
    u"Periodicidad=3 MensualNumSemana=5 MensualDiaSemana=5 Hora=10:00"_s,
    u"Periodicidad=3 MensualNumSemana=3 MensualDiaSemana=3"_s,
    u"Periodicidad=4 AnualDia=15 AnualMes=3 Hora=10:00"_s,
    u"Periodicidad=4 AnualDia=29 AnualMes=2"_s,
    u"Periodicidad=4 AnualDia=1 AnualMes=3 FechaIni=2008-06-10"_s,
};

void ponerZona(const QByteArray& zona) {
    qputenv("TZ", zona);
    tzset();
}

// The wall-clock text, also of a time that daylight saving skips.
QString pared(const QDateTime& x) {
    return aTextoBD(QDateTime(x.date(), x.time(), Qt::UTC));
}

// What a walk over every row does at this instant: the rows it fires, with
// the run that stands as their last.
QMap<int, QString> debidas() {
    QMap<int, QString> r;
    for (const QString& c : prueba::columna(u"SELECT Codigo FROM Automaticos"_s)) {
        clsNextTarea t;
        t.setCodigo(c.toInt());
        try {
            t.CalcularProximaTarea();
        } catch (const ErrorQuelmo&) {
            continue;
        }
        const QString p = pared(t.FechaProximaTarea());
        if (t.HayTarea() && p > pared(t.UltimaTarea()) && pared(Reloj::now()) >= p)
            r.insert(c.toInt(), p);
    }
    return r;
}

QMap<int, QString> ultimas() {
    QMap<int, QString> r;
    for (const QString& f : prueba::filas(u"SELECT Codigo, UltimaTarea FROM Automaticos"_s))
        r.insert(f.section(u'|', 0, 0).toInt(), f.section(u'|', 1));
    return r;
}

// Each row's stored next run and its line in the list, against the
// calculation now.
void comprobarGuardadas(const QString& donde) {
    ListaPaginada lista(definicionMensajesProgramados());
    lista.cargar();
    const QStringList guardadas =
        prueba::columna(u"SELECT ProximaTarea FROM Automaticos ORDER BY Codigo"_s);
    for (int i = 0; i < lista.filas(); ++i) {
        clsNextTarea t;
        t.setCodigo(int32_t(lista.clave(i)));
        QString texto, guardada;
        try {
            t.CalcularProximaTarea();
            if (t.HayTarea()) {
                texto = clsNextTarea::textoFecha(t.FechaProximaTarea());
                guardada = pared(t.FechaProximaTarea());
            } else {
                texto = u"Finalizado"_s;
            }
        } catch (const ErrorQuelmo&) {
        }
        const QString fila = donde + u", row "_s + QString::number(lista.clave(i));
        QVERIFY2(lista.texto(i, 2) == texto,
                 qPrintable(fila + u": list "_s + lista.texto(i, 2) + u", expected "_s + texto));
        QVERIFY2(guardadas[i] == guardada,
                 qPrintable(fila + u": stored "_s + guardadas[i] + u", expected "_s + guardada));
    }
}

}  // namespace

class TestProximasTareas : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    qint64 mono = 0;

  private Q_SLOTS:
    void init() {
        world.baseNueva(u"proximas.db"_s);
        ProximasTareas::setMonotono([this] { return mono; });
    }
    void cleanup() {
        ProximasTareas::setMonotono({});
        qunsetenv("TZ");
        tzset();
    }

    // A script of ticks: "30x120" is 120 ticks 30 s apart, "@dd/MM/yyyy_HH:mm:ss"
    // sets the clock there, "TZ:zone" moves to another zone at the same
    // instant, "tanda:n" has the re-work after a jump go n rows a tick
    // (otherwise it ends within the tick); the monotonic clock goes
    // 30 s at every step. At every tick the rows fired, by the tick and
    // the re-work, are those a walk over all of them fires, and once the
    // re-work is over every stored next run, and every line of the list,
    // is what the calculation gives.
    void tickFiresExactlyTheDueRows_data() {
        QTest::addColumn<QString>("guion");
        QTest::newRow("a day and a half") << u"TZ:Europe/Madrid @15/03/2006_08:58:00 30x3100"_s;
        QTest::newRow("the clock forward and back")
            << u"TZ:Europe/Madrid @15/03/2006_09:58:00 30x8 @15/03/2006_12:00:00 30x4 "
               u"@15/03/2006_09:59:30 30x8 @14/03/2006_23:59:00 30x8 @16/03/2006_08:59:00 30x8 "
               u"@18/03/2006_08:58:30 30x10"_s;
        QTest::newRow("time zone changes")
            << u"TZ:Europe/Madrid @15/03/2006_09:58:00 30x6 TZ:Europe/London 30x130 "
               u"TZ:America/New_York 30x20 TZ:Asia/Tokyo 30x10 TZ:Europe/Madrid 30x10"_s;
        QTest::newRow("daylight saving, March")
            << u"TZ:Europe/Madrid @25/03/2006_23:58:00 30x400"_s;
        QTest::newRow("daylight saving, October")
            << u"TZ:Europe/Madrid @28/10/2006_23:58:00 30x560"_s;
        // Half the rows reached when the clock comes to their runs: those
        // reached fire from the tick, the others from the re-work.
        QTest::newRow("runs due in the middle of a re-work")
            << u"TZ:Europe/Madrid tanda:12 @15/03/2006_09:59:40 30x3 TZ:Europe/London "
               u"@15/03/2006_23:59:40 30x3 tanda:5 @18/03/2006_08:59:40 30x4"_s;
        QTest::newRow("month ends")
            << u"TZ:Europe/Madrid @31/01/2006_08:58:00 30x100 @31/01/2006_23:58:00 30x30 "
               u"@28/02/2006_23:58:00 30x30 @30/04/2006_23:58:00 30x30 @31/12/2006_23:58:00 "
               u"30x30"_s;
    }
    void tickFiresExactlyTheDueRows() {
        QFETCH(QString, guion);
        for (int i = 0; i < kProgramas.size(); ++i) {
            programa(i + 1, kProgramas[i]);
            prueba::contacto(u"60000%1"_s.arg(i), u"C%1"_s.arg(i), 1);
            bd().exec(u"INSERT INTO AboAuto (Automatico, Abonado, Mensaje) VALUES (?, ?, 'x')"_s,
                      {i + 1, u"60000%1"_s.arg(i)});
        }
        RelojFijo reloj(en(u"01/01/2006 00:00:00"_s));
        int disparos = 0;
        int tanda = 0;
        const auto tic = [&](const QString& paso) {
            mono += 30000;
            const QMap<int, QString> esperadas = debidas();
            const QMap<int, QString> antes = ultimas();
            int cuenta = prueba::esperar(clsTareasPendientes::ReLoad(tanda > 0 ? tanda : 100));
            if (tanda == 0)
                while (ProximasTareas::repasadoHasta())
                    cuenta += prueba::esperar(clsTareasPendientes::Repasar());
            QCOMPARE(cuenta, int(esperadas.size()));
            QMap<int, QString> disparadas;
            const QMap<int, QString> despues = ultimas();
            for (auto it = despues.cbegin(); it != despues.cend(); ++it)
                if (antes.value(it.key()) != it.value()) disparadas.insert(it.key(), it.value());
            const QString donde = paso + u" at "_s + pared(Reloj::now());
            QVERIFY2(disparadas == esperadas, qPrintable(donde));
            disparos += int(disparadas.size());
            if (!ProximasTareas::repasadoHasta()) comprobarGuardadas(donde);
        };
        for (const QString& paso : guion.split(u' ')) {
            if (paso.startsWith(u"tanda:"_s)) {
                tanda = paso.mid(6).toInt();
            } else if (paso.startsWith(u"TZ:"_s)) {
                // The instant is taken in the zone it was read in.
                const qint64 instante = reloj.now().addSecs(30).toMSecsSinceEpoch();
                ponerZona(paso.mid(3).toUtf8());
                reloj.set(QDateTime::fromMSecsSinceEpoch(instante));
                tic(paso);
            } else if (paso.startsWith(u'@')) {
                reloj.set(en(paso.mid(1).replace(u'_', u' ')));
                tic(paso);
            } else {
                const int veces = paso.section(u'x', 1).toInt();
                for (int i = 0; i < veces && !QTest::currentTestFailed(); ++i) {
                    reloj.advance(paso.section(u'x', 0, 0).toInt());
                    tic(paso);
                }
            }
            if (QTest::currentTestFailed()) return;
        }
        // The script reaches runs: a silent pass is no pass.
        QVERIFY(disparos > 0);
    }

    // Saving a schedule, changing it and switching it off each rewrite the
    // row's next run and when the tick looks at it again.
    void savingRewritesTheNextRun() {
        RelojFijo reloj(en(u"15/03/2006 10:00:30"_s));
        bd().exec(u"INSERT INTO Automaticos (Codigo, Nombre) VALUES (1, 'M')"_s);
        Programa p;
        p.periodicidad = 1;
        p.hora = QTime(11, 0);
        p.fechaIni = QDate(2006, 1, 1);
        p.fechaFin = fechaMaxima();
        const auto guardadas = [] {
            return prueba::filas(u"SELECT ProximaTarea, RevisarTarea FROM Automaticos"_s);
        };
        QVERIFY(guardarMensajeProgramado(1, u"M"_s, true, p));
        QCOMPARE(guardadas(), QStringList{u"2006-03-15 11:00:00|2006-03-15 11:00:00"_s});
        p.hora = QTime(9, 0);
        p.diariaCada = 3;
        QVERIFY(guardarMensajeProgramado(1, u"M"_s, true, p));
        // Every third day, but tomorrow's run comes up when the day changes.
        QCOMPARE(guardadas(), QStringList{u"2006-03-18 09:00:00|2006-03-16 00:01:00"_s});
        QVERIFY(guardarMensajeProgramado(1, u"M"_s, false, p));
        QCOMPARE(guardadas(), QStringList{u"|"_s});
    }

    // A file of the release before gains the two columns and their index;
    // its rows are worked out at the first look and the tick fires them.
    void upgradeFillsExistingRows() {
        const QString ruta = world.appDir() + u"/anterior.db"_s;
        TestDb::openShared(TestDb::createCurrent(ruta));
        bd().execScript(
            u"DROP INDEX Automaticos_RevisarTarea; DROP INDEX Automaticos_Programado; "
            u"DROP TRIGGER Automaticos_UltimaCambiada; DROP TRIGGER "
            u"temp.AutomaticosClaveUltimaVaciada; DROP TRIGGER temp.AutomaticosClavesNuevas; "
            u"ALTER TABLE Automaticos DROP COLUMN "
            u"ProximaTarea; ALTER TABLE Automaticos DROP COLUMN RevisarTarea;"_s);
        programa(1, u"Periodicidad=2 DiasSemana=4 Hora=10:00"_s);
        programa(2, u"Periodicidad=1 FechaFin=2006-03-10"_s);
        prueba::contacto(u"600"_s, u"A"_s, 1);
        bd().exec(u"INSERT INTO AboAuto (Automatico, Abonado, Mensaje) VALUES (1, '600', 'x')"_s);
        bd().close();
        QVERIFY(!msValidarBD(ruta));
        msActualizarBD(ruta);
        QVERIFY(msValidarBD(ruta));
        TestDb::openShared(ruta);
        QCOMPARE(prueba::columna(u"SELECT name FROM sqlite_master WHERE type = 'index' AND "
                                 u"tbl_name = 'Automaticos' AND sql LIKE '%Tarea%' ORDER BY 1"_s),
                 (QStringList{u"Automaticos_Programado"_s, u"Automaticos_RevisarTarea"_s}));
        RelojFijo reloj(en(u"15/03/2006 10:00:20"_s));
        QCOMPARE(prueba::esperar(clsTareasPendientes::ReLoad()), 1);
        QCOMPARE(prueba::filas(u"SELECT ProximaTarea, UltimaTarea FROM Automaticos"_s),
                 (QStringList{u"2006-03-15 10:00:00|2006-03-15 10:00:00"_s, u"|"_s}));
    }
};

QUELMO_TEST_MAIN(TestProximasTareas)
#include "test_ProximasTareas.moc"
