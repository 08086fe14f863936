#include "app/LineaOrdenes.h"

#include <QSet>

using namespace Qt::StringLiterals;

namespace {

const QStringList kOpciones = {u"--help"_s,       u"--version"_s, u"--headless"_s, u"--once"_s,
                               u"--continuous"_s, u"--send"_s,    u"--account"_s,  u"--import"_s,
                               u"--contacts"_s,   u"--list"_s};

Orden fallo(const QString& por) {
    Orden o;
    o.modo = Orden::Modo::Error;
    o.error = por;
    return o;
}

// What an option needs besides itself: an option name where a value should
// be is a value left out, not a text to send.
bool tomarValores(const QStringList& args, qsizetype& i, int cuantos, QStringList& valores) {
    for (int n = 0; n < cuantos; ++n) {
        if (i + 1 >= args.size() || kOpciones.contains(args.at(i + 1))) return false;
        valores.append(args.at(++i));
    }
    return true;
}

}  // namespace

Orden leerOrden(const QStringList& args) {
    Orden o;
    QSet<QString> vistas;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& a = args.at(i);
        if (!kOpciones.contains(a)) {
            return fallo(a.startsWith(u'-') ? u"opción desconocida: "_s + a
                                            : u"argumento inesperado: "_s + a);
        }
        if (vistas.contains(a)) return fallo(u"opción repetida: "_s + a);
        vistas.insert(a);
        const int cuantos = a == u"--send"_s                                                  ? 2
                            : (a == u"--account"_s || a == u"--import"_s || a == u"--list"_s) ? 1
                                                                                              : 0;
        QStringList v;
        if (!tomarValores(args, i, cuantos, v))
            return fallo(a == u"--send"_s ? u"--send necesita NÚMERO y TEXTO"_s
                                          : u"falta el argumento de "_s + a);
        if (a == u"--send"_s) {
            o.numero = v.at(0);
            o.texto = v.at(1);
        } else if (a == u"--account"_s) {
            o.cuenta = v.at(0);
        } else if (a == u"--import"_s) {
            o.fichero = v.at(0);
        } else if (a == u"--list"_s) {
            o.lista = v.at(0);
        }
    }
    o.unaVez = vistas.contains(u"--once"_s);
    o.continuo = vistas.contains(u"--continuous"_s);
    o.contactos = vistas.contains(u"--contacts"_s);

    if (vistas.contains(u"--help"_s)) {
        o.modo = Orden::Modo::Ayuda;
        return o;
    }
    if (vistas.contains(u"--version"_s)) {
        o.modo = Orden::Modo::Version;
        return o;
    }
    const bool enviar = vistas.contains(u"--send"_s);
    const bool importar = vistas.contains(u"--import"_s);
    // --once alone has always meant the transmitter without windows.
    const bool sinVentana = vistas.contains(u"--headless"_s) || o.unaVez;
    if (int(enviar) + int(importar) + int(sinVentana) > 1)
        return fallo(u"--send, --import y --headless no se pueden combinar"_s);
    if (vistas.contains(u"--account"_s) && !enviar)
        return fallo(u"--account solo se usa con --send"_s);
    if ((o.contactos || vistas.contains(u"--list"_s)) && !importar)
        return fallo(u"--contacts y --list solo se usan con --import"_s);
    if (o.continuo && (enviar || importar))
        return fallo(u"--continuous solo se usa con el transmisor"_s);
    o.modo = enviar       ? Orden::Modo::Enviar
             : importar   ? Orden::Modo::Importar
             : sinVentana ? Orden::Modo::SinVentana
                          : Orden::Modo::Ventana;
    return o;
}

QString textoUso() {
    return u"Uso: quelmo-sms [OPCIÓN]...\n"
           u"Envía mensajes SMS a través de la plataforma web. Sin opciones abre la\n"
           u"aplicación de escritorio.\n"
           u"\n"
           u"  --headless            el transmisor sin ventanas; el registro va a la salida\n"
           u"                        estándar; SIGINT o SIGTERM lo detienen entre envíos\n"
           u"  --once                arranca, hace un ciclo del transmisor y termina\n"
           u"  --continuous          modo continuo en esta ejecución (como Tr/Continuo=1):\n"
           u"                        tras un lote completo de una cuenta a la que aún le\n"
           u"                        quedan mensajes, el siguiente ciclo no espera el\n"
           u"                        intervalo\n"
           u"  --send NÚMERO TEXTO   pone un mensaje en la bandeja de salida con las reglas\n"
           u"                        de una línea de importación y termina\n"
           u"  --account N           con --send: la cuenta N en vez de la principal\n"
           u"  --import FICHERO      importa un fichero de mensajes como la importación\n"
           u"                        manual y termina con el resumen\n"
           u"  --contacts            con --import: el fichero es de contactos\n"
           u"  --list L              con --import: la lista (su código, o el nombre de una\n"
           u"                        lista nueva) en vez de la guardada\n"
           u"  --version             muestra la versión y termina\n"
           u"  --help                muestra esta ayuda y termina\n"
           u"\n"
           u"Proxy: el de las variables http_proxy, https_proxy, all_proxy y no_proxy, o\n"
           u"el de Proxy y SinProxy en la sección [Despliegue] de la configuración.\n"
           u"\n"
           u"Códigos de salida: 0 bien; 1 el mensaje o alguna línea no se ha importado;\n"
           u"2 orden mal escrita; 3 sin base de datos utilizable; 4 (--once) el ciclo no\n"
           u"pudo entregar lo que esperaba en la bandeja de salida (plataforma\n"
           u"inalcanzable, cuenta rechazada, fallo del proxy o del certificado); 5 (--once)\n"
           u"no se pudo importar el fichero vigilado.\n"_s;
}
