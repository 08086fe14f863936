// The driver: the ways in, the working copy, and the watched file taken
// exactly once, also when the import stops dead at any point.
#include "AyudaImport.h"
#include "base/Ajustes.h"
#include "db/EscrituraPorTurnos.h"
#include "import/mdoImport.h"

#include <sys/stat.h>
#include <QElapsedTimer>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace import_prueba;

namespace {
// What a kill leaves behind is simulated by leaving the import through this.
struct Muerte {};

QByteArray lineasNumeradas(int n) {
    QByteArray b;
    for (int i = 1; i <= n; ++i) {
        // Mixed: every tenth line has a bad account, every seventh an apostrophe.
        if (i % 10 == 0)
            b += "9;600000001;malo " + QByteArray::number(i) + "\r\n";
        else
            b += "7;600000001;L'" + QByteArray::number(i) + "\r\n";
        if (i % 13 == 0) b += "\r\n";
    }
    return b;
}
}  // namespace

class TestDriver : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    std::optional<InterfazGuionada> ui;  // scripted answers, new for each test
    QString base;

    QString carpeta() const { return world.root() + u"/buzon"_s; }
    QString vigilado() const { return carpeta() + u"/envios.txt"_s; }
    QStringList restos() const {
        return QDir(carpeta()).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    void vigilar() { prueba::esperar(msImportarFichero(vigilado(), false, true, u"-1"_s, false)); }
    // Each line's text with the number of rows it has.
    QMap<QString, int> recuento() {
        QMap<QString, int> r;
        for (const QString& t : filas(u"SELECT Mensaje FROM envios"_s)) ++r[t];
        return r;
    }
    void exactamenteUnaVez(int n) {
        const QMap<QString, int> r = recuento();
        int buenas = 0;
        for (int i = 1; i <= n; ++i) {
            if (i % 10 == 0) continue;
            ++buenas;
            QCOMPARE(r.value(u"L'"_s + QString::number(i)), 1);
        }
        QCOMPARE(cuantos(u"SELECT count(*) FROM envios WHERE Mensaje LIKE 'L''%'"_s), buenas);
    }
    // What a restart finds: the connection of a dead process is gone.
    void reabrir() {
        ImportPruebas::establecerPuntoDeFallo({});
        Conexion().close();
        TestDb::openShared(base);
    }

  private Q_SLOTS:
    void init() {
        base = baseConCuentas(world);
        ui.emplace();
        QDir(carpeta()).removeRecursively();
        QDir().mkpath(carpeta());
        ImportPruebas::establecerPuntoDeFallo({});
        ImportPruebas::establecerLineasPorTramo(0);
    }
    void cleanup() {
        ImportPruebas::establecerPuntoDeFallo({});
        ImportPruebas::establecerLineasPorTramo(0);
    }

    void caminosManuales_data() {
        QTest::addColumn<QString>("seccion");
        QTest::addColumn<QString>("ruta");  // "{f}" stands for an existing file
        QTest::addColumn<bool>("ejecutado");
        QTest::addColumn<QStringList>("registro");

        QTest::newRow("tres caracteres: nada") << u"Import"_s << u"abc"_s << false << QStringList();
        QTest::newRow("vacía: nada") << u"ImportUser"_s << QString() << false << QStringList();
        QTest::newRow("cuatro caracteres: se intenta")
            << u"Import"_s << u"abcd"_s << true
            << QStringList{u"Preparando importacion de Mensajes"_s,
                           u"No existen Mensajes en el fichero abcd"_s};
        QTest::newRow("contactos que no están")
            << u"ImportUser"_s << u"abcd"_s << true
            << QStringList{u"Preparando importacion de Usuarios"_s,
                           u"No existen Contactos en el fichero abcd"_s};
        QTest::newRow("mensajes") << u"Import"_s << u"{f}"_s << true
                                  << QStringList{u"Preparando importacion de Mensajes"_s,
                                                 u"Importando Mensajes del fichero {f}"_s,
                                                 u"Mensaje Importado para el Destino : "
                                                 u"0034600123456, Texto: Hola"_s,
                                                 u"Importados 1 Mensajes de 1"_s};
        QTest::newRow("contactos")
            << u"ImportUser"_s << u"{f}"_s << true
            << QStringList{u"Preparando importacion de Usuarios"_s,
                           u"Importando Contactos del fichero {f}"_s,
                           u"Contacto: Hola Importado, Número: 0034600123456"_s,
                           u"Importados 1 Contactos de 1"_s};
    }
    void caminosManuales() {
        QFETCH(QString, seccion);
        QFETCH(QString, ruta);
        QFETCH(bool, ejecutado);
        QFETCH(QStringList, registro);
        const QString f = world.root() + u"/manual.txt"_s;
        escribir(f, "7;600123456;Hola\r\n");
        ruta.replace(u"{f}"_s, f);
        registro.replaceInStrings(u"{f}"_s, f);
        Ajustes::saveSetting(seccion, u"Path"_s, ruta);
        Ajustes::saveSetting(u"ImportUser"_s, u"Lista"_s, u"-1"_s);
        estadoAplicacion().gbImportado = false;
        const bool hecho = seccion == u"Import"_s ? prueba::esperar(msImportarManual())
                                                  : prueba::esperar(msImportarContactos());
        QCOMPARE(hecho, ejecutado);
        QCOMPARE(import_prueba::registro(), registro);
        if (seccion == u"Import"_s) QCOMPARE(estadoAplicacion().gbImportado, ejecutado);
        // The user's file stays; no working copy is left behind.
        QCOMPARE(leer(f), QByteArray("7;600123456;Hola\r\n"));
        QCOMPARE(QDir(world.appDir()).entryList({u"Import_*"_s}, QDir::Files), QStringList());
    }

    void listaDeLaImportacionManual_data() {
        QTest::addColumn<QString>("guardada");
        QTest::addColumn<QString>("add");
        QTest::addColumn<QStringList>("grupos");
        QTest::addColumn<int>("miembros");
        // A name doesn't survive the trip through a number: default name.
        QTest::newRow("nombre") << u"Clientes"_s << u"1"_s
                                << QStringList{u"0|Lista de Contactos Importada Nº 0"_s} << 1;
        QTest::newRow("código sin añadir") << u"7"_s << u"false"_s << QStringList() << 0;
        QTest::newRow("sin lista") << u"-1"_s << u"true"_s << QStringList() << 0;
    }
    void listaDeLaImportacionManual() {
        QFETCH(QString, guardada);
        QFETCH(QString, add);
        const QString f = world.root() + u"/manual.txt"_s;
        escribir(f, "7;600123456;Hola\n");
        Ajustes::saveSetting(u"Import"_s, u"Path"_s, f);
        Ajustes::saveSetting(u"Import"_s, u"Lista"_s, guardada);
        Ajustes::saveSetting(u"Import"_s, u"AddContactos"_s, add);
        QVERIFY(prueba::esperar(msImportarManual()));
        QTEST(filas(u"SELECT Grupo,Nombre FROM Grupos"_s), "grupos");
        QTEST(int(cuantos(u"SELECT count(*) FROM AboGrup"_s)), "miembros");
    }

    void contadoresSinTope() {
        // The old 16-bit counters stopped at 32767.
        const int n = 33000;
        QByteArray b;
        b.reserve(n * 24);
        for (int i = 0; i < n; ++i) b += "7;600123456;" + QByteArray::number(i) + "\n";
        escribir(vigilado(), b);
        envejecer(vigilado());
        vigilar();
        QCOMPARE(import_prueba::registro().last(), u"Importados 33000 Mensajes de 33000"_s);
        QCOMPARE(cuantos(u"SELECT count(*) FROM envios"_s), n);
    }

    void ficheroVigilado_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("situacion");  // "viejo", "LOCK", "reciente", "falta"
        QTest::addColumn<bool>("tomado");
        QTest::addColumn<QString>("cierre");

        QTest::newRow("líneas") << QByteArray("7;600123456;a\n9;1;b\n") << u"viejo"_s << true
                                << u"Importados 1 Mensajes de 2"_s;
        QTest::newRow("solo malas: se va igual")
            << QByteArray("x;1;2\n") << u"viejo"_s << true << u"Importados 0 Mensajes de 1"_s;
        QTest::newRow("solo líneas vacías: se queda")
            << QByteArray("\r\n\r\n") << u"viejo"_s << false << u"Importados 0 Mensajes de 0"_s;
        QTest::newRow("con su .LOCK: al próximo ciclo")
            << QByteArray("7;600123456;a\n") << u"LOCK"_s << false
            << u"El fichero {f} se está escribiendo; se importará en el próximo ciclo"_s;
        QTest::newRow("modificado hace un momento: al próximo ciclo")
            << QByteArray("7;600123456;a\n") << u"reciente"_s << false
            << u"El fichero {f} se está escribiendo; se importará en el próximo ciclo"_s;
        QTest::newRow("no está") << QByteArray() << u"falta"_s << true
                                 << u"No existen Mensajes en el fichero {f}"_s;
    }
    void ficheroVigilado() {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, situacion);
        QFETCH(bool, tomado);
        QFETCH(QString, cierre);
        if (situacion != u"falta"_s) escribir(vigilado(), bytes);
        if (situacion != u"reciente"_s) envejecer(vigilado());
        if (situacion == u"LOCK"_s) escribir(vigilado() + u".LOCK"_s, QByteArray());
        vigilar();
        QCOMPARE(import_prueba::registro().first(), u"Preparando importacion de Mensajes"_s);
        QCOMPARE(import_prueba::registro().last(), cierre.replace(u"{f}"_s, vigilado()));
        QCOMPARE(QFile::exists(vigilado()), !tomado);
        if (!tomado) QCOMPARE(leer(vigilado()), bytes);
        QStringList esperados = tomado ? QStringList() : QStringList{u"envios.txt"_s};
        if (situacion == u"LOCK"_s) esperados.append(u"envios.txt.LOCK"_s);
        QCOMPARE(restos(), esperados);
        QCOMPARE(cuantos(u"SELECT count(*) FROM ImportReclamado"_s), 0);
    }

    void muerteEnCualquierPunto_data() {
        QTest::addColumn<QString>("punto");
        QTest::addColumn<int>("vez");
        QTest::newRow("reclamo guardado, sin renombrar") << u"reclamar"_s << 1;
        QTest::newRow("renombrado, nada importado") << u"reclamado"_s << 1;
        QTest::newRow("en mitad del primer tramo") << u"linea"_s << 40;
        QTest::newRow("en mitad de un tramo posterior") << u"linea"_s << 777;
        QTest::newRow("tras un tramo") << u"tramo"_s << 3;
        QTest::newRow("tras el último commit") << u"terminado"_s << 1;
        QTest::newRow("borrado, reclamo sin olvidar") << u"borrado"_s << 1;
    }
    void muerteEnCualquierPunto() {
        QFETCH(QString, punto);
        QFETCH(int, vez);
        const int n = 1000;
        escribir(vigilado(), lineasNumeradas(n));
        envejecer(vigilado());
        ImportPruebas::establecerLineasPorTramo(100);
        int visto = 0;
        ImportPruebas::establecerPuntoDeFallo([&](const char* p) {
            if (punto == QLatin1String(p) && ++visto == vez) throw Muerte{};
        });
        QVERIFY_THROWS_EXCEPTION(Muerte, vigilar());
        reabrir();
        // The next cycle finds the claim and finishes it; a new file at the
        // path is taken after it.
        vigilar();
        exactamenteUnaVez(n);
        QCOMPARE(restos(), QStringList());
        QCOMPARE(cuantos(u"SELECT count(*) FROM ImportReclamado"_s), 0);
        vigilar();
        exactamenteUnaVez(n);
    }

    // The window turns between two stretches of an import; a long write of
    // ours that holds the connection meanwhile is waited for, and every
    // line still goes in once.
    void laVentanaGiraEntreTramos_data() {
        QTest::addColumn<bool>("retenida");
        QTest::newRow("sola") << false;
        QTest::newRow("con una escritura larga en curso") << true;
    }
    void laVentanaGiraEntreTramos() {
        QFETCH(bool, retenida);
        const int n = 1000;
        escribir(vigilado(), lineasNumeradas(n));
        envejecer(vigilado());
        ImportPruebas::establecerLineasPorTramo(100);
        int giros = 0;
        QTimer reloj;
        QObject::connect(&reloj, &QTimer::timeout, [&] { ++giros; });
        reloj.start(0);
        // Held for 100 ms, over several turns.
        QElapsedTimer sostenida;
        sostenida.start();
        bool escrita = !retenida;
        if (retenida)
            EscrituraPorTurnos::escribir(bd(), {[&] { return sostenida.elapsed() < 100; }},
                                         [&](const ErrorBD* fallo) { escrita = !fallo; });
        QCOMPARE(bd().retenida(), retenida);
        const ResumenImportacion r =
            prueba::esperar(msImportarFichero(vigilado(), false, true, u"-1"_s, false));
        reloj.stop();
        QTRY_VERIFY(escrita);
        QVERIFY2(giros >= 9, qPrintable(QString::number(giros)));
        QVERIFY(r.leido && !r.fallido);
        exactamenteUnaVez(n);
    }

    void loQueHaceElUsuarioEntreTramosNoSePierde() {
        const int n = 600;
        escribir(vigilado(), lineasNumeradas(n));
        envejecer(vigilado());
        ImportPruebas::establecerLineasPorTramo(100);
        int turnos = 0;
        std::optional<EnCadaLinea> entreTramos;
        entreTramos.emplace([&] {
            // Another writer adds a message and deletes a contact between
            // two chunks; a second import started from there waits.
            if (++turnos != 3) return;
            prueba::pendiente(u"0034600000002"_s, u"del usuario"_s, 7);
            bd().exec(u"DELETE FROM Abonados WHERE Codigo='0034600000009'"_s);
            prueba::esperar(msImportarFichero(vigilado(), false, true, u"-1"_s, false));
        });
        prueba::contacto(u"0034600000009"_s, u"Borrable"_s, 5, u""_s);
        int lineas = 0;
        ImportPruebas::establecerPuntoDeFallo([&](const char* p) {
            if (QLatin1String(p) == QLatin1String("linea") && ++lineas == 450) throw Muerte{};
        });
        QVERIFY_THROWS_EXCEPTION(Muerte, vigilar());
        QVERIFY(import_prueba::registro().contains(u"Hay otra importación en curso; el fichero "_s +
                                                   vigilado() + u" no se ha importado"_s));
        entreTramos.reset();
        reabrir();
        QCOMPARE(cuantos(u"SELECT count(*) FROM envios WHERE Mensaje='del usuario'"_s), 1);
        QCOMPARE(cuantos(u"SELECT count(*) FROM Abonados WHERE Codigo='0034600000009'"_s), 0);
        vigilar();
        exactamenteUnaVez(n);
    }

    void lineasQueLlegaronDespuesDelReclamo() {
        escribir(vigilado(), lineasNumeradas(20));
        envejecer(vigilado());
        ImportPruebas::establecerPuntoDeFallo([&](const char* p) {
            // A writer drops a new file at the path right after the claim.
            if (QLatin1String(p) == QLatin1String("reclamado")) {
                escribir(vigilado(), "7;600123456;nuevo\n");
                envejecer(vigilado());
            }
        });
        vigilar();
        ImportPruebas::establecerPuntoDeFallo({});
        exactamenteUnaVez(20);
        QCOMPARE(cuantos(u"SELECT count(*) FROM envios WHERE Mensaje='nuevo'"_s), 0);
        QCOMPARE(restos(), QStringList{u"envios.txt"_s});
        vigilar();
        QCOMPARE(cuantos(u"SELECT count(*) FROM envios WHERE Mensaje='nuevo'"_s), 1);
        QCOMPARE(restos(), QStringList());
    }
};

QUELMO_TEST_MAIN(TestDriver)
#include "test_driver.moc"
