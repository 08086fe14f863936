// A file dropped into the watched path goes out in the same transmitter
// run, through the platform simulator.
#include "AyudaImport.h"
#include "SimuladorPrueba.h"
#include "base/Ajustes.h"
#include "base/Cifrado.h"
#include "delivery/mdoSendRavion.h"

#include <utime.h>

using namespace Qt::StringLiterals;
using namespace import_prueba;

class TestCiclo : public QObject {
    Q_OBJECT
  public:
    explicit TestCiclo(TestWorld& w) : world(w) {}

  private:
    TestWorld& world;

  private Q_SLOTS:
    void loDejadoSaleEnElMismoCiclo() {
        world.reset();
        InterfazGuionada ui;
        SimuladorPrueba sim(world.root(),
                            u"[cuenta1]\nusuario=demo\nclave=demo\nsaldo=1000\n"
                            u"movil=0034600123456\n"_s);
        QVERIFY(sim.listo());
        TestDb::openShared(TestDb::createCurrent(world.root() + u"/ciclo.db"_s));
        bd().exec(
            u"INSERT INTO Canales (Canal,Nombre,Host,usuario,clave,Saldo,Principal,Remitente,"
            u"remopc,imptextos) VALUES (1,'Tienda',?,'demo',?,0,1,'',0,0)"_s,
            {sim.host(), msCifrarClave(u"demo"_s, true)});
        const QString vigilado = world.root() + u"/pedidos.txt"_s;
        escribir(vigilado,
                 "600123456;Su pedido est\xc3\xa1 en camino\r\n"
                 "1;600123457;Recogida en L'Hospitalet\r\n");
        struct utimbuf t {};
        t.actime = t.modtime = ::time(nullptr) - 60;
        ::utime(QFile::encodeName(vigilado).constData(), &t);
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        Ajustes::saveSetting(u"ImportA"_s, u"Path"_s, vigilado);

        QCoro::waitFor(SendMessage());

        QVERIFY(!QFile::exists(vigilado));
        QCOMPARE(cuantos(u"SELECT count(*) FROM envios"_s), 0);
        QCOMPARE(filas(u"SELECT Abonado,Mensaje FROM HEnvios ORDER BY Abonado"_s),
                 (QStringList{u"0034600123456|Su pedido está en camino"_s,
                              u"0034600123457|Recogida en L'Hospitalet"_s}));
        QCOMPARE(sim.registro().size(), 2);
    }
};

QUELMO_TEST_MAIN(TestCiclo)
#include "test_ciclo.moc"
