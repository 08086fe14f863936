// quelmo-sms: the desktop application, or with --headless the transmitter
// alone. The windows live in a module loaded only when they are shown, so
// headless mode never loads QtWidgets.
#include "app/SinVentana.h"

#include <unistd.h>
#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>
#include <QStringList>
#include <cstdio>
#include <cstring>

namespace {

bool tieneOpcion(int argc, char** argv, const char* opcion) {
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], opcion) == 0) return true;
    return false;
}

QString rutaEjecutable() {
    char buf[4096];
    const ssize_t n = ::readlink("/proc/self/exe", buf, sizeof(buf) - 1);
    if (n <= 0) return QString();
    return QFileInfo(QString::fromLocal8Bit(buf, int(n))).absolutePath();
}

}  // namespace

int main(int argc, char** argv) {
    if (tieneOpcion(argc, argv, "--help")) {
        std::puts(
            "Uso: quelmo-sms [--headless [--once]]\n"
            "  --headless  el transmisor sin ventanas; el registro va a la salida estándar\n"
            "  --once      con --headless: arranca, hace un ciclo y termina");
        return 0;
    }
    const bool once = tieneOpcion(argc, argv, "--once");
    if (tieneOpcion(argc, argv, "--headless") || once) return ejecutarSinVentana(argc, argv, once);

    const QString dir = rutaEjecutable();
    QLibrary gui;
    const QStringList candidatas = {
        dir + QStringLiteral("/libquelmo-sms-gui.so"),
        dir + QStringLiteral("/../lib/quelmo-sms/libquelmo-sms-gui.so")};
    for (const QString& c : candidatas) {
        if (QFileInfo::exists(c)) {
            gui.setFileName(c);
            break;
        }
    }
    using Entrada = int (*)(int, char**);
    auto entrada = reinterpret_cast<Entrada>(gui.resolve("quelmo_gui_main"));
    if (!entrada) {
        std::fprintf(stderr, "No se pudo cargar la interfaz gráfica: %s\n",
                     qPrintable(gui.errorString()));
        return 1;
    }
    return entrada(argc, argv);
}
