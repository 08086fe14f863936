// End to end against the platform simulator: the balance button's three
// outcomes, and a text typed to a contact and to a number sent with
// "Enviar Todo", found in the history with the balance renewed.
#include "SimuladorPrueba.h"
#include "TestSupportGui.h"
#include "app/Transmisor.h"
#include "base/Ajustes.h"
#include "base/EstadoAplicacion.h"
#include "composition/frmEnvio.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <memory>

using namespace Qt::StringLiterals;

class TestExtremo : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    std::unique_ptr<SimuladorPrueba> sim;

    // A fresh database with one account at the running simulator.
    bool preparar(const QString& clave = u"demo"_s) {
        world.baseNueva(u"extremo.db"_s);
        sim = std::make_unique<SimuladorPrueba>(
            world.root(),
            u"[plataforma]\nversion=325\n[cuenta1]\nusuario=demo\nclave=demo\n"
            u"saldo=100\nmovil=0034600123456\n"_s);
        prueba::cuentaPrincipal(sim->host(), clave,
                                {{u"Remitente"_s, u""_s}, {u"remopc"_s, 0}, {u"imptextos"_s, 0}});
        return sim->listo();
    }
    static QString cuenta(frmEnvio& f) {
        return f.findChild<QComboBox*>(u"ImageCombo1"_s)->currentText();
    }

  private Q_SLOTS:
    void cleanup() { sim.reset(); }

    void balanceButton_data() {
        QTest::addColumn<QString>("clave");
        QTest::addColumn<bool>("parado");
        QTest::addColumn<QString>("caja");
        QTest::addColumn<QString>("combo");
        QTest::newRow("balance renewed")
            << u"demo"_s << false << QString() << u"Principal   (100 Créditos)"_s;
        QTest::newRow("refused") << u"otra"_s << false
                                 << u"Autentificación Denegada, Revise Usuario y Contraseña y "
                                    u"que su Cuenta esté ACTIVA."_s
                                 << u"Principal   (0 Créditos)"_s;
        QTest::newRow("no connection") << u"demo"_s << true
                                       << u"Error de conexión. Imposible conectar con Quelmo "
                                          u"Mensajes, revise su conexión a Internet.\nNo se "
                                          u"pudo conectar con la plataforma: "_s
                                       << u"Principal   (0 Créditos)"_s;
    }
    void balanceButton() {
        QFETCH(QString, clave);
        QFETCH(bool, parado);
        QFETCH(QString, caja);
        QFETCH(QString, combo);
        QVERIFY(preparar(clave));
        InterfazGuionada ui;
        if (parado) sim->detener();
        frmEnvio f;
        f.findChild<QPushButton*>(u"cmdSaldo"_s)->click();
        QTRY_VERIFY(caja.isEmpty() ? cuenta(f).startsWith(combo) : !ui.boxes.isEmpty());
        // The cause ends in the transport library's own words.
        const QString texto = ui.boxes.isEmpty() ? QString() : ui.boxes.first().text;
        QVERIFY2(caja.isEmpty() ? texto.isEmpty() : texto.startsWith(caja), qPrintable(texto));
        if (!caja.isEmpty()) QCOMPARE(ui.boxes.first().style, Msg::Critical);
        QVERIFY2(cuenta(f).startsWith(combo), qPrintable(cuenta(f)));
    }

    void composeAndSendEverything() {
        QVERIFY(preparar());
        InterfazGuionada ui;
        prueba::contacto(u"0034600000001"_s, u"ana"_s, 1);
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        Transmisor tx;

        frmEnvio f;
        f.show();
        f.findChild<QLineEdit*>(u"Text1"_s)->setText(u"ana;600123456"_s);
        f.findChild<QPlainTextEdit*>(u"txtMensaje"_s)->setPlainText(u"Hola desde la prueba"_s);
        f.findChild<QPushButton*>(u"cmdEnviar"_s)->click();
        QTRY_COMPARE(prueba::cuantos(u"select count(*) from HEnvios"_s), 2);
        // The balance the platform reported after the batch.
        QTRY_VERIFY2(cuenta(f).startsWith(u"Principal   (98 Créditos)"_s), qPrintable(cuenta(f)));

        QCOMPARE(prueba::columna(u"select Abonado from HEnvios order by Abonado"_s),
                 (QStringList{u"0034600000001"_s, u"0034600123456"_s}));
        QCOMPARE(prueba::cuantos(u"select count(*) from envios"_s), 0);
        QCOMPARE(sim->registro().size(), 2);
    }
};

QUELMO_GUI_TEST_MAIN(TestExtremo)
#include "test_extremo.moc"
