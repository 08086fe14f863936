// The options screen and the password prompt: the checks with their words,
// what is stored, and that a saved change takes effect without a restart.
#include "TestSupportGui.h"
#include "app/Arranque.h"
#include "app/InterfazGrafica.h"
#include "app/Transmisor.h"
#include "app/frmOpciones.h"
#include "app/frmpwd.h"
#include "app/frmweb.h"
#include "app/mdoMain.h"
#include "base/Ajustes.h"
#include "base/Cifrado.h"
#include "base/Conversiones.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"
#include "widgets/PantallasHijas.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

using namespace Qt::StringLiterals;
using prueba::hijo;

class TestGuiOpciones : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    static QVariant opcion(const QString& columna) {
        return Conexion().query(u"select "_s + columna + u" from opciones"_s).value(0, 0);
    }

  private Q_SLOTS:
    void init() { world.baseNueva(u"opc.db"_s); }

    void checksAndWhatIsStored_data() {
        QTest::addColumn<QString>("lote");
        QTest::addColumn<QString>("intervalo");
        QTest::addColumn<QString>("clave");
        QTest::addColumn<QString>("confirmacion");
        QTest::addColumn<QString>("aviso");  // empty: stored
        const QString lote = u"Valor no válido para Nº máximo de mensajes por Lote"_s;
        const QString rango = lote + u"\nDebe se un número entre 1 y 500."_s;
        const QString tiempo =
            u"Valor no válido para intervalo de envío de mensajes en Bandeja de Salida"_s;
        const QString longitud = u"La longitud mínima para la contraseña es de 4 caracteres."_s;
        QTest::newRow("batch 0") << u"0"_s << u"60"_s << u""_s << u""_s << rango;
        QTest::newRow("batch 501") << u"501"_s << u"60"_s << u""_s << u""_s << rango;
        QTest::newRow("batch text") << u"diez"_s << u"60"_s << u""_s << u""_s << lote;
        QTest::newRow("batch 1") << u"1"_s << u"60"_s << u""_s << u""_s << QString();
        QTest::newRow("batch 500") << u"500"_s << u"60"_s << u""_s << u""_s << QString();
        QTest::newRow("batch of a thousand, grouped")
            << u"1.000"_s << u"60"_s << u""_s << u""_s << rango;
        QTest::newRow("interval 14") << u"50"_s << u"14"_s << u""_s << u""_s
                                     << tiempo + u"\nEl tiempo mínimo es de 15 Segundos."_s;
        QTest::newRow("interval empty") << u"50"_s << u""_s << u""_s << u""_s << tiempo;
        QTest::newRow("interval 15") << u"50"_s << u"15"_s << u""_s << u""_s << QString();
        // Longer than the cycle can run by would stop it.
        QTest::newRow("interval 32767") << u"50"_s << u"32767"_s << u""_s << u""_s << QString();
        QTest::newRow("interval 32768") << u"50"_s << u"32768"_s << u""_s << u""_s << tiempo;
        QTest::newRow("interval 15.5 as typed")
            << u"50"_s << u"15.5"_s << u""_s << u""_s << QString();
        QTest::newRow("interval with a decimal comma")
            << u"50"_s << u"20,5"_s << u""_s << u""_s << QString();
        QTest::newRow("password 3") << u"50"_s << u"60"_s << u"abc"_s << u"abc"_s << longitud;
        QTest::newRow("password 4") << u"50"_s << u"60"_s << u"abcd"_s << u"abcd"_s << QString();
        QTest::newRow("confirmation differs")
            << u"50"_s << u"60"_s << u"abcd"_s << u"abcD"_s
            << u"Contraseña y confirmación de contraseña no son iguales"_s;
        QTest::newRow("confirmation alone")
            << u"50"_s << u"60"_s << u""_s << u"abcd"_s << QString();
        QTest::newRow("the no-password word")
            << u"50"_s << u"60"_s << u"sinclavedeentrada"_s << u"sinclavedeentrada"_s << QString();
    }
    void checksAndWhatIsStored() {
        QFETCH(QString, lote);
        QFETCH(QString, intervalo);
        QFETCH(QString, clave);
        QFETCH(QString, confirmacion);
        QFETCH(QString, aviso);
        InterfazGuionada ui;
        Transmisor transmisor;
        transmisor.armarTemporizador();
        estadoAplicacion().gsClaveAcceso = u"previa"_s;
        frmOpciones pantalla;
        pantalla.show();
        hijo<QLineEdit>(&pantalla, u"txtmaxlote"_s)->setText(lote);
        hijo<QLineEdit>(&pantalla, u"txttimer"_s)->setText(intervalo);
        hijo<QLineEdit>(&pantalla, u"txtpwdcontactos"_s)->setText(clave);
        hijo<QLineEdit>(&pantalla, u"txtpwdcontactos2"_s)->setText(confirmacion);
        hijo<QCheckBox>(&pantalla, u"Chkcontactos"_s)->setChecked(true);
        QTest::mouseClick(hijo<QPushButton>(&pantalla, u"cmdAñadir"_s), Qt::LeftButton);

        const bool guardado = aviso.isEmpty();
        QCOMPARE(prueba::cajas(ui),
                 QStringList{guardado ? u"64 Datos de Opciones  guardados correctamente.\n\nTiempo "
                                        u"de envío de mensajes en bandeja de Salida establecido "
                                        u"en %1 Seg.\n\n"_s.arg(intervalo)
                                      : QString(u"48 "_s + aviso)});
        // Refused: the screen stays and nothing changes.
        QCOMPARE(pantalla.isVisible(), !guardado);
        QCOMPARE(opcion(u"maxlote || '/' || solocontactos"_s).toString(),
                 guardado ? QString(lote + u"/1"_s) : u"50/0"_s);
        QCOMPARE(Ajustes::getSetting(u"Tr"_s, u"Interval"_s), guardado ? intervalo : u"60"_s);
        if (!guardado) {
            QCOMPARE(estadoAplicacion().gsClaveAcceso, u"previa"_s);
            return;
        }
        // The new interval runs from now on.
        QVERIFY(transmisor.Timer1().isActive());
        QCOMPARE(transmisor.Timer1().interval(), qRound(aNumero(intervalo)) * 1000);
        // The password holds at once, and the same way after a restart.
        const bool conClave = !clave.isEmpty() && clave != u"sinclavedeentrada"_s;
        for (int arranque = 0; arranque < 2; ++arranque) {
            ui.passwordPrompts = 0;
            ui.passwords = {clave};
            QVERIFY(msComprobarAcceso());
            QCOMPARE(ui.passwordPrompts, conClave ? 1 : 0);
            cargarClaveAcceso();
        }
    }

    void loadShowsWhatIsStored_data() {
        QTest::addColumn<QString>("clave");  // as stored, before encoding; null: never saved
        QTest::addColumn<QString>("intervalo");
        QTest::addColumn<QString>("enCajas");
        QTest::addColumn<QString>("intervaloVisto");
        QTest::newRow("password") << u"abcd"_s << u"30"_s << u"abcd"_s << u"30"_s;
        QTest::newRow("no password") << u"sinclavedeentrada"_s << u"15"_s << u""_s << u"15"_s;
        QTest::newRow("never saved") << QString() << u"14"_s << u""_s << u"60"_s;
    }
    void loadShowsWhatIsStored() {
        QFETCH(QString, clave);
        QFETCH(QString, intervalo);
        QFETCH(QString, intervaloVisto);
        InterfazGuionada ui;
        if (!clave.isNull()) Ajustes::saveSetting(u"Tr"_s, u"pwc"_s, msCifrarClave(clave, true));
        Ajustes::saveSetting(u"Tr"_s, u"Interval"_s, intervalo);
        Conexion().exec(u"update opciones set maxlote=120, solocontactos=1, imgfondo='/x/y.jpg'"_s);
        frmOpciones pantalla;
        for (const QString& caja : {u"txtpwdcontactos"_s, u"txtpwdcontactos2"_s}) {
            QTEST(hijo<QLineEdit>(&pantalla, caja)->text(), "enCajas");
            QCOMPARE(hijo<QLineEdit>(&pantalla, caja)->echoMode(), QLineEdit::Password);
        }
        QCOMPARE(hijo<QLineEdit>(&pantalla, u"txttimer"_s)->text(), intervaloVisto);
        QCOMPARE(Ajustes::getSetting(u"Tr"_s, u"Interval"_s), intervaloVisto);
        QCOMPARE(hijo<QLineEdit>(&pantalla, u"txtmaxlote"_s)->text(), u"120"_s);
        QCOMPARE(hijo<QLineEdit>(&pantalla, u"txtimgfondo"_s)->text(), u"/x/y.jpg"_s);
        QVERIFY(hijo<QCheckBox>(&pantalla, u"Chkcontactos"_s)->isChecked());
        QVERIFY(ui.boxes.isEmpty());
    }

    void loadWithoutDatabaseSendsToTheSelection() {
        InterfazGuionada ui;
        Conexion().close();
        frmOpciones pantalla;
        QCOMPARE(prueba::cajas(ui), QStringList{prueba::kCajaBaseNoValida});
        QCOMPARE(ui.selectDatabaseShown, 1);
    }

    void pictureChosenShowsAtOnce() {
        InterfazGuionada ui;
        frmweb panel;
        PantallasHijas::setArea(&panel);
        QVERIFY(!panel.fondoPropio());
        // A path with an apostrophe is stored as it is.
        const QString ruta = world.root() + u"/o'neill.png"_s;
        QImage(40, 30, QImage::Format_RGB32).save(ruta);
        frmOpciones pantalla;
        auto* txtimgfondo = hijo<QLineEdit>(&pantalla, u"txtimgfondo"_s);
        auto* examinar = hijo<QPushButton>(&pantalla, u"cmdexaminar"_s);
        ui.fileNames = {ruta, QString()};
        QTest::mouseClick(examinar, Qt::LeftButton);
        QCOMPARE(txtimgfondo->text(), ruta);
        // Cancelling the dialog keeps the path.
        QTest::mouseClick(examinar, Qt::LeftButton);
        QCOMPARE(txtimgfondo->text(), ruta);
        QVERIFY(pantalla.msGuardarOpciones());
        QCOMPARE(opcion(u"imgfondo"_s).toString(), ruta);
        QVERIFY(panel.fondoPropio());
        QCOMPARE(panel.fondo().size(), QSize(40, 30));

        // Cleared, or a file that is no picture: the program's own picture.
        for (const QString& otra : QStringList{QString(), world.root() + u"/no-existe.jpg"_s}) {
            txtimgfondo->setText(otra);
            QVERIFY(pantalla.msGuardarOpciones());
            QVERIFY(!panel.fondoPropio());
            QCOMPARE(panel.fondo(), frmweb::fondoIncluido());
        }
        PantallasHijas::setArea(nullptr);
    }

    // The picture dialog names its filters by their patterns of old and
    // still filters by what it can read.
    void pictureDialogFilters() {
        InterfazGrafica gui;
        establecerInterfaz(&gui);
        frmOpciones pantalla;
        QStringList vistos;
        QStringList patrones;
        QTimer::singleShot(0, this, [&] {
            auto* d = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            QVERIFY(d);
            const auto* tipos = d->findChild<QComboBox*>(u"fileTypeCombo"_s);
            for (int i = 0; i < tipos->count(); ++i) vistos << tipos->itemText(i);
            patrones = d->findChild<QFileSystemModel*>()->nameFilters();
            d->reject();
        });
        QTest::mouseClick(hijo<QPushButton>(&pantalla, u"cmdexaminar"_s), Qt::LeftButton);
        establecerInterfaz(nullptr);
        QCOMPARE(vistos, (QStringList{u"Imágenes (*.jpg;*.bmp)"_s, u"Todos los Ficheros (*.*)"_s}));
        QCOMPARE(patrones, (QStringList{u"*.jpg"_s, u"*.bmp"_s, u"*.png"_s}));
        QVERIFY(hijo<QLineEdit>(&pantalla, u"txtimgfondo"_s)->text().isEmpty());
    }

    void promptTakesWhatWasTyped_data() {
        QTest::addColumn<QString>("tecleado");
        QTest::addColumn<bool>("enter");  // Enter in the box, else the cancel button
        QTest::addColumn<QString>("introducida");
        QTest::newRow("enter") << u"Secreta 1"_s << true << u"Secreta 1"_s;
        QTest::newRow("cancel") << u"Secreta 1"_s << false << u""_s;
    }
    void promptTakesWhatWasTyped() {
        QFETCH(QString, tecleado);
        QFETCH(bool, enter);
        estadoAplicacion().gsClaveIntroducida = u"antes"_s;
        frmpwd prompt;
        prompt.show();
        QCOMPARE(prompt.windowTitle(), u"Quelmo Mensajes SMS - Acceso Restringido"_s);
        auto* text1 = hijo<QLineEdit>(&prompt, u"Text1"_s);
        QCOMPARE(text1->echoMode(), QLineEdit::Password);
        text1->setFocus();
        QTest::keyClicks(text1, tecleado);
        if (enter)
            QTest::keyClick(text1, Qt::Key_Return);
        else
            QTest::mouseClick(hijo<QPushButton>(&prompt, u"CmdSalir"_s), Qt::LeftButton);
        QVERIFY(!prompt.isVisible());
        QTEST(estadoAplicacion().gsClaveIntroducida, "introducida");
        // The key is taken by the prompt, not typed into the box.
        QCOMPARE(text1->text(), tecleado);
    }
};

QUELMO_GUI_TEST_MAIN(TestGuiOpciones)
#include "test_gui_opciones.moc"
