#include "widgets/Iconos.h"

using namespace Qt::StringLiterals;

// The compiled-in pictures live in this static library: register them as
// soon as any screen that shows one is linked in.
static void iniciarRecursos() {
    Q_INIT_RESOURCE(quelmo);
}

namespace {
[[maybe_unused]] const bool kRecursos = (iniciarRecursos(), true);
}  // namespace

QIcon iconoQuelmo(const QString& nombre) {
    return QIcon(u":/quelmo/iconos/"_s + nombre + u".png"_s);
}
