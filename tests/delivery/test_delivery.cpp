// Delivery against the real platform simulator over loopback: what a batch
// does to the outbox, the history and the account; the balance query; the
// version notices; the client's own rules.
#include "SimuladorPrueba.h"
#include "TestSupport.h"
#include "base/Ajustes.h"
#include "base/Avisos.h"
#include "base/EstadoAplicacion.h"
#include "base/Reloj.h"
#include "db/Conexion.h"
#include "delivery/mdoSendRavion.h"
#include "delivery/qmXMLSend.h"

#include <sqlite3.h>
#include <atomic>
#include <optional>
#include <thread>

using namespace Qt::StringLiterals;
using namespace prueba;

namespace {

const QDateTime kAhora(QDate(2026, 3, 1), QTime(10, 0));
const QString kAntes = u"2026-01-01 08:00:00"_s;

QString configuracion(const QString& plataforma = {}, const QString& cuenta = {}) {
    return u"[plataforma]\nrechazados=0034600000666\n"_s + plataforma +
           u"\n[cuenta1]\nusuario=demo\nclave=demo\nsaldo=100\nmovil=0034600123456\n"_s + cuenta +
           u'\n';
}

}  // namespace

class TestDelivery : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    std::optional<InterfazGuionada> ui;  // scripted answers, new for each test
    std::unique_ptr<RelojFijo> reloj;

    std::unique_ptr<SimuladorPrueba> simulador(const QString& ini = configuracion()) {
        return std::make_unique<SimuladorPrueba>(world.root(), ini);
    }
    // The simulator with the principal account of anadirCuenta on it.
    std::unique_ptr<SimuladorPrueba> plataforma(const QString& ini = configuracion()) {
        auto s = simulador(ini);
        anadirCuenta(s->host());
        return s;
    }
    void anadirCuenta(const QString& host, const QString& clave = u"demo"_s, int remopc = 0,
                      const QString& tini = {}, const QString& tfin = {}, int imptextos = 0) {
        cuentaPrincipal(host, clave,
                        {{u"Saldo"_s, 7},
                         {u"Remitente"_s, u"Tienda"_s},
                         {u"remopc"_s, remopc},
                         {u"tini"_s, tini},
                         {u"tfin"_s, tfin},
                         {u"imptextos"_s, imptextos},
                         {u"movil"_s, u""_s}});
    }

  private Q_SLOTS:
    void init() {
        world.baseNueva(u"envio.db"_s);
        reloj = std::make_unique<RelojFijo>(kAhora);
        ui.emplace();
    }
    void cleanup() { reloj.reset(); }

    void lifeOfAnOutboxRow_data() {
        QTest::addColumn<QString>("abonado");
        QTest::addColumn<QString>("mensaje");
        QTest::addColumn<int>("canalFila");
        QTest::addColumn<QString>("cuentaSim");  // the platform's account, changed
        QTest::addColumn<bool>("conectar");
        QTest::addColumn<int>("historial");  // HEnvios rows
        QTest::addColumn<int>("intento");    // 0: the row is gone
        QTest::addColumn<QString>("linea");
        const QString largo = QString(200, u'a');
        QTest::newRow("accepted") << u"629000000"_s << u"hola"_s << 1 << QString() << true << 1 << 0
                                  << u"Mensaje aceptado Para el 0034629000000 -> hola"_s;
        QTest::newRow("simulated") << u"+34111111111"_s << u"hola"_s << 1 << QString() << true << 1
                                   << 0 << u"Envío simulado Para el ENVIO_SIMULADO -> hola"_s;
        QTest::newRow("refused") << u"0034600000666"_s << u"hola"_s << 1 << QString() << true << 0
                                 << 1 << u"Su saldo en estos momentos es de : 100 Mensajes"_s;
        QTest::newRow("balance spent")
            << u"629000000"_s << u"hola"_s << 1 << u"saldo=0"_s << true << 0 << 1
            << u"Saldo insuficiente Para el 0034629000000 -> hola"_s;
        QTest::newRow("long, first piece accepted")
            << u"629000000"_s << largo << 1 << QString() << true << 2 << 0 << u" -> (2-2) aaaa"_s;
        QTest::newRow("long, first piece refused") << u"0034600000666"_s << largo << 1 << QString()
                                                   << true << 0 << 1 << u" -> (2-2) aaaa"_s;
        QTest::newRow("destination with letters")
            << u"62x9000"_s << u"hola"_s << 1 << QString() << true << 0 << 2
            << u"El Destino [ 62x9000 ] no es válido, envío no realizado"_s;
        QTest::newRow("empty destination") << QString() << u"hola"_s << 1 << QString() << true << 0
                                           << 2 << u"El Destino [  ] no es válido"_s;
        QTest::newRow("account missing")
            << u"629000000"_s << u"hola"_s << 9 << QString() << true << 0 << 2
            << u"No existen Cuentas definidas para estos mensajes, envios cancelados ..."_s;
        QTest::newRow("authentication refused")
            << u"629000000"_s << u"hola"_s << 1 << u"clave=otra"_s << true << 0 << 2
            << u"Acceso Denegado, causa: Usuario o clave incorrectos"_s;
        QTest::newRow("inactive account") << u"629000000"_s << u"hola"_s << 1 << u"activa=false"_s
                                          << true << 0 << 2 << u"su cuenta esté Activa"_s;
        QTest::newRow("no connection")
            << u"629000000"_s << u"hola"_s << 1 << QString() << false << 0 << 2
            << u"Error de conexión. Imposible conectar con Quelmo "
               "Mensajes, revise su conexión a Internet"_s;
    }
    void lifeOfAnOutboxRow() {
        QFETCH(QString, abonado);
        QFETCH(QString, mensaje);
        QFETCH(int, canalFila);
        QFETCH(QString, cuentaSim);
        QFETCH(bool, conectar);
        QFETCH(int, historial);
        QFETCH(int, intento);
        QFETCH(QString, linea);
        auto sim = plataforma(configuracion({}, cuentaSim));
        pendiente(abonado, mensaje, canalFila);
        if (!conectar) sim->detener();
        QCoro::waitFor(msEnviarLote(int16_t(canalFila), false));

        QVERIFY2(enRegistro(linea), qPrintable(registro()));
        QCOMPARE(cuantos(u"select count(*) from HEnvios"_s), historial);
        // A refusal stamps the attempt; anything else leaves the row alone.
        QCOMPARE(filas(u"select intento, Registro from envios"_s),
                 intento == 0 ? QStringList()
                              : QStringList{u"%1|"_s.arg(intento) +
                                            (intento == 1 ? aTextoBD(kAhora) : kAntes)});
        if (historial > 0)
            QCOMPARE(filas(u"select Canal, crem, Registro from HEnvios"_s).value(0),
                     u"1|Principal (Tienda)|"_s + aTextoBD(kAhora));
        // Only an account the platform holds inactive is told with a box.
        QCOMPARE(ui->boxes.size(), cuentaSim == u"activa=false"_s ? 1 : 0);
        if (!ui->boxes.isEmpty()) {
            QCOMPARE(ui->boxes[0].title, u"Su cuenta no está Activa"_s);
            QCOMPARE(ui->boxes[0].style, Msg::Exclamation);
            QVERIFY(ui->boxes[0].text.contains(u"su cuenta esté Activa"_s));
        }
    }

    // Parts after the first carry the key "X<n>X<id>".
    void longTextsAreCut_data() {
        QTest::addColumn<int>("largo");
        QTest::addColumn<bool>("textos");  // the account has start and end texts
        QTest::addColumn<bool>("importado");
        QTest::addColumn<int>("imptextos");
        QTest::addColumn<QList<int>>("longitudes");
        QTest::newRow("301") << 301 << false << false << 0 << QList<int>{156, 156, 7};
        QTest::newRow("start and end texts count")
            << 155 << true << false << 0 << QList<int>{156, 17};
        QTest::newRow("imported run without texts") << 155 << true << true << 0 << QList<int>{155};
        QTest::newRow("imported run with texts") << 155 << true << true << 1 << QList<int>{156, 17};
    }
    void longTextsAreCut() {
        QFETCH(int, largo);
        QFETCH(bool, textos);
        QFETCH(bool, importado);
        QFETCH(int, imptextos);
        QFETCH(QList<int>, longitudes);
        auto sim = simulador();
        const QString tini = textos ? u"ABC"_s : QString(), tfin = textos ? u"XYZ"_s : QString();
        anadirCuenta(sim->host(), u"demo"_s, 0, tini, tfin, imptextos);
        QString mensaje;
        while (mensaje.size() < largo) mensaje += u"0123456789"_s;
        mensaje.truncate(largo);
        pendiente(u"629000000"_s, mensaje, 1, 7);
        QCoro::waitFor(msEnviarLote(1, importado));

        const QList<QJsonObject> r = sim->registro();
        QCOMPARE(r.size(), longitudes.size());
        QString unido;
        for (int i = 0; i < r.size(); ++i) {
            QCOMPARE(r[i][u"clave"_s].toString(), i == 0 ? u"7"_s : u"X%1X7"_s.arg(i + 1));
            const QString parte = r[i][u"mensaje"_s].toString();
            QCOMPARE(parte.size(), longitudes[i]);
            const QString prefijo = u"(%1-%2) "_s.arg(i + 1).arg(r.size());
            if (r.size() > 1) QVERIFY2(parte.startsWith(prefijo), qPrintable(parte));
            unido += r.size() > 1 ? parte.mid(prefijo.size()) : parte;
        }
        QCOMPARE(unido, !importado || imptextos ? tini + mensaje + tfin : mensaje);
        QCOMPARE(cuantos(u"select count(*) from HEnvios"_s), int(r.size()));
        QCOMPARE(cuantos(u"select count(*) from envios"_s), 0);
    }

    // The destination the platform gets is the normalised one; a simulated
    // number costs nothing.
    void simulatedNumbersCostNothing() {
        auto sim = plataforma();
        pendiente(u"+34629000000"_s, u"x"_s);
        pendiente(u"0034999999999"_s, u"x"_s);
        QCoro::waitFor(msEnviarLote(1, false));
        const QList<QJsonObject> r = sim->registro();
        QCOMPARE(r.size(), 2);
        QCOMPARE(r[0][u"destino"_s].toString(), u"0034629000000"_s);
        QCOMPARE(r[1][u"destino"_s].toString(), u"ENVIO_SIMULADO"_s);
        QCOMPARE(cuantos(u"select Saldo from Canales"_s), 99);
    }

    void batchSizeComesFromTheOptions_data() {
        QTest::addColumn<QVariant>("maxlote");  // invalid: no options row
        QTest::addColumn<int>("enviadas");
        QTest::newRow("30") << QVariant(30) << 30;
        QTest::newRow("1") << QVariant(1) << 1;
        QTest::newRow("0 means 25") << QVariant(0) << 25;
        QTest::newRow("501 means 25") << QVariant(501) << 25;
        QTest::newRow("null means 25") << QVariant(QMetaType::fromType<int>()) << 25;
        QTest::newRow("no row means 25") << QVariant() << 25;
    }
    void batchSizeComesFromTheOptions() {
        QFETCH(QVariant, maxlote);
        QFETCH(int, enviadas);
        auto sim = plataforma();
        if (maxlote.isValid())
            Conexion().exec(u"update opciones set maxlote=? where id=1"_s, {maxlote});
        else
            Conexion().exec(u"delete from opciones"_s);
        for (int i = 0; i < 40; ++i) pendiente(u"0034111111111"_s, u"x"_s);
        QCoro::waitFor(msEnviarLote(1, false));
        QCOMPARE(cuantos(u"select count(*) from envios"_s), 40 - enviadas);
        QVERIFY(
            enRegistro(u"Enviando %1 mensajes con Cuenta  Principal Usando remitente: Tienda"_s.arg(
                enviadas)));
    }

    void failedExchangesChangeNothing_data() {
        QTest::addColumn<QString>("fallo");
        QTest::addColumn<QString>("linea");
        const QString conexion = u"Error de conexión. Imposible conectar con Quelmo Mensajes"_s;
        // The old words, then the line that names the cause in the library's words.
        QTest::newRow("timeout") << u"retraso_ms=2500"_s
                                 << conexion +
                                        u"*Se agotó el tiempo de espera de la plataforma: "
                                        u"Operation timed out after"_s;
        QTest::newRow("dropped connection")
            << u"fallo=corte"_s
            << conexion + u"*No se pudo conectar con la plataforma: transfer closed with"_s;
        QTest::newRow("malformed reply")
            << u"fallo=malformado"_s
            << u"Se ha producido un error en el proceso de envio, Cod: 4000, Descripcion: "
               "Respuesta no válida de la plataforma"_s;
        QTest::newRow("HTTP 500")
            << u"fallo=error500"_s
            << u"Se ha producido un error en el proceso de envio, Cod: 4000, Descripcion: La "
               "plataforma respondió con el estado HTTP 500"_s;
        QTest::newRow("oversized reply")
            << u"fallo=enorme"_s
            << u"Se ha producido un error en el proceso de envio, Cod: 4000, Descripcion: La "
               "respuesta de la plataforma supera el límite de 16 MB"_s;
    }
    void failedExchangesChangeNothing() {
        QFETCH(QString, fallo);
        QFETCH(QString, linea);
        // 17 MB take a loaded machine more than a second: the limit on
        // size must be what stops them, not the time.
        const bool enorme = fallo == u"fallo=enorme"_s;
        Ajustes::saveSetting(u"Despliegue"_s, u"TimeoutTotal"_s, enorme ? u"10"_s : u"1"_s);
        auto sim = plataforma(configuracion(fallo));
        pendiente(u"629000000"_s, u"uno"_s);
        pendiente(u"0034111111111"_s, u"dos"_s);
        QElapsedTimer reloj;
        reloj.start();
        QCoro::waitFor(msEnviarLote(1, false));
        // The pacing second and the one-second limit, with room to spare.
        if (!enorme) QVERIFY(reloj.elapsed() < 4000);
        for (const QString& l : linea.split(u'*')) QVERIFY2(enRegistro(l), qPrintable(registro()));
        QCOMPARE(cuantos(u"select count(*) from envios where intento=2 and Registro=?"_s, {kAntes}),
                 2);
        QCOMPARE(cuantos(u"select count(*) from HEnvios"_s), 0);
        QCOMPARE(cuantos(u"select Saldo from Canales"_s), 7);
    }

    void awkwardCharactersSurvive_data() {
        QTest::addColumn<QString>("texto");
        QTest::newRow("markup, quotes, accents, line end")
            << u"L'año <b>&amp; \"ok\" € ñ\r\nfin\tß 😀"_s;
        // 161 characters with one outside the basic plane at the cut.
        QTest::newRow("long, emoji at the cut") << QString(149, u'a') + u"😀"_s + QString(11, u'b');
    }
    void awkwardCharactersSurvive() {
        QFETCH(QString, texto);
        const QString clave = u"cl&ve<ñ'"_s;
        auto sim =
            simulador(u"[plataforma]\n[cuenta1]\nusuario=demo\nclave=\"cl&ve<ñ'\"\nsaldo=5\n"_s);
        anadirCuenta(sim->host(), clave);
        pendiente(u"629000000"_s, texto);
        QCoro::waitFor(msEnviarLote(1, false));
        const QList<QJsonObject> r = sim->registro();
        QString llegado;
        for (const QJsonObject& o : r) {
            const QString parte = o[u"mensaje"_s].toString();
            llegado += r.size() > 1 ? parte.mid(6) : parte;
        }
        QCOMPARE(llegado, texto);
        QCOMPARE(r.size(), texto.size() > 160 ? 2 : 1);
        if (r.size() == 1)
            QCOMPARE(Conexion().query(u"select Mensaje from HEnvios"_s).value(0, 0).toString(),
                     texto);
    }

    void accountIsRenewedAfterAnExchange_data() {
        QTest::addColumn<int>("remopc");
        QTest::addColumn<QString>("cuentaSim");
        QTest::addColumn<QString>("remitente");
        QTest::addColumn<bool>("aviso");
        QTest::newRow("own sender") << 0 << QString() << u"Tienda "_s << false;
        QTest::newRow("sender from the mobile") << 1 << QString() << u"600123456 "_s << false;
        QTest::newRow("sender not accepted") << 0 << u"remitente=false"_s << u"Tienda "_s << true;
    }
    void accountIsRenewedAfterAnExchange() {
        QFETCH(int, remopc);
        QFETCH(QString, cuentaSim);
        QFETCH(QString, remitente);
        QFETCH(bool, aviso);
        QSignalSpy cuentas(&Avisos::instancia(), &Avisos::cuentasCambiadas);
        auto sim = simulador(configuracion(u"version=330"_s, cuentaSim));
        anadirCuenta(sim->host(), u"demo"_s, remopc);
        pendiente(u"629000000"_s, u"hola"_s);
        QCoro::waitFor(msEnviarLote(1, false));
        QCOMPARE(filas(u"select Saldo, Remitente, movil from Canales"_s),
                 QStringList{u"99|"_s + remitente + u"|0034600123456"_s});
        QCOMPARE(estadoAplicacion().gsSaldoCuenta, u"99"_s);
        QCOMPARE(estadoAplicacion().gsVersionPlataforma, u"330"_s);
        QCOMPARE(cuentas.count(), 1);
        QCOMPARE(ui->boxes.size(), aviso ? 1 : 0);
        if (aviso) {
            QCOMPARE(ui->boxes[0].title, u"Remitente no aceptado"_s);
            QCOMPARE(ui->boxes[0].style, Msg::Exclamation);
            QVERIFY(ui->boxes[0].text.startsWith(
                u"Su Remitente Personalizado no ha sido aceptado.\n\nPara utilizar"_s));
        }
    }

    void debugLinesFollowTheSetting_data() {
        QTest::addColumn<QString>("valor");
        QTest::addColumn<bool>("depura");
        QTest::newRow("RXXML") << u"RXXML"_s << true;
        QTest::newRow("other case") << u"rxxml"_s << false;
    }
    void debugLinesFollowTheSetting() {
        QFETCH(QString, valor);
        QFETCH(bool, depura);
        Ajustes::saveSetting(u"Tr"_s, u"Debug"_s, valor);
        auto sim = plataforma();
        pendiente(u"629000000"_s, u"hola"_s);
        QCoro::waitFor(msEnviarLote(1, false));
        QCOMPARE(enRegistro(u"Creando Objetos para el envio"_s), depura);
        QCOMPARE(estadoAplicacion().log.last().contains(u"<respuesta>"_s), depura);
    }

    // A platform whose trace repeats the request, with the debug lines on:
    // the account's password shows in none of its forms.
    void passwordStaysOutOfTheLog() {
        Ajustes::saveSetting(u"Tr"_s, u"Debug"_s, u"RXXML"_s);
        const QString clave = u"s3cr&t<ñ 'x"_s;
        auto sim = simulador(
            u"[plataforma]\neco=true\n[cuenta1]\nusuario=demo\n"
            u"clave=\"s3cr&t<ñ 'x\"\nsaldo=5\n"_s);
        anadirCuenta(sim->host(), clave);
        pendiente(u"629000000"_s, u"hola"_s);
        QCoro::waitFor(msEnviarLote(1, false));
        QCOMPARE(sim->registro().size(), 1);
        QVERIFY(enRegistro(u"Valor AuTrace: <?xml"_s));
        const QString xml = clave.toHtmlEscaped();
        for (const QString& forma :
             {clave, xml, xml.toHtmlEscaped(), QString::fromUtf8(QUrl::toPercentEncoding(clave)),
              QString::fromUtf8(QUrl::toPercentEncoding(xml))})
            QVERIFY2(!enRegistro(forma), qPrintable(forma));
    }

    // Another process takes the database's write lock: before our run, or
    // while the platform is answering. Either way each item reaches the
    // platform once and is written once.
    void lockedDatabaseSendsNothingTwice_data() {
        QTest::addColumn<bool>("antes");     // the lock is taken before the run
        QTest::addColumn<int>("enPrimera");  // items the platform got in the first run
        QTest::newRow("held before the run") << true << 0;
        QTest::newRow("taken during the exchange") << false << 1;
    }
    void lockedDatabaseSendsNothingTwice() {
        QFETCH(bool, antes);
        auto sim = plataforma(configuracion(u"retraso_ms=1500"_s));
        pendiente(u"629000000"_s, u"hola"_s);
        // Our side gives up on a lock after 0.3 s instead of 5.
        sqlite3_busy_timeout(Conexion().handle(), 300);
        const QByteArray ruta = Conexion().path().toUtf8();
        const QString recibidos = world.root() + u"/registro.jsonl"_s;
        std::atomic<bool> tomado = false;
        std::thread otro([&] {
            // Before the run at once; during it, once the platform has the batch.
            if (!antes)
                for (int i = 0; i < 200 && QFileInfo(recibidos).size() == 0; ++i)
                    std::this_thread::sleep_for(std::chrono::milliseconds(25));
            sqlite3* h = nullptr;
            sqlite3_open(ruta.constData(), &h);
            sqlite3_busy_timeout(h, 10000);
            sqlite3_exec(h, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
            tomado = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(antes ? 2500 : 1000));
            sqlite3_exec(h, "COMMIT", nullptr, nullptr, nullptr);
            sqlite3_close(h);
        });
        while (antes && !tomado) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        QCoro::waitFor(msEnviarLote(1, false));
        otro.join();
        QTEST(int(sim->registro().size()), "enPrimera");
        if (antes)
            QVERIFY2(enRegistro(u"Descripcion: database is locked"_s), qPrintable(registro()));
        else
            QCOMPARE(cuantos(u"select count(*) from envios"_s), 0);
        // The next run finds nothing of the first one to send again.
        QCoro::waitFor(msEnviarLote(1, false));
        QCOMPARE(sim->registro().size(), 1);
        QCOMPARE(cuantos(u"select count(*) from HEnvios"_s), 1);
        QCOMPARE(cuantos(u"select count(*) from envios"_s), 0);
    }

    // A crash after the platform took a batch and before our commit leaves
    // the rows to be sent again: they carry the same references, and the
    // platform answers them without sending or charging twice.
    void resentItemsReachNobodyTwice() {
        auto sim = plataforma();
        pendiente(u"629000000"_s, QString(200, u'a'), 1, 7);
        QCoro::waitFor(msEnviarLote(1, false));
        QCOMPARE(sim->registro().size(), 2);
        // The row as it was before the lost commit.
        pendiente(u"629000000"_s, QString(200, u'a'), 1, 7);
        QCoro::waitFor(msEnviarLote(1, false));
        QCOMPARE(sim->registro().size(), 2);
        QCOMPARE(sim->duplicados().size(), 2);
        QCOMPARE(cuantos(u"select count(*) from envios"_s), 0);
        QCOMPARE(cuantos(u"select Saldo from Canales"_s), 98);
        // Another database's items with the same keys are new to the platform.
        TestDb::openShared(TestDb::createCurrent(world.root() + u"/otra.db"_s));
        anadirCuenta(sim->host());
        pendiente(u"629000000"_s, QString(200, u'a'), 1, 7);
        QCoro::waitFor(msEnviarLote(1, false));
        QCOMPARE(sim->registro().size(), 4);
    }

    // A reply that answers an item not sent, or leaves one out, still stands
    // for the rest; the item left out stays untouched, and its resend under
    // the same reference reaches nobody twice.
    void partialRepliesStandForWhatTheyAnswer_data() {
        QTest::addColumn<QString>("fallo");
        QTest::addColumn<QString>("linea");
        QTest::addColumn<int>("quedan");
        QTest::newRow("stray result")
            << u"extraviado"_s
            << u"La plataforma devolvió el resultado de un mensaje que no se envió (n=9999), "
               "se descarta"_s
            << 0;
        QTest::newRow("missing result")
            << u"ausente"_s
            << u"La plataforma no devolvió el resultado de 1 mensajes (claves: 2), se dejan en "
               "la bandeja de salida"_s
            << 1;
    }
    void partialRepliesStandForWhatTheyAnswer() {
        QFETCH(QString, fallo);
        QFETCH(QString, linea);
        QFETCH(int, quedan);
        auto sim = plataforma(configuracion(u"veces=1\nfallo="_s + fallo));
        pendiente(u"629000000"_s, u"uno"_s);
        pendiente(u"629000001"_s, u"dos"_s);
        QCoro::waitFor(msEnviarLote(1, false));
        QCOMPARE(estadoAplicacion().log.lines().filter(linea).size(), 1);
        QCOMPARE(cuantos(u"select count(*) from envios where intento=2 and Registro=?"_s, {kAntes}),
                 quedan);
        QCOMPARE(cuantos(u"select count(*) from HEnvios"_s), 2 - quedan);
        QCoro::waitFor(msEnviarLote(1, false));
        QCOMPARE(cuantos(u"select count(*) from envios"_s), 0);
        QCOMPARE(cuantos(u"select count(*) from HEnvios"_s), 2);
        QCOMPARE(sim->registro().size(), 2);
    }

    // Rows another tool left without a usable account code wait; the other
    // accounts are served and the run ends cleanly.
    void rowsWithoutAUsableAccount_data() {
        QTest::addColumn<QVariant>("canal");
        QTest::addColumn<QString>("nombre");  // as the line names it
        QTest::newRow("null") << QVariant() << u"vacía"_s;
        QTest::newRow("above 255") << QVariant(300) << u"300"_s;
        QTest::newRow("negative") << QVariant(-1) << u"-1"_s;
        QTest::newRow("text") << QVariant(u"abc"_s) << u"abc"_s;
    }
    void rowsWithoutAUsableAccount() {
        QFETCH(QVariant, canal);
        QFETCH(QString, nombre);
        auto sim = plataforma();
        pendiente(u"629000000"_s, u"sin cuenta"_s, 1);
        Conexion().exec(u"update envios set Canal=?"_s, {canal});
        pendiente(u"629000001"_s, u"con cuenta"_s, 1);
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        QCoro::waitFor(SendMessage());
        const QString linea = u"Hay mensajes sin una cuenta válida (cuenta: "_s + nombre +
                              u"); se dejan en la bandeja de salida sin enviar"_s;
        QCOMPARE(estadoAplicacion().log.lines().filter(linea).size(), 1);
        QCOMPARE(Conexion().query(u"select Mensaje from envios"_s).value(0, 0).toString(),
                 u"sin cuenta"_s);
        QCOMPARE(cuantos(u"select count(*) from HEnvios"_s), 1);
        QVERIFY(!estadoAplicacion().gbEnviando);
    }

    // A run that starts while one waits for the platform ends at once: it
    // would send the same rows again.
    void runInsideARunSendsNothing() {
        auto sim = plataforma();
        pendiente(u"629000000"_s, u"hola"_s);
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        QCoro::Task<bool> primera = SendMessage();
        QVERIFY(estadoAplicacion().gbEnviando);
        QCOMPARE(QCoro::waitFor(SendMessage()), false);
        QCoro::waitFor(std::move(primera));
        QCOMPARE(sim->registro().size(), 1);
        QCOMPARE(cuantos(u"select count(*) from HEnvios"_s), 1);
        QVERIFY(!estadoAplicacion().gbEnviando);
    }

    // A balance the platform reports that is no number is never stored: a
    // batch keeps its items' results, a query returns nothing.
    void balanceThatIsNoNumber() {
        auto sim = plataforma(configuracion(u"fallo=saldo_texto"_s));
        QCOMPARE(saldo(QCoro::waitFor(SendAutCuenta(1))), u"error"_s);
        QVERIFY2(enRegistro(u"Error en SendAutCuenta: Saldo no válido en la respuesta de la "
                            "plataforma: 'abc'"_s),
                 qPrintable(registro()));
        QCOMPARE(cuantos(u"select Saldo from Canales"_s), 7);
        pendiente(u"629000000"_s, u"hola"_s);
        QCoro::waitFor(msEnviarLote(1, false));
        QCOMPARE(cuantos(u"select count(*) from HEnvios"_s), 1);
        QCOMPARE(cuantos(u"select count(*) from envios"_s), 0);
        QCOMPARE(cuantos(u"select Saldo from Canales"_s), 7);
    }

    // A higher version announced asks the user; `respuesta` answers that box.
    void balanceQuery_data() {
        QTest::addColumn<QString>("clave");
        QTest::addColumn<bool>("conectar");
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("resultado");
        QTest::addColumn<QString>("linea");
        QTest::addColumn<int>("respuesta");
        QTest::addColumn<QString>("abierta");
        const QString web = u"http://www.quelmo.example"_s;
        const QString ok = u"Usuario autentificado    Saldo Disponible: 100 SMS"_s;
        const QString sinConexion =
            u"Error de conexión. Revise el estado de su conexión a Internet."_s;
        QTest::newRow("no version announced")
            << u"demo"_s << true << QString() << u"100"_s << ok << 0 << QString();
        QTest::newRow("equal version")
            << u"demo"_s << true << u"325"_s << u"100"_s << ok << 0 << QString();
        QTest::newRow("lower version")
            << u"demo"_s << true << u"324"_s << u"100"_s << ok << 0 << QString();
        QTest::newRow("higher, yes")
            << u"demo"_s << true << u" 326 "_s << u"100"_s << ok << int(Msg::Yes)
            << web + u"/download/Quelmo_Mensajes_SMS.zip"_s;
        QTest::newRow("digits only, no") << u"demo"_s << true << u"3101"_s << u"100"_s << ok
                                         << int(Msg::No) << web + u"/quelmo_sms.php"_s;
        QTest::newRow("higher, cancel")
            << u"demo"_s << true << u"400"_s << u"100"_s << ok << int(Msg::Cancel) << QString();
        QTest::newRow("refused") << u"mala"_s << true << QString() << u"denegado"_s
                                 << u"Usuario o clave incorrectos"_s << 0 << QString();
        QTest::newRow("no connection")
            << u"demo"_s << false << QString() << u"fallido"_s << sinConexion << 0 << QString();
        QTest::newRow("version not a number")
            << u"demo"_s << true << u"3x"_s << u"fallido"_s << sinConexion << 0 << QString();
    }
    void balanceQuery() {
        QFETCH(QString, clave);
        QFETCH(bool, conectar);
        QFETCH(QString, version);
        QFETCH(QString, resultado);
        QFETCH(QString, linea);
        QFETCH(int, respuesta);
        QFETCH(QString, abierta);
        ui->answers << respuesta;
        auto sim = simulador(configuracion(u"version="_s + version));
        if (!conectar) sim->detener();
        QString host = sim->host();
        QCOMPARE(saldo(QCoro::waitFor(msConsultarSaldo(u"demo"_s, clave, host))), resultado);
        QVERIFY2(enRegistro(u" - "_s + linea), qPrintable(estadoAplicacion().log.last()));
        // A failure ends with the line that names it, which the boxes repeat.
        if (resultado == u"fallido"_s) {
            QVERIFY(!msCausaFallo().isEmpty());
            QVERIFY2(estadoAplicacion().log.last().endsWith(u" - "_s + msCausaFallo()),
                     qPrintable(estadoAplicacion().log.last()));
        } else {
            QVERIFY(estadoAplicacion().log.last().endsWith(u" - "_s + linea));
            QVERIFY(msCausaFallo().isEmpty());
        }
        const bool aviso = respuesta != 0;
        QCOMPARE(ui->boxes.size(), aviso ? 1 : 0);
        if (aviso) {
            QCOMPARE(ui->boxes[0].style, Msg::YesNoCancel + Msg::Exclamation);
            QVERIFY(ui->boxes[0].text.contains(u"nueva versión "_s + version.trimmed() + u'?'));
        }
        QCOMPARE(ui->openedUrls, abierta.isEmpty() ? QStringList() : QStringList{abierta});
        if (resultado != u"100"_s) return;
        QCOMPARE(estadoAplicacion().MovilCuenta, u"0034600123456"_s);

        // A transmitter run only writes a line, at its end.
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        anadirCuenta(sim->host());
        pendiente(u"0034111111111"_s, u"x"_s);
        QCoro::waitFor(SendMessage());
        QCOMPARE(estadoAplicacion().log.last().endsWith(
                     u"ATENCION: Existe una versión nueva de Quelmo Mensajes SMS, acceda a "
                     "http://www.quelmo.example para descargarla."_s),
                 aviso);
        QCOMPARE(ui->boxes.size(), aviso ? 1 : 0);
    }

    void emptyHostTakesThePlatformsAddress() {
        auto sim = simulador();
        Ajustes::saveSetting(u"Despliegue"_s, u"Plataforma"_s, sim->host() + u'/');
        QCOMPARE(saldo(QCoro::waitFor(msConsultarSaldo(u"demo"_s, u"demo"_s, QString()))),
                 u"100"_s);
    }

    void storedAccountBalance_data() {
        QTest::addColumn<int>("canal");
        QTest::addColumn<QString>("clave");
        QTest::addColumn<QString>("saldoSim");
        QTest::addColumn<QString>("resultado");
        QTest::addColumn<bool>("guardado");
        QTest::newRow("accepted") << 1 << u"demo"_s << u"100"_s << u"100"_s << true;
        QTest::newRow("zero balance is a success") << 1 << u"demo"_s << u"0"_s << u"0"_s << true;
        QTest::newRow("refused") << 1 << u"mala"_s << u"100"_s << u"denegado"_s << false;
        QTest::newRow("unknown account") << 9 << u"demo"_s << u"100"_s << u"sin cuenta"_s << false;
    }
    void storedAccountBalance() {
        QFETCH(int, canal);
        QFETCH(QString, clave);
        QFETCH(QString, saldoSim);
        QFETCH(bool, guardado);
        auto sim = simulador(configuracion({}, u"saldo="_s + saldoSim));
        anadirCuenta(sim->host(), clave);
        QTEST(saldo(QCoro::waitFor(SendAutCuenta(int16_t(canal)))), "resultado");
        QCOMPARE(filas(u"select Saldo, Remitente, movil from Canales"_s),
                 QStringList{guardado ? saldoSim + u"|Tienda |0034600123456"_s : u"7|Tienda|"_s});
        // The user name is the password in some rows: the log shows it masked.
        QCOMPARE(enRegistro(u"Conectando con Usuario: '"_s), canal == 1);
    }

    void urlRule_data() {
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("url");
        const QString ruta = u"/servlet/quelmoMessage.servlet.Servlet"_s;
        QTest::newRow("bare") << u"myhost"_s << u"HTTP://myhost"_s + ruta;
        QTest::newRow("upper scheme") << u"HTTP://myhost"_s << u"HTTP://myhost"_s + ruta;
        QTest::newRow("lower scheme, slash") << u"http://myhost/"_s << u"http://myhost"_s + ruta;
        QTest::newRow("https keeps its scheme") << u"https://h"_s << u"https://h"_s + ruta;
        QTest::newRow("https in any case") << u"HTTPS://h:8443/"_s << u"HTTPS://h:8443"_s + ruta;
        QTest::newRow("a scheme that only looks like it")
            << u"httpsh"_s << u"HTTP://httpsh"_s + ruta;
    }
    void urlRule() {
        QFETCH(QString, host);
        const auto cliente = qmXMLSend::crear();
        msPonerUrl(*cliente, host);
        QTEST(cliente->url, "url");
    }

    // A list's contacts reach the platform intact, a comment with markup
    // too, and its counts come back; the publication screen's test covers
    // the other counts.
    void listPublicationCounts() {
        auto sim = simulador();
        const auto c = qmXMLSend::crear();
        c->usuario = u"demo"_s;
        c->clave = u"demo"_s;
        msPonerUrl(*c, sim->host());
        c->ltag = u"CLIENTES"_s;
        c->nborrar = u"0"_s;
        c->Lacc = u"U"_s;
        const QStringList numeros{u"0034600000001"_s, u"0034600000002"_s, u"abc"_s};
        for (int i = 0; i < numeros.size(); ++i)
            c->XMLMensajes.AddContacto(QString::number(i), numeros[i], u"Ana"_s, u"<&>"_s);
        QString nn, ff;
        c->SendXMLLista(nn, ff);
        const auto& r = c->RXAutentificacion;
        QCOMPARE(QStringList({r.Resultado, r.CADD, r.CUP, r.CERR}).join(u' '), u"1 2 0 1"_s);
    }
};

QUELMO_TEST_MAIN(TestDelivery)
#include "test_delivery.moc"
