#include "addressbook/PantallasAgenda.h"

#include "addressbook/frmAbonados.h"
#include "addressbook/frmGrupos.h"
#include "addressbook/frmMenPro.h"
#include "addressbook/frmSelecMenPro.h"
#include "addressbook/frmSubirListaWeb.h"
#include "base/Pantallas.h"
#include "widgets/PantallasHijas.h"

#include <QApplication>

using namespace Qt::StringLiterals;

namespace {
void publicarLista(int16_t grupo) {
    frmSubirListaWeb pantalla(ventanaPadreModal());
    pantalla.msCargarDatos(grupo);
    pantalla.exec();
}
}  // namespace

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
    // The publication opens on a list's code.
    Pantallas::registrarConDato(u"frmSubirListaWeb"_s, [](const QVariant& grupo) {
        publicarLista(int16_t(grupo.toInt()));
    });
    // The name that the lists screen calls, with the list it chose.
    Pantallas::registrar(u"frmPublicarLista"_s,
                         [] { publicarLista(frmGrupos::listaAPublicar().grupo); });
    Pantallas::registrar(u"frmSelecMenPro"_s, [] {
        frmSelecMenPro picker(ventanaPadreModal());
        picker.exec();
    });
}
