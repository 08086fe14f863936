#include "composition/Envio.h"

#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "base/EstadoAplicacion.h"
#include "base/Movil.h"
#include "base/RegistroActividad.h"
#include "base/Reloj.h"
#include "db/Bandeja.h"
#include "db/Conexion.h"
#include "db/EscrituraPorTurnos.h"
#include "db/Esquema.h"
#include "db/Nombres.h"

#include <QElapsedTimer>
#include <QHash>

using namespace Qt::StringLiterals;

QVector<CuentaEnvio> leerCuentasEnvio() {
    const ResultadoConsulta r = Conexion().query(u"Select * From Canales "_s);
    QVector<CuentaEnvio> cuentas;
    cuentas.reserve(r.recordCount());
    for (int i = 0; i < r.recordCount(); ++i) {
        CuentaEnvio c;
        c.canal = int(numeroDe(r.value(i, u"Canal"_s)));
        c.texto = textoDe(r.value(i, u"Nombre"_s));
        if (const QString saldo = textoSaldo(r.value(i, u"Saldo"_s)); !saldo.isEmpty())
            c.texto += u"   ("_s + saldo + u" Créditos)"_s;
        const QString remitente = textoDe(r.value(i, u"Remitente"_s)).trimmed();
        if (!remitente.isEmpty()) c.texto += u"  Remitente: "_s + remitente;
        c.largoTextos =
            int(textoDe(r.value(i, u"tini"_s)).size() + textoDe(r.value(i, u"tfin"_s)).size());
        c.principal = numeroDe(r.value(i, u"Principal"_s)) == 1;
        cuentas.append(std::move(c));
    }
    return cuentas;
}

void leerContactosEnOrden(LecturaContactos& lectura, QVector<QString>& celdas, qint64 ms) {
    constexpr int kFilas = 2000;
    QElapsedTimer reloj;
    reloj.start();
    BaseDatos& db = Conexion();
    while (!lectura.terminada && reloj.elapsed() < ms) {
        const ResultadoConsulta r =
            lectura.sinClave
                ? db.query(
                      u"SELECT Alias, Codigo, rowid FROM Abonados WHERE ClaveNombre IS NULL "
                      u"AND rowid > ? ORDER BY rowid LIMIT ?"_s,
                      {lectura.fila, kFilas})
                : db.query(
                      u"SELECT Alias, Codigo, rowid, ClaveNombre FROM Abonados "
                      u"WHERE (ClaveNombre, rowid) > (?, ?) ORDER BY ClaveNombre, rowid "
                      u"LIMIT ?"_s,
                      {lectura.clave, lectura.fila, kFilas});
        const int n = r.recordCount();
        for (int i = 0; i < n; ++i) {
            celdas.append(textoDe(r.value(i, 0)));
            celdas.append(textoDe(r.value(i, 1)));
        }
        if (n > 0) {
            lectura.fila = numeroDe(r.value(n - 1, 2));
            if (!lectura.sinClave) lectura.clave = textoDe(r.value(n - 1, 3));
        }
        if (n < kFilas) {
            lectura.terminada = !lectura.sinClave;
            lectura.sinClave = false;
            lectura.fila = 0;
        }
    }
}

bool leerSoloContactos() {
    try {
        const ResultadoConsulta r =
            Conexion().query(u"select solocontactos from opciones where id=1"_s);
        if (r.recordCount() == 1) return aBooleano(textoDe(r.value(0, 0)));
    } catch (const ErrorQuelmo&) {
        // An older database has no options: everyone may be sent to.
    }
    return false;
}

QString msBuscarAlias(const QString& elemento) {
    if (elemento.trimmed().isEmpty()) return {};
    QVariantList valores;
    const QString donde = condicionNombre(u"alias"_s, elemento, valores);
    const ResultadoConsulta r =
        Conexion().query(u"Select codigo from Abonados where "_s + donde, valores);
    if (r.isEmpty()) return {};
    return textoDe(r.value(0, 0)).trimmed();
}

namespace {

// What an add has gone through so far.
struct Agregado {
    // The destinations, split a step at a time: the next element starts at
    // `siguiente`, past the end once all were taken.
    QString destinos;
    qsizetype siguiente = 0;
    QString rechazados;
    std::optional<EntradaBandeja> entrada;
};

void rechazar(Agregado& a, const QString& elemento) {
    if (!a.rechazados.isEmpty()) a.rechazados += u';';
    a.rechazados += elemento;
}

// One element of the destinations: a contact's alias or a number.
void agregarUno(Agregado& a, QString elemento, const QString& texto, bool soloContactos,
                int64_t canal) {
    // A failed lookup or insert doesn't stop the others: the element then
    // counts as done, as it always has.
    bool contacto = false;
    try {
        const QString codigo = msBuscarAlias(elemento);
        if (!codigo.isEmpty()) {
            elemento = codigo;
            contacto = true;
        }
    } catch (const ErrorQuelmo& e) {
        msLog(u"Error buscando el contacto "_s + elemento + u": "_s + e.description());
    }
    if (!esNumerico(elemento)) {
        msLog(u"Contacto no encontrado --> "_s + elemento);
        rechazar(a, elemento);
        return;
    }
    if (!contacto && soloContactos) {
        msLog(u"Número no válido. Solo se permite enviar a Contactos dados de alta --> "_s +
              elemento);
        rechazar(a, elemento);
        return;
    }
    const Movil::Numero numero = Movil::leer(Movil::Via::Envio, elemento);
    elemento = numero.numero;
    try {
        if (!numero.valido() || !a.entrada->poner(elemento, texto, qlonglong(canal))) {
            msLog(u"Número no válido --> "_s + elemento);
            rechazar(a, elemento);
        }
    } catch (const ErrorQuelmo& e) {
        msLog(u"Error añadiendo el mensaje para "_s + elemento + u": "_s + e.description());
        // The engine undid the whole add (a full disk): nothing may go in
        // alone after it.
        if (!Conexion().enTransaccion()) throw;
    }
}

// Elements between two looks at the clock: a few milliseconds' worth.
constexpr int kElementosPorPaso = 50;

}  // namespace

void agregarMensajes(const QString& destinos, const QString& texto, bool soloContactos,
                     int64_t canal, AlAgregar alTerminar) {
    BaseDatos& db = Conexion();
    auto a = std::make_shared<Agregado>();
    a->destinos = destinos;
    a->entrada.emplace(db);
    EscrituraPorTurnos::Paso paso = [a, texto, soloContactos, canal] {
        for (int k = 0; k < kElementosPorPaso && a->siguiente <= a->destinos.size(); ++k) {
            qsizetype fin = a->destinos.indexOf(u';', a->siguiente);
            if (fin < 0) fin = a->destinos.size();
            agregarUno(*a, a->destinos.mid(a->siguiente, fin - a->siguiente), texto, soloContactos,
                       canal);
            a->siguiente = fin + 1;
        }
        return a->siguiente <= a->destinos.size();
    };
    EscrituraPorTurnos::escribir(
        db, {std::move(paso)},
        [a, destinos, alTerminar = std::move(alTerminar)](const ErrorBD* fallo) {
            // The screens hear of the rows once they are committed.
            a->entrada.reset();
            if (fallo) msLog(u"No se pudieron añadir los mensajes: "_s + fallo->description());
            alTerminar(fallo ? destinos : a->rechazados, fallo);
        });
}

QString textoContador(int caracteres, const QString& nota) {
    return u"("_s + QString::number(caracteres) + u")"_s + nota;
}

int largoMensaje(const QString& texto) {
    qsizetype n = texto.size();
    for (qsizetype i = 0; i < texto.size(); ++i)
        if (texto[i] == u'\n' && (i == 0 || texto[i - 1] != u'\r')) ++n;
    return int(n);
}

bool soloBlancos(const QString& texto) {
    for (const QChar c : texto)
        if (c != u' ') return false;
    return true;
}

namespace {
const auto kDesdeBandeja = u" from envios inner join canales on envios.canal=canales.canal"_s;
}

namespace {
// A date stored in another form than the usual one.
QString fechaBandeja(const QString& registro) {
    const QDateTime t = deTextoBD(registro);
    return t.isValid() ? t.toString(u"dd/MM HH:mm:ss"_s) : registro;
}
}  // namespace

ListaPaginada::Definicion definicionBandeja() {
    ListaPaginada::Definicion d;
    d.desde = u"FROM envios INNER JOIN canales ON envios.canal = canales.canal"_s;
    d.clave = u"envios.Id"_s;
    // The file keeps the count per account; a file that could not take that
    // table yet counts on the account's index.
    d.cuenta = Conexion().hasTable(u"EnviosPorCanal"_s)
                   ? u"SELECT coalesce(sum(Filas), 0) FROM EnviosPorCanal "
                     u"WHERE Canal IN (SELECT canal FROM canales)"_s
                   : u"SELECT count(*) FROM envios WHERE canal IN (SELECT canal FROM canales)"_s;
    d.mayor = u"SELECT max(Id) FROM envios"_s;
    // Every column sorts by the text it shows, the date too (on its index).
    const QString fecha = Esquema::fechaBandeja(u"envios"_s);
    // The account's text is that of its row of canales: the accounts are
    // sorted, and the outbox read an account at a time on its index.
    const QString cuenta =
        u"trim(coalesce(canales.Nombre, '')) || CASE WHEN trim(coalesce(canales.Remitente, "
        u"'')) <> '' THEN ' (' || trim(canales.Remitente) || ')' ELSE '' END"_s;
    d.columnas = {{u"CAST(envios.Id AS TEXT)"_s, {}},
                  {fecha, fecha},
                  {u"envios.abonado"_s, Esquema::destinoBandeja(u"envios"_s)},
                  {cuenta, {}},
                  {u"envios.mensaje"_s, {}}};
    d.porClave = {3, u"envios.Canal"_s, u"SELECT canales.Canal, "_s + cuenta + u" FROM canales"_s};
    d.mostrar = [](int columna, const QString& celda) {
        if (columna == 1 && (celda.size() != 14 || celda.at(2) != u'/')) return fechaBandeja(celda);
        return celda;
    };
    return d;
}

std::optional<MensajeRetirado> retirarDeBandeja(const QString& id) {
    BaseDatos& db = Conexion();
    const ResultadoConsulta r =
        db.query(u"select abonado, mensaje from envios where id = ?"_s, {id});
    if (r.isEmpty()) return std::nullopt;
    MensajeRetirado m{textoDe(r.value(0, 0)), textoDe(r.value(0, 1))};
    db.exec(u"Delete from envios where id = ?"_s, {id});
    Q_EMIT Avisos::instancia().bandejaCambiada();
    return m;
}

void borrarDeBandeja(const QString& id) {
    Conexion().exec(u"Delete from envios where id = ?"_s, {id});
    Q_EMIT Avisos::instancia().bandejaCambiada();
}

void vaciarBandeja(std::function<void(const ErrorBD* fallo)> alTerminar) {
    using namespace EscrituraPorTurnos;
    BaseDatos& db = Conexion();
    // The count's delete trigger would make the engine delete a row at a
    // time, a million of them in one statement: without it the table is
    // emptied whole, every count goes to zero, and the trigger comes back,
    // all in the one transaction.
    escribir(db,
             {sentencia(db, u"DROP TRIGGER IF EXISTS envios_Baja"_s), vaciar(db, u"envios"_s),
              sentencia(db, u"DELETE FROM EnviosPorCanal"_s),
              [&db] {
                  Esquema::crearCuentaBandeja(db);
                  return false;
              }},
             [alTerminar = std::move(alTerminar)](const ErrorBD* fallo) {
                 if (!fallo) Q_EMIT Avisos::instancia().bandejaCambiada();
                 alTerminar(fallo);
             });
}
