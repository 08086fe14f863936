// Predefined texts: adding, changing and deleting them, their limit, and
// the picker that hands one to the compose screen.
#include "TestSupportGui.h"
#include "addressbook/PantallasAgenda.h"
#include "addressbook/frmMenPro.h"
#include "addressbook/frmSelecMenPro.h"
#include "base/Avisos.h"
#include "base/Pantallas.h"
#include "widgets/Listado.h"

#include <QListView>
#include <QPushButton>

using namespace Qt::StringLiterals;
using namespace prueba;

namespace {
void predefinido(int mensaje, const QString& texto) {
    bd().exec(u"INSERT INTO MenPro (Mensaje,Texto) VALUES (?,?)"_s, {mensaje, texto});
}
}  // namespace

class TestPredefinidos : public QObject {
    Q_OBJECT
  public:
    explicit TestPredefinidos(TestWorld& w) : world(w) {}

  private:
    TestWorld& world;

  private Q_SLOTS:
    void init() {
        world.reset();
        TestDb::openShared(TestDb::createCurrent(world.root() + u"/menpro.db"_s));
    }

    void addTakesUpTo160_data() {
        QTest::addColumn<QList<int>>("existentes");
        QTest::addColumn<QString>("texto");
        QTest::addColumn<int>("numero");  // -1: refused
        QTest::newRow("first is 0") << QList<int>{} << u"Hola"_s << 0;
        QTest::newRow("highest plus one") << QList<int>{0, 5} << u"Hola"_s << 6;
        QTest::newRow("160 characters") << QList<int>{} << QString(160, u'a') << 0;
        QTest::newRow("161 characters") << QList<int>{} << QString(161, u'a') << -1;
        QTest::newRow("apostrophe stored as typed")
            << QList<int>{} << u"Llego a las 5 o'clock"_s << 0;
        QTest::newRow("cancelled") << QList<int>{} << QString() << -1;
    }
    void addTakesUpTo160() {
        QFETCH(QList<int>, existentes);
        QFETCH(QString, texto);
        QFETCH(int, numero);
        for (int m : existentes) predefinido(m, u"T%1"_s.arg(m));
        InterfazGuionada ui;
        ui.inputs = {texto};
        frmMenPro pantalla;
        pantalla.cmdAdd->click();
        QCOMPARE(ui.inputPrompts.at(0).text, u"Inserte el texto para el nuevo mensaje"_s);
        QCOMPARE(ui.inputPrompts.at(0).title, u"Alta de Mensajes Programados"_s);
        QCOMPARE(cuantos(u"select count(*) from MenPro"_s), existentes.size() + (numero >= 0));
        QCOMPARE(cajas(ui), texto.size() > 160 ? QStringList{caja(Msg::Critical,
                                                                  u"El nombre introducido es "
                                                                  u"demasiado grande"_s)}
                                               : QStringList());
        if (numero < 0) return;
        QCOMPARE(columna(u"select Texto from MenPro where Mensaje = ?"_s, {numero}),
                 QStringList{texto});
        QCOMPARE(textosDe(pantalla.ListView1, 0).last(), texto);
    }

    void changeTakesUpTo160_data() {
        QTest::addColumn<QString>("respuesta");
        QTest::addColumn<QString>("guardado");
        QTest::addColumn<QString>("mensaje");
        QTest::newRow("160 characters") << QString(160, u'b') << QString(160, u'b') << QString();
        QTest::newRow("161 characters")
            << QString(161, u'b') << u"Segundo"_s << u"El texto introducido es demasiado grande"_s;
        QTest::newRow("apostrophes become acute accents")
            << u"It's 5 o'clock"_s << u"It´s 5 o´clock"_s << QString();
        QTest::newRow("empty changes nothing") << u""_s << u"Segundo"_s << QString();
    }
    void changeTakesUpTo160() {
        QFETCH(QString, respuesta);
        QFETCH(QString, guardado);
        QFETCH(QString, mensaje);
        predefinido(0, u"Primero"_s);
        predefinido(1, u"Segundo"_s);
        predefinido(2, u"Segundo"_s);
        InterfazGuionada ui;
        ui.inputs = {respuesta};
        frmMenPro pantalla;
        pantalla.ListView1->seleccionarFila(2);
        pantalla.cmdEdit->click();
        QCOMPARE(ui.inputPrompts.at(0).title, u"Edicion de Mensajes"_s);
        QCOMPARE(ui.inputPrompts.at(0).text, u"Inserte el nuevo texto para el mensaje"_s);
        QCOMPARE(cajas(ui),
                 mensaje.isEmpty() ? QStringList() : QStringList{caja(Msg::Critical, mensaje)});
        // Of two equal texts the first one is changed.
        QCOMPARE(columna(u"select Texto from MenPro order by Mensaje"_s),
                 (QStringList{u"Primero"_s, guardado, u"Segundo"_s}));
    }

    void deleteAsksFirst() {
        predefinido(0, u"Primero"_s);
        predefinido(1, u"Segundo"_s);
        InterfazGuionada ui;
        ui.answers = {Msg::Yes};
        frmMenPro pantalla;
        pantalla.ListView1->seleccionarFila(0);
        pantalla.cmdDelete->click();
        QCOMPARE(ui.boxes.at(0).text, u"Esta a punto de eliminar un Mensaje, esta seguro ?"_s);
        QCOMPARE(ui.boxes.at(0).style, Msg::YesNo | Msg::Exclamation | Msg::DefaultButton2);
        QCOMPARE(columna(u"select Texto from MenPro"_s), QStringList{u"Segundo"_s});
        QCOMPARE(textosDe(pantalla.ListView1, 0), QStringList{u"Segundo"_s});
    }

    void pickerReplacesComposeText_data() {
        QTest::addColumn<QStringList>("textos");
        QTest::addColumn<int>("elegido");  // -1: none selected
        QTest::addColumn<bool>("conEnvio");
        QTest::addColumn<bool>("enter");  // Enter in the list, else the take button
        QTest::addColumn<QString>("resultado");
        const QStringList dos{u"Uno"_s, u"Dos"_s};
        QTest::newRow("chosen text replaces") << dos << 1 << true << false << u"Dos"_s;
        QTest::newRow("taken with Enter") << dos << 1 << true << true << u"Dos"_s;
        QTest::newRow("nothing selected") << dos << -1 << true << false << u"escrito"_s;
        QTest::newRow("empty table") << QStringList{} << -1 << true << false << u"escrito"_s;
        QTest::newRow("no compose screen loaded") << dos << 0 << false << false << u"escrito"_s;
    }
    void pickerReplacesComposeText() {
        QFETCH(QStringList, textos);
        QFETCH(int, elegido);
        QFETCH(bool, conEnvio);
        QFETCH(bool, enter);
        QFETCH(QString, resultado);
        for (int i = 0; i < textos.size(); ++i) predefinido(i, textos.at(i));
        QString compuesto = u"escrito"_s;
        QMetaObject::Connection tomar;
        if (conEnvio)
            tomar = QObject::connect(&Avisos::instancia(), &Avisos::textoElegido,
                                     [&](const QString& t) { compuesto = t; });
        const auto soltar = qScopeGuard([&] { QObject::disconnect(tomar); });
        InterfazGuionada ui;
        registrarPantallasAgenda();
        bool cerrado = false;
        alAbrirModal([&](QDialog* d) {
            auto* p = qobject_cast<frmSelecMenPro*>(d);
            QVERIFY(p);
            QCOMPARE(p->lstMensajes->model()->rowCount(), textos.size());
            if (elegido >= 0)
                p->lstMensajes->setCurrentIndex(p->lstMensajes->model()->index(elegido, 0));
            if (enter)
                QTest::keyClick(p->lstMensajes, Qt::Key_Return);
            else
                p->cmdAdd->click();
            cerrado = !p->isVisible();
        });
        QVERIFY(Pantallas::abrir(u"frmSelecMenPro"_s));
        QVERIFY(cerrado);
        QCOMPARE(compuesto, resultado);
    }
};

QUELMO_GUI_TEST_MAIN(TestPredefinidos)
#include "test_predefinidos.moc"
