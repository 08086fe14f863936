// quelmo-sms: the desktop application, or with --headless the transmitter
// alone, or one command for scripts (--send, --import). The windows live in
// a module loaded only when they are shown, so nothing else loads QtWidgets.
#include "app/LineaOrdenes.h"
#include "app/Ordenes.h"
#include "app/SinVentana.h"
#include "base/EstadoAplicacion.h"

#include <unistd.h>
#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>
#include <QStringList>
#include <cstdio>

namespace {

QString rutaEjecutable() {
    char buf[4096];
    const ssize_t n = ::readlink("/proc/self/exe", buf, sizeof(buf) - 1);
    if (n <= 0) return QString();
    return QFileInfo(QString::fromLocal8Bit(buf, int(n))).absolutePath();
}

}  // namespace

int main(int argc, char** argv) {
    QStringList argumentos;
    for (int i = 1; i < argc; ++i) argumentos << QString::fromLocal8Bit(argv[i]);
    const Orden orden = leerOrden(argumentos);
    switch (orden.modo) {
        case Orden::Modo::Error:
            std::fprintf(stderr, "quelmo-sms: %s\n\n%s", qPrintable(orden.error),
                         qPrintable(textoUso()));
            return kSalidaUso;
        case Orden::Modo::Ayuda:
            std::fputs(qPrintable(textoUso()), stdout);
            return kSalidaBien;
        case Orden::Modo::Version:
            std::printf("quelmo-sms %d.%d.%d\n", kVersionMajor, kVersionMinor, kVersionRevision);
            return kSalidaBien;
        case Orden::Modo::SinVentana:
            return ejecutarSinVentana(argc, argv, orden.unaVez, orden.continuo);
        case Orden::Modo::Enviar:
            return ejecutarEnvio(orden, argc, argv);
        case Orden::Modo::Importar:
            return ejecutarImportacion(orden, argc, argv);
        case Orden::Modo::Ventana:
            break;
    }

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
