#include "base/Movil.h"

#include "base/Conversiones.h"

using namespace Qt::StringLiterals;

namespace Movil {
namespace {

// What a number must be before anything is done to it.
enum class Prueba {
    Ninguna,
    Laxa,      // the lenient numeric test: separators, exponents, currency
    Estricta,  // digits with an optional sign: what the sender takes
};

// How a route treats a leading "+".
enum class Mas {
    Igual,       // left alone (the prefix step or the check refuses it)
    TodosA00,    // every "+" in the number becomes "00"
    PrimeroA00,  // "00" in place of the first character
};

// What a route does with a number that lacks "00".
enum class Prefijo {
    Exigir,             // refused: the contact is stored as typed
    Poner0034,          // "0034" in front
    Poner0034Numerico,  // "0034" in front only when the whole is numeric
    Completar34,        // "34..." gets "00", anything else "0034"
};

// What is checked once the number is written.
enum class Comprobar {
    Nada,
    Largo11,      // at least 11 characters
    Espana13,     // "0034..." must be 13 long
    MovilEspana,  // "0034..." must be 13 long with a "6" after the prefix
};

struct Regla {
    Via via;
    Prueba prueba;
    Mas mas;
    Prefijo prefijo;
    Comprobar comprobar;
};

constexpr Regla kReglas[] = {
    {Via::Contacto, Prueba::Laxa, Mas::Igual, Prefijo::Exigir, Comprobar::Largo11},
    {Via::Envio, Prueba::Laxa, Mas::TodosA00, Prefijo::Poner0034, Comprobar::Espana13},
    {Via::Importacion, Prueba::Ninguna, Mas::Igual, Prefijo::Completar34, Comprobar::MovilEspana},
    {Via::Lote, Prueba::Estricta, Mas::PrimeroA00, Prefijo::Poner0034, Comprobar::Nada},
    {Via::Emergencia, Prueba::Ninguna, Mas::PrimeroA00, Prefijo::Poner0034, Comprobar::Nada},
    {Via::Programado, Prueba::Ninguna, Mas::TodosA00, Prefijo::Poner0034Numerico, Comprobar::Nada},
};

const Regla& reglaDe(Via via) {
    for (const Regla& r : kReglas)
        if (r.via == via) return r;
    Q_UNREACHABLE();
}

}  // namespace

bool enviable(const QString& destino) {
    const QString t = destino.trimmed();
    qsizetype i = (t.startsWith(u'+') || t.startsWith(u'-')) ? 1 : 0;
    if (i >= t.size()) return false;
    for (; i < t.size(); ++i)
        if (t[i] < u'0' || t[i] > u'9') return false;
    return true;
}

Numero leer(Via via, const QString& numero) {
    const Regla& regla = reglaDe(via);
    Numero r{numero};
    if ((regla.prueba == Prueba::Laxa && !esNumerico(numero)) ||
        (regla.prueba == Prueba::Estricta && !enviable(numero)))
        return {numero, Fallo::NoNumerico};

    QString& n = r.numero;
    if (n.startsWith(u'+')) {
        if (regla.mas == Mas::TodosA00) n.replace(u"+"_s, u"00"_s);
        if (regla.mas == Mas::PrimeroA00) n = u"00"_s + n.mid(1);
    }
    if (!n.startsWith(u"00"_s)) {
        switch (regla.prefijo) {
            case Prefijo::Exigir:
                return {n, Fallo::SinCodigoInternacional};
            case Prefijo::Poner0034:
                n.prepend(u"0034"_s);
                break;
            case Prefijo::Poner0034Numerico:
                if (esNumerico(n)) n.prepend(u"0034"_s);
                break;
            case Prefijo::Completar34:
                n.prepend(n.startsWith(u"34"_s) ? u"00"_s : u"0034"_s);
                break;
        }
    }

    const bool espana = n.startsWith(u"0034"_s);
    switch (regla.comprobar) {
        case Comprobar::Nada:
            break;
        case Comprobar::Largo11:
            if (n.size() < 11) r.fallo = Fallo::Largo;
            break;
        case Comprobar::Espana13:
            if (espana && n.size() != 13) r.fallo = Fallo::Largo;
            break;
        case Comprobar::MovilEspana:
            if (espana && (n.size() != 13 || n.at(4) != u'6')) r.fallo = Fallo::Largo;
            break;
    }
    // Whatever ends in the outbox must be something the sender sends; a
    // contact it could never send to is no use either.
    if (r.valido() && regla.prueba != Prueba::Estricta && !enviable(n))
        r.fallo = via == Via::Contacto ? Fallo::NoNumerico : Fallo::NoEnviable;
    return r;
}

QString motivo(Fallo fallo) {
    switch (fallo) {
        case Fallo::Ninguno:
            return {};
        case Fallo::NoNumerico:
        case Fallo::NoEnviable:
            return u"El valor del número de Móvil debe ser numérico"_s;
        case Fallo::SinCodigoInternacional:
            return u"( Código internacional inexistente o mal formado )"_s;
        case Fallo::Largo:
            return u"( La longitud del Número de Móvil no es adecuada )"_s;
    }
    return {};
}

QString remitente(const QString& movilCuenta) {
    return movilCuenta.right(9);
}

}  // namespace Movil
