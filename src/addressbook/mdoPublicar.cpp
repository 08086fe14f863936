#include "addressbook/mdoPublicar.h"

#include "base/Cifrado.h"
#include "base/Conversiones.h"
#include "base/RegistroActividad.h"
#include "db/Conexion.h"
#include "delivery/Intercambio.h"
#include "delivery/qmXMLSend.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace {

struct DatosCuenta {
    QString usuario, clave, host;
};

bool leerCuenta(int16_t canal, DatosCuenta* c) {
    const ResultadoConsulta r = Conexion().query(
        u"SELECT canal, host, puerto, usuario, clave FROM Canales WHERE canal = ?"_s, {canal});
    if (r.isEmpty()) return false;
    c->usuario = textoDe(r.value(0, u"usuario"_s));
    c->clave = textoDe(r.value(0, u"clave"_s));
    c->host = textoDe(r.value(0, u"host"_s));
    return true;
}

}  // namespace

Resultado<QList<CuentaPublicacion>> msCuentasPublicacion() {
    QList<CuentaPublicacion> cuentas;
    try {
        const ResultadoConsulta r = Conexion().query(u"SELECT * FROM Canales"_s);
        for (int i = 0; i < r.recordCount(); ++i)
            cuentas.append({textoDe(r.value(i, u"Nombre"_s)) + u" ("_s +
                                textoSaldo(r.value(i, u"saldo"_s)) + u" SMS)"_s,
                            u"c"_s + textoDe(r.value(i, u"canal"_s)),
                            numeroDe(r.value(i, u"Principal"_s)) == 1});
    } catch (const ErrorQuelmo& e) {
        return Hecho::no(u"Encontrado Error: "_s + e.description(), Msg::Exclamation);
    }
    return cuentas;
}

std::optional<DatosLista> leerDatosLista(int16_t grupo) {
    const ResultadoConsulta r = Conexion().query(
        u"SELECT Grupos.*, (SELECT count(*) FROM AboGrup WHERE AboGrup.Grupo = Grupos.Grupo) "
        u"AS Contactos FROM Grupos WHERE Grupo = ?"_s,
        {grupo});
    if (r.isEmpty()) return std::nullopt;
    return DatosLista{textoDe(r.value(0, u"Nombre"_s)), textoDe(r.value(0, u"Contactos"_s))};
}

bool esPalabraClaveValida(const QString& ltag) {
    for (const QChar c : ltag) {
        const char16_t u = c.unicode();
        if (!((u >= u'A' && u <= u'Z') || (u >= u'a' && u <= u'z') || (u >= u'0' && u <= u'9')))
            return false;
    }
    return true;
}

QCoro::Task<ResultadoPublicacion> msPublicarLista(QString Lacc, int16_t grupo, QString ltag,
                                                  int16_t canal, bool nborrar,
                                                  Transporte::Cancelacion cancelacion) {
    ResultadoPublicacion resultado;
    // What kept the exchange from an answer, for the log and the screen.
    QString causa;
    try {
        DatosCuenta cuenta;
        leerCuenta(canal, &cuenta);
        auto cliente = qmXMLSend::crear();
        cliente->cancelacion = cancelacion;
        cliente->clave = msCifrarClave(cuenta.clave, false);
        cliente->usuario = cuenta.usuario;
        cliente->url = cuenta.host + u"/servlet/quelmoMessage.servlet.Servlet"_s;
        cliente->EnviarTodo = true;
        cliente->App = QCoreApplication::applicationName();
        cliente->Remitente = QString();
        cliente->ltag = ltag;
        cliente->Lpass = QString();
        cliente->Lborrar = u"0"_s;
        cliente->nborrar = nborrar ? u"1"_s : u"0"_s;
        cliente->Lresp = u"1"_s;
        cliente->Lpri = u"D"_s;
        cliente->Lacc = Lacc;
        if (Lacc == u"U"_s || Lacc == u"S"_s) {
            const ResultadoConsulta r = Conexion().query(
                u"SELECT Abonados.Codigo, Abonados.Alias, Abonados.Comentario FROM Abonados "
                u"INNER JOIN AboGrup ON Abonados.Codigo = AboGrup.Abonado "
                u"WHERE AboGrup.Grupo = ?"_s,
                {grupo});
            for (int i = 0; i < r.recordCount(); ++i)
                cliente->XMLMensajes.AddContacto(QString::number(i), textoDe(r.value(i, 0)),
                                                 textoDe(r.value(i, 1)), textoDe(r.value(i, 2)));
        }
        cliente->SendParam = u"xml="_s;
        QString nn, ff;
        co_await Intercambio::enHilo(Intercambio::Clase::Consulta, cliente->cancelacion,
                                     [&] { cliente->SendXMLLista(nn, ff); });
        causa = Transporte::descripcion(cliente->RXTransporte);
        const qmXMLSend::Autentificacion& rx = cliente->RXAutentificacion;
        resultado = {rx.Resultado.trimmed() == u"1"_s, rx.CADD, rx.CUP, rx.CERR, {}};
    } catch (const ErrorQuelmo& e) {
        // A failed exchange is the platform's failure to the user.
        resultado = ResultadoPublicacion();
        causa = e.description();
    }
    if (!causa.isEmpty()) msLog(causa);
    resultado.causa = causa;
    co_return resultado;
}
