// Emergency sends: the list of multi-sends with their next and last run,
// the send of every recipient with its own text and its contact's
// account, and a schedule that stays as it was.
#include "TestSupport.h"
#include "TestSupportGui.h"
#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "base/EstadoAplicacion.h"
#include "base/Pantallas.h"
#include "history/PantallasHistorico.h"
#include "history/frmEmergencias.h"
#include "widgets/Listado.h"
#include "widgets/PantallasHijas.h"

#include <QPushButton>
#include <QSignalSpy>
#include <optional>

using namespace Qt::StringLiterals;
using namespace prueba;

namespace {

void nombre(int codigo, const QString& n) {
    bd().exec(u"UPDATE Automaticos SET Nombre = ? WHERE Codigo = ?"_s, {n, codigo});
}

void destinatario(int codigo, const QString& abonado, const QString& mensaje) {
    bd().exec(u"INSERT INTO AboAuto (Automatico,Abonado,Mensaje) VALUES (?,?,?)"_s,
              {codigo, abonado, mensaje});
}

void contacto(const QString& codigo, int canal) {
    prueba::contacto(codigo, u"Alias "_s + codigo, canal, u""_s);
}

}  // namespace

class TestEmergencias : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    std::optional<InterfazGuionada> ui;  // scripted answers, new for each test

  private Q_SLOTS:
    void init() {
        world.baseNueva(u"emergencias.db"_s);
        registrarPantallasHistorico();
        ui.emplace();
    }

    void listShowsNextAndLastRun() {
        // Wednesday 15/03/2006 10:00:30.
        RelojFijo reloj(QDateTime(QDate(2006, 3, 15), QTime(10, 0, 30)));
        programa(1, u"Periodicidad=1 Hora=11:00"_s);
        nombre(1, u"Diario sin enviar"_s);
        programa(2, u"Periodicidad=1 Hora=11:00"_s);
        bd().exec(u"UPDATE Automaticos SET UltimaTarea = '2006-03-14 11:00:00' WHERE Codigo=2"_s);
        nombre(2, u"Diario"_s);
        programa(3, u"Periodicidad=0 FechaIni=2006-03-01"_s);
        nombre(3, u"Una vez, pasado"_s);
        programa(4, u"Periodicidad=1 TareaProgramada=0"_s);
        nombre(4, u"Sin programar"_s);
        destinatario(4, u"0034600000001"_s, u"a"_s);
        destinatario(4, u"0034600000002"_s, u"b"_s);
        QVERIFY(Pantallas::abrir(u"frmEmergencias"_s));
        frmEmergencias* pantalla = PantallasHijas::instance<frmEmergencias>();
        QCOMPARE(pantalla->windowTitle(),
                 u"Selección de Mensajes Programados para envío inmediato"_s);
        QCOMPARE(filasDe(pantalla->ListView1),
                 (QStringList{u"Diario sin enviar|0|15/03/2006|nunca"_s,
                              u"Diario|0|15/03/2006|14/03/2006"_s,
                              u"Una vez, pasado|0|Finalizado|"_s, u"Sin programar|2|no|"_s}));
        QVERIFY(ui->boxes.isEmpty());
        delete pantalla;
    }

    void nothingToShowClosesTheScreen() {
        QVERIFY(Pantallas::abrir(u"frmEmergencias"_s));
        QCOMPARE(cajas(*ui), QStringList{u"16 No existen Mensajes Programados"_s});
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!PantallasHijas::isLoaded<frmEmergencias>());
    }

    void send_data() {
        QTest::addColumn<QStringList>("destinos");   // number|text
        QTest::addColumn<QStringList>("contactos");  // number|account
        QTest::addColumn<QStringList>("bandeja");    // number|text|intento|account
        QTest::newRow("number forms")
            << QStringList{u"+34600123456|uno"_s, u"600123456|dos"_s, u"00447700900123|tres"_s}
            << QStringList{u"+34600123456|1"_s, u"600123456|2"_s, u"00447700900123|3"_s}
            << QStringList{u"0034600123456|uno|2|1"_s, u"0034600123456|dos|2|2"_s,
                           u"00447700900123|tres|2|3"_s};
        QTest::newRow("a deleted contact is left out, the others go")
            << QStringList{u"0034600000001|a"_s, u"0034600000002|b"_s, u"0034600000003|c'est"_s}
            << QStringList{u"0034600000001|4"_s, u"0034600000003|5"_s}
            << QStringList{u"0034600000001|a|2|4"_s, u"0034600000003|c'est|2|5"_s};
        // It would wait in the outbox for ever: the sender refuses it.
        QTest::newRow("a malformed stored number stays out")
            << QStringList{u"00abc|x"_s, u"0034600000009|y"_s}
            << QStringList{u"00abc|1"_s, u"0034600000009|1"_s}
            << QStringList{u"0034600000009|y|2|1"_s};
    }
    void send() {
        QFETCH(QStringList, destinos);
        QFETCH(QStringList, contactos);
        QFETCH(QStringList, bandeja);
        RelojFijo reloj(QDateTime(QDate(2006, 3, 15), QTime(10, 0, 30)));
        programa(7, u"Periodicidad=1 Hora=11:00"_s);
        nombre(7, u"Aviso"_s);
        for (const QString& d : destinos)
            destinatario(7, d.section(u'|', 0, 0), d.section(u'|', 1));
        for (const QString& c : contactos)
            contacto(c.section(u'|', 0, 0), c.section(u'|', 1).toInt());
        const QStringList programaAntes = filas(u"SELECT * FROM Automaticos"_s);
        int envioAbierto = 0, bandejaAlAbrir = -1;
        QSignalSpy redibujo(&Avisos::instancia(), &Avisos::bandejaCambiada);
        Pantallas::registrar(u"frmEnvio"_s, [&] {
            ++envioAbierto;
            bandejaAlAbrir = int(redibujo.count());
        });
        frmEmergencias pantalla;
        pantalla.cmdEnviar->click();  // nothing chosen
        QCOMPARE(envioAbierto, 0);
        pantalla.ListView1->seleccionarFila(0);
        pantalla.cmdEnviar->click();
        QCOMPARE(filas(u"SELECT Abonado, Mensaje, intento, Canal FROM envios ORDER BY Id"_s),
                 bandeja);
        QCOMPARE(filas(u"SELECT DISTINCT Registro FROM envios"_s),
                 QStringList{u"2006-03-15 10:00:30"_s});
        QVERIFY(ui->boxes.isEmpty());
        // The rows are in, and told, before the compose screen comes up on them.
        QCOMPARE(envioAbierto, 1);
        QCOMPARE(bandejaAlAbrir, 1);
        QCOMPARE(redibujo.count(), 1);
        // The schedule and the list stay as they were.
        QCOMPARE(filas(u"SELECT * FROM Automaticos"_s), programaAntes);
        QCOMPARE(pantalla.ListView1->modelo()->texto(0, 3), u"nunca"_s);
        Pantallas::registrar(u"frmEnvio"_s, {});
    }

    // One press, one send: the multi-send goes once for a double click,
    // twice for two presses.
    void onePressOneSend_data() {
        QTest::addColumn<QString>("gesto");
        QTest::addColumn<int>("envios");
        QTest::newRow("double click") << u"doble"_s << 1;
        QTest::newRow("two presses apart") << u"dos"_s << 2;
    }
    void onePressOneSend() {
        QFETCH(QString, gesto);
        programa(7, u"Periodicidad=1"_s);
        nombre(7, u"Aviso"_s);
        destinatario(7, u"0034600000001"_s, u"a"_s);
        destinatario(7, u"0034600000002"_s, u"b"_s);
        contacto(u"0034600000001"_s, 1);
        contacto(u"0034600000002"_s, 1);
        Pantallas::registrar(u"frmEnvio"_s, [] {});
        frmEmergencias pantalla;
        pantalla.show();
        QVERIFY(QTest::qWaitForWindowExposed(&pantalla));
        pantalla.ListView1->seleccionarFila(0);
        if (gesto == u"doble"_s) {
            // What the window system delivers for a double click.
            QTest::mouseClick(pantalla.cmdEnviar, Qt::LeftButton);
            QTest::mousePress(pantalla.cmdEnviar, Qt::LeftButton);
            QTest::mouseDClick(pantalla.cmdEnviar, Qt::LeftButton);
            QTest::mouseRelease(pantalla.cmdEnviar, Qt::LeftButton);
        } else {
            QTest::mouseClick(pantalla.cmdEnviar, Qt::LeftButton);
            QTest::qWait(QApplication::doubleClickInterval() + 100);
            QTest::mouseClick(pantalla.cmdEnviar, Qt::LeftButton);
        }
        QCOMPARE(pantalla.cursor().shape(), Qt::ArrowCursor);
        QFETCH(int, envios);
        QCOMPARE(cuantos(u"SELECT count(*) FROM envios"_s), 2LL * envios);
        Pantallas::registrar(u"frmEnvio"_s, {});
    }

    void twoRecordsOfOneNameSendTheFirst() {
        programa(3, u"Periodicidad=1"_s);
        nombre(3, u"Club d'Amics"_s);
        programa(5, u"Periodicidad=1"_s);
        nombre(5, u"club d'amics"_s);
        contacto(u"0034600000001"_s, 1);
        destinatario(3, u"0034600000001"_s, u"del tres"_s);
        destinatario(5, u"0034600000001"_s, u"del cinco"_s);
        QVariant abierto;
        Pantallas::registrarConDato(u"frmNewMenAuto2"_s, [&](const QVariant& d) {
            abierto = d;
            // The editor changes the name; the list shows it afterwards.
            nombre(3, u"Renombrado"_s);
        });
        frmEmergencias pantalla;
        pantalla.ListView1->seleccionarFila(1);
        pantalla.cmdEnviar->click();
        QCOMPARE(filas(u"SELECT Mensaje FROM envios"_s), QStringList{u"del tres"_s});
        Q_EMIT pantalla.ListView1->dobleClicFila(1);
        QCOMPARE(abierto, QVariant(3));
        QCOMPARE(pantalla.ListView1->modelo()->texto(0, 0), u"Renombrado"_s);
        Pantallas::registrar(u"frmNewMenAuto2"_s, {});
    }

    void noRecipientsIsTold() {
        programa(2, u"Periodicidad=1"_s);
        nombre(2, u"Vacío"_s);
        frmEmergencias pantalla;
        pantalla.ListView1->seleccionarFila(0);
        pantalla.cmdEnviar->click();
        QCOMPARE(
            cajas(*ui),
            QStringList{u"16 ATENCIÓN, no existen Mensajes asignados a este mensaje programado"_s});
        QCOMPARE(bd().query(u"SELECT count(*) FROM envios"_s).value(0, 0).toInt(), 0);
    }
};

QUELMO_GUI_TEST_MAIN(TestEmergencias)
#include "test_emergencias.moc"
