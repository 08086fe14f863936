// The mobile number as each route reads it, and the door of the outbox:
// whatever any route lets in, the batch sender sends.
#include "TestSupport.h"
#include "base/Avisos.h"
#include "base/Movil.h"
#include "composition/Envio.h"
#include "db/Bandeja.h"
#include "delivery/Lote.h"
#include "history/mdoEmergencias.h"
#include "history/mdoHistorico.h"
#include "import/mdoImport.h"
#include "scheduling/clsTareasPendientes.h"

#include <QSignalSpy>

using namespace Qt::StringLiterals;
using prueba::bd;

namespace {

using Movil::Via;

const QList<Via> kVias = {Via::Contacto, Via::Envio,      Via::Importacion,
                          Via::Lote,     Via::Emergencia, Via::Programado};

// What a route made of a number: the number, or "✗" and why not.
QString lectura(Via via, const QString& numero) {
    const Movil::Numero n = Movil::leer(via, numero);
    switch (n.fallo) {
        case Movil::Fallo::Ninguno:
            return n.numero;
        case Movil::Fallo::NoNumerico:
            return u"✗ no numérico"_s;
        case Movil::Fallo::SinCodigoInternacional:
            return u"✗ sin 00"_s;
        case Movil::Fallo::Largo:
            return u"✗ largo"_s;
        case Movil::Fallo::NoEnviable:
            return u"✗ no enviable"_s;
    }
    return {};
}

// Inputs met in the wild: separators, exponents, signs, blanks, letters.
// clang-format off
const QStringList kEntradas = {
    u"629000000"_s, u"6.290.000"_s, u"+34629000000"_s, u"34629000000"_s, u"0034712345678"_s,
    u"0034629000000"_s, u"0044123"_s, u"0044.123"_s, u""_s, u"   "_s, u"abc"_s, u"-629000000"_s,
    u"1e5"_s, u"12,5"_s, u" 629000000"_s, u"629 000 000"_s, u"+"_s, u"00"_s, u"+44+7700"_s,
    u"0x1F"_s, u"$100"_s, u"٦٢٩٠٠٠٠٠٠"_s, u"00346290000000"_s};
// clang-format on

}  // namespace

class TestNumero : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private Q_SLOTS:
    void init() {
        world.baseNueva(u"numero.db"_s);
        prueba::cuenta(1, u"Principal"_s, {{u"Principal"_s, 1}});
    }

    // Each route in its own column: contact editor, compose, import line,
    // batch sender, emergency send, scheduled run.
    void cadaVia_data() {
        QTest::addColumn<QString>("numero");
        QTest::addColumn<QStringList>("lecturas");
        const QString noNum = u"✗ no numérico"_s, sin00 = u"✗ sin 00"_s, largo = u"✗ largo"_s,
                      noEnv = u"✗ no enviable"_s;
        const QString n = u"0034629000000"_s, n34 = u"003434629000000"_s, fijo = u"0034712345678"_s,
                      uk = u"0044123"_s;
        QTest::newRow("dots pass the lenient test only")
            << u"6.290.000"_s << QStringList{sin00, noEnv, noEnv, noNum, noEnv, noEnv};
        QTest::newRow("plus") << u"+34629000000"_s << QStringList{sin00, n, largo, n, n, n};
        QTest::newRow("34 without 00")
            << u"34629000000"_s << QStringList{sin00, largo, n, n34, n34, n34};
        QTest::newRow("Spanish landline")
            << fijo << QStringList{fijo, fijo, largo, fijo, fijo, fijo};
        QTest::newRow("national") << u"629000000"_s << QStringList{sin00, n, n, n, n, n};
        QTest::newRow("another country, short") << uk << QStringList{largo, uk, uk, uk, uk, uk};
        QTest::newRow("another country with a dot")
            << u"0044.123"_s << QStringList{largo, noEnv, noEnv, noNum, noEnv, noEnv};
        QTest::newRow("empty") << u""_s
                               << QStringList{noNum, noNum, largo, noNum, u"0034"_s, noEnv};
        QTest::newRow("blanks") << u"   "_s
                                << QStringList{noNum, noNum, largo, noNum, u"0034   "_s, noEnv};
        QTest::newRow("letters") << u"abc"_s
                                 << QStringList{noNum, noNum, largo, noNum, noEnv, noEnv};
        QTest::newRow("every plus of a scheduled number")
            << u"+44+7700"_s << QStringList{noNum, noNum, largo, noNum, noEnv, u"0044007700"_s};
    }
    void cadaVia() {
        QFETCH(QString, numero);
        QStringList hechas;
        for (Via via : kVias) hechas << lectura(via, numero);
        QTEST(hechas, "lecturas");
    }

    // No route lets in a number that the sender then refuses on every run:
    // it would wait in the outbox for ever.
    void loQueEntraSeEnvia() {
        for (Via via : kVias) {
            if (via == Via::Lote) continue;
            for (const QString& entrada : kEntradas) {
                const Movil::Numero n = Movil::leer(via, entrada);
                if (!n.valido()) continue;
                // A contact is read again by the route that sends to it.
                const QString guardado =
                    via == Via::Contacto ? Movil::leer(Via::Envio, n.numero).numero : n.numero;
                QVERIFY2(!Lote::normalizarDestino(guardado).isEmpty(),
                         qPrintable(entrada + u" -> "_s + guardado));
            }
        }
    }

    // Every route through the door: what it queued goes out, what it
    // refused is not there, and the screens heard of it once.
    void lasRutasPasanPorLaPuerta() {
        bd().exec(
            u"INSERT INTO Abonados (Codigo,Alias,Comentario,Canal) VALUES "
            u"('0034600000001','ana','',1),('6.290.000','mal','',1)"_s);
        bd().exec(
            u"INSERT INTO Automaticos (Codigo,Nombre,TareaProgramada) VALUES (1,'Aviso',0)"_s);
        bd().exec(
            u"INSERT INTO AboAuto (Automatico,Abonado,Mensaje) VALUES "
            u"(1,'0034600000001','a ana'),(1,'6.290.000','a mal')"_s);
        InterfazGuionada ui;
        QSignalSpy cambios(&Avisos::instancia(), &Avisos::bandejaCambiada);

        std::optional<QString> rechazados;
        agregarMensajes(u"600000002;6.290.000"_s, u"hola"_s, false, 1,
                        [&](const QString& r, const ErrorBD*) { rechazados = r; });
        QTRY_COMPARE(rechazados, std::optional<QString>(u"00346.290.000"_s));
        QCOMPARE(cambios.count(), 1);
        QVERIFY(msImportarLinea(1, u"600000003"_s, u"importado"_s, 0, false, false));
        QVERIFY(!msImportarLinea(1, u"0044.123"_s, u"punto"_s, 0, false, false));
        QCOMPARE(cambios.count(), 2);
        const Resultado<int> emergencia = msEnviarEmergencia(1);
        QVERIFY(emergencia);
        QCOMPARE(*emergencia, 1);
        QCOMPARE(cambios.count(), 3);
        QVERIFY(!msReenviarMensaje(u"ENVIO_SIMULADO"_s, u"simulado"_s).ok());
        QVERIFY(msReenviarMensaje(u"0034600000004"_s, u"otra vez"_s).ok());
        QCOMPARE(cambios.count(), 4);
        // A scheduled run: every "+" becomes "00"; the dotted one stays out.
        prueba::programa(2, u"Periodicidad=1 Hora=11:30"_s);
        bd().exec(
            u"INSERT INTO Abonados (Codigo,Alias,Comentario,Canal) VALUES "
            u"('+34600000005','cinco','',1)"_s);
        bd().exec(
            u"INSERT INTO AboAuto (Automatico,Abonado,Mensaje) VALUES "
            u"(2,'+34600000005','programado'),(2,'6.290.000','mal')"_s);
        {
            RelojFijo reloj(prueba::en(u"15/03/2006 11:30:10"_s));
            QCOMPARE(prueba::esperar(clsTareasPendientes::ReLoad()), 1);
        }
        QCOMPARE(cambios.count(), 5);

        const QStringList abonados = prueba::columna(u"SELECT Abonado FROM envios ORDER BY Id"_s);
        QCOMPARE(abonados, (QStringList{u"0034600000002"_s, u"0034600000003"_s, u"0034600000001"_s,
                                        u"0034600000004"_s, u"0034600000005"_s}));
        for (const QString& a : abonados) QVERIFY(!Lote::normalizarDestino(a).isEmpty());
        QCOMPARE(prueba::cuantos(u"SELECT count(*) FROM envios WHERE intento <> 2"_s), 0);
    }
};

QUELMO_TEST_MAIN(TestNumero)
#include "test_numero.moc"
