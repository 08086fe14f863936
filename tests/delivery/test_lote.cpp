// The steps of a batch on their own, without the platform: destinations,
// the cut of long texts into pieces, what a result writes, the account's
// update.
#include "TestSupport.h"
#include "base/Error.h"
#include "base/Reloj.h"
#include "db/Conexion.h"
#include "delivery/Lote.h"
#include "delivery/qmXMLSend.h"

#include <QElapsedTimer>

using namespace Qt::StringLiterals;
using prueba::cuantos;

namespace {

const QDateTime kAhora(QDate(2026, 3, 1), QTime(10, 0));

// No lone half of a surrogate pair: nothing was cut in two.
bool utf16Entero(const QString& s) {
    for (qsizetype i = 0; i < s.size(); ++i) {
        if (s[i].isHighSurrogate()) {
            if (i + 1 >= s.size() || !s[i + 1].isLowSurrogate()) return false;
            ++i;
        } else if (s[i].isLowSurrogate()) {
            return false;
        }
    }
    return true;
}

}  // namespace

class TestLote : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private Q_SLOTS:
    void init() { world.baseNueva(u"lote.db"_s); }

    void destinations_data() {
        QTest::addColumn<QString>("abonado");
        QTest::addColumn<QString>("destino");  // empty: refused
        QTest::newRow("national") << u"629000000"_s << u"0034629000000"_s;
        QTest::newRow("international stays") << u"0034123456789"_s << u"0034123456789"_s;
        QTest::newRow("plus") << u"+447700900123"_s << u"00447700900123"_s;
        QTest::newRow("blanks around") << u" 629000001 "_s << u"0034629000001"_s;
        QTest::newRow("simulated, national") << u"111111111"_s << u"ENVIO_SIMULADO"_s;
        QTest::newRow("simulated, plus") << u"+34999999999"_s << u"ENVIO_SIMULADO"_s;
        QTest::newRow("simulated, international") << u"0034999999999"_s << u"ENVIO_SIMULADO"_s;
        QTest::newRow("sign only") << u"+"_s << QString();
        QTest::newRow("blanks only") << u"   "_s << QString();
        QTest::newRow("exponent") << u"6e5"_s << QString();
        QTest::newRow("decimal") << u"629.5"_s << QString();
        QTest::newRow("blank inside") << u"629 000 000"_s << QString();
        QTest::newRow("arabic-indic digits") << u"٦٢٩"_s << QString();
    }
    void destinations() {
        QFETCH(QString, abonado);
        QTEST(Lote::normalizarDestino(abonado), "destino");
    }

    void pieces_data() {
        QTest::addColumn<QString>("texto");
        QTest::addColumn<QStringList>("claves");
        QTest::addColumn<QList<int>>("caracteres");  // of each piece, header included
        const QString emoji = u"😀"_s;
        QTest::newRow("160 goes whole")
            << QString(160, u'a') << QStringList{u"7"_s} << QList<int>{160};
        QTest::newRow("161 is cut")
            << QString(161, u'a') << QStringList{u"7"_s, u"X2X7"_s} << QList<int>{156, 17};
        QTest::newRow("300 in two")
            << QString(300, u'a') << QStringList{u"7"_s, u"X2X7"_s} << QList<int>{156, 156};
        QTest::newRow("160 emoji are 160 characters")
            << emoji.repeated(160) << QStringList{u"7"_s} << QList<int>{160};
        QTest::newRow("emoji across the cut")
            << QString(149, u'a') + emoji + QString(11, u'b') << QStringList{u"7"_s, u"X2X7"_s}
            << QList<int>{156, 17};
    }
    void pieces() {
        QFETCH(QString, texto);
        QFETCH(QStringList, claves);
        QFETCH(QList<int>, caracteres);
        const QVector<Lote::Pieza> piezas = Lote::cortarTexto(u"7"_s, texto);
        QCOMPARE(piezas.size(), claves.size());
        QString unido;
        for (int i = 0; i < piezas.size(); ++i) {
            QCOMPARE(piezas[i].clave, claves[i]);
            QVERIFY(utf16Entero(piezas[i].texto));
            QCOMPARE(int(piezas[i].texto.toUcs4().size()), caracteres[i]);
            const QString cabecera =
                piezas.size() > 1 ? u"(%1-%2) "_s.arg(i + 1).arg(piezas.size()) : QString();
            QVERIFY(piezas[i].texto.startsWith(cabecera));
            unido += piezas[i].texto.mid(cabecera.size());
        }
        QCOMPARE(unido, texto);
    }

    // Id 5 is in the outbox with 2 attempts left.
    void resultOfOneItem_data() {
        QTest::addColumn<QString>("clave");
        QTest::addColumn<QString>("destino");
        QTest::addColumn<bool>("tomado");
        QTest::addColumn<int>("historial");
        QTest::addColumn<int>("intento");  // 0: the row is gone
        QTest::newRow("taken") << u"5"_s << u"0034629000000"_s << true << 1 << 0;
        QTest::newRow("later piece taken") << u"X2X5"_s << u"0034629000000"_s << true << 1 << 2;
        QTest::newRow("refused") << u"5"_s << u"0034629000000"_s << false << 0 << 1;
        QTest::newRow("later piece refused") << u"X2X5"_s << u"0034629000000"_s << false << 0 << 2;
        QTest::newRow("simulated counts as taken")
            << u"5"_s << u"ENVIO_SIMULADO"_s << false << 1 << 0;
    }
    void resultOfOneItem() {
        QFETCH(QString, clave);
        QFETCH(QString, destino);
        QFETCH(bool, tomado);
        QFETCH(int, historial);
        QFETCH(int, intento);
        RelojFijo reloj(kAhora);
        prueba::pendiente(u"629000000"_s, u"hola"_s, 1, 5);
        qmXMLSend::Item item;
        item.Key = clave;
        item.Destino = destino;
        item.Mensaje = u"hola"_s;
        item.Resultado = tomado;
        item.Comentario = u"Mensaje aceptado"_s;
        Lote::aplicarResultado(Conexion(), item, 1, u"Principal (Tienda)"_s);
        QCOMPARE(cuantos(u"select count(*) from HEnvios"_s), historial);
        QCOMPARE(cuantos(u"select coalesce(sum(intento),0) from envios"_s), intento);
        if (intento == 1)
            QCOMPARE(Conexion().query(u"select Registro from envios"_s).value(0, 0).toString(),
                     aTextoBD(kAhora));
        if (historial == 1) {
            const ResultadoConsulta h =
                Conexion().query(u"select Abonado, Mensaje, Resultado, Canal, crem from HEnvios"_s);
            QCOMPARE(h.row(0), (QVector<QVariant>{destino, u"hola"_s, u"Mensaje aceptado"_s,
                                                  qlonglong(1), u"Principal (Tienda)"_s}));
        }
    }

    void accountUpdate_data() {
        QTest::addColumn<QString>("saldo");
        QTest::addColumn<QString>("guardado");  // empty: refused, nothing written
        QTest::newRow("number") << u"42"_s << u"42"_s;
        QTest::newRow("blanks around") << u" 42 "_s << u"42"_s;
        QTest::newRow("letters") << u"abc"_s << QString();
        QTest::newRow("empty") << QString() << QString();
    }
    void accountUpdate() {
        QFETCH(QString, saldo);
        QFETCH(QString, guardado);
        Conexion().exec(
            u"INSERT INTO Canales (Canal,Nombre,Host,usuario,clave,Saldo,Principal,Remitente,"
            "remopc,movil) VALUES (1,'Principal','h','demo','x',7,1,'Tienda ',0,'')"_s);
        bool fallo = false;
        try {
            Lote::actualizarCuenta(Conexion(), 1, saldo, u"Otro "_s, u"0034600123456"_s);
        } catch (const ErrorQuelmo& e) {
            fallo = true;
            QVERIFY(e.description().contains(u"Saldo no válido"_s));
        }
        QCOMPARE(fallo, guardado.isEmpty());
        QCOMPARE(prueba::filas(u"select Saldo, Remitente from Canales"_s),
                 QStringList{guardado.isEmpty() ? u"7|Tienda "_s : guardado + u"|Otro "_s});
    }

    // A null choice is the account's own text (the numbers: the delivery
    // test's accountIsRenewedAfterAnExchange).
    void nullSenderChoiceIsTheOwnText() {
        QCOMPARE(Lote::remitenteAGuardar(QVariant(), u"Tienda"_s, u"0034600123456"_s),
                 u"Tienda "_s);
    }

    // A wall clock that jumps while the pacing waits must neither freeze it
    // nor stretch it past the second.
    void pacingIgnoresWallClockSteps_data() {
        QTest::addColumn<int>("salto");  // seconds the wall clock moves after its first reading
        QTest::newRow("steady") << 0;
        QTest::newRow("stepped back an hour") << -3600;
        QTest::newRow("stepped forward an hour") << 3600;
    }
    void pacingIgnoresWallClockSteps() {
        QFETCH(int, salto);
        const QTime inicio(10, 0, 0, 200);
        int lecturas = 0;
        QElapsedTimer reloj;
        reloj.start();
        QCoro::waitFor(Lote::pausaEntreEnvios([&] {
            return lecturas++ == 0 ? inicio : inicio.addSecs(salto).addMSecs(reloj.elapsed());
        }));
        QVERIFY2(reloj.elapsed() < 1500, qPrintable(QString::number(reloj.elapsed())));
        QVERIFY(reloj.elapsed() >= 700);
    }
};

QUELMO_TEST_MAIN(TestLote)
#include "test_lote.moc"
