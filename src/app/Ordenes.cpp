#include "app/Ordenes.h"

#include "app/Arranque.h"
#include "app/LineaOrdenes.h"
#include "app/SinVentana.h"
#include "base/Despliegue.h"
#include "base/Error.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazSinVentana.h"
#include "base/RegistroActividad.h"
#include "db/Conexion.h"
#include "db/Transaccion.h"
#include "import/mdoImport.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTextStream>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

// A running transmitter holds the write lock through one exchange with the
// platform, which its client cuts at the total timeout: wait a little
// longer than that before calling the file busy.
void esperarAlTransmisor() {
    Conexion().establecerEspera((Despliegue::segundosTotal() + 30) * 1000);
}

// The text of a log line, without its date and time.
QString textoDeLinea(const QString& linea) {
    const qsizetype i = linea.indexOf(u" - "_s);
    return i < 0 ? linea : linea.mid(i + 3);
}

}  // namespace

int ejecutarEnvio(const Orden& orden, int argc, char** argv) {
    QCoreApplication app(argc, argv);
    nombrarAplicacion();
    InterfazSinVentana interfaz;
    establecerInterfaz(&interfaz);
    QStringList lineas;
    estadoAplicacion().log.setEcho(
        [&lineas](const QString& linea) { lineas << textoDeLinea(linea); });
    abrirBaseSinVentana();
    esperarAlTransmisor();

    bool hecho = false;
    try {
        // The lock is taken before the line is looked at and nothing is
        // retried after it: the row is written once or not at all.
        Transaccion transaccion(Conexion());
        const QString cuenta =
            orden.cuenta.isNull() ? QString::number(msCanalPrincipal()) : orden.cuenta;
        hecho = msImportarLinea(cuenta, orden.numero, orden.texto, -1, false, false);
        if (hecho) transaccion.commit();
    } catch (const ErrorQuelmo& e) {
        hecho = false;
        // Whatever the line said, its row is not there.
        lineas = {u"No se ha podido guardar el mensaje en la bandeja de salida: "_s +
                  e.description()};
    }
    if (lineas.isEmpty() && !hecho)
        lineas << u"No se ha podido guardar el mensaje en la bandeja de salida"_s;
    Conexion().close();
    QTextStream salida(hecho ? stdout : stderr);
    for (const QString& l : std::as_const(lineas)) salida << l << Qt::endl;
    return hecho ? kSalidaBien : kSalidaFallo;
}

int ejecutarImportacion(const Orden& orden, int argc, char** argv) {
    QCoreApplication app(argc, argv);
    nombrarAplicacion();
    InterfazSinVentana interfaz;
    establecerInterfaz(&interfaz);
    estadoAplicacion().log.setEcho([](const QString& linea) {
        static QTextStream out(stdout);
        out << linea << Qt::endl;
    });
    abrirBaseSinVentana();
    esperarAlTransmisor();

    // The log names the file as the user would find it again.
    const QString ruta = QFileInfo(orden.fichero).absoluteFilePath();
    // The import goes on over turns of the event loop, which ends with it
    // (started from the loop, so that even a file read in one turn ends it).
    QTimer::singleShot(0, &app, [&app, &orden, ruta] {
        QCoro::connect(orden.contactos ? msImportarContactosDe(ruta, orden.lista)
                                       : msImportarMensajesDe(ruta, orden.lista),
                       &app, [&app, ruta](const ResumenImportacion& r) {
                           Conexion().close();
                           if (!r.leido) {
                               QTextStream(stderr)
                                   << u"No se ha podido importar el fichero "_s << ruta << Qt::endl;
                               app.exit(kSalidaFallo);
                           } else if (r.correctas < r.vistas) {
                               QTextStream(stderr)
                                   << u"No se han importado "_s << (r.vistas - r.correctas)
                                   << u" de "_s << r.vistas << u" líneas del fichero "_s << ruta
                                   << Qt::endl;
                               app.exit(kSalidaFallo);
                           } else {
                               app.exit(kSalidaBien);
                           }
                       });
    });
    return app.exec();
}
