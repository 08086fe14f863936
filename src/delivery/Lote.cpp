#include "delivery/Lote.h"

#include "base/Conversiones.h"
#include "base/Error.h"
#include "base/Movil.h"
#include "base/Reloj.h"
#include "delivery/Intercambio.h"
#include "delivery/qmXMLSend.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace Lote {

namespace {

const QString kSimulado = u"ENVIO_SIMULADO"_s;
// Numbers that reach no telephone: a user tries the program on them
// without spending credit.
const QStringList kNumerosSimulados = {u"0034111111111"_s, u"0034222222222"_s, u"0034333333333"_s,
                                       u"0034444444444"_s, u"0034555555555"_s, u"0034666666666"_s,
                                       u"0034777777777"_s, u"0034888888888"_s, u"0034999999999"_s};

constexpr qsizetype kLargoUnico = 160;
constexpr qsizetype kLargoPieza = 150;

}  // namespace

ResultadoConsulta leerFilas(BaseDatos& db, int16_t canal, int maximo) {
    return db.query(u"Select * from envios where canal = ? limit ?"_s, {canal, maximo});
}

std::optional<Cuenta> leerCuenta(BaseDatos& db, int16_t canal) {
    const ResultadoConsulta r = db.query(u"Select * from canales where canal = ?"_s, {canal});
    if (r.recordCount() < 1) return std::nullopt;
    Cuenta c;
    c.canal = r.value(0, 0);
    // The stored sender carries a trailing blank.
    c.remitente = textoDe(r.value(0, u"Remitente"_s)).trimmed();
    c.tini = textoDe(r.value(0, u"tini"_s));
    c.tfin = textoDe(r.value(0, u"tfin"_s));
    c.imptextos = numeroDe(r.value(0, u"imptextos"_s)) != 0;
    c.nombre = textoDe(r.value(0, u"Nombre"_s));
    c.remopc = r.value(0, u"remopc"_s);
    c.clave = textoDe(r.value(0, u"clave"_s));
    c.usuario = textoDe(r.value(0, u"usuario"_s));
    c.host = textoDe(r.value(0, u"Host"_s));
    return c;
}

QString textoCompleto(const QString& mensaje, const Cuenta& cuenta, bool importado) {
    return (importado && !cuenta.imptextos) ? mensaje : cuenta.tini + mensaje + cuenta.tfin;
}

QString normalizarDestino(const QString& abonado) {
    const Movil::Numero numero = Movil::leer(Movil::Via::Lote, abonado.trimmed());
    if (!numero.valido()) return QString();
    QString destino = numero.numero;
    if (kNumerosSimulados.contains(destino)) destino = kSimulado;
    return destino;
}

QVector<Pieza> cortarTexto(const QString& id, const QString& texto) {
    const QList<uint> caracteres = texto.toUcs4();
    const qsizetype largo = caracteres.size();
    if (largo <= kLargoUnico) return {{id, texto}};
    QVector<Pieza> piezas;
    const qsizetype n = largo / kLargoPieza + (largo % kLargoPieza ? 1 : 0);
    for (qsizetype i = 1, desde = 0; desde < largo; ++i, desde += kLargoPieza) {
        const QList<uint> trozo = caracteres.mid(desde, kLargoPieza);
        const QString parte =
            u'(' + QString::number(i) + u'-' + QString::number(n) + u") "_s +
            QString::fromUcs4(reinterpret_cast<const char32_t*>(trozo.constData()), trozo.size());
        piezas.append({i == 1 ? id : u'X' + QString::number(i) + u'X' + id, parte});
    }
    return piezas;
}

QString remitenteHistorial(const Cuenta& cuenta) {
    return cuenta.remitente.isEmpty() ? cuenta.nombre
                                      : cuenta.nombre + u" ("_s + cuenta.remitente + u')';
}

QString remitenteAGuardar(const QVariant& remopc, const QString& remitente, const QString& movil) {
    const QString r = numeroDe(remopc) == 1 ? Movil::remitente(movil) : remitente;
    return r + u' ';
}

bool aplicarResultado(BaseDatos& db, const qmXMLSend::Item& item, const QVariant& canal,
                      const QString& crem) {
    const bool aceptado = item.Destino == kSimulado || item.Resultado;
    // Later pieces have no outbox row of their own.
    const bool primera = !item.Key.startsWith(u'X');
    db.savepoint(u"item"_s);
    try {
        if (aceptado) {
            db.exec(
                u"insert into HEnvios (Abonado,Registro,Mensaje,Resultado,Canal,crem) Values (?,?,?,?,?,?)"_s,
                {item.Destino, Reloj::now(), item.Mensaje, item.Comentario, canal, crem});
            if (primera) db.exec(u"delete from envios where id = ?"_s, {item.Key.toLongLong()});
        } else if (primera) {
            db.exec(u"Update envios set registro = ?, intento = intento-1 where id = ?"_s,
                    {Reloj::now(), item.Key.toLongLong()});
        }
        db.release(u"item"_s);
        return aceptado && primera;
    } catch (...) {
        db.rollbackTo(u"item"_s);
        db.release(u"item"_s);
        throw;
    }
}

void actualizarCuenta(BaseDatos& db, int16_t canal, const QString& saldo, const QString& remitente,
                      const QString& movil) {
    if (!esNumerico(saldo))
        throw ErrorQuelmo(u"Saldo no válido en la respuesta de la plataforma: '"_s + saldo + u'\'',
                          ErrNum::Plataforma);
    db.exec(u"Update canales set saldo=?, Remitente=?, movil=? Where canal = ?"_s,
            {saldo.trimmed(), remitente, movil, canal});
}

QCoro::Task<bool> pausaEntreEnvios(std::function<QTime()> pared) {
    return Intercambio::pausa(Intercambio::Clase::Envio, 1000 - pared().msec());
}

}  // namespace Lote
