#include "addressbook/PantallasAgenda.h"

#include "addressbook/frmAbonados.h"
#include "addressbook/frmGrupos.h"
#include "addressbook/frmMenPro.h"
#include "addressbook/frmSelecMenPro.h"
#include "base/Pantallas.h"
#include "widgets/PantallasHijas.h"

#include <QApplication>

using namespace Qt::StringLiterals;

void registrarPantallasAgenda() {
    Pantallas::registrar(u"frmAbonados"_s,
                         [] { PantallasHijas::show(PantallasHijas::instance<frmAbonados>()); });
    Pantallas::registrar(u"frmGrupos"_s,
                         [] { PantallasHijas::show(PantallasHijas::instance<frmGrupos>()); });
    Pantallas::registrar(u"frmMenPro"_s,
                         [] { PantallasHijas::show(PantallasHijas::instance<frmMenPro>()); });
    Pantallas::registrar(u"frmNewUser"_s, [] {
        frmAbonados::msNuevoContacto(ventanaPadreModal());
        if (PantallasHijas::isLoaded<frmAbonados>())
            PantallasHijas::instance<frmAbonados>()->requery();
    });
    Pantallas::registrar(u"frmSelecMenPro"_s, [] {
        frmSelecMenPro picker(ventanaPadreModal());
        picker.exec();
    });
}
