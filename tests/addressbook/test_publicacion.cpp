// Publication of a list to the platform's web side, against the platform
// simulator: what the screen shows, the keyword rule, the counters that
// come back for new, updated and wrong numbers, and a refused account.
#include "SimuladorPrueba.h"
#include "TestSupportGui.h"
#include "addressbook/PantallasAgenda.h"
#include "addressbook/frmGrupos.h"
#include "addressbook/frmSubirListaWeb.h"
#include "base/Cifrado.h"
#include "base/Pantallas.h"
#include "widgets/Listado.h"
#include "widgets/PantallasHijas.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QValidator>

using namespace Qt::StringLiterals;
using namespace prueba;

namespace {

void cuentaEn(int canal, const QString& host, const QString& clave, bool principal) {
    bd().exec(
        u"INSERT INTO Canales (Canal,Nombre,maxmen,Puerto,Host,usuario,clave,Saldo,Principal) "
        u"VALUES (?,?,160,80,?,'demo',?,42,?)"_s,
        {canal, u"Cuenta %1"_s.arg(canal), host, msCifrarClave(clave, true), principal ? 1 : 0});
}

QString exito(int nuevos, int actualizados, int errores) {
    return caja(Msg::Information,
                u"Publicación de Lista realizada correctamente\n\nContactos Nuevos: %1\n"
                u"Contactos Actualizados: %2\nErrores : %3\n\nPuede comprobar sus listas en el "
                u"menú /Contactos y Listas/Listas Web."_s.arg(nuevos)
                    .arg(actualizados)
                    .arg(errores));
}

}  // namespace

class TestPublicacion : public QObject {
    Q_OBJECT
  public:
    explicit TestPublicacion(TestWorld& w) : world(w) {}

  private:
    TestWorld& world;
    std::unique_ptr<SimuladorPrueba> sim;

  private Q_SLOTS:
    void initTestCase() {
        sim = std::make_unique<SimuladorPrueba>(
            world.root(), u"[plataforma]\n[cuenta1]\nusuario=demo\nclave=demo\nsaldo=10\n"_s);
        QVERIFY(sim->listo());
    }
    void cleanupTestCase() { sim.reset(); }

    void init() {
        world.reset();
        TestDb::openShared(TestDb::createCurrent(world.root() + u"/publicar.db"_s));
    }

    void screenShowsTheListAndTheAccounts() {
        cuentaEn(1, sim->host(), u"demo"_s, false);
        cuentaEn(2, sim->host(), u"demo"_s, true);
        lista(4, u"Clientes"_s);
        contacto(u"0034600000001"_s, u"Ana"_s, 1);
        miembro(u"0034600000001"_s, 4);
        InterfazGuionada ui;
        frmSubirListaWeb pantalla;
        pantalla.msCargarDatos(4);
        QCOMPARE(pantalla.windowTitle(), u"Publicar Lista Web"_s);
        QCOMPARE(pantalla.Nombre->text(), u"Clientes"_s);
        QCOMPARE(pantalla.contactos->text(), u"1"_s);
        QVERIFY(pantalla.Nombre->isReadOnly() && pantalla.contactos->isReadOnly());
        QCOMPARE(pantalla.ImageCombo1->count(), 2);
        QCOMPARE(pantalla.ImageCombo1->currentText(), u"Cuenta 2 (42 SMS)"_s);
        // Only letters and digits reach the keyword.
        QTest::keyClicks(pantalla.ltag, u"Web-2 u_X"_s);
        QCOMPARE(pantalla.ltag->text(), u"Web2uX"_s);
        QString acentuada = u"Peña"_s;
        int pos = 0;
        QCOMPARE(pantalla.ltag->validator()->validate(acentuada, pos), QValidator::Invalid);
    }

    void noKeywordNoAccount() {
        lista(4, u"Clientes"_s);
        InterfazGuionada ui;
        frmSubirListaWeb pantalla;
        pantalla.msCargarDatos(4);
        QCOMPARE(pantalla.ImageCombo1->count(), 0);
        QCOMPARE(pantalla.ImageCombo1->placeholderText(), u"No hay Cuentas"_s);
        pantalla.cmdPublicar->click();
        QCOMPARE(ui.boxes.size(), 1);
        QCOMPARE(ui.boxes.at(0).text, u"Escriba un nombre para publicar su Lista Web"_s);
        QCOMPARE(ui.boxes.at(0).title, u"Publicación Lista Web"_s);
        QCOMPARE(ui.boxes.at(0).style, Msg::Exclamation);
        // With a keyword but no account there is nothing to go through.
        pantalla.ltag->setText(u"Clientes"_s);
        pantalla.cmdPublicar->click();
        QCOMPARE(ui.boxes.size(), 1);
    }

    void publications_data() {
        QTest::addColumn<QString>("clave");
        QTest::addColumn<QStringList>("miembros");  // of list 4, in the order sent
        QTest::addColumn<bool>("borrarAntes");
        QTest::addColumn<QStringList>("cajasVistas");
        const QStringList tres{u"0034600000001"_s, u"0034600000002"_s, u"0034abc"_s};
        // Each row publishes twice under one keyword.
        QTest::newRow("new, then updated; a wrong number each time")
            << u"demo"_s << tres << false << QStringList{exito(2, 0, 1), exito(0, 2, 1)};
        QTest::newRow("emptied first: new again")
            << u"demo"_s << tres << true << QStringList{exito(2, 0, 1), exito(2, 0, 1)};
        QTest::newRow("an empty list")
            << u"demo"_s << QStringList() << false << QStringList{exito(0, 0, 0), exito(0, 0, 0)};
        const QString fallo = caja(Msg::Critical, u"FALLO en la Publicación de Lista"_s);
        QTest::newRow("refused account") << u"mala"_s << tres << false << QStringList{fallo, fallo};
    }
    void publications() {
        QFETCH(QString, clave);
        QFETCH(QStringList, miembros);
        QFETCH(bool, borrarAntes);
        QFETCH(QStringList, cajasVistas);
        cuentaEn(1, sim->host(), clave, true);
        lista(4, u"Clientes"_s);
        lista(5, u"Otra"_s);
        for (const QString& m : miembros) {
            contacto(m, u"Alias "_s + m, 1);
            miembro(m, 4);
        }
        // A member of another list goes nowhere.
        contacto(u"0034699999999"_s, u"Fuera"_s, 1);
        miembro(u"0034699999999"_s, 5);
        InterfazGuionada ui;
        frmSubirListaWeb pantalla;
        pantalla.msCargarDatos(4);
        // A keyword of its own per row: the simulator keeps its lists.
        pantalla.ltag->setText(QString::fromLatin1(QTest::currentDataTag())
                                   .remove(QRegularExpression(u"[^A-Za-z0-9]"_s)));
        pantalla.nborrar->setChecked(borrarAntes);
        // A press while the first publication waits is ignored; one after it
        // publishes again.
        pantalla.cmdPublicar->click();
        pantalla.cmdPublicar->click();
        QTRY_COMPARE(ui.boxes.size(), 1);
        QTRY_VERIFY(pantalla.isEnabled());
        pantalla.cmdPublicar->click();
        QTRY_COMPARE(ui.boxes.size(), 2);
        QTRY_VERIFY(pantalla.isEnabled());
        QCOMPARE(cajas(ui), cajasVistas);
        for (const ShownBox& b : ui.boxes) QCOMPARE(b.title, u"Publicación de lista"_s);
        QVERIFY(pantalla.isEnabled());
        // Local data stays as it was.
        QCOMPARE(cuantos(u"SELECT count(*) FROM AboGrup WHERE Grupo = 4"_s), miembros.size());
    }

    void listsScreenOpensThePublication() {
        registrarPantallasAgenda();
        cuentaEn(1, sim->host(), u"demo"_s, true);
        lista(2, u"Amigos"_s);
        lista(6, u"Vecinos"_s);
        InterfazGuionada ui;
        // Through the registry, as the frame opens it: that is where the lists
        // screen is tied to the publication.
        QVERIFY(Pantallas::abrir(u"frmGrupos"_s));
        frmGrupos& grupos = *PantallasHijas::instance<frmGrupos>();
        const auto cerrar = qScopeGuard([&] { grupos.close(); });
        grupos.ListView1->seleccionarFila(1);
        QString visto;
        alAbrirModal([&](QDialog* d) {
            auto* p = qobject_cast<frmSubirListaWeb*>(d);
            QVERIFY(p);
            visto = p->Nombre->text() + u'|' + QString::number(p->grupo());
            p->XPButton1->click();
        });
        grupos.cmdPublicar->click();
        QCOMPARE(visto, u"Vecinos|6"_s);
    }
};

QUELMO_GUI_TEST_MAIN(TestPublicacion)
#include "test_publicacion.moc"
