#include "base/Avisos.h"

Avisos& Avisos::instancia() {
    static Avisos avisos;
    return avisos;
}
