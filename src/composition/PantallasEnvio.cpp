#include "composition/PantallasEnvio.h"

#include "base/Pantallas.h"
#include "composition/frmEnvio.h"
#include "composition/frmSeleccion.h"
#include "widgets/PantallasHijas.h"

#include <QApplication>

using namespace Qt::StringLiterals;

void registrarPantallasEnvio() {
    Pantallas::registrar(u"frmEnvio"_s,
                         [] { PantallasHijas::show(PantallasHijas::instance<frmEnvio>()); });
    Pantallas::registrar(u"frmSeleccion"_s, [] {
        frmSeleccion picker(QApplication::activeWindow());
        picker.exec();
    });
}
