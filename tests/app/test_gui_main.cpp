// The main window: its menu and toolbar, the access gate in front of the
// commands, the transmitter switch, the tray, the activity log panel and
// the closing rule.
#include "TestSupportGui.h"
#include "app/AppState.h"
#include "app/ChildScreens.h"
#include "app/Pantallas.h"
#include "app/Settings.h"
#include "app/frmLog.h"
#include "app/frmweb.h"
#include "app/mdiMain.h"
#include "app/mdoMain.h"

#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QSystemTrayIcon>
#include <QToolBar>

using namespace Qt::StringLiterals;

class TestGuiMain : public QObject {
    Q_OBJECT
  public:
    explicit TestGuiMain(TestWorld& w) : world(w) {}

  private:
    TestWorld& world;
    QStringList abiertas;  // screens opened through the registry
    int terminado = 0;

    // The frame after its first activation, on a current database.
    std::unique_ptr<mdiMain> ventana() {
        auto w = std::make_unique<mdiMain>();
        w->terminar = [this] { ++terminado; };
        for (const char16_t* n : {u"frmEnvio", u"frmHEnvios", u"frmMenPro", u"frmMenAuto",
                                  u"frmAbonados", u"frmGrupos", u"frmCanales", u"frmEmergencias"})
            Pantallas::registrar(QString::fromUtf16(n),
                                 [this, n] { abiertas << QString::fromUtf16(n); });
        QSignalSpy lista(w.get(), &mdiMain::primeraActivacionTerminada);
        w->show();
        if (!lista.wait(5000)) qFatal("no first activation");
        return w;
    }

    static QAction* accion(QWidget* w, const QString& clave) {
        QAction* a = w->findChild<QAction*>(clave);
        if (!a) qFatal("no action %s", qPrintable(clave));
        return a;
    }

    void principal(const QString& usuario, const QString& clave) {
        appState().Conexion.exec(
            u"INSERT INTO Canales (Canal,Nombre,usuario,clave,Principal) VALUES (1,'c',?,?,1)"_s,
            {usuario, clave});
    }

  private Q_SLOTS:
    void init() {
        world.reset();
        TestDb::createCurrent(rutaBaseDefecto());
        Settings::saveSetting(u"Despliegue"_s, u"Web"_s, u"http://www.ejemplo.test"_s);
        abiertas.clear();
        terminado = 0;
    }

    void menuTreeInOrder() {
        ScriptedInterface ui;
        auto w = ventana();
        // key, caption ("-" for a separator); a key with "K" opens a menu.
        const QStringList esperado = {u"KUsuarios &Contactos y Listas"_s,
                                      u"keyUsuarios &Contactos"_s,
                                      u"keySUsuarios -"_s,
                                      u"keyGrupos &Listas Locales"_s,
                                      u"keyPListas Listas &Web"_s,
                                      u"KMensajes &Mensajes"_s,
                                      u"keyEnviar &Enviar Mensajes"_s,
                                      u"keySMensajes1 -"_s,
                                      u"keyHEnviados &Mensajes Enviados"_s,
                                      u"keySMensajes2 -"_s,
                                      u"keyPMensajes Mensajes Prede&finidos"_s,
                                      u"keySMensajes3 -"_s,
                                      u"keyPAuto &Programar Mensajes"_s,
                                      u"keySMensajes4 -"_s,
                                      u"KImport &Importar"_s,
                                      u"keyImportar Im&portación Manual de Mensajes"_s,
                                      u"keySConf4 -"_s,
                                      u"keyImportarA Importación &Automática de Mensajes"_s,
                                      u"keySConf41 -"_s,
                                      u"keyImportarUser Importar &Contactos"_s,
                                      u"KConfig Con&figurar"_s,
                                      u"keyCanales &Cuentas"_s,
                                      u"keySConf1 -"_s,
                                      u"keyBD &Seleccionar Base de Datos"_s,
                                      u"keySConf2 -"_s,
                                      u"keyTX &Envío de SMS (Activado)"_s,
                                      u"keySConf3 -"_s,
                                      u"keyopc &Opciones"_s,
                                      u"KInfo &Ayuda"_s,
                                      u"keyHelp &Ayuda de Quelmo Mensajes SMS"_s,
                                      u"keyHome01 &Recarga"_s,
                                      u"keyInfo3 -"_s,
                                      u"keyHome07 Novedades Versión 3.2.5"_s,
                                      u"keyHome02 &www.ejemplo.test"_s,
                                      u"keyHome03 &Condiciones de Uso"_s,
                                      u"keyInfo4 -"_s,
                                      u"keyHome06 Contacta"_s,
                                      u"keyHome05 Acerca de &Quelmo Mensajes SMS"_s,
                                      u"keyExit3 -"_s,
                                      u"keyExit &Salir"_s};
        QStringList visto;
        for (QAction* top : w->menuBar()->actions()) {
            visto << top->objectName() + u' ' + top->text();
            for (QAction* a : top->menu()->actions())
                visto << a->objectName() + u' ' + (a->isSeparator() ? u"-"_s : a->text());
        }
        QCOMPARE(visto, esperado);
    }

    void toolbarInOrder() {
        ScriptedInterface ui;
        auto w = ventana();
        const QStringList esperado = {u"ENVIO|Enviar|Enviar Mensajes"_s,
                                      u"PROG|Programar|"_s,
                                      u"HISTORICO|Enviados|Ver Hisórico de Mensajes Enviados"_s,
                                      u"CANALES|Cuentas|Configuración de Cuentas"_s,
                                      u"RECARGA|Recarga|Recargar Crédito de Mensajes"_s,
                                      u"INFORMACION|Ayuda|Ver Ayuda"_s,
                                      u"SALIR|Salir|Salir de Quelmo Mensajes SMS"_s,
                                      u"OCULTAR|Ocultar|Ocultar Quelmo Mensajes SMS"_s};
        QStringList visto;
        for (QAction* a : w->findChild<QToolBar*>(u"Toolbar1"_s)->actions())
            if (!a->isSeparator())
                visto << a->objectName() + u'|' + a->text() + u'|' +
                             (a->toolTip() == a->text() ? QString() : a->toolTip());
        QCOMPARE(visto, esperado);
    }

    void gateStandsBeforeCommands_data() {
        QTest::addColumn<QString>("clave");   // action's key, or a toolbar key
        QTest::addColumn<bool>("boton");      // a toolbar key that no button carries
        QTest::addColumn<bool>("puerta");     // asks for the password first
        QTest::addColumn<QString>("efecto");  // screen opened or address handed out
        const QString web = u"http://www.ejemplo.test"_s;
        QTest::newRow("send") << u"keyEnviar"_s << false << true << u"frmEnvio"_s;
        QTest::newRow("contacts") << u"keyUsuarios"_s << false << true << u"frmAbonados"_s;
        QTest::newRow("accounts") << u"keyCanales"_s << false << true << u"frmCanales"_s;
        QTest::newRow("button send") << u"ENVIO"_s << false << true << u"frmEnvio"_s;
        QTest::newRow("button schedule") << u"PROG"_s << false << true << u"frmMenAuto"_s;
        QTest::newRow("button history") << u"HISTORICO"_s << false << true << u"frmHEnvios"_s;
        QTest::newRow("key in lower case")
            << u"emergencias"_s << true << true << u"frmEmergencias"_s;
        QTest::newRow("predefined") << u"PREDEFINIDOS"_s << true << true << u"frmMenPro"_s;
        QTest::newRow("help") << u"keyHelp"_s << false << false << rutaAyuda();
        QTest::newRow("button help") << u"INFORMACION"_s << false << false << rutaAyuda();
        QTest::newRow("web site") << u"keyHome02"_s << false << false << web;
        QTest::newRow("web lists") << u"keyPListas"_s << false << false << web;
        QTest::newRow("news") << u"keyHome07"_s << false << false << web + u"/novedadesqm.php"_s;
        QTest::newRow("contact") << u"keyHome06"_s << false << false
                                 << u"mailto:soporte@quelmo.example"_s;
        QTest::newRow("recharge") << u"RECARGA"_s << false << false
                                  << u"https://secure.quelmo.example/informacion/"
                                     u"recarga_sms.php?u=ana%20y%20pep%26s"_s;
    }
    void gateStandsBeforeCommands() {
        QFETCH(QString, clave);
        QFETCH(bool, boton);
        QFETCH(bool, puerta);
        QFETCH(QString, efecto);
        ScriptedInterface ui;
        auto w = ventana();
        principal(u"ana y pep&s"_s, u"x"_s);
        appState().gsClaveAcceso = u"Clave"_s;
        auto usar = [&] {
            abiertas.clear();
            ui.openedUrls.clear();
            if (boton)
                w->Toolbar1_ButtonClick(clave);
            else
                accion(w.get(), clave)->trigger();
            return abiertas + ui.openedUrls;
        };
        // A wrong password (the comparison minds the case) does nothing.
        ui.passwords = {u"clave"_s};
        QCOMPARE(usar(), puerta ? QStringList() : QStringList{efecto});
        QCOMPARE(ui.passwordPrompts, puerta ? 1 : 0);
        QVERIFY(ui.boxes.isEmpty());
        ui.passwords = {u"Clave"_s};
        QCOMPARE(usar(), QStringList{efecto});
    }

    void helpManualIsWrittenOutForTheBrowser() {
        ScriptedInterface ui;
        auto w = ventana();
        QFile manual(rutaAyuda());
        for (int vez = 0; vez < 2; ++vez) {
            accion(w.get(), u"keyHelp"_s)->trigger();
            QVERIFY(manual.open(QIODevice::ReadOnly));
            const QString texto = QString::fromUtf8(manual.readAll());
            manual.close();
            QVERIFY(texto.contains(u"<title>Ayuda de Quelmo Mensajes SMS</title>"_s));
            QVERIFY(texto.contains(u"Eventos de la aplicación"_s));
            // A damaged copy is written again at the next opening.
            QVERIFY(manual.open(QIODevice::WriteOnly | QIODevice::Truncate));
            manual.close();
        }
        QCOMPARE(ui.openedUrls, QStringList(2, rutaAyuda()));
        // F1 anywhere in the frame.
        w->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(w.get()));
        QTest::keyClick(w.get(), Qt::Key_F1);
        QCOMPARE(ui.openedUrls.size(), 3);
    }

    void rechargeWithoutAccountSays() {
        ScriptedInterface ui;
        auto w = ventana();
        accion(w.get(), u"keyHome01"_s)->trigger();
        QCOMPARE(ui.boxes.size(), 1);
        QCOMPARE(ui.boxes[0].text, u"No dispone de ninguna Cuenta en la aplicación"_s);
        QCOMPARE(ui.boxes[0].style, 48);
        QVERIFY(ui.openedUrls.isEmpty());
    }

    void switchShowsAndSaves_data() {
        QTest::addColumn<QString>("guardado");  // null: never written
        QTest::addColumn<QString>("via");       // keyTX or mnutx
        QTest::addColumn<QString>("clave");     // typed at the prompt (password "Clave")
        QTest::addColumn<bool>("antes");
        QTest::addColumn<bool>("despues");
        QTest::newRow("never written shows on")
            << QString() << u"keyTX"_s << QString() << true << false;
        QTest::newRow("off to on") << u"0"_s << u"keyTX"_s << QString() << false << true;
        QTest::newRow("refused keeps it") << u"1"_s << u"keyTX"_s << u"mala"_s << true << true;
        QTest::newRow("right password") << u"1"_s << u"keyTX"_s << u"Clave"_s << true << false;
        QTest::newRow("tray has no gate") << u"1"_s << u"mnutx"_s << u"mala"_s << true << false;
    }
    void switchShowsAndSaves() {
        QFETCH(QString, guardado);
        QFETCH(QString, via);
        QFETCH(QString, clave);
        QFETCH(bool, antes);
        QFETCH(bool, despues);
        ScriptedInterface ui;
        if (!guardado.isNull()) Settings::saveSetting(u"Tr"_s, u"Activo"_s, guardado);
        auto w = ventana();
        if (!clave.isNull()) {
            appState().gsClaveAcceso = u"Clave"_s;
            ui.passwords = {clave};
        }
        QAction* keyTX = accion(w.get(), u"keyTX"_s);
        QAction* mnutx = accion(w.get(), u"mnutx"_s);
        auto estado = [&](bool on) {
            QCOMPARE(keyTX->isChecked(), on);
            QCOMPARE(mnutx->isChecked(), on);
            QCOMPARE(keyTX->text(),
                     on ? u"&Envío de SMS (Activado)"_s : u"&Envío de SMS (Desactivado)"_s);
            QCOMPARE(mnutx->text(),
                     on ? u"Envío de SMS Activado"_s : u"Envío de SMS desactivado"_s);
        };
        estado(antes);
        accion(w.get(), via)->trigger();
        estado(despues);
        if (antes != despues)
            QCOMPARE(Settings::getSetting(u"Tr"_s, u"Activo"_s), despues ? u"1"_s : u"0"_s);
        else
            QCOMPARE(Settings::getSetting(u"Tr"_s, u"Activo"_s), guardado);
    }

    void closingRefusedDuringARun_data() {
        QTest::addColumn<QString>("via");
        QTest::newRow("menu") << u"keyExit"_s;
        QTest::newRow("toolbar") << u"SALIR"_s;
        QTest::newRow("tray") << u"mnucerrar"_s;
        QTest::newRow("close box") << QString();
    }
    void closingRefusedDuringARun() {
        QFETCH(QString, via);
        ScriptedInterface ui;
        auto w = ventana();
        auto cerrar = [&] {
            if (via.isNull())
                w->close();
            else
                accion(w.get(), via)->trigger();
        };
        appState().gbEnviando = true;
        cerrar();
        QCOMPARE(ui.boxes.size(), 1);
        QCOMPARE(ui.boxes[0].text,
                 u"Quelmo Mensajes SMS está ahora mismo realizando un envío."
                 u"\n\nEspere a que termine el envío para cerrar la aplicación."_s);
        QCOMPARE(ui.boxes[0].style, 48);
        QVERIFY(w->isVisible());
        QCOMPARE(terminado, 0);
        QVERIFY(appState().Conexion.isOpen());

        appState().gbEnviando = false;
        cerrar();
        QCOMPARE(ui.boxes.size(), 1);
        QCOMPARE(terminado, 1);
        QVERIFY(!appState().Conexion.isOpen());
        QVERIFY(!w->transmisor().Timer1().isActive());
    }

    void hiddenInTheTrayKeepsSending() {
        ScriptedInterface ui;
        auto w = ventana();
        w->hayBandeja = true;
        accion(w.get(), u"OCULTAR"_s)->trigger();
        QVERIFY(!w->isVisible());
        QVERIFY(w->icono()->isVisible());
        QVERIFY(w->transmisor().Timer1().isActive());
        // From the tray: a gated entry restores the window first.
        accion(w.get(), u"mnuenviar"_s)->trigger();
        QVERIFY(w->isVisible());
        QVERIFY(!w->icono()->isVisible());
        QCOMPARE(abiertas, QStringList{u"frmEnvio"_s});
        accion(w.get(), u"OCULTAR"_s)->trigger();
        Q_EMIT w->icono()->activated(QSystemTrayIcon::DoubleClick);
        QVERIFY(w->isVisible());
        QVERIFY(!w->icono()->isVisible());
    }

    void withoutATrayHidingMinimises() {
        ScriptedInterface ui;
        auto w = ventana();
        w->hayBandeja = false;
        accion(w.get(), u"OCULTAR"_s)->trigger();
        QVERIFY(w->isMinimized());
        QVERIFY(!w->icono()->isVisible());
        QVERIFY(w->transmisor().Timer1().isActive());
    }

    void neverSmallerThanItsMinimum() {
        ScriptedInterface ui;
        auto w = ventana();
        w->resize(200, 150);
        QVERIFY(w->width() >= 707);
        QVERIFY(w->height() >= 538);
    }

    void firstActivationLooksForThePrincipalAccount_data() {
        QTest::addColumn<QString>("usuario");  // null: no principal account
        QTest::addColumn<QString>("clave");
        QTest::addColumn<int>("puestaEnMarcha");
        QTest::newRow("none") << QString() << QString() << 1;
        QTest::newRow("complete") << u"ana"_s << u"x"_s << 0;
        QTest::newRow("no password") << u"ana"_s << QString() << 1;
    }
    void firstActivationLooksForThePrincipalAccount() {
        QFETCH(QString, usuario);
        QFETCH(QString, clave);
        QFETCH(int, puestaEnMarcha);
        ScriptedInterface ui;
        if (!usuario.isNull()) {
            TestDb::openShared(rutaBaseDefecto());
            principal(usuario, clave.isNull() ? u""_s : clave);
            appState().Conexion.close();
        }
        auto w = ventana();
        QCOMPARE(ui.firstRunShown, puestaEnMarcha);
    }

    void longLogLineReadInFull() {
        ScriptedInterface ui;
        auto w = ventana();
        for (int i = 0; i < 2000; ++i) msLog(u"línea %1"_s.arg(i));
        const QString larga = u"Error en SendMessage: "_s + QString(600, u'x') + u" fin"_s;
        msLog(larga);
        msLog(u"última"_s);
        auto* lista = w->panelLog()->List1();
        QCOMPARE(w->panelLog()->windowTitle(), u"Eventos de la aplicación"_s);
        // The list follows the newest line, and shows it.
        const QModelIndex ultima = appState().log.index(appState().log.rowCount() - 1);
        QCOMPARE(lista->currentIndex(), ultima);
        QTRY_VERIFY(lista->viewport()->rect().contains(lista->visualRect(ultima)));
        const QModelIndex fila = appState().log.index(appState().log.rowCount() - 2);
        lista->scrollTo(fila);
        const QPoint punto = lista->visualRect(fila).center();
        QTest::mouseClick(lista->viewport(), Qt::LeftButton, {}, punto);
        QTest::mouseDClick(lista->viewport(), Qt::LeftButton, {}, punto);
        frmShowLineLog* detalle = w->panelLog()->detalle();
        QVERIFY(detalle && detalle->isVisible());
        QCOMPARE(detalle->windowTitle(), u"Detalle del Log"_s);
        QVERIFY(detalle->txtLog()->toPlainText().endsWith(larga));
        QCOMPARE(detalle->txtLog()->toPlainText(), appState().log.lines().at(fila.row()));
    }
};

QUELMO_GUI_TEST_MAIN(TestGuiMain)
#include "test_gui_main.moc"
