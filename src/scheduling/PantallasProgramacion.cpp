#include "scheduling/PantallasProgramacion.h"

#include "base/Pantallas.h"
#include "scheduling/frmMenAuto.h"
#include "scheduling/frmNewMenAuto2.h"
#include "widgets/PantallasHijas.h"

using namespace Qt::StringLiterals;

void registrarPantallasProgramacion() {
    Pantallas::registrar(u"frmMenAuto"_s,
                         [] { PantallasHijas::show(PantallasHijas::instance<frmMenAuto>()); });
    // The emergency screen opens the editor on the multi-send it shows.
    Pantallas::registrarConDato(u"frmNewMenAuto2"_s, [](const QVariant& codigo) {
        if (codigo.isValid()) frmNewMenAuto2::editar(codigo.toInt(), ventanaPadreModal());
    });
}
