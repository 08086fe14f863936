// Start-up: which database the program ends up on, the settings it reads,
// and the small shared helpers every screen relies on.
#include "TestSupport.h"
#include "accounts/mdoCuentas.h"
#include "app/Arranque.h"
#include "app/Transmisor.h"
#include "app/mdoMain.h"
#include "base/Ajustes.h"
#include "base/Cifrado.h"
#include "base/Conversiones.h"
#include "base/Error.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazSinVentana.h"
#include "base/Pantallas.h"
#include "base/RegistroActividad.h"
#include "db/BaseDatos.h"
#include "db/Conexion.h"

#include <sqlite3.h>
#include <thread>

using namespace Qt::StringLiterals;

class TestStartup : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    QString guardado() { return Ajustes::getSetting(u"BD"_s, u"Path"_s); }
    // The start-up's opening; false where the program would end there.
    static bool abrirAlArrancar() {
        try {
            msAbrirBaseInicial();
            return true;
        } catch (const TerminatedWithoutDatabase&) {
            return false;
        }
    }

  private Q_SLOTS:
    void init() { world.reset(); }

    void firstStartCopiesTheEmptyDatabase() {
        QVERIFY(!QFile::exists(rutaBaseDefecto()));
        QVERIFY(prepararBaseInicial());
        QVERIFY(msValidarBD(rutaBaseDefecto()));
        // A database that is there already is never overwritten.
        {
            BaseDatos db;
            QVERIFY(db.open(rutaBaseDefecto()));
            db.exec(u"INSERT INTO MenPro VALUES (0,'mío')"_s);
        }
        QVERIFY(prepararBaseInicial());
        BaseDatos db;
        QVERIFY(db.open(rutaBaseDefecto()));
        QCOMPARE(db.query(u"SELECT count(*) FROM MenPro"_s).value(0, 0).toInt(), 1);
    }

    // Which database a start opens: the saved one, upgraded if old; else
    // the default one; else what the selection screen chooses; else none.
    void whichDatabaseOpens_data() {
        QTest::addColumn<QString>("defecto");   // the default file: "", "actual", "base"
        QTest::addColumn<QString>("guardada");  // the saved path: "", "borrada", "vieja"
        QTest::addColumn<bool>("elige");        // the selection screen chooses a good file
        QTest::addColumn<QString>("abierta");   // "defecto", "elegida", "vieja"; "": ended
        QTest::addColumn<int>("seleccion");
        QTest::addColumn<QStringList>("registro");  // checked when no screen came up
        QTest::newRow("good default file, silently")
            << u"actual"_s << QString() << false << u"defecto"_s << 0 << QStringList();
        QTest::newRow("old default file: the selection")
            << u"base"_s << QString() << true << u"elegida"_s << 1 << QStringList();
        QTest::newRow("nothing usable ends the program")
            << u"base"_s << QString() << false << QString() << 1 << QStringList();
        QTest::newRow("vanished saved file: the default, without a word")
            << u"actual"_s << u"borrada"_s << false << u"defecto"_s << 0 << QStringList();
        QTest::newRow("old saved file is upgraded and logged")
            << QString() << u"vieja"_s << false << u"vieja"_s << 0
            << QStringList{u"Proceso de actualización de Base de Datos completado."_s};
    }
    void whichDatabaseOpens() {
        QFETCH(QString, defecto);
        QFETCH(QString, guardada);
        QFETCH(bool, elige);
        QFETCH(QString, abierta);
        QFETCH(int, seleccion);
        InterfazGuionada ui;
        const QMap<QString, QString> rutas{{u"defecto"_s, rutaBaseDefecto()},
                                           {u"elegida"_s, world.root() + u"/elegida.db"_s},
                                           {u"borrada"_s, world.root() + u"/borrada.db"_s},
                                           {u"vieja"_s, world.root() + u"/vieja.db"_s}};
        if (defecto == u"actual"_s) TestDb::createCurrent(rutas[u"defecto"_s]);
        if (defecto == u"base"_s) TestDb::createBaseline(rutas[u"defecto"_s]);
        if (guardada == u"vieja"_s) TestDb::createBaseline(rutas[u"vieja"_s]);
        if (!guardada.isEmpty()) Ajustes::saveSetting(u"BD"_s, u"Path"_s, rutas[guardada]);
        if (elige) {
            TestDb::createCurrent(rutas[u"elegida"_s]);
            ui.onSelectDatabase = [&] {
                Ajustes::saveSetting(u"BD"_s, u"Path"_s, rutas[u"elegida"_s]);
            };
        }
        const bool terminado = !abrirAlArrancar();
        QCOMPARE(terminado, abierta.isEmpty());
        QCOMPARE(ui.selectDatabaseShown, seleccion);
        if (!terminado) {
            QCOMPARE(Conexion().path(), rutas[abierta]);
            QCOMPARE(guardado(), rutas[abierta]);
            QVERIFY(msValidarBD(rutas[abierta]));
        }
        // An old default file is not upgraded on the way to the selection.
        if (defecto == u"base"_s) QVERIFY(!msValidarBD(rutaBaseDefecto()));
        if (seleccion > 0) return;
        QVERIFY(ui.boxes.isEmpty());
        QStringList lineas = estadoAplicacion().log.lines();
        for (QString& l : lineas) l = l.section(u" - "_s, 1);
        QTEST(lineas, "registro");
    }

    // Another process holds the saved file exclusively: the program says so
    // and waits while the user wants, and never switches the saved database.
    void busySavedFileIsWaitedFor_data() {
        QTest::addColumn<int>("respuesta");
        QTest::newRow("give up") << int(Msg::No);
        QTest::newRow("try again once it is free") << int(Msg::Yes);
    }
    void busySavedFileIsWaitedFor() {
        QFETCH(int, respuesta);
        InterfazGuionada ui;
        ui.answers << respuesta << int(Msg::No);
        TestDb::createCurrent(rutaBaseDefecto());
        const QString ocupada = TestDb::createCurrent(world.root() + u"/ocupada.db"_s);
        Ajustes::saveSetting(u"BD"_s, u"Path"_s, ocupada);
        sqlite3* otro = nullptr;
        sqlite3_open(ocupada.toUtf8().constData(), &otro);
        sqlite3_exec(otro, "PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE; SELECT 1 FROM envios;",
                     nullptr, nullptr, nullptr);
        // Let go after the first wait of the open has run out.
        std::thread soltar([otro] {
            std::this_thread::sleep_for(std::chrono::milliseconds(6000));
            sqlite3_exec(otro, "COMMIT", nullptr, nullptr, nullptr);
            sqlite3_close(otro);
        });
        const bool terminado = !abrirAlArrancar();
        soltar.join();
        QCOMPARE(terminado, respuesta == Msg::No);
        QCOMPARE(guardado(), ocupada);
        QCOMPARE(ui.boxes.size(), 1);
        QVERIFY(
            ui.boxes[0].text.startsWith(u"La Base de Datos está siendo usada por otro programa"_s));
        QCOMPARE(ui.boxes[0].style, Msg::YesNo + Msg::Exclamation);
        if (!terminado) QCOMPARE(Conexion().path(), ocupada);
        QCOMPARE(ui.selectDatabaseShown, 0);
    }

    void intervalRule_data() {
        QTest::addColumn<QString>("guardado");
        QTest::addColumn<int>("segundos");
        QTest::addColumn<QString>("reescrito");
        QTest::newRow("below 15") << u"14"_s << 60 << u"60"_s;
        QTest::newRow("15 stays") << u"15"_s << 15 << u"15"_s;
        QTest::newRow("not a number") << u"abc"_s << 60 << u"60"_s;
        QTest::newRow("unset") << QString() << 60 << u"60"_s;
        QTest::newRow("rounded") << u"20.5"_s << 20 << u"20"_s;
        QTest::newRow("decimal comma as typed in the options") << u"20,5"_s << 20 << u"20"_s;
        QTest::newRow("an hour") << u"3600"_s << 3600 << u"3600"_s;
        QTest::newRow("too large keeps the timer") << u"40000"_s << 30 << u"40000"_s;
    }
    void intervalRule() {
        QFETCH(QString, guardado);
        QFETCH(int, segundos);
        if (!guardado.isNull()) Ajustes::saveSetting(u"Tr"_s, u"Interval"_s, guardado);
        Transmisor t;
        t.armarTemporizador();
        QCOMPARE(t.Timer1().interval(), segundos * 1000);
        QVERIFY(t.Timer1().isActive());
        QTEST(Ajustes::getSetting(u"Tr"_s, u"Interval"_s), "reescrito");
    }

    // A null side is one the shift can't reach: that way fails.
    void passwordShift_data() {
        QTest::addColumn<QString>("claro");
        QTest::addColumn<QString>("guardado");
        QTest::newRow("abc") << u"abc"_s << QString(QChar(107)) + QChar(108) + QChar(109);
        QTest::newRow("digits") << u"1234"_s << u";<=>"_s;
        QTest::newRow("accent") << u"é"_s << QString(QChar(0xE9 + 10));
        QTest::newRow("euro") << u"5€"_s << u"?\u20B6"_s;
        QTest::newRow("a pair stays a pair") << u"\U0001F600"_s << u"\U00021E0A"_s;
        QTest::newRow("last code up fails") << QString(QChar(0xFFFA)) << QString();
        QTest::newRow("tab down fails") << QString() << u"\t"_s;
        QTest::newRow("into the surrogates fails") << QString(QChar(0xD7FA)) << QString();
    }
    void passwordShift() {
        QFETCH(QString, claro);
        QFETCH(QString, guardado);
        if (guardado.isNull())
            QVERIFY_THROWS_EXCEPTION(ErrorQuelmo, msCifrarClave(claro, true));
        else if (claro.isNull())
            QVERIFY_THROWS_EXCEPTION(ErrorQuelmo, msCifrarClave(guardado, false));
        else {
            QCOMPARE(msCifrarClave(claro, true), guardado);
            QCOMPARE(msCifrarClave(guardado, false), claro);
        }
    }

    void numericForms_data() {
        QTest::addColumn<QString>("texto");
        QTest::addColumn<double>("valor");  // NaN: not numeric
        const double no = qQNaN();
        QTest::newRow("digits") << u"600123456"_s << 600123456.0;
        QTest::newRow("sign and blanks") << u" +34600\t"_s << 34600.0;
        QTest::newRow("minus") << u"-7"_s << -7.0;
        QTest::newRow("decimal comma") << u"12,5"_s << 12.5;
        QTest::newRow("decimal point") << u"12.5"_s << 12.5;
        QTest::newRow("comma first") << u",5"_s << 0.5;
        QTest::newRow("grouped") << u"600.123.456"_s << 600123456.0;
        QTest::newRow("a thousand") << u"1.000"_s << 1000.0;
        QTest::newRow("grouped with decimals") << u"1.234,5"_s << 1234.5;
        QTest::newRow("exponent") << u"1e3"_s << 1000.0;
        QTest::newRow("exponent with comma") << u"2,5E-2"_s << 0.025;
        QTest::newRow("euro in front") << u"€5"_s << 5.0;
        QTest::newRow("euro behind") << u"5 €"_s << 5.0;
        QTest::newRow("hexadecimal") << u"&HFF"_s << 255.0;
        QTest::newRow("octal") << u"&o17"_s << 15.0;
        QTest::newRow("empty") << u""_s << no;
        QTest::newRow("blank") << u"  "_s << no;
        QTest::newRow("letters") << u"12a"_s << no;
        QTest::newRow("blanks inside") << u"600 123 456"_s << no;
        QTest::newRow("points that group nothing") << u"1.2.3"_s << no;
        QTest::newRow("point and comma") << u"12.5,3"_s << no;
        QTest::newRow("two commas") << u"1,2,3"_s << no;
        QTest::newRow("exponent alone") << u"e3"_s << no;
        QTest::newRow("exponent without digits") << u"1e"_s << no;
        QTest::newRow("sign alone") << u"+"_s << no;
        QTest::newRow("bad hexadecimal") << u"&HG"_s << no;
    }
    void numericForms() {
        QFETCH(QString, texto);
        QFETCH(double, valor);
        QCOMPARE(esNumerico(texto), !qIsNaN(valor));
        if (qIsNaN(valor))
            QVERIFY_THROWS_EXCEPTION(ErrorQuelmo, aNumero(texto));
        else
            QCOMPARE(aNumero(texto), valor);
    }

    // No password ever saved: never a prompt. A saved one, the no-password
    // word and the case rule: the options' checksAndWhatIsStored and the
    // frame's gateStandsBeforeCommands.
    void accessGateWithoutAPassword() {
        InterfazGuionada ui;
        Ajustes::deleteSetting(u"Tr"_s, u"pwc"_s);
        cargarClaveAcceso();
        QVERIFY(msComprobarAcceso());
        QCOMPARE(ui.passwordPrompts, 0);
    }

    void resetForgetsTheRun() {
        InterfazGuionada ui;
        EstadoAplicacion& g = estadoAplicacion();
        g.gsClaveAcceso = u"Clave"_s;
        g.gbEnviando = g.gbImportado = true;
        g.gsSaldoCuenta = u"12"_s;
        msLog(u"antes"_s);
        g.reset();
        QVERIFY(msComprobarAcceso());
        QCOMPARE(ui.passwordPrompts, 0);
        QVERIFY(!g.gbEnviando && !g.gbImportado);
        QVERIFY(g.gsSaldoCuenta.isEmpty());
        QVERIFY(g.log.lines().isEmpty());
        QCOMPARE(&::ui(), static_cast<InterfazUsuario*>(&ui));
    }

    void logLines_data() {
        QTest::addColumn<QString>("texto");
        QTest::addColumn<QString>("linea");
        QTest::newRow("line feed in buffer") << u"Buffer: \n"_s << u"Buffer: <10>"_s;
        QTest::newRow("carriage return") << u"Buffer: a\r\nb"_s << u"Buffer: a<13><10>b"_s;
        QTest::newRow("accent in buffer") << u"Buffer: camión"_s << u"Buffer: cami<243>n"_s;
        QTest::newRow("accent elsewhere") << u"Envío a camión"_s << u"Envío a camión"_s;
        QTest::newRow("not at the start: accents stay, controls don't")
            << u"Ver Buffer: camión\n"_s << u"Ver Buffer: camión<10>"_s;
    }
    void logLines() {
        QFETCH(QString, texto);
        QFETCH(QString, linea);
        RelojFijo reloj(QDateTime(QDate(2006, 3, 15), QTime(10, 0, 30)));
        msLog(texto);
        QCOMPARE(estadoAplicacion().log.last(), u"15/03/2006 10:00:30 - "_s + linea);
    }

    void versionAndTitle() {
        QCOMPARE(tituloAplicacion(), u"Quelmo Mensajes SMS (v.3.2.5)"_s);
        QCOMPARE(int(versionCodigo()), 325);
    }

    void principalAccount() {
        TestDb::openShared(TestDb::createCurrent(world.root() + u"/p.db"_s));
        QCOMPARE(int(msCanalPrincipal()), 0);
        Conexion().exec(
            u"INSERT INTO Canales (Canal, Nombre, Principal) VALUES (4,'a',0),(7,'b',1)"_s);
        QCOMPARE(int(msCanalPrincipal()), 7);
        Conexion().close();
        QCOMPARE(int(msCanalPrincipal()), 0);
    }
};

QUELMO_TEST_MAIN(TestStartup)
#include "test_startup.moc"
