// One press, one action, on every button that writes messages or asks the
// platform: the double click a window system delivers (press, release,
// press, double click, release) is one click, so nothing is queued, sent or
// asked twice. The emergency send's test counts what its button queues, for
// a double click and for two presses apart.
#include "TestSupportGui.h"
#include "accounts/frmCanales.h"
#include "addressbook/frmSubirListaWeb.h"
#include "composition/frmEnvio.h"
#include "history/frmHEnvios.h"
#include "import/frmSelectDB.h"
#include "scheduling/frmNewMenAuto2.h"

#include <QAbstractButton>
#include <QSignalSpy>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

struct Boton {
    const char* pantalla;
    QString nombre;
    std::function<QWidget*()> crear;
};

const QList<Boton>& botones() {
    static const QList<Boton> b = {
        {"frmEnvio", u"cmdAñadir"_s, [] { return new frmEnvio(); }},
        {"frmEnvio", u"cmdEnviar"_s, [] { return new frmEnvio(); }},
        {"frmEnvio", u"cmdSaldo"_s, [] { return new frmEnvio(); }},
        {"frmHEnvios", u"XPButton2"_s, [] { return new frmHEnvios(); }},
        {"frmSelectDB", u"cmdAdd"_s, [] { return new frmSelectDB(); }},
        {"frmSubirListaWeb", u"cmdPublicar"_s, [] { return new frmSubirListaWeb(); }},
        {"frmNewMenAuto2", u"XPButton2"_s, [] { return new frmNewMenAuto2(); }},
        {"frmCanales", u"cmdGetSaldo"_s, [] { return new frmCanales(); }},
    };
    return b;
}

}  // namespace

class TestUnaPulsacion : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private Q_SLOTS:
    void init() { world.baseNueva(u"pulsacion.db"_s); }

    void aDoubleClickIsOnePress_data() {
        QTest::addColumn<int>("boton");
        for (int i = 0; i < botones().size(); ++i)
            QTest::newRow(qPrintable(QString::fromLatin1(botones().at(i).pantalla) + u' ' +
                                     botones().at(i).nombre))
                << i;
    }
    void aDoubleClickIsOnePress() {
        QFETCH(int, boton);
        InterfazGuionada ui;
        const Boton& b = botones().at(boton);
        const QPointer<QWidget> pantalla(b.crear());
        pantalla->show();
        QVERIFY(QTest::qWaitForWindowExposed(pantalla));
        auto* w = prueba::hijo<QAbstractButton>(pantalla.data(), b.nombre);
        // Whatever the screen's own rule for enabling it (a chosen file).
        w->setEnabled(true);
        QSignalSpy pulsado(w, &QAbstractButton::clicked);
        QTest::mouseClick(w, Qt::LeftButton);
        // The action may have closed its screen: the second press then meets nothing.
        if (pantalla && pantalla->isVisible()) {
            QTest::mousePress(w, Qt::LeftButton);
            QTest::mouseDClick(w, Qt::LeftButton);
            QTest::mouseRelease(w, Qt::LeftButton);
        }
        QCOMPARE(pulsado.count(), 1);
        delete pantalla.data();
    }
};

QUELMO_GUI_TEST_MAIN(TestUnaPulsacion)
#include "test_una_pulsacion.moc"
