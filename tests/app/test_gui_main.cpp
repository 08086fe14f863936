// The main window: menu and toolbar, the access gate, the transmitter
// switch, the tray, the log panel and the closing rule.
#include "TestSupportGui.h"
#include "addressbook/frmAbonados.h"
#include "app/InterfazGrafica.h"
#include "app/frmLog.h"
#include "app/frmOpciones.h"
#include "app/mdiMain.h"
#include "base/Ajustes.h"
#include "base/EstadoAplicacion.h"
#include "base/Pantallas.h"
#include "base/RegistroActividad.h"
#include "composition/frmEnvio.h"
#include "db/BaseDatos.h"
#include "db/Conexion.h"
#include "history/frmHEnvios.h"
#include "scheduling/frmNewMenAuto2.h"
#include "widgets/Ayuda.h"
#include "widgets/EstadoTransmisor.h"
#include "widgets/PantallasHijas.h"
#include "widgets/Traduccion.h"

#include <QApplication>
#include <QHelpEvent>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QToolBar>
#include <QToolTip>
#include <optional>

using namespace Qt::StringLiterals;
using prueba::cajas;

class TestGuiMain : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    std::optional<InterfazGuionada> ui;  // scripted answers, new for each test
    QStringList abiertas;                // screens opened through the registry
    int terminado = 0;

    // The frame after its first activation.
    std::unique_ptr<mdiMain> ventana() {
        return prueba::ventanaPrincipal(
            [this] { ++terminado; },
            [this] {
                for (const char16_t* n :
                     {u"frmEnvio", u"frmHEnvios", u"frmMenPro", u"frmMenAuto", u"frmAbonados",
                      u"frmGrupos", u"frmCanales", u"frmEmergencias", u"frmNewCanal.Principal"})
                    Pantallas::registrar(QString::fromUtf16(n),
                                         [this, n] { abiertas << QString::fromUtf16(n); });
            });
    }

    static QAction* accion(QWidget* w, const QString& clave) {
        return prueba::hijo<QAction>(w, clave);
    }

    static void principal(const QString& usuario, const QString& clave) {
        prueba::cuentaPrincipal(u"h"_s, clave, {{u"usuario"_s, usuario}});
    }

  private Q_SLOTS:
    void init() {
        world.reset();
        TestDb::createCurrent(rutaBaseDefecto());
        Ajustes::saveSetting(u"Despliegue"_s, u"Web"_s, u"http://www.ejemplo.test"_s);
        abiertas.clear();
        terminado = 0;
        ui.emplace();
    }

    // With no browser or mail program, a link says so in a box that the
    // address can be copied from, and nothing waits for the box to close.
    void aLinkNothingCanOpenSaysSo_data() {
        QTest::addColumn<QString>("destino");
        QTest::addColumn<QString>("mostrada");
        QTest::newRow("web") << u"http://www.ejemplo.test/condiciones"_s
                             << u"http://www.ejemplo.test/condiciones"_s;
        QTest::newRow("mail") << u"mailto:info@ejemplo.test"_s << u"info@ejemplo.test"_s;
        QTest::newRow("help file") << rutaAyuda() << rutaAyuda();
    }
    void aLinkNothingCanOpenSaysSo() {
        QFETCH(QString, destino);
        QFETCH(QString, mostrada);
        QWidget dueno;
        InterfazGrafica gui(&dueno);
        QStringList pedidas;
        gui.abridor = [&pedidas](const QUrl& url) {
            pedidas << url.toString();
            return false;
        };
        gui.openUrl(destino);
        QCOMPARE(pedidas.size(), 1);
        auto* caja = dueno.findChild<QMessageBox*>(u"cajaSinNavegador"_s);
        QVERIFY(caja && caja->isVisible());
        QVERIFY2(caja->text().contains(u"\n\n"_s + mostrada + u"\n\n"_s), qPrintable(caja->text()));
        QVERIFY(caja->text().startsWith(u"No se ha encontrado ningún programa"_s));
        QVERIFY(caja->textInteractionFlags() & Qt::TextSelectableByKeyboard);
        caja->close();
    }

    void menuAndToolbarInOrder() {
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
        // What a pointer resting on a button shows: nothing on "Programar".
        QToolBar* barra = w->findChild<QToolBar*>(u"Toolbar1"_s);
        auto consejo = [&](const QString& clave) {
            QWidget* b = barra->widgetForAction(accion(w.get(), clave));
            QHelpEvent ayuda(QEvent::ToolTip, QPoint(2, 2), b->mapToGlobal(QPoint(2, 2)));
            QCoreApplication::sendEvent(b, &ayuda);
            return QToolTip::isVisible() ? QToolTip::text() : QString();
        };
        QCOMPARE(consejo(u"PROG"_s), QString());
        QCOMPARE(consejo(u"ENVIO"_s), u"Enviar Mensajes"_s);
        QToolTip::hideText();
        w->resize(200, 150);
        QVERIFY(w->width() >= 707 && w->height() >= 538);
    }

    // An activation brings a minimised frame back, as it was before.
    void activationKeepsAMaximisedFrame_data() {
        QTest::addColumn<int>("antes");
        QTest::addColumn<int>("despues");
        QTest::newRow("minimised") << int(Qt::WindowMinimized) << int(Qt::WindowNoState);
        QTest::newRow("minimised when maximised")
            << int(Qt::WindowMinimized | Qt::WindowMaximized) << int(Qt::WindowMaximized);
        QTest::newRow("maximised") << int(Qt::WindowMaximized) << int(Qt::WindowMaximized);
    }
    void activationKeepsAMaximisedFrame() {
        QFETCH(int, antes);
        auto w = ventana();
        w->setWindowState(Qt::WindowStates(antes));
        QEvent activacion(QEvent::WindowActivate);
        QCoreApplication::sendEvent(w.get(), &activacion);
        QTEST(int(w->windowState()), "despues");
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
        auto w = ventana();
        principal(u"ana y pep&s"_s, u"x"_s);
        estadoAplicacion().gsClaveAcceso = u"Clave"_s;
        auto usar = [&] {
            abiertas.clear();
            ui->openedUrls.clear();
            if (QAction* a = w->findChild<QAction*>(clave))
                a->trigger();
            else
                w->Toolbar1_ButtonClick(clave);
            return abiertas + ui->openedUrls;
        };
        // The comparison minds the case.
        ui->passwords = {u"clave"_s};
        QCOMPARE(usar(), puerta ? QStringList() : QStringList{efecto});
        QCOMPARE(ui->passwordPrompts, puerta ? 1 : 0);
        QVERIFY(ui->boxes.isEmpty());
        ui->passwords = {u"Clave"_s};
        QCOMPARE(usar(), QStringList{efecto});
    }

    void helpManualIsWrittenOutForTheBrowser() {
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
        QCOMPARE(ui->openedUrls, QStringList(2, rutaAyuda()));
        w->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(w.get()));
        QTest::keyClick(w.get(), Qt::Key_F1);
        QCOMPARE(ui->openedUrls.size(), 3);
    }

    void rechargeWithoutAccountSays() {
        auto w = ventana();
        accion(w.get(), u"keyHome01"_s)->trigger();
        QCOMPARE(cajas(*ui), QStringList{u"48 No dispone de ninguna Cuenta en la aplicación"_s});
        QVERIFY(ui->openedUrls.isEmpty());
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
        QTest::newRow("from the compose screen")
            << u"1"_s << u"imgmt"_s << u"mala"_s << true << false;
    }
    void switchShowsAndSaves() {
        QFETCH(QString, guardado);
        QFETCH(QString, via);
        QFETCH(QString, clave);
        QFETCH(bool, antes);
        QFETCH(bool, despues);
        if (!guardado.isNull()) Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, guardado);
        auto w = ventana();
        if (!clave.isNull()) {
            estadoAplicacion().gsClaveAcceso = u"Clave"_s;
            ui->passwords = {clave};
        }
        QAction* keyTX = accion(w.get(), u"keyTX"_s);
        QAction* mnutx = accion(w.get(), u"mnutx"_s);
        // The compose screen open in the frame follows at once too.
        PantallasHijas::show(PantallasHijas::instance<frmEnvio>());
        auto* imgmt = prueba::hijo<QLabel>(PantallasHijas::instance<frmEnvio>(), u"imgmt"_s);
        auto imagen = [](const QIcon& i) { return i.pixmap(QSize(24, 24)).toImage(); };
        auto estado = [&](bool on) {
            QCOMPARE(keyTX->isChecked(), on);
            QCOMPARE(mnutx->isChecked(), on);
            const QImage dibujo = imagen(EstadoTransmisor::icono(on));
            QCOMPARE(imagen(keyTX->icon()), dibujo);
            QCOMPARE(imagen(mnutx->icon()), dibujo);
            QCOMPARE(imgmt->pixmap().toImage(), dibujo);
            QCOMPARE(keyTX->text() + u'|' + mnutx->text(),
                     on ? u"&Envío de SMS (Activado)|Envío de SMS Activado"_s
                        : u"&Envío de SMS (Desactivado)|Envío de SMS desactivado"_s);
        };
        estado(antes);
        if (via == u"imgmt"_s)
            QTest::mouseDClick(imgmt, Qt::LeftButton);
        else
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
        auto w = ventana();
        auto cerrar = [&] { via.isNull() ? void(w->close()) : accion(w.get(), via)->trigger(); };
        estadoAplicacion().gbEnviando = true;
        cerrar();
        const QString aviso =
            u"308 Quelmo Mensajes SMS está ahora mismo realizando un envío."
            u"\n\nEspere a que termine el envío para cerrar la aplicación.\n\n¿Desea detener "
            u"el envío y cerrar ahora? Los mensajes no enviados quedan en la bandeja de salida."_s;
        QCOMPARE(cajas(*ui), QStringList{aviso});
        QVERIFY(w->isVisible());
        QCOMPARE(terminado, 0);
        QVERIFY(Conexion().isOpen());

        // Stopping the run instead: the window closes once the run is over.
        ui->answers = {Msg::Yes};
        cerrar();
        QCOMPARE(cajas(*ui), (QStringList{aviso, aviso}));
        QCOMPARE(terminado, 0);
        estadoAplicacion().gbEnviando = false;
        Q_EMIT w->transmisor().tickTerminado();
        QTRY_COMPARE(terminado, 1);
        QCOMPARE(cajas(*ui).size(), 2);
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
        auto w = ventana();
        w->hayBandeja = [bandeja] { return bandeja; };
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
        if (!usuario.isNull()) {
            TestDb::openShared(rutaBaseDefecto());
            principal(usuario, clave);
            Conexion().close();
        }
        auto w = ventana();
        QTEST(ui->firstRunShown, "puestaEnMarcha");
    }

    // The screens the core asks for open through the registry; none
    // registered is a line on standard error, not a failure.
    void coreScreensOpenThroughTheRegistry_data() {
        QTest::addColumn<QString>("pantalla");
        QTest::newRow("database selection") << u"frmSelectDB"_s;
        QTest::newRow("first-run set-up") << u"frmTipoRegistro"_s;
        QTest::newRow("principal account") << u"frmNewCanal.Principal"_s;
    }
    void coreScreensOpenThroughTheRegistry() {
        QFETCH(QString, pantalla);
        ui.reset();
        InterfazGrafica grafica;
        establecerInterfaz(&grafica);
        auto pedir = [&] {
            if (pantalla == u"frmSelectDB"_s)
                msMostrarSeleccionBD();
            else if (pantalla == u"frmTipoRegistro"_s)
                grafica.altaCuenta();
            else
                grafica.completarCuentaPrincipal();
        };
        int abierta = 0;
        Pantallas::registrar(pantalla, [&] { ++abierta; });
        pedir();
        QCOMPARE(abierta, 1);
        Pantallas::registrar(pantalla, {});
        pedir();
        QCOMPARE(abierta, 1);
        establecerInterfaz(nullptr);
    }

    void longLogLineReadInFull() {
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

    // Pictures of the frame with the compose screen, then with the contacts
    // beside it, and of the options, for a look by eye: only when
    // QUELMO_CAPTURAS names a folder (run under a display server, Xvfb).
    void capturas() {
        const QString dir = qEnvironmentVariable("QUELMO_CAPTURAS");
        if (dir.isEmpty()) QSKIP("QUELMO_CAPTURAS not set");
        cargarTraduccionQt();  // as the program starts
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        {
            BaseDatos db;
            QVERIFY(db.open(rutaBaseDefecto()));
            db.exec(
                u"INSERT INTO Canales (Canal,Nombre,Saldo,Principal,Remitente) VALUES "
                u"(1,'Demo',245,1,'Quelmo')"_s);
            db.exec(
                u"INSERT INTO Abonados (Codigo,Alias,Comentario,Canal) VALUES "
                u"('0034111111111','Ana García','Oficina de Madrid',1),"
                u"('0034222222222','Luis Fernández','Proveedor',1),"
                u"('0034333333333','María José Ruiz','',1)"_s);
            const QStringList textos{u"Mañana a las 9:00 en la oficina."_s,
                                     u"Su pedido 1842 ya está en camino."_s,
                                     u"Recordatorio: reunión del jueves."_s,
                                     u"Feliz cumpleaños de parte de todo el equipo."_s,
                                     u"La factura de noviembre está disponible."_s};
            for (int i = 0; i < textos.size(); ++i)
                db.exec(
                    u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) "
                    u"VALUES (?,1,?,?,2)"_s,
                    {u"2026-11-23 10:0%1:00"_s.arg(i), u"003411111111%1"_s.arg(i + 1), textos[i]});
        }
        auto w = ventana();
        msLog(u"Preparando conexión para Cuenta 'Demo' ..."_s);
        msLog(u"Conectando con Usuario: 'demo' ...."_s);
        frmEnvio* envio = PantallasHijas::instance<frmEnvio>();
        PantallasHijas::show(envio);
        prueba::hijo<QPlainTextEdit>(envio, u"txtMensaje"_s)
            ->setPlainText(u"Hola, ¿nos vemos el lunes?"_s);
        envio->txtMensaje_cambiar();
        prueba::captura(w.get(), u"principal"_s);
        {
            Conexion().exec(
                u"INSERT INTO Automaticos (Codigo,Nombre) VALUES (1,'Recordatorio semanal')"_s);
            Conexion().exec(
                u"INSERT INTO AboAuto (Automatico,Abonado,Mensaje) SELECT 1, Codigo, "
                u"Alias || ', mañana a las 9:00 en la oficina.' FROM Abonados"_s);
            frmNewMenAuto2 editor(w.get());
            editor.setCodigo(1);
            QTRY_VERIFY(!editor.ocupada());
            prueba::captura(&editor, u"programado"_s);
            editor.tabs->setCurrentIndex(1);
            prueba::captura(&editor, u"programado-mensajes"_s);
        }
        PantallasHijas::show(PantallasHijas::instance<frmAbonados>());
        prueba::captura(w.get(), u"contactos"_s);
        Conexion().exec(
            u"INSERT INTO HEnvios (Abonado,Registro,Mensaje,Resultado,Canal,crem) SELECT Abonado, "
            u"Registro, Mensaje, 'Mensaje aceptado', 1, 'Quelmo' FROM envios"_s);
        frmHEnvios* enviados = PantallasHijas::instance<frmHEnvios>();
        PantallasHijas::show(enviados);
        QTRY_VERIFY(!enviados->ocupada());
        prueba::captura(w.get(), u"enviados"_s);
        frmOpciones opciones(w.get());
        prueba::captura(&opciones, u"opciones"_s);
        // The picture dialog, as the desktop's dialog with Qt's own texts.
        InterfazGrafica gui;
        establecerInterfaz(&gui);
        QTimer::singleShot(500, this, [&] {
            QWidget* d = QApplication::activeModalWidget();
            QVERIFY(d && d->grab().save(dir + u"/dialogo.png"_s));
            d->close();
        });
        QTest::mouseClick(prueba::hijo<QPushButton>(&opciones, u"cmdexaminar"_s), Qt::LeftButton);
        establecerInterfaz(nullptr);
    }
};

QUELMO_GUI_TEST_MAIN(TestGuiMain)
#include "test_gui_main.moc"
