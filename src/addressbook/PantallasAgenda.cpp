#include "addressbook/PantallasAgenda.h"

#include "addressbook/frmAbonados.h"
#include "addressbook/frmGrupos.h"
#include "addressbook/frmMenPro.h"
#include "addressbook/frmSelecMenPro.h"
#include "app/ChildScreens.h"
#include "app/Pantallas.h"

#include <QApplication>

using namespace Qt::StringLiterals;

void cerrarPantallaHija(QWidget* pantalla) {
    if (QMdiSubWindow* sub = ChildScreens::subWindowOf(pantalla))
        sub->close();
    else
        pantalla->close();
}

QWidget* ventanaPadreModal() {
    return QApplication::activeWindow();
}

void registrarPantallasAgenda() {
    Pantallas::registrar(u"frmAbonados"_s,
                         [] { ChildScreens::show(ChildScreens::instance<frmAbonados>()); });
    Pantallas::registrar(u"frmGrupos"_s,
                         [] { ChildScreens::show(ChildScreens::instance<frmGrupos>()); });
    Pantallas::registrar(u"frmMenPro"_s,
                         [] { ChildScreens::show(ChildScreens::instance<frmMenPro>()); });
    Pantallas::registrar(u"frmNewUser"_s, [] {
        frmAbonados::msNuevoContacto(ventanaPadreModal());
        if (ChildScreens::isLoaded<frmAbonados>()) ChildScreens::instance<frmAbonados>()->requery();
    });
    Pantallas::registrar(u"frmSelecMenPro"_s, [] {
        frmSelecMenPro picker(ventanaPadreModal());
        picker.exec();
    });
}
