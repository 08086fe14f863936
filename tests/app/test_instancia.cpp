// One program per user: a second start of the window brings the running
// window forward, also from the tray, and leaves everything else as it was.
#include "TestSupportGui.h"
#include "app/Instancia.h"
#include "app/mdiMain.h"

#include <QLocalSocket>
#include <QProcess>
#include <QSystemTrayIcon>

using namespace Qt::StringLiterals;

class TestInstancia : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private Q_SLOTS:
    void init() {
        world.reset();
        TestDb::createCurrent(rutaBaseDefecto());
    }

    void aSecondStartRaisesTheRunningWindow_data() {
        QTest::addColumn<bool>("oculta");
        QTest::newRow("hidden in the tray") << true;
        QTest::newRow("minimised") << false;
    }
    void aSecondStartRaisesTheRunningWindow() {
        QFETCH(bool, oculta);
        InterfazGuionada ui;
        Instancia instancia(Instancia::Papel::Ventana);
        QCOMPARE(instancia.adquirir(), Instancia::Toma::Tomada);
        const auto ventana = prueba::ventanaPrincipal();
        connect(&instancia, &Instancia::ventanaPedida, ventana.get(), &mdiMain::mnurestaurar_Click);
        ventana->hayBandeja = [oculta] { return oculta; };
        prueba::hijo<QAction>(ventana.get(), u"OCULTAR"_s)->trigger();
        QVERIFY(oculta ? !ventana->isVisible() : ventana->isMinimized());
        const QStringList ficheros = QDir(world.appDir()).entryList(QDir::Files);

        // The real program, started again by the same user.
        QProcess segunda;
        startProgram(world, segunda, {});
        QVERIFY(segunda.waitForStarted());
        // The event loop answers it while the test waits.
        QTRY_COMPARE_WITH_TIMEOUT(segunda.state(), QProcess::NotRunning, 20000);
        QCOMPARE(segunda.exitStatus(), QProcess::NormalExit);
        QCOMPARE(segunda.exitCode(), 0);
        QVERIFY(ventana->isVisible());
        QVERIFY(!ventana->isMinimized());
        QVERIFY(!ventana->icono()->isVisible());
        // Nothing else: no file of the user's folder made or removed, no
        // box, the transmitter still armed.
        QCOMPARE(QDir(world.appDir()).entryList(QDir::Files), ficheros);
        QVERIFY(ui.boxes.isEmpty());
        QVERIFY(ventana->transmisor().Timer1().isActive());
    }

    void theLockAndTheSocketOutliveAKilledProgram() {
        // What a program killed with -9 leaves: a socket file nobody serves.
        QDir().mkpath(world.appDir());
        prueba::escribir(Instancia::nombreServidor(), {});
        {
            Instancia primera(Instancia::Papel::SinVentana);
            QCOMPARE(primera.adquirir(), Instancia::Toma::Tomada);
            Instancia otra(Instancia::Papel::Ventana);
            QCOMPARE(otra.adquirir(), Instancia::Toma::OtraEnMarcha);
            QLocalSocket s;
            s.connectToServer(Instancia::nombreServidor());
            QVERIFY(s.waitForConnected(1000));
        }
        // Ended: the next start takes the lock and listens anew.
        QVERIFY(!QFile::exists(Instancia::nombreServidor()));
        Instancia siguiente(Instancia::Papel::Ventana);
        QCOMPARE(siguiente.adquirir(), Instancia::Toma::Tomada);
    }
};

QUELMO_GUI_TEST_MAIN(TestInstancia)
#include "test_instancia.moc"
