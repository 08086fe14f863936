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
#include "scheduling/frmSeleccionMensaje.h"
#include "scheduling/frmSeleccionMensaje2.h"
#include "widgets/PantallasHijas.h"

#include <QAccessible>
#include <QLabel>
#include <QListView>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPlainTextEdit>
#include <QPointer>
#include <QSignalSpy>
#include <QSystemTrayIcon>
#include <QTabWidget>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

// A combo's name on Linux is its value: what it is for comes from a label
// whose buddy it is, or from a name given on purpose.
QString nombre(QAccessibleInterface* c) {
    if (c->role() != QAccessible::ComboBox) return c->text(QAccessible::Name);
    auto* w = qobject_cast<QWidget*>(c->object());
    if (w && !w->accessibleName().isEmpty()) return w->accessibleName();
    const auto etiquetas = c->relations(QAccessible::Label);
    return etiquetas.isEmpty() ? QString() : etiquetas.first().first->text(QAccessible::Name);
}

// The controls of a screen that Tab reaches, with the name assistive
// technology reads for each. Views, combos and text boxes are one control
// each: their items are not controls of the screen.
void recorrer(QAccessibleInterface* i, QMap<QObject*, QString>& controles) {
    for (int k = 0; k < i->childCount(); ++k) {
        QAccessibleInterface* c = i->child(k);
        if (!c || !c->isValid() || c->state().invisible) continue;
        auto* w = qobject_cast<QWidget*>(c->object());
        if (c->state().focusable && w && (w->focusPolicy() & Qt::TabFocus))
            controles[w] = nombre(c);
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

class TestAccesibilidad : public QObject {
    Q_OBJECT
  public:
    explicit TestAccesibilidad(TestWorld& w) : world(w) {}

  private:
    TestWorld& world;
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
        ventana = std::make_unique<mdiMain>();
        ventana->terminar = [] {};
        QSignalSpy lista(ventana.get(), &mdiMain::primeraActivacionTerminada);
        ventana->show();
        QVERIFY(lista.wait(5000));
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

    void theFrameNamesItsControls() {
        PantallasHijas::area()->closeAllSubWindows();
        QCOMPARE(faltas(ventana.get()), QStringList());
    }

    void everyScreenNamesItsControls_data() {
        QTest::addColumn<QString>("pantalla");
        for (const QString& n : Pantallas::nombres()) QTest::newRow(qPrintable(n)) << n;
        for (const QString& n : otras().keys()) QTest::newRow(qPrintable(n)) << n;
    }
    void everyScreenNamesItsControls() {
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
            for (const QString& f : faltas(m)) fallos << m->objectName() + u": "_s + f;
            // Hidden, a dialog leaves its exec() even where it refuses to
            // close without an answer.
            QTimer::singleShot(0, m, [m] { m->hide(); });
        });
        sondeo.start();
        if (otras().contains(pantalla))
            otras()[pantalla]();
        else
            QVERIFY(Pantallas::abrir(pantalla, datos.value(pantalla)));
        sondeo.stop();
        if (QMdiSubWindow* sub = PantallasHijas::area()->activeSubWindow()) {
            vistas << sub->widget()->objectName();
            for (const QString& f : faltas(sub->widget()))
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
        if (pantalla == u"frmSeleccion"_s) {
            frmSeleccion picker(ventana.get());
            picker.show();
            picker.activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(&picker));
            QTRY_COMPARE(QApplication::activeWindow(), &picker);
            visitados =
                recorridoTab(prueba::hijo<QWidget>(picker, orden.first()), int(orden.size()));
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

    void theKeyboardDoesWhatTheMouseDoes() {
        Interruptor::instancia().establecer(true);
        Pantallas::abrir(u"frmEnvio"_s);
        auto* envio = PantallasHijas::instance<frmEnvio>();
        auto* imgmt = prueba::hijo<QLabel>(envio, u"imgmt"_s);
        QCOMPARE(QAccessible::queryAccessibleInterface(imgmt)->text(QAccessible::Name),
                 u"Envío de SMS Activado"_s);
        // The switch: Space on its picture.
        imgmt->setFocus();
        QTest::keyClick(imgmt, Qt::Key_Space);
        QCOMPARE(Ajustes::getSetting(u"Tr"_s, u"Activo"_s), u"0"_s);
        QCOMPARE(QAccessible::queryAccessibleInterface(imgmt)->text(QAccessible::Name),
                 u"Envío de SMS Desactivado"_s);
        QTest::keyClick(imgmt, Qt::Key_Return);
        QCOMPARE(Ajustes::getSetting(u"Tr"_s, u"Activo"_s), u"1"_s);
        // The counter is read as words.
        auto* texto = prueba::hijo<QWidget>(envio, u"txtMensaje"_s);
        texto->setFocus();
        QTest::keyClicks(texto, u"hola"_s);
        QCOMPARE(prueba::hijo<QLabel>(envio, u"lblCaracteres"_s)->accessibleName(),
                 u"4 caracteres"_s);
        PantallasHijas::area()->closeAllSubWindows();

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
