// The compose screen while the platform takes its time: the window goes on
// turning, and a screen closed while its balance query waits drops the late
// answer (no box, nothing stored) and is deleted once its action returns.
#include "PlataformaLenta.h"
#include "TestSupportGui.h"
#include "composition/frmEnvio.h"
#include "delivery/Intercambio.h"
#include "delivery/mdoSendRavion.h"
#include "widgets/PantallasHijas.h"

#include <QMdiArea>
#include <QPushButton>
#include <QTimer>

using namespace Qt::StringLiterals;
using prueba::cuantos;
using prueba::hijo;

class TestEspera : public QObject {
    Q_OBJECT
  public:
    explicit TestEspera(TestWorld& w) : world(w) {}

  private:
    TestWorld& world;

    std::unique_ptr<SimuladorPrueba> simulador(int retrasoMs) {
        return plataformaLenta(world, retrasoMs, 5);
    }

  private Q_SLOTS:
    void init() {
        world.reset();
        TestDb::openShared(TestDb::createCurrent(world.root() + u"/espera.db"_s));
    }

    void theWindowTurnsWhileThePlatformThinks() {
        InterfazGuionada ui;
        auto sim = simulador(1500);
        int vueltas = 0;
        QTimer sonda;
        sonda.setInterval(20);
        QObject::connect(&sonda, &QTimer::timeout, [&] { ++vueltas; });
        sonda.start();
        QCOMPARE(SendAutCuenta(1), u"100"_s);
        // Some 75 turns in 1.5 s; a window that waited would see none.
        QVERIFY2(vueltas > 20, qPrintable(QString::number(vueltas)));
        QCOMPARE(cuantos(u"SELECT Saldo FROM Canales WHERE Canal=1"_s), 100LL);
    }

    void closingTheScreenDropsTheLateAnswer() {
        InterfazGuionada ui;
        auto sim = simulador(5000);
        QMdiArea area;
        area.resize(1000, 700);
        area.show();
        PantallasHijas::setArea(&area);
        auto* pantalla = PantallasHijas::instance<frmEnvio>();
        PantallasHijas::show(pantalla);
        const QPointer<frmEnvio> viva(pantalla);
        bool cerrada = false;
        QTimer::singleShot(500, [&] {
            QCOMPARE(Intercambio::enCurso(), 1);
            cerrarPantallaHija(pantalla);
            cerrada = true;
        });
        QTest::mouseClick(hijo<QPushButton>(pantalla, u"cmdSaldo"_s), Qt::LeftButton);
        QVERIFY(cerrada);
        // The screen lived through its action, and goes once it returned.
        QVERIFY(viva);
        QTRY_VERIFY(viva.isNull());
        QCOMPARE(Intercambio::enCurso(), 0);
        QVERIFY(ui.boxes.isEmpty());
        QCOMPARE(cuantos(u"SELECT Saldo FROM Canales WHERE Canal=1"_s), 5LL);
        PantallasHijas::setArea(nullptr);
    }
};

QUELMO_GUI_TEST_MAIN(TestEspera)
#include "test_espera.moc"
