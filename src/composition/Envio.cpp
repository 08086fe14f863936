#include "composition/Envio.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/Conversions.h"
#include "app/mdoMain.h"

using namespace Qt::StringLiterals;

bool leerSoloContactos() {
    try {
        const QueryResult r =
            appState().Conexion.query(u"select solocontactos from opciones where id=1"_s);
        if (r.recordCount() == 1) return aBooleano(textoDe(r.value(0, 0)));
    } catch (const QuelmoError&) {
        // An older database has no options: everyone may be sent to.
    }
    return false;
}

QString msBuscarAlias(const QString& elemento) {
    if (elemento.trimmed().isEmpty()) return {};
    const QueryResult r =
        appState().Conexion.query(u"Select codigo from Abonados where alias = ?"_s, {elemento});
    if (r.isEmpty()) return {};
    return textoDe(r.value(0, 0)).trimmed();
}

QString normalizarNumeroEnvio(const QString& numero) {
    QString n = numero;
    if (n.startsWith(u'+')) n.replace(u"+"_s, u"00"_s);
    if (!n.startsWith(u"00"_s)) n.prepend(u"0034"_s);
    return n;
}

QString agregarMensajes(const QString& destinos, const QString& texto, bool soloContactos,
                        int64_t canal) {
    QString rechazados;
    auto rechazar = [&rechazados](const QString& elemento) {
        if (!rechazados.isEmpty()) rechazados += u';';
        rechazados += elemento;
    };
    for (QString elemento : destinos.split(u';')) {
        // A failed lookup or insert doesn't stop the others: the element
        // then counts as done, as it always has.
        bool contacto = false;
        try {
            const QString codigo = msBuscarAlias(elemento);
            if (!codigo.isEmpty()) {
                elemento = codigo;
                contacto = true;
            }
        } catch (const QuelmoError&) {
        }
        if (!esNumerico(elemento)) {
            msLog(u"Contacto no encontrado --> "_s + elemento);
            rechazar(elemento);
            continue;
        }
        if (!contacto && soloContactos) {
            msLog(u"Número no válido. Solo se permite enviar a Contactos dados de alta --> "_s +
                  elemento);
            rechazar(elemento);
            continue;
        }
        elemento = normalizarNumeroEnvio(elemento);
        if (elemento.startsWith(u"0034"_s) && elemento.size() != 13) {
            msLog(u"Número no válido --> "_s + elemento);
            rechazar(elemento);
            continue;
        }
        try {
            appState().Conexion.exec(
                u"Insert into envios (abonado,mensaje,intento,Registro,Canal) values (?,?,2,?,?)"_s,
                {elemento, texto, Clock::now(), qlonglong(canal)});
        } catch (const QuelmoError&) {
        }
    }
    return rechazados;
}

QString textoContador(int caracteres, const QString& nota) {
    return u"("_s + QString::number(caracteres) + u")"_s + nota;
}

namespace {
const auto kDesdeBandeja = u" from envios inner join canales on envios.canal=canales.canal"_s;
}

int contarBandeja() {
    const QueryResult r = appState().Conexion.query(u"select count(*)"_s + kDesdeBandeja);
    return r.isEmpty() ? 0 : int(numeroDe(r.value(0, 0)));
}

QString fechaBandeja(const QString& registro) {
    // The stored form is fixed, so the common case needs no date parsing:
    // a hundred thousand rows are formatted in a few milliseconds.
    if (registro.size() == 19 && registro.at(4) == u'-' && registro.at(10) == u' ')
        return registro.mid(8, 2) + u'/' + registro.mid(5, 2) + u' ' + registro.mid(11, 8);
    const QDateTime t = deTextoBD(registro);
    return t.isValid() ? t.toString(u"dd/MM HH:mm:ss"_s) : registro;
}

QVector<QString> leerBandeja() {
    const QueryResult r = appState().Conexion.query(
        u"select Id,registro,Nombre,remitente,abonado,mensaje"_s + kDesdeBandeja);
    QVector<QString> celdas;
    celdas.reserve(qsizetype(r.recordCount()) * kColumnasBandeja);
    for (int i = 0; i < r.recordCount(); ++i) {
        const auto& f = r.row(i);
        QString cuenta = textoDe(f.at(2)).trimmed();
        const QString remitente = textoDe(f.at(3)).trimmed();
        if (!remitente.isEmpty()) cuenta += u" ("_s + remitente + u')';
        celdas.append(textoDe(f.at(0)));
        celdas.append(fechaBandeja(textoDe(f.at(1))));
        celdas.append(textoDe(f.at(4)));
        celdas.append(cuenta);
        celdas.append(textoDe(f.at(5)));
    }
    return celdas;
}
