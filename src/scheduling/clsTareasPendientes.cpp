#include "scheduling/clsTareasPendientes.h"

int16_t clsTareasPendientes::ReLoad() { return 0; }

int16_t clsTareasPendientes::PendientesEnviar() { return 0; }
