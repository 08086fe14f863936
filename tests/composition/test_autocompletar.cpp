// The recipient box: which name stands under the caret, what is offered
// for it, and what Up, Down, Enter and losing the focus do.
#include "TestSupportGui.h"
#include "composition/AutoCompletado.h"
#include "composition/crtAutoComplete.h"

#include <QLineEdit>
#include <QListView>

using namespace Qt::StringLiterals;
using namespace AutoCompletado;

class TestAutoCompletar : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private Q_SLOTS:
    void currentName_data() {
        QTest::addColumn<QString>("texto");
        QTest::addColumn<int>("cursor");
        QTest::addColumn<QString>("nombre");
        QTest::addColumn<int>("inicio");
        QTest::addColumn<int>("fin");
        QTest::newRow("first name, trimmed") << u" an ;x"_s << 2 << u"an"_s << 0 << 0;
        QTest::newRow("second name at the end") << u"Ana;an"_s << 6 << u"an"_s << 5 << 7;
        QTest::newRow("just behind the first ;") << u"Ana;"_s << 4 << QString() << 4 << 4;
        QTest::newRow("just behind a later ;") << u"Ana;Bea;"_s << 8 << u"Bea"_s << 5 << 8;
        QTest::newRow("caret inside a middle name") << u"Ana;Be a;X"_s << 6 << u"Be a"_s << 5 << 9;
        QTest::newRow("left blanks only") << u"Ana;  bo "_s << 9 << u"bo "_s << 5 << 10;
    }
    void currentName() {
        QFETCH(QString, texto);
        QFETCH(int, cursor);
        const NombreActual a = nombreActual(texto, cursor);
        QTEST(a.nombre, "nombre");
        QTEST(a.inicio, "inicio");
        QTEST(a.fin, "fin");
    }

    // Typing in the real box, as the user does.
    void keys_data() {
        QTest::addColumn<QString>("antes");
        QTest::addColumn<int>("cursor");
        QTest::addColumn<QString>("teclas");
        QTest::addColumn<int>("bajadas");
        QTest::addColumn<QString>("despues");
        QTest::newRow("Down and Enter take the second")
            << QString() << 0 << u"an"_s << 1 << u"Andres"_s;
        QTest::newRow("a later name") << u"Ana;"_s << 4 << u"an"_s << 1 << u"Ana;Andres"_s;
        QTest::newRow("Up past the top stays") << QString() << 0 << u"an"_s << -3 << u"Ana"_s;
        QTest::newRow("Down past the end stays")
            << QString() << 0 << u"an"_s << 5 << u"Ana Maria"_s;
        QTest::newRow("contained, not a prefix, any case")
            << QString() << 0 << u"AR"_s << 0 << u"Ana Maria"_s;
        QTest::newRow("accepting in the first name drops the rest")
            << u"An;Bea"_s << 1 << QString() << 1 << u"Andres"_s;
        QTest::newRow("middle name keeps both sides")
            << u"Ana;B;Ana"_s << 5 << u"e"_s << 0 << u"Ana;Bea;Ana"_s;
    }
    void keys() {
        QFETCH(QString, antes);
        QFETCH(int, cursor);
        QFETCH(QString, teclas);
        QFETCH(int, bajadas);
        QWidget ventana;
        auto* box = new crtAutoComplete(&ventana);
        box->setSearchList(u"Ana; Andres ;Bea;Ana Maria"_s);
        ventana.show();
        QLineEdit* t = box->Text1();
        t->setFocus();
        t->setText(antes);
        t->setCursorPosition(cursor);
        if (teclas.isEmpty())
            QTest::keyClick(t, Qt::Key_Right);  // any key searches
        else
            QTest::keyClicks(t, teclas);
        QVERIFY(box->List1()->isVisible());
        for (int i = 0; i < qAbs(bajadas); ++i)
            QTest::keyClick(t, bajadas > 0 ? Qt::Key_Down : Qt::Key_Up);
        QTest::keyClick(t, Qt::Key_Return);
        QTEST(t->text(), "despues");
        QVERIFY(!box->List1()->isVisible());
    }

    void enterWithNothingOfferedAndFocusLoss() {
        QWidget ventana;
        auto* box = new crtAutoComplete(&ventana);
        box->setSearchList(u"Ana;Andres"_s);
        ventana.show();
        ventana.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&ventana));
        QSignalSpy enter(box, &crtAutoComplete::enterSinSugerencias);
        box->Text1()->setFocus();
        QTest::keyClicks(box->Text1(), u"zz"_s);
        QVERIFY(!box->List1()->isVisible());
        QTest::keyClick(box->Text1(), Qt::Key_Return);
        QCOMPARE(enter.size(), 1);
        QTest::keyClick(box->Text1(), Qt::Key_Escape);
        QCOMPARE(box->Texto(), u"zz"_s);

        box->setTexto(QString());
        QTest::keyClicks(box->Text1(), u"a"_s);
        QCOMPARE(box->ofrecidos(), (QStringList{u"Ana"_s, u"Andres"_s}));
        QCOMPARE(box->elegido(), u"Ana"_s);
        // A click on the list takes the suggestions away and accepts nothing.
        QTest::mouseClick(box->List1()->viewport(), Qt::LeftButton);
        QCOMPARE(box->Texto(), u"a"_s);
        QVERIFY(!box->List1()->isVisible());
        QVERIFY(box->ofrecidos().isEmpty());
        QCOMPARE(enter.size(), 1);
    }

    // A list of thousands of names, as the picker leaves it, is kept whole
    // while the box shows its start and how many follow: a line would lay
    // out every name at each repaint. Typing can't change it; Enter goes
    // on, and Delete, Backspace or Esc empty the box for typing again.
    void aLongListShowsItsStart_data() {
        QTest::addColumn<int>("tecla");
        QTest::addColumn<bool>("vacia");
        QTest::newRow("typing") << int(Qt::Key_X) << false;
        QTest::newRow("Enter") << int(Qt::Key_Return) << false;
        QTest::newRow("Delete") << int(Qt::Key_Delete) << true;
        QTest::newRow("Backspace") << int(Qt::Key_Backspace) << true;
        QTest::newRow("Esc") << int(Qt::Key_Escape) << true;
    }
    void aLongListShowsItsStart() {
        QFETCH(int, tecla);
        QFETCH(bool, vacia);
        QWidget ventana;
        auto* box = new crtAutoComplete(&ventana);
        box->setSearchList(u"nombre 0001"_s);
        ventana.show();
        ventana.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&ventana));
        QStringList nombres;
        for (int i = 0; i < 3000; ++i) nombres.append(u"nombre %1"_s.arg(i, 4, 10, QChar(u'0')));
        const QString lista = nombres.join(u';');
        box->setTexto(lista);
        QCOMPARE(box->Texto(), lista);
        QVERIFY(box->resumido());
        const QString visto = box->Text1()->text();
        QCOMPARE(visto,
                 u"nombre 0000;nombre 0001;nombre 0002;nombre 0003;nombre 0004;  … y "
                 u"2995 más"_s);

        QSignalSpy enter(box, &crtAutoComplete::enterSinSugerencias);
        box->Text1()->setFocus();
        QTest::keyClick(box->Text1(), Qt::Key(tecla));
        QCOMPARE(enter.size(), tecla == Qt::Key_Return ? 1 : 0);
        QVERIFY(!box->List1()->isVisible());
        QCOMPARE(box->Texto(), vacia ? QString() : lista);
        QCOMPARE(box->resumido(), !vacia);
        if (!vacia) return;
        QTest::keyClicks(box->Text1(), u"no"_s);
        QCOMPARE(box->Texto(), u"no"_s);
        QCOMPARE(box->ofrecidos(), QStringList{u"nombre 0001"_s});
        box->setTexto(u"a;b"_s);
        QCOMPARE(box->Text1()->text(), u"a;b"_s);
    }
};

QUELMO_GUI_TEST_MAIN(TestAutoCompletar)
#include "test_autocompletar.moc"
