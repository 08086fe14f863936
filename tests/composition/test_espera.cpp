// The window while the platform takes its time: the event loop goes on
// turning, a screen closed while its balance query waits drops the late
// answer (no box, nothing stored), and no modal window holds a batch's
// results or the next run.
#include "PlataformaLenta.h"
#include "TestSupportGui.h"
#include "composition/frmEnvio.h"
#include "delivery/Intercambio.h"
#include "delivery/mdoSendRavion.h"
#include "widgets/PantallasHijas.h"

#include "app/Transmisor.h"
#include "base/Ajustes.h"

#include <QDialog>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QMdiArea>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

using namespace Qt::StringLiterals;
using prueba::cuantos;
using prueba::hijo;

class TestEspera : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private Q_SLOTS:
    void init() { world.baseNueva(u"espera.db"_s); }

    void theWindowTurnsWhileThePlatformThinks() {
        InterfazGuionada ui;
        auto sim = plataformaLenta(world, 1500, 5);
        int vueltas = 0;
        QTimer sonda;
        sonda.setInterval(20);
        QObject::connect(&sonda, &QTimer::timeout, [&] { ++vueltas; });
        sonda.start();
        QCOMPARE(prueba::saldo(QCoro::waitFor(SendAutCuenta(1))), u"100"_s);
        // Some 75 turns in 1.5 s; a window that waited would see none.
        QVERIFY2(vueltas > 20, qPrintable(QString::number(vueltas)));
        QCOMPARE(cuantos(u"SELECT Saldo FROM Canales WHERE Canal=1"_s), 100LL);
    }

    void closingTheScreenDropsTheLateAnswer() {
        InterfazGuionada ui;
        auto sim = plataformaLenta(world, 5000, 5);
        QMdiArea area;
        area.resize(1000, 700);
        area.show();
        PantallasHijas::setArea(&area);
        auto* pantalla = PantallasHijas::instance<frmEnvio>();
        PantallasHijas::show(pantalla);
        const QPointer<frmEnvio> viva(pantalla);
        QTest::mouseClick(hijo<QPushButton>(pantalla, u"cmdSaldo"_s), Qt::LeftButton);
        // The press returns at once; the query waits on its own.
        QCOMPARE(Intercambio::enCurso(), 1);
        cerrarPantallaHija(pantalla);
        QTRY_VERIFY(viva.isNull());
        QTRY_COMPARE_WITH_TIMEOUT(Intercambio::enCurso(), 0, 2000);
        QTest::qWait(100);
        QVERIFY(ui.boxes.isEmpty());
        QCOMPARE(cuantos(u"SELECT Saldo FROM Canales WHERE Canal=1"_s), 5LL);
        PantallasHijas::setArea(nullptr);
    }

    // Whatever modal window the user opens while a batch waits for the
    // platform, the accepted rows move to the history as the reply comes,
    // and the next run starts at its time, all under the open window.
    void aModalWindowHoldsNothing_data() {
        QTest::addColumn<int>("ventana");
        QTest::newRow("modal screen") << 0;
        QTest::newRow("message box") << 1;
        QTest::newRow("file dialog") << 2;
    }
    void aModalWindowHoldsNothing() {
        QFETCH(int, ventana);
        constexpr int kRetraso = 1500;
        InterfazGuionada ui;
        auto sim = plataformaLenta(world, kRetraso, 5);
        for (int i = 0; i < 3; ++i) prueba::pendiente(u"0034600000001"_s, u"m%1"_s.arg(i));
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        Transmisor t;
        t.armarTemporizador();
        t.Timer1().setInterval(500);
        QSignalSpy ticks(&t, &Transmisor::tickTerminado);

        std::unique_ptr<QDialog> modal;
        if (ventana == 0)
            modal = std::make_unique<QDialog>();
        else if (ventana == 1)
            modal = std::make_unique<QMessageBox>(QMessageBox::Information, u"Aviso"_s, u"x"_s);
        else {
            auto d = std::make_unique<QFileDialog>(nullptr, u"Abrir"_s, world.root());
            d->setOption(QFileDialog::DontUseNativeDialog);
            modal = std::move(d);
        }
        QElapsedTimer reloj;
        qint64 aceptado = -1, enHistorial = -1;
        QTimer sonda;
        sonda.setInterval(2);
        QObject::connect(&sonda, &QTimer::timeout, [&] {
            if (aceptado < 0 && sim->registro().size() == 3) aceptado = reloj.elapsed();
            if (enHistorial < 0 && cuantos(u"SELECT count(*) FROM HEnvios"_s) == 3)
                enHistorial = reloj.elapsed();
            // Open until both rows and a later run have come, or 15 s.
            if ((enHistorial >= 0 && ticks.count() >= 2) || reloj.elapsed() > 15000) modal->done(0);
        });
        bool abierta = false;
        QTimer::singleShot(50, [&] {
            abierta = true;
            modal->exec();
            abierta = false;
        });
        reloj.start();
        sonda.start();
        t.msForzarEnvio();
        QTRY_VERIFY_WITH_TIMEOUT(!abierta && reloj.elapsed() > 100, 20000);
        t.detener();
        QVERIFY2(enHistorial >= 0, "the history stayed empty while the window was open");
        QVERIFY(ticks.count() >= 2);
        QCOMPARE(cuantos(u"SELECT count(*) FROM envios"_s), 0LL);
        // The simulator records the items, then answers after its delay.
        const qint64 tras = enHistorial - (aceptado + kRetraso);
        qInfo("del aceptado al historial: %lld ms", tras);
        QVERIFY2(tras < 100, qPrintable(QString::number(tras)));
    }
};

QUELMO_GUI_TEST_MAIN(TestEspera)
#include "test_espera.moc"
