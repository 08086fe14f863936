#include "addressbook/PantallasAgenda.h"

#include "addressbook/frmAbonados.h"
#include "addressbook/frmGrupos.h"
#include "addressbook/frmMenPro.h"
#include "addressbook/frmSelecMenPro.h"
#include "base/Pantallas.h"
#include "widgets/PantallasHijas.h"

#include <QApplication>

using namespace Qt::StringLiterals;

namespace {
// The publication screen opens with the list it publishes. Its registry
// name opens it until the screen exists; the screen then takes the list
// here, in its constructor or a preparing call, before it is shown.
void abrirPublicacionLista(const frmGrupos::ListaElegida& lista) {
    Q_UNUSED(lista);
    Pantallas::abrir(u"frmSubirListaWeb"_s);
}
}  // namespace

void registrarPantallasAgenda() {
    Pantallas::registrar(u"frmAbonados"_s,
                         [] { PantallasHijas::show(PantallasHijas::instance<frmAbonados>()); });
    Pantallas::registrar(u"frmGrupos"_s, [] {
        const bool nueva = !PantallasHijas::isLoaded<frmGrupos>();
        frmGrupos* listas = PantallasHijas::instance<frmGrupos>();
        if (nueva)
            QObject::connect(listas, &frmGrupos::publicacionPedida, listas, &abrirPublicacionLista);
        PantallasHijas::show(listas);
    });
    Pantallas::registrar(u"frmMenPro"_s,
                         [] { PantallasHijas::show(PantallasHijas::instance<frmMenPro>()); });
    Pantallas::registrar(u"frmNewUser"_s,
                         [] { frmAbonados::msNuevoContacto(ventanaPadreModal()); });
    Pantallas::registrar(u"frmSelecMenPro"_s, [] {
        frmSelecMenPro picker(ventanaPadreModal());
        picker.exec();
    });
}
