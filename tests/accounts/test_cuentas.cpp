// The accounts' rules: one principal account, new codes, deletion, the
// editor's save after asking the platform, the first-run account and the
// start-up's first-run logic, against the platform simulator.
#include "AyudaCuentas.h"
#include "accounts/mdoCuentas.h"
#include "base/Avisos.h"
#include "base/EstadoAplicacion.h"
#include "base/Pantallas.h"

#include <QSignalSpy>
#include <optional>

using namespace Qt::StringLiterals;
using namespace cuentas_prueba;

class TestCuentas : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    std::optional<InterfazGuionada> ui;  // scripted answers, new for each test
    std::unique_ptr<SimuladorPrueba> sim;

  private Q_SLOTS:
    void initTestCase() { sim = std::make_unique<SimuladorPrueba>(world.root(), kSimulador); }
    void cleanupTestCase() { sim.reset(); }
    void init() {
        world.baseNueva(u"cuentas.db"_s);
        plataforma(*sim, true);
        ui.emplace();
    }

    void principalAfterAddOrDelete_data() {
        QTest::addColumn<QList<int>>("codigos");
        QTest::addColumn<QList<int>>("antes");  // principal codes before
        QTest::addColumn<int>("borrar");        // -1: none deleted
        QTest::addColumn<int>("anadir");        // -1: none added
        QTest::addColumn<QList<int>>("despues");
        QTest::newRow("delete the principal of three")
            << QList<int>{1, 2, 3} << QList<int>{1} << 1 << -1 << QList<int>{2};
        QTest::newRow("delete the principal of three, lowest left wins")
            << QList<int>{4, 9, 2} << QList<int>{2} << 2 << -1 << QList<int>{4};
        QTest::newRow("delete one of two: the other is principal")
            << QList<int>{1, 2} << QList<int>{1} << 1 << -1 << QList<int>{2};
        QTest::newRow("delete the last account")
            << QList<int>{5} << QList<int>{5} << 5 << -1 << QList<int>{};
        QTest::newRow("add the first") << QList<int>{} << QList<int>{} << -1 << 0 << QList<int>{0};
        QTest::newRow("add a second: the first stays")
            << QList<int>{0} << QList<int>{0} << -1 << 1 << QList<int>{0};
        QTest::newRow("two principals are left as they are")
            << QList<int>{1, 2} << QList<int>{1, 2} << -1 << 3 << QList<int>{1, 2};
        QTest::newRow("only account was not principal")
            << QList<int>{7, 8} << QList<int>{} << 8 << -1 << QList<int>{7};
    }
    void principalAfterAddOrDelete() {
        QFETCH(QList<int>, codigos);
        QFETCH(QList<int>, antes);
        QFETCH(int, borrar);
        QFETCH(int, anadir);
        for (int c : codigos) cuenta(c, u"Cuenta %1"_s.arg(c), antes.contains(c) ? 1 : 0);
        if (borrar >= 0) QVERIFY(msEliminarCuenta(int16_t(borrar)));
        if (anadir >= 0) {
            // A new account is written with Principal 0; the rule settles it.
            cuenta(anadir, u"Nueva"_s, 0);
            msComprobarPrincipal();
        }
        QTEST(principales(), "despues");
    }

    void nextCode_data() {
        QTest::addColumn<QList<int>>("codigos");
        QTest::addColumn<int>("siguiente");
        QTest::newRow("none: 0") << QList<int>{} << 0;
        QTest::newRow("after 0") << QList<int>{0} << 1;
        QTest::newRow("after 1 and 5 the gap stays") << QList<int>{1, 5} << 6;
    }
    void nextCode() {
        QFETCH(QList<int>, codigos);
        for (int c : codigos) cuenta(c, u"c"_s);
        QTEST(msSiguienteCanal(), "siguiente");
    }

    void deletionRefused_data() {
        QTest::addColumn<QString>("tabla");  // table holding a row of the account
        QTest::addColumn<bool>("borrada");
        QTest::addColumn<QString>("motivo");
        const QString enBandeja =
            u"16 Imposible eliminar esta Cuenta.\nHay 1 mensaje en la Bandeja de Salida "
            u"esperando a ser enviados con esta Cuenta. Envíelos o elimínelos antes de "
            u"eliminar la Cuenta."_s;
        QTest::newRow("a contact holds it back")
            << u"Abonados"_s << false
            << u"16 Imposible eliminar esta Cuenta.\nPara eliminar una Cuenta, no deben de "
               u"existir Contactos asociados a  la Cuenta ."_s;
        QTest::newRow("a waiting message holds it back") << u"envios"_s << false << enBandeja;
        QTest::newRow("a message queued while the question is open holds it back")
            << u"envios tarde"_s << false << enBandeja;
        QTest::newRow("history rows don't") << u"HEnvios"_s << true << QString();
    }
    void deletionRefused() {
        QFETCH(QString, tabla);
        QFETCH(QString, motivo);
        cuenta(1, u"Uno"_s, 1);
        cuenta(2, u"Dos"_s);
        if (tabla == u"Abonados"_s)
            prueba::contacto(u"0034600000001"_s, u"a"_s, 2);
        else if (tabla == u"envios"_s)
            prueba::pendiente(u"x"_s, u"m"_s, 2);
        else if (tabla == u"HEnvios"_s)
            Conexion().exec(u"INSERT INTO HEnvios (Canal,Abonado,Mensaje) VALUES (2,'x','m')"_s);
        // The screen asks before its question; the answer is for then.
        QCOMPARE(sinLibreria(msPuedeEliminarCuenta(2)),
                 tabla == u"envios tarde"_s ? QString() : motivo);
        // Another program queues one while the user reads the question.
        if (tabla == u"envios tarde"_s) prueba::pendiente(u"x"_s, u"m"_s, 2);
        QSignalSpy avisos(&Avisos::instancia(), &Avisos::cuentasCambiadas);
        const Hecho hecho = msEliminarCuenta(2);
        QCOMPARE(sinLibreria(hecho), motivo);
        QFETCH(bool, borrada);
        QCOMPARE(fila(2) == u"-"_s, borrada);
        QCOMPARE(avisos.count(), borrada ? 1 : 0);
    }

    // The balance from the list: stored by the exchange, or told in a box.
    void balanceOutcomes_data() {
        QTest::addColumn<QString>("clave");
        QTest::addColumn<bool>("conectar");
        QTest::addColumn<QString>("saldo");
        QTest::addColumn<QString>("motivo");
        QTest::newRow("accepted") << u"demo"_s << true << u"100"_s << QString();
        QTest::newRow("refused") << u"mala"_s << true << u"7"_s << u"272 "_s + kDenegada;
        QTest::newRow("no connection")
            << u"demo"_s << false << u"7"_s
            << u"272 Error de conexión. Imposible conectar con Quelmo Mensajes, revise su "
               u"conexión a Internet.\nNo se pudo conectar con la plataforma"_s;
    }
    void balanceOutcomes() {
        QFETCH(QString, clave);
        QFETCH(bool, conectar);
        cuenta(1, u"Uno"_s, 1, u"demo"_s, clave);
        Conexion().exec(u"update canales set Host = ?"_s,
                        {conectar ? sim->host() : u"http://127.0.0.1:1"_s});
        QSignalSpy avisos(&Avisos::instancia(), &Avisos::cuentasCambiadas);
        const Hecho hecho = QCoro::waitFor(msVerSaldo(1));
        QTEST(textoDe(Conexion().query(u"select saldo from canales"_s).value(0, 0)), "saldo");
        QTEST(sinLibreria(hecho), "motivo");
        QCOMPARE(avisos.count(), 1);
    }

    // The editor's save, after the platform was asked: what it said decides
    // what is stored (the screen asks before keeping a refused user).
    void editorSaveAfterVerification_data() {
        QTest::addColumn<bool>("edicion");
        QTest::addColumn<QString>("clave");
        QTest::addColumn<bool>("conectar");
        QTest::addColumn<int>("remopc");
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("guardada");
        QTest::addColumn<QString>("motivo");
        QTest::newRow("new, accepted, sender from the mobile")
            << false << u"demo"_s << true << 1 << u"sms.test"_s
            << u"L'Hospitalet|sms.test|demo|demo|100|0|600123456|1|0034600123456|160"_s
            << QString();
        QTest::newRow("new, refused and kept with balance 0")
            << false << u"mala"_s << true << 2 << u"sms.test"_s
            << u"L'Hospitalet|sms.test|demo|mala|0|0|MiTienda|2||160"_s << QString();
        QTest::newRow("new, no connection: saved, balance unknown")
            << false << u"demo"_s << false << 0 << u"sms.test"_s
            << u"L'Hospitalet|sms.test|demo|demo||0|MiTienda|0||160"_s << QString();
        QTest::newRow("edit, no connection: the stored mobile and its sender stay")
            << true << u"demo"_s << false << 1 << u"sms.test"_s
            << u"L'Hospitalet|HTTP://sms.test|demo|demo|7|1|611111111|1|0034611111111|160"_s
            << QString();
        QTest::newRow("edit keeps an https host")
            << true << u"demo"_s << true << 0 << u"https://sms.test"_s
            << u"L'Hospitalet|https://sms.test|demo|demo|7|1|MiTienda|0|0034600123456|160"_s
            << QString();
        QTest::newRow("new, empty host stays open")
            << false << u"demo"_s << true << 0 << QString() << u"-"_s
            << u"0 Valor no valido para el parametro HOST REMOTO"_s;
        QTest::newRow("edit gains the scheme, balance untouched, maxmen back to 160")
            << true << u"demo"_s << true << 0 << u"sms.test"_s
            << u"L'Hospitalet|HTTP://sms.test|demo|demo|7|1|MiTienda|0|0034600123456|160"_s
            << QString();
        QTest::newRow("edit keeps a scheme in any case")
            << true << u"demo"_s << true << 0 << u"http://sms.test"_s
            << u"L'Hospitalet|http://sms.test|demo|demo|7|1|MiTienda|0|0034600123456|160"_s
            << QString();
        QTest::newRow("edit refused and kept empties the mobile")
            << true << u"mala"_s << true << 1 << u"sms.test"_s
            << u"L'Hospitalet|HTTP://sms.test|demo|mala|7|1||1||160"_s << QString();
    }
    void editorSaveAfterVerification() {
        QFETCH(bool, edicion);
        QFETCH(QString, clave);
        QFETCH(bool, conectar);
        QFETCH(int, remopc);
        QFETCH(QString, host);
        plataforma(*sim, conectar);
        // A number from an earlier exchange never reaches this account.
        estadoAplicacion().MovilCuenta = u"0034699999999"_s;
        if (edicion) {
            cuenta(3, u"Vieja"_s, 1, u"otro"_s, u"otra"_s);
            Conexion().exec(u"update canales set maxmen = 90, movil = '0034611111111'"_s);
        }
        DatosCuenta d = msCuentaNueva();
        d.nombre = u"L'Hospitalet"_s;
        d.host = host;
        d.usuario = u"demo"_s;
        d.clave = clave;
        d.remopc = remopc;
        d.remitente = u"MiTienda"_s;
        const Saldo saldo = QCoro::waitFor(msVerificarCuenta(d.usuario, d.clave));
        QTEST(sinLibreria(msGuardarCuenta(d, edicion, 3, saldo)), "motivo");
        QTEST(fila(3), "guardada");
    }

    // First run: the checks in their order, then the platform, then the row.
    void firstRunAccount_data() {
        QTest::addColumn<QString>("usuario");
        QTest::addColumn<QString>("clave");
        QTest::addColumn<QString>("clave2");
        QTest::addColumn<bool>("conectar");
        QTest::addColumn<bool>("existente");   // a principal account without user
        QTest::addColumn<int>("resultado");    // AltaInicial, -1 refused
        QTest::addColumn<QString>("mensaje");  // the refusal
        QTest::addColumn<int>("canal");
        QTest::addColumn<QString>("guardada");
        const int mal = -1;
        QTest::newRow("passwords differ, checked first")
            << QString() << u"a"_s << u"b"_s << true << false << mal
            << u"16 Los datos insertados en los campos Contraseña no coinciden, inserte de "
               u"nuevo la Contraseña"_s
            << 0 << u"-"_s;
        QTest::newRow("all empty: the user is missing")
            << QString() << QString() << QString() << true << false << mal
            << u"16 Debe dar valor al campo USUARIO"_s << 0 << u"-"_s;
        QTest::newRow("empty password")
            << u"demo"_s << QString() << QString() << true << false << mal
            << u"16 Debe dar valor al campo CONTRASEÑA"_s << 0 << u"-"_s;
        QTest::newRow("refused by the platform")
            << u"demo"_s << u"mala"_s << u"mala"_s << true << false << mal
            << u"16 "_s + kDenegada.chopped(1) + u", verifique sus datos"_s << 0 << u"-"_s;
        QTest::newRow("the first account has code 0")
            << u"demo"_s << u"demo"_s << u"demo"_s << true << false << int(AltaInicial::Hecha)
            << QString() << 0 << u"Cuenta_demo|HTTP://%1|demo|demo|100|1||0|0034600123456|160"_s;
        QTest::newRow("beside an unusable principal: next code, a second principal")
            << u"demo"_s << u"demo"_s << u"demo"_s << true << true << int(AltaInicial::Hecha)
            << QString() << 5 << u"Cuenta_demo|HTTP://%1|demo|demo|100|1||0|0034600123456|160"_s;
        QTest::newRow("no connection: written, balance unknown, not called a success")
            << u"demo"_s << u"demo"_s << u"demo"_s << false << false
            << int(AltaInicial::SinVerificar) << QString() << 0
            << u"Cuenta_demo|HTTP://127.0.0.1:1|demo|demo||1||0||160"_s;
    }
    void firstRunAccount() {
        QFETCH(QString, usuario);
        QFETCH(QString, clave);
        QFETCH(QString, clave2);
        QFETCH(bool, conectar);
        QFETCH(bool, existente);
        QFETCH(int, canal);
        QFETCH(QString, guardada);
        plataforma(*sim, conectar);
        if (existente) cuenta(4, u"Vacía"_s, 1, QString(), QString());
        QSignalSpy avisos(&Avisos::instancia(), &Avisos::cuentasCambiadas);
        const Resultado<AltaInicial> alta = esperar(msAltaInicial(usuario, clave, clave2));
        QTEST(alta ? int(*alta) : -1, "resultado");
        QTEST(sinLibreria(alta.hecho()), "mensaje");
        QCOMPARE(fila(canal), QString(guardada).replace(u"%1"_s, sim->host().mid(7)));
        QCOMPARE(principales().size(), guardada == u"-"_s ? int(existente) : 1 + int(existente));
        QCOMPARE(avisos.count(), guardada == u"-"_s ? 0 : 1);
    }

    // An https platform address is kept by every way an account comes
    // about; only a plain one gives way to the "HTTP://" rule.
    void platformSchemeIsKept_data() {
        QTest::addColumn<QString>("plataforma");
        QTest::addColumn<QString>("editor");  // the new account's host in the editor
        QTest::addColumn<QString>("guardado");
        QTest::newRow("https") << u"https://127.0.0.1:1/"_s << u"https://127.0.0.1:1"_s
                               << u"https://127.0.0.1:1"_s;
        QTest::newRow("https in upper case")
            << u"HTTPS://127.0.0.1:1"_s << u"HTTPS://127.0.0.1:1"_s << u"HTTPS://127.0.0.1:1"_s;
        QTest::newRow("http") << u"http://127.0.0.1:1/"_s << u"127.0.0.1:1"_s
                              << u"HTTP://127.0.0.1:1"_s;
        QTest::newRow("no scheme")
            << u"127.0.0.1:1"_s << u"127.0.0.1:1"_s << u"HTTP://127.0.0.1:1"_s;
    }
    void platformSchemeIsKept() {
        QFETCH(QString, plataforma);
        QFETCH(QString, guardado);
        Ajustes::saveSetting(u"Despliegue"_s, u"Plataforma"_s, plataforma);
        QTEST(msCuentaNueva().host, "editor");
        QCOMPARE(*esperar(msAltaInicial(u"demo"_s, u"demo"_s, u"demo"_s)),
                 AltaInicial::SinVerificar);
        // After a sign-up the balance may not be known yet: empty, never 0.
        QCOMPARE(*esperar(msAnadirCuentaRegistrada(u"nuevo"_s, u"x"_s)), u""_s);
        QCOMPARE(
            enteros(u"select count(*) from canales where Host = ? and Saldo is null"_s, {guardado}),
            QList<int>{2});
    }

    void balanceShownOnlyWhenKnown_data() {
        QTest::addColumn<QVariant>("saldo");
        QTest::addColumn<QString>("visto");
        QTest::newRow("a balance") << QVariant(u"100"_s) << u"100"_s;
        QTest::newRow("zero") << QVariant(0) << u"0"_s;
        QTest::newRow("unknown") << QVariant() << QString();
        QTest::newRow("failed query of an older release") << QVariant(u"-2"_s) << QString();
        QTest::newRow("refused query of an older release") << QVariant(-1) << QString();
        QTest::newRow("no number") << QVariant(u"abc"_s) << QString();
    }
    void balanceShownOnlyWhenKnown() {
        QFETCH(QVariant, saldo);
        QTEST(textoSaldo(saldo), "visto");
    }

    // At start: set-up, the editor, or one balance exchange.
    void startupFirstRunLogic_data() {
        QTest::addColumn<QString>("usuario");  // of the principal; null: no account
        QTest::addColumn<QString>("clave");
        QTest::addColumn<bool>("editorCompleta");  // the editor stores the credentials
        QTest::addColumn<QString>("editor");       // what opened, "" none
        QTest::addColumn<int>("avisos");           // first-run set-up shown
        QTest::addColumn<QString>("saldo");
        QTest::newRow("no account: the set-up")
            << QString() << QString() << false << QString() << 1 << QString();
        QTest::newRow("usable: one exchange refreshes the balance")
            << u"demo"_s << u"demo"_s << false << QString() << 0 << u"100"_s;
        QTest::newRow("no password: the editor, completed")
            << u"demo"_s << u""_s << true << u"edit 1"_s << 0 << u"7"_s;
        QTest::newRow("no user: the editor, left, then the set-up")
            << u""_s << u"demo"_s << false << u"edit 1"_s << 1 << u"7"_s;
    }
    void startupFirstRunLogic() {
        QFETCH(QString, usuario);
        QFETCH(QString, clave);
        QFETCH(bool, editorCompleta);
        QStringList abierto;
        Pantallas::registrar(u"frmNewCanal.Principal"_s, [&] {
            abierto << u"edit "_s + QString::number(msCanalPrincipal());
            if (editorCompleta)
                Conexion().exec(u"update canales set usuario='demo', clave=?"_s,
                                {msCifrarClave(u"demo"_s, true)});
        });
        if (!usuario.isNull()) {
            cuenta(1, u"Uno"_s, 1, usuario, clave);
            Conexion().exec(u"update canales set Host = ?"_s, {sim->host()});
        }
        QCoro::waitFor(msPrimeraVez());
        Pantallas::registrar(u"frmNewCanal.Principal"_s, [] {});
        QTEST(abierto.join(u','), "editor");
        QTEST(ui->firstRunShown, "avisos");
        QTEST(enteros(u"select saldo from canales"_s).isEmpty()
                  ? QString()
                  : QString::number(enteros(u"select saldo from canales"_s).first()),
              "saldo");
    }
};

QUELMO_TEST_MAIN(TestCuentas)
#include "test_cuentas.moc"
