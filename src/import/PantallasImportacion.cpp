#include "import/PantallasImportacion.h"

#include "base/Pantallas.h"
#include "import/frmSelectDB.h"
#include "widgets/PantallasHijas.h"

using namespace Qt::StringLiterals;

namespace {

void seleccionarFichero(Ajustes::Importacion importacion, const QString& titulo) {
    frmSelectDB pantalla(ventanaPadreModal());
    pantalla.mbImportacion = true;
    pantalla.importacion = importacion;
    pantalla.setWindowTitle(titulo);
    pantalla.exec();
}

}  // namespace

void registrarPantallasImportacion() {
    Pantallas::registrar(u"frmSelectDB"_s, [] {
        frmSelectDB pantalla(ventanaPadreModal());
        pantalla.mbImportacion = false;
        pantalla.setWindowTitle(u"    Seleccionar Base de Datos"_s);
        pantalla.exec();
    });
    Pantallas::registrar(u"frmSelectDB.Import"_s, [] {
        seleccionarFichero(Ajustes::Importacion::Mensajes,
                           u"    Seleccionar fichero de Importación Manual"_s);
    });
    Pantallas::registrar(u"frmSelectDB.ImportA"_s, [] {
        seleccionarFichero(Ajustes::Importacion::Vigilada,
                           u"    Seleccionar fichero de Importacion Automática"_s);
    });
    Pantallas::registrar(u"frmSelectDB.ImportUser"_s, [] {
        seleccionarFichero(Ajustes::Importacion::Contactos,
                           u"    Seleccionar fichero de Importación de Contactos"_s);
    });
}
