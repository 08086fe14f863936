#include "app/mdoOpciones.h"

#include "app/Transmisor.h"
#include "base/Ajustes.h"
#include "base/Avisos.h"
#include "base/Cifrado.h"
#include "base/Conversiones.h"
#include "base/Error.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"

#include <climits>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {
QString sinClave() {
    return QString::fromUtf16(kSinClave);
}
}  // namespace

bool leerOpciones(Opciones& o) {
    try {
        o.intervalo = QString::number(leerIntervalo().value_or(60));
        // The no-password word and an empty setting both mean "no password".
        const QString clave = msCifrarClave(Ajustes::claveAcceso(), false);
        o.clave = clave == sinClave() ? QString() : clave;
        const ResultadoConsulta r = Conexion().query(u"select * from opciones"_s);
        if (!r.isEmpty()) {
            o.maxlote = textoDe(r.value(0, u"maxlote"_s));
            o.imgfondo = textoDe(r.value(0, u"imgfondo"_s));
            o.soloContactos = numeroDe(r.value(0, u"solocontactos"_s)) == 1;
        }
        return true;
    } catch (const ErrorQuelmo&) {
        return false;
    }
}

QString motivoOpcionesNoValidas(const Opciones& o, const QString& confirmacion) {
    const QString loteNoValido = u"Valor no válido para Nº máximo de mensajes por Lote"_s;
    if (!esNumerico(o.maxlote)) return loteNoValido;
    const double lote = aNumero(o.maxlote);
    if (lote < 1 || lote > 500) return loteNoValido + u"\nDebe se un número entre 1 y 500."_s;

    const QString intervaloNoValido =
        u"Valor no válido para intervalo de envío de mensajes en Bandeja de Salida"_s;
    if (!esNumerico(o.intervalo)) return intervaloNoValido;
    if (aNumero(o.intervalo) < Ajustes::kIntervaloMinimo)
        return intervaloNoValido + u"\nEl tiempo mínimo es de 15 Segundos."_s;
    // Longer than the cycle can be set to would stop it.
    if (aNumero(o.intervalo) >= Ajustes::kIntervaloMaximo + 0.5) return intervaloNoValido;

    if (!o.clave.isEmpty()) {
        if (o.clave != confirmacion)
            return u"Contraseña y confirmación de contraseña no son iguales"_s;
        if (o.clave.size() < 4)
            return u"La longitud mínima para la contraseña es de 4 caracteres."_s;
    }
    return {};
}

Hecho msGuardarOpciones(const Opciones& o, const QString& confirmacion) {
    const QString motivo = motivoOpcionesNoValidas(o, confirmacion);
    if (!motivo.isEmpty()) return Hecho::no(motivo, Msg::Exclamation);
    try {
        // The gate asks for the new password from now on.
        const QString nueva = o.clave.isEmpty() ? sinClave() : o.clave;
        estadoAplicacion().gsClaveAcceso = nueva;
        const QString cifrada = msCifrarClave(nueva, true);
        Conexion().exec(u"update opciones set maxlote=?, solocontactos=?, imgfondo=?"_s,
                        {aEntero16(o.maxlote), o.soloContactos ? 1 : 0, o.imgfondo});
        // The interval is stored as typed; the timer takes it rounded.
        Ajustes::guardarClaveAcceso(cifrada);
        Ajustes::guardarIntervalo(o.intervalo);
        const double segundos = aNumero(o.intervalo);
        if (segundos * 1000 > INT_MAX) throw ErrorQuelmo(u"Desbordamiento"_s, ErrNum::Overflow);
        Q_EMIT Avisos::instancia().intervaloCambiado(int(std::lround(segundos)));
        Q_EMIT Avisos::instancia().opcionesGuardadas();
        return {};
    } catch (const ErrorQuelmo&) {
        return Hecho::no(u"Ha ocurrido un error guardando los Datos."_s, Msg::Critical);
    }
}

QString leerImagenFondo() {
    try {
        const ResultadoConsulta r = Conexion().query(u"select imgfondo from opciones"_s);
        if (!r.isEmpty()) return textoDe(r.value(0, 0));
    } catch (const ErrorQuelmo&) {
        // No connection yet (the frame draws before the database opens) or
        // no options table: the program's own picture shows.
    }
    return {};
}
