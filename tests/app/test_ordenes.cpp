// The command line as scripts and cron jobs use it: the real program in a
// temporary home, its exit code, its words and what it stored.
#include "TestSupport.h"

#include <sys/stat.h>
#include <QProcess>

using namespace Qt::StringLiterals;
using namespace prueba;

class TestOrdenes : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private Q_SLOTS:
    void init() {
        world.reset();
        TestDb::openShared(TestDb::createCurrent(world.appDir() + u"/mensajes.db"_s));
        cuenta(5, u"Banco"_s, {{u"Principal"_s, 1}});
        cuenta(7, u"Tienda"_s);
    }

    void orden_data() {
        QTest::addColumn<QStringList>("argumentos");  // "{fichero}" names the import file
        QTest::addColumn<int>("bloqueoMs");           // the file held by another writer that long
        QTest::addColumn<int>("salida");
        QTest::addColumn<QString>("enSalida");
        QTest::addColumn<QStringList>("enError");  // empty: nothing on standard error
        QTest::addColumn<QString>("consulta");
        QTest::addColumn<QStringList>("guardado");

        const QString bandeja = u"SELECT Canal, Abonado, Mensaje FROM envios ORDER BY Id"_s;
        QTest::newRow("good send goes to the principal account")
            << QStringList{u"--send"_s, u"600123456"_s, u"Hola; qué tal"_s} << 0 << 0
            << u"Mensaje Importado para el Destino : 0034600123456, Texto: Hola; qué tal\n"_s
            << QStringList() << bandeja << QStringList{u"5|0034600123456|Hola; qué tal"_s};
        // An escape sequence reaches the outbox, not the terminal.
        QTest::newRow("control characters are written as codes")
            << QStringList{u"--send"_s, u"600123456"_s, u"Hola\x1b[2J\x07"_s} << 0 << 0
            << u"Texto: Hola<27>[2J<7>\n"_s << QStringList() << bandeja
            << QStringList{u"5|0034600123456|Hola\x1b[2J\x07"_s};
        // Longer than the engine's usual wait: a transmitter's exchange holds
        // the lock that long, and the row must then be there exactly once.
        QTest::newRow("send waits for a writer holding the file")
            << QStringList{u"--send"_s, u"34600123457"_s, u"Hola"_s, u"--account"_s, u"7"_s} << 6500
            << 0 << u"Mensaje Importado"_s << QStringList() << bandeja
            << QStringList{u"7|0034600123457|Hola"_s};
        // The line's own rules are the import tests'; here their exit and words.
        QTest::newRow("bad number")
            << QStringList{u"--send"_s, u"912345678"_s, u"Hola"_s} << 0 << 1 << QString()
            << QStringList{u"ERROR en número de movil para el Destino : 0034912345678\n"_s}
            << bandeja << QStringList();
        QTest::newRow("missing text")
            << QStringList{u"--send"_s, u"600123456"_s} << 0 << 2 << QString()
            << QStringList{u"--send necesita NÚMERO y TEXTO"_s, u"Uso: quelmo-sms"_s} << bandeja
            << QStringList();
        // An option where a value belongs is a value left out, not a text.
        QTest::newRow("missing account")
            << QStringList{u"--send"_s, u"600123456"_s, u"--account"_s, u"7"_s} << 0 << 2
            << QString() << QStringList{u"--send necesita NÚMERO y TEXTO"_s} << bandeja
            << QStringList();
        QTest::newRow("unknown option")
            << QStringList{u"--enviar"_s, u"600123456"_s, u"Hola"_s} << 0 << 2 << QString()
            << QStringList{u"opción desconocida: --enviar"_s, u"Uso: quelmo-sms"_s} << bandeja
            << QStringList();
        QTest::newRow("message import with a bad line")
            << QStringList{u"--import"_s, u"{fichero}"_s} << 0 << 1
            << u" - Importados 2 Mensajes de 3\n"_s
            << QStringList{u"No se han importado 1 de 3 líneas del fichero "_s} << bandeja
            << QStringList{u"5|0034600123456|uno"_s, u"7|0034600123457|tres"_s};
        QTest::newRow("contact import into a new list")
            << QStringList{u"--import"_s, u"{fichero}"_s, u"--contacts"_s, u"--list"_s,
                           u"Clientes"_s}
            << 0 << 1 << u" - Importados 2 Contactos de 3\n"_s
            << QStringList{u"No se han importado 1 de 3 líneas"_s}
            << u"SELECT a.alias, g.Nombre FROM Abonados a JOIN AboGrup m ON m.Abonado = a.Codigo "
               u"JOIN Grupos g ON g.Grupo = m.Grupo ORDER BY a.alias"_s
            << QStringList{u"tres|Clientes"_s, u"uno|Clientes"_s};
        QTest::newRow("import of a missing file")
            << QStringList{u"--import"_s, u"no-existe.txt"_s} << 0 << 1
            << u" - No existen Mensajes en el fichero "_s
            << QStringList{u"No se ha podido importar el fichero "_s} << bandeja << QStringList();
        // Opened, a FIFO without a writer would hold the import for ever.
        QTest::newRow("import of a FIFO")
            << QStringList{u"--import"_s, u"{fifo}"_s} << 0 << 1
            << u"no es un fichero normal sino una tubería con nombre (FIFO); no se importa\n"_s
            << QStringList{u"No se ha podido importar el fichero "_s} << bandeja << QStringList();
        QTest::newRow("import of a folder")
            << QStringList{u"--import"_s, u"{carpeta}"_s} << 0 << 1
            << u"no es un fichero normal sino una carpeta; no se importa\n"_s
            << QStringList{u"No se ha podido importar el fichero "_s} << bandeja << QStringList();
        QTest::newRow("version") << QStringList{u"--version"_s} << 0 << 0 << u"quelmo-sms 3.2.5\n"_s
                                 << QStringList() << bandeja << QStringList();
    }
    void orden() {
        QFETCH(QStringList, argumentos);
        QFETCH(int, bloqueoMs);
        QFETCH(int, salida);
        QFETCH(QString, enSalida);
        QFETCH(QStringList, enError);
        QFETCH(QString, consulta);
        const QString fichero = world.root() + u"/lineas.txt"_s;
        prueba::escribir(fichero, "600123456;uno\n912345678;dos\n7;600123457;tres\n");
        argumentos.replaceInStrings(u"{fichero}"_s, fichero);
        const QString fifo = world.root() + u"/tuberia"_s;
        QFile::remove(fifo);
        QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
        argumentos.replaceInStrings(u"{fifo}"_s, fifo);
        argumentos.replaceInStrings(u"{carpeta}"_s, world.root());

        QProcess p;
        if (bloqueoMs > 0) bd().begin();
        startProgram(world, p, argumentos);
        if (bloqueoMs > 0) {
            QTest::qWait(bloqueoMs);
            bd().commit();
        }
        const ProcessResult r = finishProgram(p);

        QVERIFY(r.finished);
        QVERIFY2(r.exitCode == salida, qPrintable(r.out + r.err));
        QVERIFY2(r.out.contains(enSalida), qPrintable(r.out));
        if (enError.isEmpty()) QVERIFY2(r.err.isEmpty(), qPrintable(r.err));
        for (const QString& e : std::as_const(enError))
            QVERIFY2(r.err.contains(e), qPrintable(r.err));
        QTEST(filas(consulta), "guardado");
    }
};

QUELMO_TEST_MAIN(TestOrdenes)
#include "test_ordenes.moc"
