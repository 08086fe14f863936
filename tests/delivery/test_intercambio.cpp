// A batch while the platform takes its time: the write lock is not held
// across the exchange, so the user's edits of the outbox and other
// programs go on; a stop gives the exchange up, and the rows go again under
// the same references without reaching anybody twice.
#include "PlataformaLenta.h"
#include "TestSupport.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"
#include "delivery/Intercambio.h"
#include "delivery/mdoSendRavion.h"

#include <sqlite3.h>
#include <QElapsedTimer>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace prueba;

class TestIntercambio : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

    InterfazGuionada ui;  // every question takes its default answer

  private Q_SLOTS:
    void init() {
        world.baseNueva(u"intercambio.db"_s);
        estadoAplicacion().log.clear();
    }

    // While the platform thinks, the user deletes a row of the batch and
    // adds another, and a script writes through its own connection: what
    // the platform took goes to the history, the new rows wait.
    void theOutboxStaysOpenDuringTheExchange() {
        auto sim = plataformaLenta(world, 1500);
        pendiente(u"600000001"_s);
        pendiente(u"600000002"_s);
        pendiente(u"600000003"_s);
        bool otroEscribio = false;
        QTimer::singleShot(600, [&] {
            Conexion().exec(u"DELETE FROM envios WHERE Abonado='600000002'"_s);
            pendiente(u"600000004"_s);
            sqlite3* otro = nullptr;
            sqlite3_open(Conexion().path().toUtf8().constData(), &otro);
            sqlite3_busy_timeout(otro, 200);
            otroEscribio = sqlite3_exec(otro,
                                        "INSERT INTO envios (Canal,Abonado,Mensaje,intento) VALUES "
                                        "(1,'600000005','x',2)",
                                        nullptr, nullptr, nullptr) == SQLITE_OK;
            sqlite3_close(otro);
        });
        QCOMPARE(QCoro::waitFor(msEnviarLote(1, false)), 3);
        QVERIFY(otroEscribio);
        QCOMPARE(columna(u"SELECT Abonado FROM HEnvios ORDER BY Abonado"_s),
                 (QStringList{u"0034600000001"_s, u"0034600000002"_s, u"0034600000003"_s}));
        QCOMPARE(columna(u"SELECT Abonado FROM envios ORDER BY Abonado"_s),
                 (QStringList{u"600000004"_s, u"600000005"_s}));
        QCOMPARE(sim->registro().size(), 3);
    }

    // Switched off or stopped in the middle of an exchange: the batch is
    // given up at once, its rows wait, and the next run's resend under the
    // same references reaches nobody twice.
    void aStopGivesTheExchangeUp() {
        auto sim = plataformaLenta(world, 2500);
        pendiente(u"600000001"_s);
        pendiente(u"600000002"_s);
        QElapsedTimer reloj;
        QTimer::singleShot(400, [&] {
            reloj.start();
            Intercambio::abandonar(Intercambio::Clase::Envio);
        });
        QCOMPARE(QCoro::waitFor(msEnviarLote(1, false)), 0);
        // Given up, not waited for: the platform would answer 2.1 s later.
        QVERIFY2(reloj.elapsed() < 2000, qPrintable(QString::number(reloj.elapsed())));
        QVERIFY(estadoAplicacion().log.last().contains(u"Envío interrumpido"_s));
        QCOMPARE(cuantos(u"SELECT count(*) FROM envios"_s), 2LL);
        QCOMPARE(cuantos(u"SELECT count(*) FROM HEnvios"_s), 0LL);
        QCOMPARE(Intercambio::enCurso(), 0);

        QCOMPARE(QCoro::waitFor(msEnviarLote(1, false)), 2);
        QCOMPARE(cuantos(u"SELECT count(*) FROM envios"_s), 0LL);
        QCOMPARE(cuantos(u"SELECT count(*) FROM HEnvios"_s), 2LL);
        QCOMPARE(sim->registro().size(), 2);
    }

    // Another database opened while a run waits (the pacing, or the
    // platform's answer): nothing of the run is written into it; the rows
    // wait in their own file and their resend reaches nobody twice.
    void anotherDatabaseOpenedDuringTheRun_data() {
        QTest::addColumn<bool>("enLaRespuesta");
        QTest::newRow("during the pacing") << false;
        QTest::newRow("while the platform answers") << true;
    }
    void anotherDatabaseOpenedDuringTheRun() {
        QFETCH(bool, enLaRespuesta);
        auto sim = plataformaLenta(world, 1500);
        pendiente(u"600000001"_s);
        const QString primera = Conexion().path();
        const QString segunda = TestDb::createCurrent(world.root() + u"/segunda.db"_s);
        QTimer vigia;
        vigia.setInterval(enLaRespuesta ? 20 : 0);
        QObject::connect(&vigia, &QTimer::timeout, [&] {
            if (enLaRespuesta && sim->registro().isEmpty()) return;
            vigia.stop();
            QVERIFY(msAbrirBD(segunda));
        });
        vigia.start();
        QCOMPARE(QCoro::waitFor(msEnviarLote(1, false)), 0);
        QVERIFY(!vigia.isActive());
        QCOMPARE(cuantos(u"SELECT count(*) FROM HEnvios"_s), 0LL);
        QCOMPARE(sim->registro().size(), enLaRespuesta ? 1 : 0);
        QVERIFY(msAbrirBD(primera));
        QCOMPARE(cuantos(u"SELECT count(*) FROM envios"_s), 1LL);
        QCOMPARE(QCoro::waitFor(msEnviarLote(1, false)), 1);
        QCOMPARE(cuantos(u"SELECT count(*) FROM HEnvios"_s), 1LL);
        QCOMPARE(sim->registro().size(), 1);
    }
};

QUELMO_TEST_MAIN(TestIntercambio)
#include "test_intercambio.moc"
