#include "history/mdoHistorico.h"

#include "accounts/mdoCuentas.h"
#include "base/Avisos.h"
#include "base/RegistroActividad.h"
#include "base/Reloj.h"
#include "db/Bandeja.h"
#include "db/Conexion.h"
#include "db/EscrituraPorTurnos.h"

#include <QDate>

using namespace Qt::StringLiterals;

namespace {

// "yyyy-MM-dd HH:mm:ss" (or a bare date) as yyyyMMddhhmmss; 0 for
// anything else.
int64_t fechaDeTexto(QStringView t) {
    const qsizetype n = t.size();
    auto dig = [&](qsizetype desde, int cuantos, int64_t& v) {
        for (qsizetype i = desde; i < desde + cuantos; ++i) {
            if (i >= n || t[i] < u'0' || t[i] > u'9') return false;
            v = v * 10 + (t[i].unicode() - u'0');
        }
        return true;
    };
    int64_t v = 0;
    if (n < 10 || t[4] != u'-' || t[7] != u'-' || !dig(0, 4, v) || !dig(5, 2, v) || !dig(8, 2, v))
        return 0;
    if (n < 19) return v * 1000000;
    if (!dig(11, 2, v) || !dig(14, 2, v) || !dig(17, 2, v)) return 0;
    return v;
}

void dosCifras(char16_t*& p, int64_t v) {
    *p++ = char16_t(u'0' + v / 10 % 10);
    *p++ = char16_t(u'0' + v % 10);
}

// "dd/MM/yyyy hh:mm:ss", the list's form of a date.
QString textoDeFecha(int64_t f) {
    if (f == 0) return QString();
    char16_t b[19];
    char16_t* p = b;
    dosCifras(p, f / 1000000 % 100);
    *p++ = u'/';
    dosCifras(p, f / 100000000 % 100);
    *p++ = u'/';
    dosCifras(p, f / 1000000000000 % 100);
    dosCifras(p, f / 10000000000 % 100);
    *p++ = u' ';
    dosCifras(p, f / 10000 % 100);
    *p++ = u':';
    dosCifras(p, f / 100 % 100);
    *p++ = u':';
    dosCifras(p, f % 100);
    return QString(reinterpret_cast<const QChar*>(b), 19);
}

}  // namespace

QString idDeFecha(int64_t fecha) {
    return fecha == 0 ? QString() : QString::number(fecha);
}

ListaPaginada::Definicion Historico::definicion() {
    ListaPaginada::Definicion d;
    d.desde = u"FROM HEnvios"_s;
    d.clave = u"rowid"_s;
    // The date shows day first: it sorts by the stored date, on its index.
    d.columnas = {{u"Registro"_s, u"Registro"_s},
                  {u"Abonado"_s, {}},
                  // The account's code stands in for a missing sender.
                  {u"coalesce(crem, CAST(Canal AS TEXT))"_s, {}},
                  {u"Mensaje"_s, {}},
                  {u"Resultado"_s, {}},
                  {u"Registro"_s, u"Registro"_s}};
    d.estable = false;
    d.mostrar = [](int columna, const QString& celda) {
        if (columna == Enviado) return textoDeFecha(fechaDeTexto(celda));
        if (columna == Id) return idDeFecha(fechaDeTexto(celda));
        return celda;
    };
    return d;
}

void Historico::contar(std::function<void(std::optional<int> filas)> alTerminar) {
    auto filas = std::make_shared<int>(0);
    BaseDatos& db = Conexion();
    EscrituraPorTurnos::porTurnos(
        db,
        {EscrituraPorTurnos::contar(
             db, u"SELECT count(*) FROM HEnvios WHERE Registro BETWEEN ? AND ?"_s, {},
             {u"HEnvios"_s, u"Registro"_s}, filas.get()),
         // A row another program wrote without a date is in no stretch.
         [&db, filas] {
             *filas += int(db.query(u"SELECT count(*) FROM HEnvios WHERE Registro IS NULL"_s)
                               .value(0, 0)
                               .toLongLong());
             return false;
         }},
        [filas, alTerminar = std::move(alTerminar)](const ErrorBD* fallo) {
            alTerminar(fallo ? std::nullopt : std::optional<int>(*filas));
        });
}

// ---- Resend and deletion -----------------------------------------------------

Hecho msReenviarMensaje(const QString& numero, const QString& mensaje) {
    // Today's principal account pays, not the one that sent it first.
    const int16_t canal = msCanalPrincipal();
    bool puesto = false;
    {
        // A history row may name no number (a simulated send): the sender
        // would refuse it for ever.
        EntradaBandeja entrada(Conexion());
        try {
            puesto = entrada.poner(numero, mensaje, canal);
        } catch (const ErrorBD&) {
            puesto = false;
        }
    }
    if (!puesto) return Hecho::no(u"No se ha podido reenviar el mensaje"_s, Msg::Exclamation);
    return {};
}

Resultado<QDate> diaParaBorrar(const QString& fecha) {
    const QDate dia = QDate::fromString(fecha.trimmed(), u"dd/MM/yyyy"_s);
    if (!dia.isValid())
        return Hecho::no(u"Fecha no válida, por favor introduzca la fecha en formato dd/mm/yyyy"_s,
                         Msg::Exclamation);
    return dia;
}

namespace {
// A failure is logged; the list is read again either way.
EscrituraPorTurnos::Final alBorrar(std::function<void()> alTerminar) {
    return [alTerminar = std::move(alTerminar)](const ErrorBD* fallo) {
        if (fallo) msLog(u"No se pudo borrar el histórico: "_s + fallo->description());
        alTerminar();
    };
}
}  // namespace

void msBorrarAnteriores(const QDate& dia, std::function<void()> alTerminar) {
    // Stored dates are "yyyy-MM-dd HH:mm:ss": every one of the day itself
    // sorts at or after the bare day, so the day stays. Oldest first, a
    // stretch of the date's index at a time, each committed on its own:
    // stopped anywhere, what is gone is what an earlier day would have
    // taken, and each commit copies little of the log into the file. The
    // transmitter's moves into the history go on meanwhile.
    EscrituraPorTurnos::porTurnos(
        Conexion(),
        {EscrituraPorTurnos::porTramos(
            Conexion(), u"DELETE FROM HEnvios WHERE Registro BETWEEN ? AND ?"_s, {},
            {u"HEnvios"_s, u"Registro"_s, u"Registro < ?"_s, {dia.toString(u"yyyy-MM-dd"_s)}})},
        alBorrar(std::move(alTerminar)));
}

void msBorrarTodos(std::function<void()> alTerminar) {
    // One transaction: the date's index is dropped while the table empties.
    EscrituraPorTurnos::escribir(Conexion(), {EscrituraPorTurnos::vaciar(Conexion(), u"HEnvios"_s)},
                                 alBorrar(std::move(alTerminar)));
}
