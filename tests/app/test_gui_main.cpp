// The main window: menu and toolbar, the access gate, the transmitter
// switch, the tray, the log panel and the closing rule.
#include "TestSupportGui.h"
#include "app/frmLog.h"
#include "app/mdiMain.h"
#include "base/Ajustes.h"
#include "base/EstadoAplicacion.h"
#include "base/Pantallas.h"
#include "base/RegistroActividad.h"
#include "db/Conexion.h"
#include "widgets/Ayuda.h"

#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QSystemTrayIcon>
#include <QToolBar>

using namespace Qt::StringLiterals;
using prueba::cajas;

class TestGuiMain : public QObject {
    Q_OBJECT
  public:
    explicit TestGuiMain(TestWorld& w) : world(w) {}

  private:
    TestWorld& world;
    QStringList abiertas;  // screens opened through the registry
    int terminado = 0;

    // The frame after its first activation.
    std::unique_ptr<mdiMain> ventana() {
        auto w = std::make_unique<mdiMain>();
        w->terminar = [this] { ++terminado; };
        for (const char16_t* n :
             {u"frmEnvio", u"frmHEnvios", u"frmMenPro", u"frmMenAuto", u"frmAbonados", u"frmGrupos",
              u"frmCanales", u"frmEmergencias", u"frmNewCanal.Principal"})
            Pantallas::registrar(QString::fromUtf16(n),
                                 [this, n] { abiertas << QString::fromUtf16(n); });
        QSignalSpy lista(w.get(), &mdiMain::primeraActivacionTerminada);
        w->show();
        if (!lista.wait(5000)) qFatal("no first activation");
        return w;
    }

    static QAction* accion(QWidget* w, const QString& clave) {
        return prueba::hijo<QAction>(w, clave);
    }

    void principal(const QString& usuario, const QString& clave) {
        Conexion().exec(
            u"INSERT INTO Canales (Canal,Nombre,usuario,clave,Principal) VALUES (1,'c',?,?,1)"_s,
            {usuario, clave});
    }

  private Q_SLOTS:
    void init() {
        world.reset();
        TestDb::createCurrent(rutaBaseDefecto());
        Ajustes::saveSetting(u"Despliegue"_s, u"Web"_s, u"http://www.ejemplo.test"_s);
        abiertas.clear();
        terminado = 0;
    }

    void menuAndToolbarInOrder() {
        InterfazGuionada ui;
        auto w = ventana();
        // One line per menu: "key caption", "-" for a separator.
        QStringList menus;
        for (QAction* top : w->menuBar()->actions()) {
            QStringList m{top->objectName() + u' ' + top->text()};
            for (QAction* a : top->menu()->actions())
                m << a->objectName() + u' ' + (a->isSeparator() ? u"-"_s : a->text());
            menus << m.join(u" | "_s);
        }
        QCOMPARE(menus,
                 (QStringList{
                     u"KUsuarios &Contactos y Listas | keyUsuarios &Contactos | keySUsuarios - | "
                     u"keyGrupos &Listas Locales | keyPListas Listas &Web"_s,
                     u"KMensajes &Mensajes | keyEnviar &Enviar Mensajes | keySMensajes1 - | "
                     u"keyHEnviados &Mensajes Enviados | keySMensajes2 - | keyPMensajes Mensajes "
                     u"Prede&finidos | keySMensajes3 - | keyPAuto &Programar Mensajes | "
                     u"keySMensajes4 -"_s,
                     u"KImport &Importar | keyImportar Im&portación Manual de Mensajes | "
                     u"keySConf4 - | keyImportarA Importación &Automática de Mensajes | "
                     u"keySConf41 - | keyImportarUser Importar &Contactos"_s,
                     u"KConfig Con&figurar | keyCanales &Cuentas | keySConf1 - | keyBD "
                     u"&Seleccionar Base de Datos | keySConf2 - | keyTX &Envío de SMS (Activado) | "
                     u"keySConf3 - | keyopc &Opciones"_s,
                     u"KInfo &Ayuda | keyHelp &Ayuda de Quelmo Mensajes SMS | keyHome01 &Recarga | "
                     u"keyInfo3 - | keyHome07 Novedades Versión 3.2.5 | keyHome02 "
                     u"&www.ejemplo.test | keyHome03 &Condiciones de Uso | keyInfo4 - | keyHome06 "
                     u"Contacta | keyHome05 Acerca de &Quelmo Mensajes SMS | keyExit3 - | keyExit "
                     u"&Salir"_s}));
        // "key|caption|tooltip", the tooltip left out when it is the caption.
        QStringList botones;
        for (QAction* a : w->findChild<QToolBar*>(u"Toolbar1"_s)->actions())
            if (!a->isSeparator())
                botones << a->objectName() + u'|' + a->text() + u'|' +
                               (a->toolTip() == a->text() ? QString() : a->toolTip());
        QCOMPARE(botones.join(u" / "_s),
                 u"ENVIO|Enviar|Enviar Mensajes / PROG|Programar| / HISTORICO|Enviados|Ver "
                 u"Hisórico de Mensajes Enviados / CANALES|Cuentas|Configuración de Cuentas / "
                 u"RECARGA|Recarga|Recargar Crédito de Mensajes / INFORMACION|Ayuda|Ver Ayuda / "
                 u"SALIR|Salir|Salir de Quelmo Mensajes SMS / OCULTAR|Ocultar|Ocultar Quelmo "
                 u"Mensajes SMS"_s);
        w->resize(200, 150);
        QVERIFY(w->width() >= 707 && w->height() >= 538);
    }

    void gateStandsBeforeCommands_data() {
        QTest::addColumn<QString>("clave");   // an action, else a key no button carries
        QTest::addColumn<bool>("puerta");     // asks for the password first
        QTest::addColumn<QString>("efecto");  // screen opened or address handed out
        const QString web = u"http://www.ejemplo.test"_s;
        QTest::newRow("send") << u"keyEnviar"_s << true << u"frmEnvio"_s;
        QTest::newRow("contacts") << u"keyUsuarios"_s << true << u"frmAbonados"_s;
        QTest::newRow("accounts") << u"keyCanales"_s << true << u"frmCanales"_s;
        QTest::newRow("button send") << u"ENVIO"_s << true << u"frmEnvio"_s;
        QTest::newRow("button schedule") << u"PROG"_s << true << u"frmMenAuto"_s;
        QTest::newRow("button history") << u"HISTORICO"_s << true << u"frmHEnvios"_s;
        QTest::newRow("key in lower case") << u"emergencias"_s << true << u"frmEmergencias"_s;
        QTest::newRow("predefined") << u"PREDEFINIDOS"_s << true << u"frmMenPro"_s;
        QTest::newRow("help") << u"keyHelp"_s << false << rutaAyuda();
        QTest::newRow("button help") << u"INFORMACION"_s << false << rutaAyuda();
        QTest::newRow("web site") << u"keyHome02"_s << false << web;
        QTest::newRow("web lists") << u"keyPListas"_s << false << web;
        QTest::newRow("news") << u"keyHome07"_s << false << web + u"/novedadesqm.php"_s;
        QTest::newRow("contact") << u"keyHome06"_s << false << u"mailto:soporte@quelmo.example"_s;
        QTest::newRow("recharge") << u"RECARGA"_s << false
                                  << u"https://secure.quelmo.example/informacion/"
                                     u"recarga_sms.php?u=ana%20y%20pep%26s"_s;
    }
    void gateStandsBeforeCommands() {
        QFETCH(QString, clave);
        QFETCH(bool, puerta);
        QFETCH(QString, efecto);
        InterfazGuionada ui;
        auto w = ventana();
        principal(u"ana y pep&s"_s, u"x"_s);
        estadoAplicacion().gsClaveAcceso = u"Clave"_s;
        auto usar = [&] {
            abiertas.clear();
            ui.openedUrls.clear();
            if (QAction* a = w->findChild<QAction*>(clave))
                a->trigger();
            else
                w->Toolbar1_ButtonClick(clave);
            return abiertas + ui.openedUrls;
        };
        // The comparison minds the case.
        ui.passwords = {u"clave"_s};
        QCOMPARE(usar(), puerta ? QStringList() : QStringList{efecto});
        QCOMPARE(ui.passwordPrompts, puerta ? 1 : 0);
        QVERIFY(ui.boxes.isEmpty());
        ui.passwords = {u"Clave"_s};
        QCOMPARE(usar(), QStringList{efecto});
    }

    void helpManualIsWrittenOutForTheBrowser() {
        InterfazGuionada ui;
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
        w->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(w.get()));
        QTest::keyClick(w.get(), Qt::Key_F1);
        QCOMPARE(ui.openedUrls.size(), 3);
    }

    void rechargeWithoutAccountSays() {
        InterfazGuionada ui;
        auto w = ventana();
        accion(w.get(), u"keyHome01"_s)->trigger();
        QCOMPARE(cajas(ui), QStringList{u"48 No dispone de ninguna Cuenta en la aplicación"_s});
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
        InterfazGuionada ui;
        if (!guardado.isNull()) Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, guardado);
        auto w = ventana();
        if (!clave.isNull()) {
            estadoAplicacion().gsClaveAcceso = u"Clave"_s;
            ui.passwords = {clave};
        }
        QAction* keyTX = accion(w.get(), u"keyTX"_s);
        QAction* mnutx = accion(w.get(), u"mnutx"_s);
        auto estado = [&](bool on) {
            QCOMPARE(keyTX->isChecked(), on);
            QCOMPARE(mnutx->isChecked(), on);
            QCOMPARE(keyTX->text() + u'|' + mnutx->text(),
                     on ? u"&Envío de SMS (Activado)|Envío de SMS Activado"_s
                        : u"&Envío de SMS (Desactivado)|Envío de SMS desactivado"_s);
        };
        estado(antes);
        accion(w.get(), via)->trigger();
        estado(despues);
        QCOMPARE(Ajustes::getSetting(u"Tr"_s, u"Activo"_s), antes == despues ? guardado
                                                            : despues        ? u"1"_s
                                                                             : u"0"_s);
    }

    void closingRefusedDuringARun_data() {
        QTest::addColumn<QString>("via");  // null: the close box
        QTest::newRow("menu") << u"keyExit"_s;
        QTest::newRow("toolbar") << u"SALIR"_s;
        QTest::newRow("tray") << u"mnucerrar"_s;
        QTest::newRow("close box") << QString();
    }
    void closingRefusedDuringARun() {
        QFETCH(QString, via);
        InterfazGuionada ui;
        auto w = ventana();
        auto cerrar = [&] { via.isNull() ? void(w->close()) : accion(w.get(), via)->trigger(); };
        estadoAplicacion().gbEnviando = true;
        cerrar();
        const QStringList aviso{
            u"48 Quelmo Mensajes SMS está ahora mismo realizando un envío."
            u"\n\nEspere a que termine el envío para cerrar la aplicación."_s};
        QCOMPARE(cajas(ui), aviso);
        QVERIFY(w->isVisible());
        QCOMPARE(terminado, 0);
        QVERIFY(Conexion().isOpen());

        estadoAplicacion().gbEnviando = false;
        cerrar();
        QCOMPARE(cajas(ui), aviso);
        QCOMPARE(terminado, 1);
        QVERIFY(!Conexion().isOpen());
        QVERIFY(!w->transmisor().Timer1().isActive());
    }

    void hidingKeepsSending_data() {
        QTest::addColumn<bool>("bandeja");
        QTest::newRow("to the tray") << true;
        QTest::newRow("no tray: minimised") << false;
    }
    void hidingKeepsSending() {
        QFETCH(bool, bandeja);
        InterfazGuionada ui;
        auto w = ventana();
        w->hayBandeja = bandeja;
        accion(w.get(), u"OCULTAR"_s)->trigger();
        QVERIFY(bandeja ? !w->isVisible() : w->isMinimized());
        QCOMPARE(w->icono()->isVisible(), bandeja);
        QVERIFY(w->transmisor().Timer1().isActive());
        if (!bandeja) return;
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

    void firstActivationLooksForThePrincipalAccount_data() {
        QTest::addColumn<QString>("usuario");  // null: no principal account
        QTest::addColumn<QString>("clave");
        QTest::addColumn<int>("puestaEnMarcha");
        QTest::newRow("none") << QString() << QString() << 1;
        QTest::newRow("complete") << u"ana"_s << u"x"_s << 0;
        QTest::newRow("no password") << u"ana"_s << u""_s << 1;
    }
    void firstActivationLooksForThePrincipalAccount() {
        QFETCH(QString, usuario);
        QFETCH(QString, clave);
        QFETCH(int, puestaEnMarcha);
        InterfazGuionada ui;
        if (!usuario.isNull()) {
            TestDb::openShared(rutaBaseDefecto());
            principal(usuario, clave);
            Conexion().close();
        }
        auto w = ventana();
        QCOMPARE(ui.firstRunShown, puestaEnMarcha);
    }

    void longLogLineReadInFull() {
        InterfazGuionada ui;
        auto w = ventana();
        for (int i = 0; i < 2000; ++i) msLog(u"línea %1"_s.arg(i));
        const QString larga = u"Error en SendMessage: "_s + QString(600, u'x') + u" fin"_s;
        msLog(larga);
        msLog(u"última"_s);
        auto* lista = w->panelLog()->List1();
        QCOMPARE(w->panelLog()->windowTitle(), u"Eventos de la aplicación"_s);
        // The list follows the newest line, and shows it.
        const QModelIndex ultima =
            estadoAplicacion().log.index(estadoAplicacion().log.rowCount() - 1);
        QCOMPARE(lista->currentIndex(), ultima);
        QTRY_VERIFY(lista->viewport()->rect().contains(lista->visualRect(ultima)));
        const QModelIndex fila =
            estadoAplicacion().log.index(estadoAplicacion().log.rowCount() - 2);
        lista->scrollTo(fila);
        const QPoint punto = lista->visualRect(fila).center();
        QTest::mouseClick(lista->viewport(), Qt::LeftButton, {}, punto);
        QTest::mouseDClick(lista->viewport(), Qt::LeftButton, {}, punto);
        frmShowLineLog* detalle = w->panelLog()->detalle();
        QVERIFY(detalle && detalle->isVisible());
        QCOMPARE(detalle->windowTitle(), u"Detalle del Log"_s);
        QVERIFY(detalle->txtLog()->toPlainText().endsWith(larga));
        QCOMPARE(detalle->txtLog()->toPlainText(), estadoAplicacion().log.lines().at(fila.row()));
    }
};

QUELMO_GUI_TEST_MAIN(TestGuiMain)
#include "test_gui_main.moc"
