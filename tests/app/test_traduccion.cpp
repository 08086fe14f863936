// Qt's own texts in Spanish: the standard buttons of the boxes the program
// asks through, once Qt's catalogue is loaded as at start.
#include "TestSupportGui.h"
#include "app/InterfazGrafica.h"
#include "widgets/Traduccion.h"

#include <QAbstractButton>
#include <QDialogButtonBox>
#include <QMessageBox>

#include <algorithm>

using namespace Qt::StringLiterals;

class TestTraduccion : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    bool cargada = false;

    // The texts of the buttons of `d`, in the order shown.
    static QStringList botones(QDialog* d) {
        QStringList t;
        auto* caja = d->findChild<QDialogButtonBox*>();
        if (!caja) return t;
        for (QAbstractButton* b : caja->buttons()) t << b->text();
        std::sort(t.begin(), t.end());
        return t;
    }

  private Q_SLOTS:
    void initTestCase() { cargada = cargarTraduccionQt(); }

    // A style of -1 stands for the input box.
    void botonesDeCajas_data() {
        QTest::addColumn<int>("estilo");
        QTest::addColumn<QStringList>("textos");
        QTest::newRow("sí/no") << int(Msg::YesNo) << QStringList{u"&No"_s, u"&Sí"_s};
        QTest::newRow("sí/no/cancelar")
            << int(Msg::YesNoCancel) << QStringList{u"&No"_s, u"&Sí"_s, u"Cancelar"_s};
        QTest::newRow("aceptar/cancelar") << 1 << QStringList{u"Aceptar"_s, u"Cancelar"_s};
        QTest::newRow("aceptar") << int(Msg::OkOnly) << QStringList{u"Aceptar"_s};
        QTest::newRow("entrada") << -1 << QStringList{u"Aceptar"_s, u"Cancelar"_s};
    }
    void botonesDeCajas() {
        if (!cargada) QSKIP("Qt's Spanish catalogue (qt6-translations-l10n) is not installed");
        QFETCH(int, estilo);
        InterfazGrafica interfaz;
        QStringList vistos;
        prueba::alAbrirModal([&](QDialog* d) {
            vistos = botones(d);
            d->reject();
        });
        if (estilo < 0)
            interfaz.inputBox(u"Nombre"_s, QString(), QString());
        else
            interfaz.msgBox(u"¿Seguro?"_s, estilo, QString());
        QTEST(vistos, "textos");
    }
};

QUELMO_GUI_TEST_MAIN(TestTraduccion)
#include "test_traduccion.moc"
