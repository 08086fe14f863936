// A file dropped into the watched path goes out in the same transmitter
// run, through the platform simulator.
#include "AyudaImport.h"
#include "SimuladorPrueba.h"
#include "base/Ajustes.h"
#include "delivery/mdoSendRavion.h"
#include "import/mdoImport.h"

#include <QScopeGuard>
#include <algorithm>
#include <stdexcept>

using namespace Qt::StringLiterals;
using namespace import_prueba;

class TestCiclo : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

    InterfazGuionada ui;  // every question takes its default answer

  private Q_SLOTS:
    void loDejadoSaleEnElMismoCiclo() {
        world.reset();
        SimuladorPrueba sim(world.root(),
                            u"[cuenta1]\nusuario=demo\nclave=demo\nsaldo=1000\n"
                            u"movil=0034600123456\n"_s);
        TestDb::openShared(TestDb::createCurrent(world.root() + u"/ciclo.db"_s));
        prueba::cuentaPrincipal(sim.host(), u"demo"_s, {{u"Remitente"_s, u""_s}});
        const QString vigilado = world.root() + u"/pedidos.txt"_s;
        escribir(vigilado,
                 "600123456;Su pedido est\xc3\xa1 en camino\r\n"
                 "1;600123457;Recogida en L'Hospitalet\r\n");
        envejecer(vigilado);
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

    // A watched file that fails on its own would fail at every run: it is
    // set aside beside itself, said once, and what waited in the outbox
    // goes out in the same run.
    void unFicheroQueFallaSeApartaYLaBandejaSigue_data() {
        QTest::addColumn<QString>("fallo");  // "" the path is a folder; else what line 2 throws
        QTest::addColumn<QString>("linea");
        QTest::addColumn<QStringList>("enviados");
        QTest::newRow("failure that isn't the database's")
            << u"inesperado"_s
            << u"No se pudo importar el fichero {v} en la línea 2: error inesperado (roto) (la "
               u"línea 1 ya se procesó). Se ha apartado como {v}.no-importado-"_s
            << QStringList{u"0034600000001"_s, u"0034600123456"_s};
        QTest::newRow("out of memory")
            << u"memoria"_s
            << u"No se pudo importar el fichero {v} en la línea 2: no hay memoria suficiente"_s
            << QStringList{u"0034600000001"_s, u"0034600123456"_s};
        QTest::newRow("a folder at the path")
            << QString() << u"El fichero {v} no es un fichero normal sino una carpeta"_s
            << QStringList{u"0034600000001"_s};
    }
    void unFicheroQueFallaSeApartaYLaBandejaSigue() {
        QFETCH(QString, fallo);
        QFETCH(QString, linea);
        QFETCH(QStringList, enviados);
        world.reset();
        SimuladorPrueba sim(world.root(), u"[cuenta1]\nusuario=demo\nclave=demo\nsaldo=1000\n"_s);
        TestDb::openShared(TestDb::createCurrent(world.root() + u"/ciclo.db"_s));
        prueba::cuentaPrincipal(sim.host(), u"demo"_s, {{u"Remitente"_s, u""_s}});
        // What another program queued before the file came.
        prueba::pendiente(u"0034600000001"_s, u"antes"_s);
        const QString carpeta = world.root() + u"/vigilada"_s;
        QDir(carpeta).removeRecursively();
        QVERIFY(QDir().mkpath(carpeta));
        const QString vigilado = carpeta + u"/pedidos.txt"_s;
        const QByteArray contenido = "600123456;uno\n600123457;dos\n600123458;tres\n";
        if (fallo.isEmpty()) {
            QVERIFY(QDir().mkpath(vigilado));
        } else {
            escribir(vigilado, contenido);
            envejecer(vigilado);
        }
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        Ajustes::saveSetting(u"ImportA"_s, u"Path"_s, vigilado);
        // One line per stretch: line 1 is committed before line 2 fails.
        ImportPruebas::establecerLineasPorTramo(1);
        int lineas = 0;
        ImportPruebas::establecerPuntoDeFallo([&](const char* p) {
            if (QLatin1String(p) != QLatin1String("linea") || ++lineas != 2) return;
            if (fallo == u"memoria"_s) throw std::bad_alloc();
            throw std::runtime_error("roto");
        });
        const auto limpiar = qScopeGuard([] {
            ImportPruebas::establecerPuntoDeFallo({});
            ImportPruebas::establecerLineasPorTramo(0);
        });

        QCoro::waitFor(SendMessage());

        QVERIFY(msImportacionFallida());
        const QString esperada = QString(linea).replace(u"{v}"_s, vigilado);
        const QStringList log = registro();
        QVERIFY2(std::any_of(log.begin(), log.end(),
                             [&](const QString& l) { return l.startsWith(esperada); }),
                 qPrintable(log.join(u'\n')));
        QCOMPARE(filas(u"SELECT Abonado FROM HEnvios ORDER BY Abonado"_s), enviados);
        QCOMPARE(cuantos(u"SELECT count(*) FROM envios"_s), 0);
        if (!fallo.isEmpty()) {
            // Gone from the watched path, kept whole under a name no run reads.
            QVERIFY(!QFile::exists(vigilado));
            const QStringList apartados = QDir(carpeta).entryList({u"pedidos.txt.no-importado-*"_s},
                                                                  QDir::Files | QDir::Hidden);
            QCOMPARE(apartados.size(), 1);
            QCOMPARE(leer(carpeta + u'/' + apartados.first()), contenido);
            QCOMPARE(cuantos(u"SELECT count(*) FROM ImportReclamado"_s), 0);
        }
        // The next run neither reads it again nor fails for it again.
        ImportPruebas::establecerPuntoDeFallo({});
        QCoro::waitFor(SendMessage());
        QCOMPARE(msImportacionFallida(), fallo.isEmpty());
        QCOMPARE(filas(u"SELECT Abonado FROM HEnvios ORDER BY Abonado"_s), enviados);
    }
};

QUELMO_TEST_MAIN(TestCiclo)
#include "test_ciclo.moc"
