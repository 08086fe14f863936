#include "composition/PantallasEnvio.h"

#include "app/ChildScreens.h"
#include "app/Pantallas.h"
#include "composition/frmEnvio.h"
#include "composition/frmSeleccion.h"

#include <QApplication>

using namespace Qt::StringLiterals;

void registrarPantallasEnvio() {
    Pantallas::registrar(u"frmEnvio"_s,
                         [] { ChildScreens::show(ChildScreens::instance<frmEnvio>()); });
    Pantallas::registrar(u"frmSeleccion"_s, [] {
        frmSeleccion picker(QApplication::activeWindow());
        picker.exec();
    });
}
