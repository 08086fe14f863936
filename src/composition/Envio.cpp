#include "composition/Envio.h"

#include "base/ActivityLog.h"
#include "base/AppState.h"
#include "base/Clock.h"
#include "base/Conversions.h"
#include "db/Conexion.h"

#include <QHash>

using namespace Qt::StringLiterals;

bool leerSoloContactos() {
    try {
        const QueryResult r = Conexion().query(u"select solocontactos from opciones where id=1"_s);
        if (r.recordCount() == 1) return aBooleano(textoDe(r.value(0, 0)));
    } catch (const QuelmoError&) {
        // An older database has no options: everyone may be sent to.
    }
    return false;
}

QString msBuscarAlias(const QString& elemento) {
    if (elemento.trimmed().isEmpty()) return {};
    const QueryResult r =
        Conexion().query(u"Select codigo from Abonados where alias = ?"_s, {elemento});
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
            Conexion().exec(
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
    const QueryResult r = Conexion().query(u"select count(*)"_s + kDesdeBandeja);
    return r.isEmpty() ? 0 : int(numeroDe(r.value(0, 0)));
}

namespace {
// A date stored in another form than the usual one.
QString fechaBandeja(const QString& registro) {
    const QDateTime t = deTextoBD(registro);
    return t.isValid() ? t.toString(u"dd/MM HH:mm:ss"_s) : registro;
}
}  // namespace

QVector<QString> leerBandeja() {
    Database& db = Conexion();
    // The account column repeats the same few texts: each is made once and
    // shared by its rows, and the engine formats the dates, so a hundred
    // thousand rows cost little more than reading them.
    QHash<QString, QString> cuentas;
    const QueryResult c = db.query(u"select cast(canal as text),Nombre,remitente from canales"_s);
    for (int i = 0; i < c.recordCount(); ++i) {
        QString cuenta = textoDe(c.value(i, 1)).trimmed();
        const QString remitente = textoDe(c.value(i, 2)).trimmed();
        if (!remitente.isEmpty()) cuenta += u" ("_s + remitente + u')';
        cuentas.insert(textoDe(c.value(i, 0)), cuenta);
    }
    QVector<QString> celdas = db.queryTexts(
        u"select Id,case when length(registro)=19 then substr(registro,9,2)||'/'||"
        u"substr(registro,6,2)||' '||substr(registro,12,8) else registro end,abonado,"
        u"cast(envios.canal as text),mensaje"_s +
        kDesdeBandeja);
    for (qsizetype i = 0; i < celdas.size(); i += kColumnasBandeja) {
        QString& fecha = celdas[i + 1];
        if (fecha.size() != 14 || fecha.at(2) != u'/') fecha = fechaBandeja(fecha);
        celdas[i + 3] = cuentas.value(celdas.at(i + 3));
    }
    return celdas;
}
