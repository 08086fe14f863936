#include "scheduling/PantallasProgramacion.h"

#include "base/Pantallas.h"
#include "scheduling/frmMenAuto.h"
#include "widgets/PantallasHijas.h"

using namespace Qt::StringLiterals;

void registrarPantallasProgramacion() {
    Pantallas::registrar(u"frmMenAuto"_s,
                         [] { PantallasHijas::show(PantallasHijas::instance<frmMenAuto>()); });
}
