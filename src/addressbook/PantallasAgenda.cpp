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
// The publication screen opens on the list the lists screen chose; through
// the registry, so the lists screen knows nothing of it.
void abrirPublicacionLista(const frmGrupos::ListaElegida& lista) {
    Pantallas::abrir(u"frmSubirListaWeb"_s, QVariant(int(lista.grupo)));
}

void publicarLista(int16_t grupo) {
    frmSubirListaWeb pantalla(ventanaPadreModal());
    pantalla.msCargarDatos(grupo);
    pantalla.exec();
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
    // The publication opens on a list's code.
    Pantallas::registrarConDato(u"frmSubirListaWeb"_s, [](const QVariant& grupo) {
        publicarLista(int16_t(grupo.toInt()));
    });
    Pantallas::registrar(u"frmSelecMenPro"_s, [] {
        frmSelecMenPro picker(ventanaPadreModal());
        picker.exec();
    });
}
