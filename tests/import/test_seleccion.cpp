// The selection screen in both modes: what it shows, its interval rule, and
// what accepting, cancelling and "Anular Importación" leave behind.
#include "AyudaImport.h"
#include "TestSupportGui.h"
#include "base/Ajustes.h"
#include "base/Avisos.h"
#include "base/Pantallas.h"
#include "db/Conexion.h"
#include "import/PantallasImportacion.h"
#include "import/frmSelectDB.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace import_prueba;
using prueba::caja;
using prueba::cajas;
using prueba::hijo;

namespace {

// Remembers what each file dialog was opened with.
class InterfazConDialogos : public InterfazGuionada {
  public:
    QStringList dialogos;  // "title|dir|filter"
    QString openFileName(const QString& caption, const QString& dir,
                         const QString& filter) override {
        dialogos.append(caption + u'|' + dir + u'|' + filter);
        return InterfazGuionada::openFileName(caption, dir, filter);
    }
};

void pulsar(QWidget* w, const QString& boton) {
    hijo<QPushButton>(w, boton)->click();
}

// Opens a registered screen and acts on it once it is up; `accion` closes it.
void conPantalla(const QString& nombre, std::function<void(QDialog*)> accion) {
    bool hecho = false;
    prueba::alAbrirModal(
        [&](QDialog* d) {
            hecho = true;
            accion(d);
        },
        300);
    QVERIFY(Pantallas::abrir(nombre));
    QVERIFY(hecho);
}

QStringList visibles(QDialog* d) {
    QStringList v;
    for (const char* n : {"XPButton1", "XPButton2", "Chkcontactos", "lbllista", "Cmblista",
                          "Label1", "lista", "lblIntervalo", "cmbIntervalo"}) {
        auto* w = d->findChild<QWidget*>(QString::fromLatin1(n));
        if (w && w->isVisible()) v.append(QString::fromLatin1(n));
    }
    return v;
}

}  // namespace

class TestSeleccion : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    std::optional<InterfazConDialogos> ui;  // new for each test
    QString base;

  private Q_SLOTS:
    void initTestCase() { registrarPantallasImportacion(); }
    void init() {
        base = baseConCuentas(world);
        ui.emplace();
    }

    // Opening the screen writes nothing: the combo shows the line nearest
    // to the interval the transmitter runs by (below 15 or unreadable is
    // 60), and the timer hears that interval.
    void intervaloAlCargar_data() {
        QTest::addColumn<QString>("guardado");
        QTest::addColumn<int>("linea");
        QTest::addColumn<int>("segundos");  // heard by the timer; 0 for nothing
        QTest::newRow("7 is under the minimum") << u"7"_s << 5 << 60;
        QTest::newRow("abc") << u"abc"_s << 5 << 60;
        QTest::newRow("never set") << QString() << 5 << 60;
        QTest::newRow("too large stops the cycle") << u"99999"_s << 5 << 0;
        QTest::newRow("45") << u"45"_s << 4 << 45;
        QTest::newRow("40 shows its nearest line") << u"40"_s << 4 << 40;
        QTest::newRow("120 set in Options") << u"120"_s << 5 << 120;
    }
    void intervaloAlCargar() {
        QFETCH(QString, guardado);
        QFETCH(int, segundos);
        if (!guardado.isNull()) Ajustes::saveSetting(u"Tr"_s, u"Interval"_s, guardado);
        QSignalSpy aviso(&Avisos::instancia(), &Avisos::intervaloLeido);
        frmSelectDB pantalla;
        auto* combo = hijo<QComboBox>(&pantalla, u"cmbIntervalo"_s);
        QTEST(combo->currentIndex(), "linea");
        QCOMPARE(Ajustes::getSetting(u"Tr"_s, u"Interval"_s), guardado);
        QCOMPARE(aviso.size(), segundos ? 1 : 0);
        if (segundos) QCOMPARE(aviso.at(0).at(0).toInt(), segundos);
        // 5 and 10 seconds are under the transmitter's minimum.
        auto* lineas = qobject_cast<QStandardItemModel*>(combo->model());
        for (int i = 0; i < 6; ++i) QCOMPARE(lineas->item(i)->isEnabled(), i >= 2);
    }

    void modos_data() {
        QTest::addColumn<QString>("nombre");
        QTest::addColumn<QString>("titulo");
        QTest::addColumn<QString>("ruta");
        QTest::addColumn<QStringList>("visibles");
        QTest::addColumn<bool>("aceptarActivo");
        QTest::addColumn<QString>("dialogo");

        const QStringList importacion{u"XPButton2"_s, u"Chkcontactos"_s, u"lbllista"_s,
                                      u"Cmblista"_s};
        const QString intercambio =
            u"Seleccione Fichero de intercambio|{app}/intercambio.txt|"
            u"Ficheros (*.txt);;Todos (*)"_s;
        QTest::newRow("base de datos")
            << u"frmSelectDB"_s << u"Seleccionar Base de Datos"_s << u"{base}"_s
            << QStringList{u"XPButton1"_s} << false
            << u"Seleccione su Base de Datos|{base}|Bases de Datos (*.db);;Todos (*)"_s;
        QTest::newRow("manual") << u"frmSelectDB.Import"_s
                                << u"    Seleccionar fichero de Importación Manual"_s
                                << u"{app}/intercambio.txt"_s << importacion << true << intercambio;
        QTest::newRow("automática")
            << u"frmSelectDB.ImportA"_s << u"    Seleccionar fichero de Importacion Automática"_s
            << u"{app}/intercambio.txt"_s
            << importacion + QStringList{u"lblIntervalo"_s, u"cmbIntervalo"_s} << true
            << intercambio;
        QTest::newRow("contactos")
            << u"frmSelectDB.ImportUser"_s
            << u"    Seleccionar fichero de Importación de Contactos"_s
            << u"{app}/intercambio.txt"_s << importacion << true << intercambio;
    }
    void modos() {
        QFETCH(QString, nombre);
        QFETCH(QString, ruta);
        QFETCH(QString, dialogo);
        Ajustes::saveSetting(u"BD"_s, u"Path"_s, base);
        for (QString* t : {&ruta, &dialogo})
            t->replace(u"{app}"_s, directorioAplicacion()).replace(u"{base}"_s, base);
        conPantalla(nombre, [&](QDialog* d) {
            QTEST(d->windowTitle(), "titulo");
            QCOMPARE(hijo<QLabel>(d, u"lblactual"_s)->text(), ruta);
            QCOMPARE(hijo<QLabel>(d, u"lblFichero"_s)->text(), ruta);
            QTEST(::visibles(d), "visibles");
            QTEST(hijo<QPushButton>(d, u"cmdAdd"_s)->isEnabled(), "aceptarActivo");
            QCOMPARE(hijo<QPushButton>(d, u"cmdAdd"_s)->text(), u"&Aceptar selección"_s);
            QCOMPARE(hijo<QPushButton>(d, u"cmdClose"_s)->text(), u"&Cancelar"_s);
            // "Nueva Lista" shows the name of the new list.
            auto* listas = hijo<QComboBox>(d, u"Cmblista"_s);
            QCOMPARE(listas->itemText(0), u"No Añadir a Lista"_s);
            listas->setCurrentIndex(1);
            QCOMPARE(hijo<QLineEdit>(d, u"lista"_s)->isVisible(), listas->isVisible());
            listas->setCurrentIndex(0);
            ui->fileNames = {world.root() + u"/otro.txt"_s};
            pulsar(d, u"cmdexaminar"_s);
            QCOMPARE(hijo<QLabel>(d, u"lblFichero"_s)->text(), world.root() + u"/otro.txt"_s);
            QCOMPARE(hijo<QLabel>(d, u"lblactual"_s)->text(), ruta);
            d->reject();
        });
        QCOMPARE(ui->dialogos, QStringList{dialogo});
    }

    void aceptarImportacion_data() {
        QTest::addColumn<QString>("nombre");
        QTest::addColumn<QString>("linea");  // the Cmblista line chosen
        QTest::addColumn<QString>("nueva");  // the text typed in `lista`
        QTest::addColumn<bool>("marcado");
        QTest::addColumn<QString>("boton");
        QTest::addColumn<QString>("seccion");
        QTest::addColumn<QStringList>("guardado");  // Path|Lista|AddContactos|Interval

        const QString f = u"{f}"_s;
        QTest::newRow("sin lista")
            << u"frmSelectDB.Import"_s << u"No Añadir a Lista"_s << QString() << false
            << u"cmdAdd"_s << u"Import"_s << QStringList{f, u"-1"_s, u"0"_s, u"120"_s};
        QTest::newRow("lista nueva sin nombre")
            << u"frmSelectDB.ImportUser"_s << u"Nueva Lista"_s << QString() << true << u"cmdAdd"_s
            << u"ImportUser"_s << QStringList{f, QString(), u"1"_s, u"120"_s};
        QTest::newRow("lista nueva con nombre")
            << u"frmSelectDB.Import"_s << u"Nueva Lista"_s << u"Clientes"_s << false << u"cmdAdd"_s
            << u"Import"_s << QStringList{f, u"Clientes"_s, u"0"_s, u"120"_s};
        QTest::newRow("lista con apóstrofo")
            << u"frmSelectDB.Import"_s << u"004 - L'Hospitalet"_s << QString() << false
            << u"cmdAdd"_s << u"Import"_s << QStringList{f, u"4"_s, u"0"_s, u"120"_s};
        // Two lists of one name: the lookup returns the first the engine gives.
        QTest::newRow("nombre repetido")
            << u"frmSelectDB.Import"_s << u"009 - Dup"_s << QString() << false << u"cmdAdd"_s
            << u"Import"_s << QStringList{f, u"2"_s, u"0"_s, u"120"_s};
        QTest::newRow("vigilancia cada 20 segundos")
            << u"frmSelectDB.ImportA"_s << u"No Añadir a Lista"_s << QString() << false
            << u"cmdAdd"_s << u"ImportA"_s << QStringList{f, u"-1"_s, u"0"_s, u"20"_s};
        // Cancelling the watch's screen ends the watch.
        QTest::newRow("cancelar la vigilancia")
            << u"frmSelectDB.ImportA"_s << u"No Añadir a Lista"_s << QString() << false
            << u"cmdClose"_s << u"ImportA"_s
            << QStringList{QString(), u"antes"_s, u"antes"_s, u"120"_s};
        QTest::newRow("anular la importación")
            << u"frmSelectDB.ImportA"_s << u"No Añadir a Lista"_s << QString() << false
            << u"XPButton2"_s << u"ImportA"_s
            << QStringList{QString(), u"antes"_s, u"antes"_s, u"120"_s};
    }
    void aceptarImportacion() {
        QFETCH(QString, nombre);
        QFETCH(QString, linea);
        QFETCH(QString, nueva);
        QFETCH(bool, marcado);
        QFETCH(QString, boton);
        QFETCH(QString, seccion);
        QFETCH(QStringList, guardado);
        for (const auto& [g, n] :
             {std::pair{2, u"Dup"_s}, std::pair{4, u"L'Hospitalet"_s}, std::pair{9, u"Dup"_s}})
            bd().exec(u"INSERT INTO Grupos (Grupo,Nombre) VALUES (?,?)"_s, {g, n});
        const QString f = world.root() + u"/elegido.txt"_s;
        guardado.replaceInStrings(u"{f}"_s, f);
        for (const QString& clave : {u"Path"_s, u"Lista"_s, u"AddContactos"_s})
            Ajustes::saveSetting(seccion, clave, u"antes"_s);
        // Set in Options: only a line the user picks replaces it.
        Ajustes::saveSetting(u"Tr"_s, u"Interval"_s, u"120"_s);
        QSignalSpy detenido(&Avisos::instancia(), &Avisos::cicloDetenido);
        QSignalSpy intervalo(&Avisos::instancia(), &Avisos::intervaloCambiado);
        conPantalla(nombre, [&](QDialog* d) {
            ui->fileNames = {f};
            pulsar(d, u"cmdexaminar"_s);
            auto* listas = hijo<QComboBox>(d, u"Cmblista"_s);
            listas->setCurrentIndex(listas->findText(linea));
            QCOMPARE(listas->currentText(), linea);
            hijo<QLineEdit>(d, u"lista"_s)->setText(nueva);
            hijo<QCheckBox>(d, u"Chkcontactos"_s)->setChecked(marcado);
            if (guardado.at(3) == u"20"_s)
                hijo<QComboBox>(d, u"cmbIntervalo"_s)->setCurrentIndex(2);
            pulsar(d, boton);
        });
        QStringList leido;
        for (const QString& clave : {u"Path"_s, u"Lista"_s, u"AddContactos"_s})
            leido.append(Ajustes::getSetting(seccion, clave));
        leido.append(Ajustes::getSetting(u"Tr"_s, u"Interval"_s));
        QCOMPARE(leido, guardado);
        QCOMPARE(detenido.size(), boton == u"XPButton2"_s ? 1 : 0);
        // Accepting restarts the cycle with the chosen interval.
        QCOMPARE(intervalo.size(), boton == u"cmdAdd"_s ? 1 : 0);
        if (!intervalo.isEmpty()) QCOMPARE(intervalo.at(0).at(0).toInt(), guardado.at(3).toInt());
    }

    void baseDeDatos_data() {
        QTest::addColumn<QString>("fichero");  // "actual", "antigua", "basura"
        QTest::addColumn<QString>("prueba");   // what the test button says
        QTest::addColumn<QString>("aviso");    // what accepting says
        QTest::addColumn<bool>("cambiada");
        QTest::newRow("actual") << u"actual"_s
                                << u"Base de datos aceptada, pulse Aceptar Selección"_s << QString()
                                << true;
        QTest::newRow("antigua, se actualiza")
            << u"antigua"_s << u"Base de datos actualizada y aceptada, pulse Aceptar Selección"_s
            << QString() << true;
        QTest::newRow("no es una base de datos")
            << u"basura"_s << u"Base de datos actualizada y aceptada, pulse Aceptar Selección"_s
            << u"Base de datos no valida"_s << false;
    }
    void baseDeDatos() {
        QFETCH(QString, fichero);
        QFETCH(QString, prueba);
        QFETCH(QString, aviso);
        QFETCH(bool, cambiada);
        Ajustes::saveSetting(u"BD"_s, u"Path"_s, base);
        const QString otra = world.root() + u"/otra.db"_s;
        if (fichero == u"actual"_s)
            TestDb::createCurrent(otra);
        else if (fichero == u"antigua"_s)
            TestDb::createBaseline(otra);
        else
            escribir(otra, QByteArray(8192, 'x'));
        conPantalla(u"frmSelectDB"_s, [&](QDialog* d) {
            ui->fileNames = {otra};
            pulsar(d, u"cmdexaminar"_s);
            auto* aceptar = hijo<QPushButton>(d, u"cmdAdd"_s);
            QVERIFY(!aceptar->isEnabled());
            pulsar(d, u"XPButton1"_s);
            QCOMPARE(cajas(*ui), QStringList{caja(64, prueba)});
            QVERIFY(aceptar->isEnabled());
            aceptar->click();
        });
        QCOMPARE(cajas(*ui).mid(1), aviso.isEmpty() ? QStringList() : QStringList{caja(48, aviso)});
        QCOMPARE(Ajustes::getSetting(u"BD"_s, u"Path"_s), cambiada ? otra : base);
        QCOMPARE(Conexion().path(), cambiada ? otra : base);
    }
};

QUELMO_GUI_TEST_MAIN(TestSeleccion)
#include "test_seleccion.moc"
