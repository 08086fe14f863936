#pragma once

// What the accounts' tests share: the platform simulator with one account
// (demo/demo, balance 100), accounts put straight into the database, and
// an account row read back as one line.
#include "SimuladorPrueba.h"
#include "TestSupport.h"
#include "base/Ajustes.h"
#include "base/Cifrado.h"
#include "base/Conversiones.h"
#include "base/Hecho.h"
#include "db/Conexion.h"

#include <QCoro/QCoroTask>
#include <optional>

namespace cuentas_prueba {

using namespace Qt::StringLiterals;
using prueba::cajas;

inline const QString kSimulador =
    u"[plataforma]\nversion=\n[cuenta1]\nusuario=demo\nclave=demo\nsaldo=100\n"
    u"movil=0034600123456\n"_s;
inline const QString kDenegada =
    u"Autentificación Denegada, Revise Usuario y Contraseña y que su Cuenta esté Activada."_s;

// Points the platform's default address at the simulator, or at a port
// where nothing listens.
inline void plataforma(const SimuladorPrueba& sim, bool conectar) {
    Ajustes::saveSetting(u"Despliegue"_s, u"Plataforma"_s,
                         conectar ? sim.host() : u"http://127.0.0.1:1"_s);
}

inline void cuenta(int canal, const QString& nombre, int principal = 0,
                   const QString& usuario = u"demo"_s, const QString& clave = u"demo"_s) {
    Conexion().exec(
        u"INSERT INTO Canales (Canal,Nombre,maxmen,Puerto,Host,usuario,clave,Saldo,Principal,"
        u"Remitente,remopc,movil) VALUES (?,?,160,80,'h',?,?,7,?,'',0,'')"_s,
        {canal, nombre, usuario, msCifrarClave(clave, true), principal});
}

inline QList<int> enteros(const QString& sql, const QVariantList& params = {}) {
    const ResultadoConsulta r = Conexion().query(sql, params);
    QList<int> v;
    for (int f = 0; f < r.recordCount(); ++f) v << int(numeroDe(r.value(f, 0)));
    return v;
}

inline QList<int> principales() {
    return enteros(u"select canal from canales where principal=1 order by canal"_s);
}

// "Nombre|Host|usuario|clave in clear|Saldo|Principal|Remitente|remopc|movil|maxmen"
// of one account, or "-" when there is none.
inline QString fila(int canal) {
    const ResultadoConsulta r =
        Conexion().query(u"select * from canales where canal = ?"_s, {canal});
    if (r.isEmpty()) return u"-"_s;
    QStringList c;
    for (const QString& n : {u"Nombre"_s, u"Host"_s, u"usuario"_s}) c << textoDe(r.value(0, n));
    c << msCifrarClave(textoDe(r.value(0, u"clave"_s)), false);
    for (const QString& n :
         {u"Saldo"_s, u"Principal"_s, u"Remitente"_s, u"remopc"_s, u"movil"_s, u"maxmen"_s})
        c << textoDe(r.value(0, n));
    return c.join(u'|');
}

// A box (or a refusal, as "style text"; empty when done) with the transport
// library's own words cut from the line that names a failure's cause: they
// vary with its version and the machine.
inline QString sinLibreria(QString c) {
    const qsizetype salto = c.indexOf(u'\n');
    const qsizetype dosPuntos = salto < 0 ? -1 : c.indexOf(u": "_s, salto);
    if (dosPuntos >= 0) c.truncate(dosPuntos);
    return c;
}
inline QString sinLibreria(const Hecho& h) {
    return h.ok() ? QString() : sinLibreria(prueba::caja(h.estilo(), h.motivo()));
}
// The outcome of a routine that answers later: waitFor wants a value it can
// build empty, which a Resultado is not.
template <class T>
Resultado<T> esperar(QCoro::Task<Resultado<T>> tarea) {
    std::optional<Resultado<T>> r;
    auto guardar = [](QCoro::Task<Resultado<T>> t,
                      std::optional<Resultado<T>>& en) -> QCoro::Task<> {
        en.emplace(co_await std::move(t));
    };
    QCoro::waitFor(guardar(std::move(tarea), r));
    return std::move(*r);
}
inline QStringList cajasSinLibreria(const InterfazGuionada& ui) {
    QStringList t = cajas(ui);
    for (QString& c : t) c = sinLibreria(c);
    return t;
}

inline const QString kSinVerificar =
    u"48 No se pudo verificar la cuenta con la plataforma. Se ha guardado tal como la escribió "
    u"y se comprobará en el próximo envío.\nNo se pudo conectar con la plataforma"_s;

}  // namespace cuentas_prueba
