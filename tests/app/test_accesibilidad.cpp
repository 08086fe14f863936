// Every screen as a screen reader and a keyboard meet it: each control that
// takes the focus has a name of its own, Tab follows the layout, and what
// the mouse does the keyboard does too.
#include "TestSupportGui.h"
#include "addressbook/frmUserGroup.h"
#include "app/frmLog.h"
#include "app/frmShowLineLog.h"
#include "app/frmpwd.h"
#include "app/mdiMain.h"
#include "base/Ajustes.h"
#include "base/Interruptor.h"
#include "base/Pantallas.h"
#include "base/RegistroActividad.h"
#include "composition/frmEnvio.h"
#include "composition/frmSeleccion.h"
#include "scheduling/frmNewMenAuto2.h"
#include "scheduling/frmSeleccionMensaje.h"
#include "scheduling/frmSeleccionMensaje2.h"
#include "widgets/PantallasHijas.h"
#include "widgets/ReglasPantallas.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QSystemTrayIcon>
#include <QTabWidget>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

// What a screen reader says a control is: its name, and its value where
// it has one.
QString nombre(QAccessibleInterface* c) {
    return c->text(QAccessible::Name);
}

// The controls of a screen that take the focus (by Tab or by a click),
// with the name assistive technology reads for each; a name that is only
// the control's value ("Demo (100 Créditos)" for an account) reads as none.
// Views, combos and text boxes are one control each: their items are not
// controls of the screen.
void recorrer(QAccessibleInterface* i, QMap<QObject*, QString>& controles) {
    for (int k = 0; k < i->childCount(); ++k) {
        QAccessibleInterface* c = i->child(k);
        if (!c || !c->isValid() || c->state().invisible) continue;
        auto* w = qobject_cast<QWidget*>(c->object());
        const bool porValor =
            (c->role() == QAccessible::ComboBox || c->role() == QAccessible::PageTabList) &&
            nombre(c) == c->text(QAccessible::Value);
        if (c->state().focusable && w && w->focusPolicy() != Qt::NoFocus && !w->focusProxy())
            controles[w] = porValor ? QString() : nombre(c);
        switch (c->role()) {
            case QAccessible::List:
            case QAccessible::Table:
            case QAccessible::Tree:
            case QAccessible::ComboBox:
            case QAccessible::SpinBox:
            case QAccessible::EditableText:
                continue;
            default:
                recorrer(c, controles);
        }
    }
}

QString quien(QObject* o) {
    return QString::fromLatin1(o->metaObject()->className()) + u'#' + o->objectName();
}

// What a screen reader user would miss on `pantalla`, on every page of its
// tabs.
QStringList faltas(QWidget* pantalla) {
    QMap<QObject*, QString> controles;
    recorrer(QAccessible::queryAccessibleInterface(pantalla), controles);
    for (QTabWidget* t : pantalla->findChildren<QTabWidget*>()) {
        const int antes = t->currentIndex();
        for (int p = 0; p < t->count(); ++p) {
            t->setCurrentIndex(p);
            recorrer(QAccessible::queryAccessibleInterface(pantalla), controles);
        }
        t->setCurrentIndex(antes);
    }
    QStringList f;
    QHash<QString, QObject*> vistos;
    for (auto it = controles.cbegin(); it != controles.cend(); ++it) {
        const QString nombre = it.value().trimmed();
        if (nombre.isEmpty())
            f << quien(it.key()) + u" sin nombre"_s;
        else if (vistos.contains(nombre))
            f << quien(it.key()) + u" y "_s + quien(vistos[nombre]) + u" se llaman \""_s + nombre +
                     u'"';
        else
            vistos.insert(nombre, it.key());
    }
    return f;
}

// The buttons of `pantalla` that a user could not reach on this display:
// its window standing out of the display's free area, or a button out of
// sight once the keyboard has brought it (scrolled) into view.
QStringList fueraDeVista(QWidget* pantalla) {
    QStringList f;
    const QRect libre = ReglasPantallas::areaLibre(pantalla);
    QWidget* ventana = pantalla->window();
    if (!libre.contains(ventana->frameGeometry()))
        f << quien(ventana) + u" no cabe en la pantalla"_s;
    // Every page of its tabs (the screens have one set at most).
    auto* pestanas = pantalla->findChild<QTabWidget*>();
    for (int p = 0; p < (pestanas ? pestanas->count() : 1); ++p) {
        if (pestanas) pestanas->setCurrentIndex(p);
        for (QAbstractButton* b : pantalla->findChildren<QAbstractButton*>()) {
            if (!b->isVisible()) continue;
            ReglasPantallas::enfocar(b, Qt::OtherFocusReason);
            const QRect donde(b->mapToGlobal(QPoint(0, 0)), b->size());
            if (!libre.contains(donde) ||
                !QRegion(b->rect()).subtracted(b->visibleRegion()).isEmpty())
                f << quien(b) + u" queda fuera de la vista"_s;
        }
    }
    if (pestanas) pestanas->setCurrentIndex(0);
    return f;
}

// The objectNames the focus visits pressing Tab `veces` times from `desde`.
QStringList recorridoTab(QWidget* desde, int veces) {
    desde->setFocus(Qt::TabFocusReason);
    QStringList visitados{desde->objectName()};
    for (int i = 0; i < veces; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QWidget* f = QApplication::focusWidget();
        visitados << (f ? f->objectName() : u"(nada)"_s);
    }
    return visitados;
}

}  // namespace

class TestAccesibilidad : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    std::unique_ptr<InterfazGuionada> ui;
    std::unique_ptr<mdiMain> ventana;

    // Screens that no name of the registry opens: the frame's own dialogs
    // and the pickers of the scheduled message editor.
    QHash<QString, std::function<void()>> otras() {
        auto modal = [](auto* pantalla) {
            pantalla->exec();
            delete pantalla;
        };
        return {
            {u"frmOpciones"_s,
             [this] { prueba::hijo<QAction>(ventana.get(), u"keyopc"_s)->trigger(); }},
            {u"frmWinfo"_s,
             [this] { prueba::hijo<QAction>(ventana.get(), u"keyHome05"_s)->trigger(); }},
            {u"frmpwd"_s, [modal] { modal(new frmpwd()); }},
            {u"frmSeleccionMensaje"_s, [modal] { modal(new frmSeleccionMensaje()); }},
            {u"frmSeleccionMensaje2"_s, [modal] { modal(new frmSeleccionMensaje2()); }},
            {u"frmUserGroup"_s,
             [modal] {
                 auto* miembros = new frmUserGroup();
                 miembros->sNombreGrupo = u"amigos"_s;
                 miembros->nCodGrupo = 0;
                 miembros->msCargarUsuariosParaGrupo();
                 modal(miembros);
             }},
            {u"frmShowLineLog"_s,
             [] {
                 frmShowLineLog detalle;
                 detalle.mostrar(u"línea"_s);
                 QVERIFY(QTest::qWaitForWindowExposed(&detalle));
                 QCOMPARE(faltas(&detalle), QStringList());
             }},
        };
    }

  private Q_SLOTS:
    void initTestCase() {
        world.reset();
        TestDb::createCurrent(rutaBaseDefecto());
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        ui = std::make_unique<InterfazGuionada>();
        ventana = prueba::ventanaPrincipal();
        // Rows for every screen to show something.
        prueba::cuenta(1, u"Principal"_s, {{u"Principal"_s, 1}});
        prueba::contacto(u"0034600000001"_s, u"ana"_s, 1);
        prueba::lista(0, u"amigos"_s);
        prueba::miembro(u"0034600000001"_s, 0);
        prueba::programa(1, u"Nombre=aviso"_s);
        prueba::bd().exec(u"INSERT INTO AboAuto (Automatico,Abonado,Mensaje) VALUES (1,?,'hola')"_s,
                          {u"0034600000001"_s});
        prueba::bd().exec(u"INSERT INTO MenPro (Mensaje,Texto) VALUES (0,'hola')"_s);
    }
    void cleanupTestCase() {
        ventana.reset();
        ui.reset();
    }

    void theFrameFitsAndNamesItsControls() {
        PantallasHijas::area()->closeAllSubWindows();
        const QStringList fallos = faltas(ventana.get()) + fueraDeVista(ventana.get());
        QVERIFY2(fallos.isEmpty(), qPrintable(fallos.join(u'\n')));
    }

    void everyScreenFitsAndNamesItsControls_data() {
        QTest::addColumn<QString>("pantalla");
        for (const QString& n : Pantallas::nombres()) QTest::newRow(qPrintable(n)) << n;
        for (const QString& n : otras().keys()) QTest::newRow(qPrintable(n)) << n;
    }
    void everyScreenFitsAndNamesItsControls() {
        QFETCH(QString, pantalla);
        const QHash<QString, QVariant> datos{{u"frmNewMenAuto2"_s, 1}, {u"frmSubirListaWeb"_s, 0}};
        QStringList vistas;
        QStringList fallos;
        QList<QPointer<QWidget>> miradas;
        // A modal screen is read while it waits for the user, then closed;
        // so is any that it opens in turn.
        QTimer sondeo;
        sondeo.setInterval(20);
        connect(&sondeo, &QTimer::timeout, this, [&] {
            QWidget* m = QApplication::activeModalWidget();
            if (!m || !m->isVisible()) return;
            for (const auto& p : miradas)
                if (p == m) return;
            miradas << m;
            vistas << m->objectName();
            for (const QString& f : faltas(m) + fueraDeVista(m))
                fallos << m->objectName() + u": "_s + f;
            // Escape closes it; the first-run notice alone waits for an
            // answer. Hidden, a dialog leaves its exec() all the same.
            QTimer::singleShot(0, m, [m, &fallos] {
                QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : m,
                                Qt::Key_Escape);
                if (m->isVisible() && m->objectName() != u"frmTipoRegistro"_s)
                    fallos << m->objectName() + u": Escape no la cierra"_s;
                m->hide();
            });
        });
        sondeo.start();
        if (otras().contains(pantalla))
            otras()[pantalla]();
        else
            QVERIFY(Pantallas::abrir(pantalla, datos.value(pantalla)));
        sondeo.stop();
        if (QMdiSubWindow* sub = PantallasHijas::area()->activeSubWindow()) {
            vistas << sub->widget()->objectName();
            for (const QString& f : faltas(sub->widget()) + fueraDeVista(sub->widget()))
                fallos << sub->widget()->objectName() + u": "_s + f;
        }
        PantallasHijas::area()->closeAllSubWindows();
        if (pantalla != u"frmShowLineLog"_s) QVERIFY2(!vistas.isEmpty(), "no screen came up");
        QVERIFY2(fallos.isEmpty(), qPrintable(fallos.join(u'\n')));
    }

    void tabFollowsTheLayout_data() {
        QTest::addColumn<QString>("pantalla");
        QTest::addColumn<QStringList>("orden");
        QTest::newRow("compose") << u"frmEnvio"_s
                                 << QStringList{
                                        u"ImageCombo1"_s,  u"cmdSaldo"_s,    u"cmdRecarga"_s,
                                        u"Text1"_s,        u"cmdAbonados"_s, u"txtMensaje"_s,
                                        u"cmdMenPro"_s,    u"cmdEnvMult"_s,  u"cmdAñadir"_s,
                                        u"ListView1"_s,    u"imgmt"_s,       u"cmdEnviar"_s,
                                        u"cmdModificar"_s, u"cmdEliminar"_s, u"cmdEliminarTodos"_s,
                                        u"CmdSalir"_s};
        QTest::newRow("accounts") << u"frmCanales"_s
                                  << QStringList{
                                         u"ListView1"_s,  u"cmdAdd"_s,      u"cmdEdit"_s,
                                         u"cmdDelete"_s,  u"cmdPrede"_s,    u"cmdGetSaldo"_s,
                                         u"cmdRecarga"_s, u"cmdRegistro"_s, u"cmdClose"_s};
        QTest::newRow("scheduled editor")
            << u"frmNewMenAuto2"_s
            << QStringList{u"qt_tabwidget_tabbar"_s, u"txtNombre"_s, u"XPButton2"_s};
        QTest::newRow("picker") << u"frmSeleccion"_s
                                << QStringList{
                                       u"txtBuscar"_s,   u"cmdBuscar"_s,     u"lstcontactos"_s,
                                       u"Command1"_s,    u"cmdTodos"_s,      u"lstlistas"_s,
                                       u"Command2"_s,    u"cmdTodoslista"_s, u"cmdVaciarLista"_s,
                                       u"lstdestinos"_s, u"cmdAdd"_s,        u"cmdClose"_s};
    }
    void tabFollowsTheLayout() {
        QFETCH(QString, pantalla);
        QFETCH(QStringList, orden);
        QStringList visitados;
        std::unique_ptr<QDialog> dialogo;
        if (pantalla == u"frmSeleccion"_s) dialogo = std::make_unique<frmSeleccion>(ventana.get());
        if (pantalla == u"frmNewMenAuto2"_s) {
            auto editor = std::make_unique<frmNewMenAuto2>(ventana.get());
            editor->setCodigo(1);
            dialogo = std::move(editor);
        }
        if (dialogo) {
            dialogo->show();
            dialogo->activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(dialogo.get()));
            QTRY_COMPARE(QApplication::activeWindow(), dialogo.get());
            visitados = recorridoTab(prueba::hijo<QWidget>(dialogo.get(), orden.first()),
                                     int(orden.size()));
            // Round to the start again.
            QCOMPARE(visitados.takeLast(), orden.first());
        } else {
            Pantallas::abrir(pantalla);
            QWidget* w = PantallasHijas::area()->activeSubWindow()->widget();
            QVERIFY(QTest::qWaitForWindowActive(ventana.get()));
            visitados = recorridoTab(prueba::hijo<QWidget>(w, orden.first()), int(orden.size()));
            // After the screen, the activity log along the frame's edge.
            QCOMPARE(visitados.takeLast(), u"List1"_s);
            PantallasHijas::area()->closeAllSubWindows();
        }
        QCOMPARE(visitados, orden);
    }

    // A screen of the frame, with the compose screen open behind it: Tab
    // goes round the screen and the log and never into the screen behind,
    // Ctrl+Tab goes to the other screen and back, Enter presses the focused
    // button and Escape does what the close button does (the compose
    // screen keeps Escape for its text).
    void theKeyboardStaysInItsScreen_data() {
        QTest::addColumn<QString>("pantalla");
        QTest::addColumn<QString>("cerrar");
        for (const char16_t* p : {u"frmAbonados", u"frmGrupos", u"frmMenPro", u"frmMenAuto",
                                  u"frmHEnvios", u"frmCanales", u"frmEmergencias"})
            QTest::newRow(qPrintable(QString::fromUtf16(p)))
                << QString::fromUtf16(p) << u"cmdClose"_s;
        QTest::newRow("frmEnvio") << u"frmEnvio"_s << u"CmdSalir"_s;
    }
    void theKeyboardStaysInItsScreen() {
        QFETCH(QString, pantalla);
        QFETCH(QString, cerrar);
        QMdiArea* area = PantallasHijas::area();
        area->closeAllSubWindows();
        const bool envio = pantalla == u"frmEnvio"_s;
        auto abrir = [&]() -> QPointer<QWidget> {
            // A closed screen goes at the next turn of the loop.
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            if (!envio) Pantallas::abrir(u"frmEnvio"_s);
            Pantallas::abrir(pantalla);
            return area->activeSubWindow()->widget();
        };
        QPointer<QWidget> w = abrir();
        QCOMPARE(w->objectName(), pantalla);
        QVERIFY(QTest::qWaitForWindowActive(ventana.get()));
        QWidget* log = ventana->panelLog()->List1();
        auto* boton = prueba::hijo<QAbstractButton>(w.data(), cerrar);
        for (const auto tecla : {Qt::Key_Tab, Qt::Key_Backtab}) {
            boton->setFocus(Qt::TabFocusReason);
            bool porElLog = false;
            for (int i = 0; i < 40 && !(i > 0 && QApplication::focusWidget() == boton); ++i) {
                QTest::keyClick(QApplication::focusWidget(), tecla);
                QWidget* f = QApplication::focusWidget();
                QVERIFY2(f && (w->isAncestorOf(f) || f == log),
                         qPrintable(f ? quien(f) : u"(nada)"_s));
                porElLog = porElLog || f == log;
            }
            QCOMPARE(QApplication::focusWidget(), boton);
            QVERIFY(porElLog);
        }
        if (!envio) {
            QTest::keyClick(boton, Qt::Key_Tab, Qt::ControlModifier);
            QCOMPARE(area->activeSubWindow()->widget()->objectName(), u"frmEnvio"_s);
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab,
                            Qt::ControlModifier | Qt::ShiftModifier);
            QCOMPARE(area->activeSubWindow()->widget(), w.data());
        }
        // Enter on the close button.
        boton->setFocus();
        QTest::keyClick(boton, Qt::Key_Return);
        QTRY_VERIFY(!w || !w->isVisible());
        // Escape where no control takes it.
        w = abrir();
        QWidget* primero = w->nextInFocusChain();
        while (!(primero->focusPolicy() & Qt::TabFocus) || !primero->isVisible())
            primero = primero->nextInFocusChain();
        primero->setFocus();
        QTest::keyClick(primero, Qt::Key_Escape);
        if (envio)
            QVERIFY(w && w->isVisible());
        else
            QTRY_VERIFY(!w || !w->isVisible());
        area->closeAllSubWindows();
    }

    void theKeyboardDoesWhatTheMouseDoes() {
        Interruptor::instancia().establecer(true);
        Pantallas::abrir(u"frmEnvio"_s);
        auto* envio = PantallasHijas::instance<frmEnvio>();
        // The switch: a check box to a screen reader, Space or Enter on
        // its picture.
        auto* imgmt = prueba::hijo<QLabel>(envio, u"imgmt"_s);
        QAccessibleInterface* interruptor = QAccessible::queryAccessibleInterface(imgmt);
        QCOMPARE(interruptor->role(), QAccessible::CheckBox);
        QCOMPARE(interruptor->text(QAccessible::Name), u"Envío de SMS"_s);
        QVERIFY(interruptor->state().checkable && interruptor->state().checked);
        imgmt->setFocus();
        QTest::keyClick(imgmt, Qt::Key_Space);
        QCOMPARE(Ajustes::getSetting(u"Tr"_s, u"Activo"_s), u"0"_s);
        QVERIFY(!interruptor->state().checked);
        QTest::keyClick(imgmt, Qt::Key_Return);
        QCOMPARE(Ajustes::getSetting(u"Tr"_s, u"Activo"_s), u"1"_s);
        QVERIFY(interruptor->state().checked);
        // The counter is read as words.
        auto* texto = prueba::hijo<QWidget>(envio, u"txtMensaje"_s);
        texto->setFocus();
        QTest::keyClicks(texto, u"hola"_s);
        QCOMPARE(prueba::hijo<QLabel>(envio, u"lblCaracteres"_s)->accessibleName(),
                 u"4 caracteres"_s);
        PantallasHijas::area()->closeAllSubWindows();

        // Enter on a dialog's Cerrar closes it; it does not press the
        // default button, Guardar.
        const QString intervalo = Ajustes::getSetting(u"Tr"_s, u"Interval"_s);
        prueba::alAbrirModal([](QDialog* d) {
            prueba::hijo<QLineEdit>(d, u"txttimer"_s)->setText(u"120"_s);
            auto* cerrar = prueba::hijo<QPushButton>(d, u"CmdSalir"_s);
            QVERIFY(QTest::qWaitForWindowActive(d));
            cerrar->setFocus();
            QTest::keyClick(cerrar, Qt::Key_Return);
            if (d->isVisible()) d->done(QDialog::Rejected);
        });
        prueba::hijo<QAction>(ventana.get(), u"keyopc"_s)->trigger();
        QCOMPARE(Ajustes::getSetting(u"Tr"_s, u"Interval"_s), intervalo);

        // A line of the log in full: Enter on it.
        msLog(u"una línea del registro"_s);
        QListView* log = ventana->panelLog()->List1();
        ventana->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(ventana.get()));
        log->setFocus();
        QTest::keyClick(log, Qt::Key_Return);
        QVERIFY(ventana->panelLog()->detalle());
        QTRY_VERIFY(ventana->panelLog()->detalle()->isVisible());
        QVERIFY(ventana->panelLog()->detalle()->txtLog()->toPlainText().endsWith(
            u" - una línea del registro"_s));
        ventana->panelLog()->detalle()->close();

        // Hiding: its own key.
        ventana->hayBandeja = [] { return true; };
        QVERIFY(QTest::qWaitForWindowActive(ventana.get()));
        QTest::keyClick(ventana.get(), Qt::Key_H, Qt::ControlModifier);
        QVERIFY(!ventana->isVisible());
        QVERIFY(ventana->icono()->isVisible());
        ventana->mnurestaurar_Click();
        QVERIFY(ventana->isVisible());
    }

    void hidingNeverLosesTheWindow() {
        bool bandeja = false;
        ventana->hayBandeja = [&bandeja] { return bandeja; };
        // No tray now (even if there was one at start): minimised.
        prueba::hijo<QAction>(ventana.get(), u"OCULTAR"_s)->trigger();
        QVERIFY(ventana->isMinimized());
        QVERIFY(!ventana->icono()->isVisible());
        ventana->mnurestaurar_Click();
        QVERIFY(!ventana->isMinimized());
        // Hidden in a tray that then goes away: the window comes back.
        bandeja = true;
        prueba::hijo<QAction>(ventana.get(), u"OCULTAR"_s)->trigger();
        QVERIFY(!ventana->isVisible());
        bandeja = false;
        QTRY_VERIFY(ventana->isVisible());
        QVERIFY(!ventana->icono()->isVisible());
    }
};

QUELMO_GUI_TEST_MAIN(TestAccesibilidad)
#include "test_accesibilidad.moc"
