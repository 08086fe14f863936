#include "import/mdoImport.h"

#include "base/Ajustes.h"
#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "base/Error.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazUsuario.h"
#include "base/Movil.h"
#include "base/RegistroActividad.h"
#include "base/Reloj.h"
#include "base/Turno.h"
#include "db/Bandeja.h"
#include "db/Conexion.h"
#include "db/Nombres.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QStringDecoder>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

std::function<void(const char*)>& puntoDeFallo() {
    static std::function<void(const char*)> f;
    return f;
}
void punto(const char* nombre) {
    if (puntoDeFallo()) puntoDeFallo()(nombre);
}

// While a stretch of lines is inside an open transaction its log lines wait
// here: they reach the log only once their rows are committed, and nothing
// yields to the event loop while the transaction is open, so whatever the
// user does meanwhile commits on its own and never joins the import's.
// A stretch lasts a few milliseconds: its rows and log lines share one
// "now", and the accounts it found stay found, since no other writer can
// change them while its transaction is open.
struct Tramo {
    QStringList pendientes;
    QString sello;
    QString ahora;
    QHash<QString, bool> cuentas;
    // Its rows: the screens hear of them once the stretch is over.
    EntradaBandeja entrada{Conexion()};
};
Tramo* g_tramo = nullptr;

void registrar(const QString& texto) {
    if (g_tramo)
        g_tramo->pendientes.append(g_tramo->sello + texto);
    else
        msLog(texto);
}

struct Diferir {
    explicit Diferir(Tramo* tramo) {
        tramo->sello = marcaTiempoLog() + u" - "_s;
        tramo->ahora = aTextoBD(Reloj::now());
        g_tramo = tramo;
    }
    ~Diferir() { g_tramo = nullptr; }
};

void volcar(QStringList& pendientes) {
    for (const QString& l : std::as_const(pendientes)) estadoAplicacion().log.append(l);
    pendientes.clear();
}

QString clase(bool contactos) {
    return contactos ? u"Contactos"_s : u"Mensajes"_s;
}

// An account code as the engine compares it: whole numbers as integers.
QVariant valorCuenta(const QString& cuenta) {
    const double v = aNumero(cuenta);
    if (std::floor(v) == v && std::fabs(v) < 1e15) return qlonglong(v);
    return v;
}

// How many contacts bear the alias, compared as names are.
long long contactosConAlias(const QString& alias) {
    QVariantList valores;
    const QString donde = condicionNombre(u"alias"_s, alias, valores);
    return numeroDe(
        Conexion().query(u"Select count(*) from Abonados where "_s + donde, valores).value(0, 0));
}

// Fails for a number that is a contact already, and for an alias that
// another contact bears: the table keeps no rule of its own for aliases
// (any SQLite client may write it), so the import keeps it here.
bool insertarContacto(const QString& cuenta, const QString& numero, const QString& alias) {
    try {
        if (contactosConAlias(alias) > 0) return false;
        Conexion().exec(u"Insert Into Abonados (Canal,Codigo,alias,Comentario) values (?,?,?,'')"_s,
                        {valorCuenta(cuenta), numero, alias});
        return true;
    } catch (const ErrorQuelmo&) {
        return false;
    }
}

enum class Linea { Bien, Mal, Abandonada };

Linea importarLinea(const QString& cuentaCampo, const QString& numeroCampo,
                    const QString& textoCampo, int16_t lista, bool contactos, bool addContactos) {
    const QString cuenta = cuentaCampo.trimmed();
    QString numero = numeroCampo.trimmed();
    const QString texto = textoCampo.trimmed();

    if (!esNumerico(cuenta)) {
        registrar(u"Error en el formato de la Cuenta, no es numerico"_s);
        return Linea::Mal;
    }
    if (aNumero(cuenta) > 255) {
        registrar(u"Error en el formato de la Cuenta, Valor superior a 255"_s);
        return Linea::Mal;
    }
    try {
        bool existe = false;
        if (g_tramo && g_tramo->cuentas.contains(cuenta)) {
            existe = g_tramo->cuentas.value(cuenta);
        } else {
            const ResultadoConsulta r = Conexion().query(
                u"Select count(*) from canales where canal =?"_s, {valorCuenta(cuenta)});
            existe = numeroDe(r.value(0, 0)) >= 1;
            if (g_tramo) g_tramo->cuentas.insert(cuenta, existe);
        }
        if (!existe) {
            registrar(u"Error en Campo Cuenta, No existe una Cuenta definida con el codigo "_s +
                      cuenta);
            return Linea::Mal;
        }
    } catch (const ErrorQuelmo&) {
        return Linea::Abandonada;
    }

    const Movil::Numero leido = Movil::leer(Movil::Via::Importacion, numero);
    numero = leido.numero;
    if (!leido.valido()) {
        registrar(u"ERROR en número de movil para el Destino : "_s + numero);
        return Linea::Mal;
    }

    Linea resultado = Linea::Mal;
    QString alias = texto;
    if (!contactos) {
        // A contact made from a message line is named by its number.
        alias = numero;
        std::optional<EntradaBandeja> propia;
        EntradaBandeja& entrada = g_tramo ? g_tramo->entrada : propia.emplace(Conexion());
        try {
            if (entrada.poner(numero, texto, valorCuenta(cuenta),
                              g_tramo ? QVariant(g_tramo->ahora) : QVariant())) {
                registrar(u"Mensaje Importado para el Destino : "_s + numero + u", Texto: " +
                          texto);
                resultado = Linea::Bien;
            } else {
                registrar(u"ERROR en número de movil para el Destino : "_s + numero);
            }
        } catch (const ErrorQuelmo& e) {
            registrar(u"Mensaje NO Importado para el Destino : "_s + numero + u", Texto: " + texto);
            registrar(u"No se pudo escribir en la base de datos: "_s + causaDeError(e));
            resultado = Linea::Mal;
        }
    }

    if (addContactos) {
        if (alias.isEmpty()) alias = numero;
        bool hecho = insertarContacto(cuenta, numero, alias);
        if (!hecho) {
            QString otro = alias;
            try {
                if (contactosConAlias(alias) >= 1) otro = aliasConSufijo(alias);
            } catch (const ErrorQuelmo&) {
                // Without the count the alias is tried as it is; a refusal is logged below.
            }
            hecho = insertarContacto(cuenta, numero, otro);
            if (!hecho) {
                registrar(u"ERROR: Contacto: "_s + alias + u" NO Importado, Número: " + numero);
                resultado = Linea::Mal;
            }
        }
        if (hecho) {
            registrar(u"Contacto: "_s + alias + u" Importado, Número: " + numero);
            resultado = Linea::Bien;
        }
        // An already known number still joins the list.
        if (lista != -1) {
            try {
                Conexion().exec(u"Insert into AboGrup (Abonado,Grupo) Values(?,?)"_s,
                                {numero, int(lista)});
                registrar(u"Contacto: "_s + alias + u" Añadido a lista: " +
                          u"%1"_s.arg(int(lista), 3, 10, QChar(u'0')));
            } catch (const ErrorQuelmo&) {
                // Already a member of the list: nothing to add, nothing to say.
            }
        }
    }
    return resultado;
}

// Creates the list; `alCrear` runs in the same transaction as the insert,
// so a record of the new code can't be lost or doubled against the list.
int16_t crearLista(QString& nombre, const std::function<void(int16_t)>& alCrear) {
    const ResultadoConsulta r = Conexion().query(u"Select Max(Grupo) From Grupos"_s);
    int16_t codigo = 0;
    if (r.value(0, 0).isNull()) {
        if (nombre.isEmpty()) nombre = u"Lista de Contactos Importada Nº 0"_s;
    } else {
        const long long maximo = numeroDe(r.value(0, 0));
        codigo = int16_t(maximo + 1);
        if (nombre.isEmpty())
            nombre = u"Lista de Contactos Importada Nº"_s + QString::number(codigo);
        if (maximo > 250) {
            // Said as the run goes on (into list 0): the watched file's
            // import has no screen to tell, and a box left unanswered must
            // hold no line of it.
            ui().aviso(u"No es posible añadir mas Listas"_s, Msg::Critical);
            if (alCrear) alCrear(0);
            return 0;
        }
    }
    BaseDatos& bd = Conexion();
    bd.begin();
    try {
        bd.exec(u"Insert into Grupos (Grupo, Nombre) values (?,?)"_s, {int(codigo), nombre});
    } catch (const ErrorQuelmo&) {
        // A list of that code already stands: the lines join it.
    }
    try {
        if (alCrear) alCrear(codigo);
        bd.commit();
    } catch (...) {
        bd.rollback();
        throw;
    }
    return codigo;
}

// The list code a file's lines join, from the list text the caller gave.
int16_t resolverLista(QString& lista, bool addContactos,
                      const std::function<void(int16_t)>& alResolver) {
    int16_t codigo = 0;
    const bool numerico = esNumerico(lista);
    if (numerico) {
        try {
            codigo = aEntero16(lista);
        } catch (const ErrorQuelmo&) {
            // Too large for a list code: list 0, as for no number at all.
        }
    }
    bool crear = !numerico;
    if (numerico && codigo != -1 && addContactos) {
        const ResultadoConsulta r =
            Conexion().query(u"Select count(*) from grupos where grupo =?"_s, {int(codigo)});
        crear = numeroDe(r.value(0, 0)) == 0;
    }
    if (crear) {
        msLog(u"Creando Nueva lista de Contactos"_s);
        // The code asked for isn't honoured: the list takes the next free one.
        return crearLista(lista, alResolver);
    }
    if (alResolver) alResolver(codigo);
    return codigo;
}

// The longest line read: far above any message or contact record (a text
// of a few thousand characters), so a file of one endless line costs a
// bounded amount of memory and is refused as one bad line.
constexpr qint64 kLargoMaximoLinea = 4 * 1024 * 1024;

// A text file read line by line in its own encoding: UTF-8 when the whole
// file is valid UTF-8 (a byte-order mark is dropped), else Windows-1252.
class LectorLineas {
  public:
    bool abrir(const QString& path) {
        m_f.setFileName(path);
        if (!m_f.open(QIODevice::ReadOnly)) {
            m_error = m_f.errorString();
            return false;
        }
        QStringDecoder prueba(QStringDecoder::Utf8);
        while (!m_f.atEnd() && !prueba.hasError()) {
            const QByteArray b = m_f.read(1 << 16);
            // A disk that fails under the file: reading on would loop.
            if (b.isEmpty()) {
                if (m_f.error() == QFileDevice::NoError) break;
                m_error = m_f.errorString();
                return false;
            }
            const QString trozo = prueba(b);
            (void)trozo;
        }
        // A file cut in the middle of its last character isn't UTF-8
        // either; the decoder only says so when one more byte comes.
        const QString fin = prueba(QByteArrayView("\n"));
        (void)fin;
        const bool utf8 = !prueba.hasError();
        m_f.seek(0);
        m_dec = utf8 ? QStringDecoder(QStringDecoder::Utf8) : QStringDecoder("windows-1252");
        return true;
    }

    // The next line, read up to the limit: memory follows the limit, never
    // the file. A longer line is passed over to its end and comes back
    // empty with larga() true.
    bool siguiente(QString& linea) {
        m_larga = false;
        if (m_f.atEnd() || !m_error.isEmpty()) return false;
        // Through one reused buffer: a line costs its own length, never
        // the limit's.
        if (m_trozo.isEmpty()) m_trozo.resize(1 << 16);
        QByteArray b;
        for (;;) {
            const qint64 n = m_f.readLine(m_trozo.data(), m_trozo.size());
            if (n <= 0) {
                if (m_f.error() == QFileDevice::NoError) break;
                m_error = m_f.errorString();
                return false;
            }
            if (!m_larga) b.append(m_trozo.constData(), n);
            if (m_trozo.at(n - 1) == '\n') break;
            if (b.size() > kLargoMaximoLinea) {
                m_larga = true;
                b.clear();
            }
        }
        if (m_larga) {
            linea.clear();
            return true;
        }
        if (b.endsWith('\n')) b.chop(1);
        if (b.endsWith('\r')) b.chop(1);
        linea = m_dec(b);
        return true;
    }
    bool larga() const { return m_larga; }
    // Why the file could not be opened or read to its end; empty when it was.
    const QString& error() const { return m_error; }

  private:
    QFile m_f;
    QStringDecoder m_dec;
    QByteArray m_trozo;
    bool m_larga = false;
    QString m_error;
};

// At most three fields: a text to send may hold semicolons.
QStringList partir(const QString& linea) {
    QStringList partes;
    qsizetype desde = 0;
    while (partes.size() < 2) {
        const qsizetype i = linea.indexOf(u';', desde);
        if (i < 0) break;
        partes.append(linea.mid(desde, i - desde));
        desde = i + 1;
    }
    partes.append(linea.mid(desde));
    return partes;
}

// A non-empty line of a file: two fields lack the account, one the text.
Linea importarTexto(const QString& linea, const QString& principal, int16_t lista, bool contactos,
                    bool addContactos) {
    const QStringList partes = partir(linea);
    switch (partes.size()) {
        case 3:
            return importarLinea(partes.at(0), partes.at(1), partes.at(2), lista, contactos,
                                 addContactos);
        case 2:
            return importarLinea(principal, partes.at(0), partes.at(1), lista, contactos,
                                 addContactos);
        case 1:
            return importarLinea(principal, partes.at(0), QString(), lista, contactos,
                                 addContactos);
        default:
            registrar(u"Línea incorrecta, no existen los campos esperados. ["_s + linea + u']');
            return Linea::Mal;
    }
}

struct Progreso {
    qint64 lineas = 0;  // lines of the file done, empty ones included
    qint64 vistas = 0;
    qint64 correctas = 0;
    // Why the file could not be opened or read on (NoAbierto, Ilegible),
    // and at which line it failed.
    QString causa;
    qint64 lineaFallo = 0;
};

// Interrumpida: the database refused a write, the claim waits for a later
// cycle. Ilegible: the file itself fails (a read error, a failure that
// isn't the database's), and reading it again would fail again.
enum class Final { NoAbierto, SinLineas, Completa, Interrumpida, Ilegible };

// The line that says why a file was not imported, and from which line on.
QString textoNoImportado(const QString& fichero, const Progreso& p, Final f) {
    QString texto = u"No se pudo importar el fichero "_s + fichero;
    if (f == Final::Ilegible) texto += u" en la línea "_s + QString::number(p.lineaFallo);
    texto += u": "_s + p.causa;
    if (p.lineas == 1) texto += u" (la línea 1 ya se procesó)"_s;
    if (p.lineas > 1)
        texto += u" (las líneas 1 a "_s + QString::number(p.lineas) + u" ya se procesaron)"_s;
    return texto;
}

struct Ganchos {
    std::function<void(int16_t)> alResolverLista;
    // Inside the transaction of a stretch, before its commit.
    std::function<void(const Progreso&, bool ultimo)> alCerrarTramo;
};

// How long the lines of one transaction may take: the window gets a turn
// after each, and a commit costs one disk sync per stretch, not per line.
constexpr int kTramoMs = 12;
int g_lineasPorTramo = 0;

QCoro::Task<Final> leerFichero(const QString& path, bool contactos, QString& lista,
                               std::optional<int16_t> listaResuelta, bool addContactos, Progreso& p,
                               const Ganchos& g) {
    LectorLineas lector;
    if (!lector.abrir(path)) {
        msLog(u"Error Abriendo fichero : "_s + path);
        p.causa = lector.error();
        co_return Final::NoAbierto;
    }
    BaseDatos& bd = Conexion();
    const QString baseDatos = bd.path();
    bool alguna = p.vistas > 0;
    try {
        const int16_t listaCodigo =
            listaResuelta ? *listaResuelta : resolverLista(lista, addContactos, g.alResolverLista);
        QString linea;
        for (qint64 i = 0; i < p.lineas; ++i)
            if (!lector.siguiente(linea)) break;
        // Read once: a line without an account goes to the account that
        // was principal when the file began.
        const QString principal = QString::number(msCanalPrincipal());
        bool ultima = false;
        bool mas = true;
        while (mas) {
            // A database chosen meanwhile gets none of this file's rows.
            if (bd.path() != baseDatos)
                throw ErrorBD(u"La base de datos cambió durante la importación"_s);
            // A long write of ours that holds the connection is waited
            // for, as its other writers do.
            while (bd.retenida()) co_await turnoSiguiente(20);
            Tramo tramo;
            const Progreso hecho = p;
            bd.begin();
            QElapsedTimer reloj;
            reloj.start();
            {
                Diferir diferir(&tramo);
                try {
                    int enTramo = 0;
                    while (reloj.elapsed() < kTramoMs &&
                           (g_lineasPorTramo == 0 || enTramo < g_lineasPorTramo)) {
                        ++enTramo;
                        if (!lector.siguiente(linea)) {
                            mas = false;
                            break;
                        }
                        ++p.lineas;
                        if (lector.larga()) {
                            registrar(
                                u"La línea %1 tiene más de %2 MB: no se importa"_s.arg(p.lineas)
                                    .arg(kLargoMaximoLinea / (1024 * 1024)));
                            ultima = false;
                            alguna = true;
                            ++p.vistas;
                            continue;
                        }
                        if (linea.isEmpty()) continue;
                        const Linea r =
                            importarTexto(linea, principal, listaCodigo, contactos, addContactos);
                        // A line abandoned on a database failure counts as
                        // the line before it did.
                        if (r != Linea::Abandonada) ultima = r == Linea::Bien;
                        alguna = true;
                        ++p.vistas;
                        if (ultima) ++p.correctas;
                        punto("linea");
                    }
                    // A read error ends the lines too, but the file is not done.
                    if (g.alCerrarTramo)
                        g.alCerrarTramo(p, !mas && alguna && lector.error().isEmpty());
                    bd.commit();
                } catch (...) {
                    // What the stretch read is undone with its rows.
                    bd.rollback();
                    const qint64 linea = p.lineas;
                    p = hecho;
                    p.lineaFallo = linea;
                    throw;
                }
            }
            volcar(tramo.pendientes);
            punto("tramo");
            // The window's turn between two stretches.
            if (mas) co_await turnoSiguiente();
        }
    } catch (const ErrorQuelmo& e) {
        msLog(u"Error importando fichero "_s + path + u" :: " + e.description());
        co_return Final::Interrumpida;
    } catch (const std::bad_alloc&) {
        p.causa = u"no hay memoria suficiente"_s;
        co_return Final::Ilegible;
    } catch (const std::exception& e) {
        p.causa = u"error inesperado ("_s + QString::fromLocal8Bit(e.what()) + u')';
        co_return Final::Ilegible;
    }
    if (!lector.error().isEmpty()) {
        p.causa = lector.error();
        p.lineaFallo = p.lineas + 1;
        co_return Final::Ilegible;
    }
    msLog(u"Importados "_s + QString::number(p.correctas) + u' ' + clase(contactos) + u" de " +
          QString::number(p.vistas));
    co_return alguna ? Final::Completa : Final::SinLineas;
}

// ---- The watched file, taken exactly once ----

// The claim of a watched file: stored before the file is renamed and
// updated in the transaction of every stretch, so a restart knows which
// lines of which file are done.
struct Reclamo {
    QString fichero;
    QString origen;
    bool contactos = false;
    QString lista;
    bool addContactos = false;
    std::optional<int16_t> listaCodigo;
    Progreso p;
    bool terminado = false;
};

void asegurarTabla() {
    Conexion().exec(
        u"CREATE TABLE IF NOT EXISTS ImportReclamado (Fichero TEXT PRIMARY KEY, Origen TEXT, "
        u"Contactos INTEGER, Lista TEXT, AddContactos INTEGER, ListaCodigo INTEGER, "
        u"Lineas INTEGER, Vistas INTEGER, Correctas INTEGER, Terminado INTEGER)"_s);
}

void olvidar(const Reclamo& r) {
    Conexion().exec(u"DELETE FROM ImportReclamado WHERE Fichero=?"_s, {r.fichero});
}

QString errorDeSistema() {
    return QString::fromLocal8Bit(std::strerror(errno));
}

// Renames without replacing a file at the destination.
bool renombrarSinPisar(const QString& de, const QString& a) {
    const QByteArray origen = QFile::encodeName(de);
    const QByteArray destino = QFile::encodeName(a);
    if (::renameat2(AT_FDCWD, origen.constData(), AT_FDCWD, destino.constData(),
                    RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    // A file system without the flag: a new name that nobody else uses.
    if (QFileInfo::exists(a)) {
        errno = EEXIST;
        return false;
    }
    return std::rename(origen.constData(), destino.constData()) == 0;
}

// A claimed file without any line goes back where it was, unless a new file
// stands there already; it held nothing, so then it simply goes.
void devolver(const Reclamo& r) {
    if (!renombrarSinPisar(r.fichero, r.origen)) QFile::remove(r.fichero);
}

// A file that fails on its own (not the database) would fail every cycle:
// it is set aside beside itself, under a name that no cycle reads, and the
// outbox goes on moving.
void apartar(const Reclamo& r, Final f) {
    const QString base =
        r.origen + u".no-importado-"_s + Reloj::now().toString(u"yyyyMMdd-HHmmss"_s);
    QString destino = base;
    bool hecho = renombrarSinPisar(r.fichero, destino);
    for (int n = 2; !hecho && errno == EEXIST && n < 100; ++n)
        hecho = renombrarSinPisar(r.fichero, destino = base + u'-' + QString::number(n));
    // Otherwise it stays under its claimed name: hidden, and read by no cycle.
    if (!hecho) destino = r.fichero;
    olvidar(r);
    msLog(textoNoImportado(r.origen, r.p, f) + u". Se ha apartado como "_s + destino +
          u" y no se volverá a leer"_s);
}

QCoro::Task<ResumenImportacion> importarReclamo(Reclamo& r) {
    if (r.terminado) {
        QFile::remove(r.fichero);
        punto("borrado");
        olvidar(r);
        co_return {true, r.p.vistas, r.p.correctas};
    }
    if (!QFileInfo::exists(r.fichero)) {
        // Never renamed, or already given back: nothing of it was imported.
        olvidar(r);
        co_return {};
    }
    Ganchos g;
    g.alResolverLista = [&r](int16_t codigo) {
        Conexion().exec(u"UPDATE ImportReclamado SET ListaCodigo=? WHERE Fichero=?"_s,
                        {int(codigo), r.fichero});
    };
    g.alCerrarTramo = [&r](const Progreso& p, bool terminado) {
        Conexion().exec(
            u"UPDATE ImportReclamado SET Lineas=?, Vistas=?, Correctas=?, Terminado=? "
            u"WHERE Fichero=?"_s,
            {p.lineas, p.vistas, p.correctas, terminado ? 1 : 0, r.fichero});
    };
    const Final f = co_await leerFichero(r.fichero, r.contactos, r.lista, r.listaCodigo,
                                         r.addContactos, r.p, g);
    switch (f) {
        case Final::Completa:
            punto("terminado");
            QFile::remove(r.fichero);
            punto("borrado");
            olvidar(r);
            co_return {true, r.p.vistas, r.p.correctas};
        case Final::SinLineas:
            devolver(r);
            olvidar(r);
            co_return {true, 0, 0};
        case Final::NoAbierto:
        case Final::Ilegible:
            apartar(r, f);
            co_return {false, r.p.vistas, r.p.correctas, true};
        case Final::Interrumpida:
            // The claim stays; the next cycle goes on from its last commit.
            co_return {false, r.p.vistas, r.p.correctas, true};
    }
    co_return {};
}

// True when every claim left by an earlier cycle got somewhere: read to its
// end, or set aside.
QCoro::Task<bool> reanudarReclamos() {
    bool bien = true;
    const ResultadoConsulta q = Conexion().query(
        u"SELECT Fichero,Origen,Contactos,Lista,AddContactos,ListaCodigo,Lineas,Vistas,"
        u"Correctas,Terminado FROM ImportReclamado ORDER BY Fichero"_s);
    for (int i = 0; i < q.recordCount(); ++i) {
        Reclamo r;
        r.fichero = textoDe(q.value(i, 0));
        r.origen = textoDe(q.value(i, 1));
        r.contactos = numeroDe(q.value(i, 2)) != 0;
        r.lista = textoDe(q.value(i, 3));
        r.addContactos = numeroDe(q.value(i, 4)) != 0;
        if (!q.value(i, 5).isNull()) r.listaCodigo = int16_t(numeroDe(q.value(i, 5)));
        r.p.lineas = numeroDe(q.value(i, 6));
        r.p.vistas = numeroDe(q.value(i, 7));
        r.p.correctas = numeroDe(q.value(i, 8));
        r.terminado = numeroDe(q.value(i, 9)) != 0;
        if (!r.terminado && QFileInfo::exists(r.fichero))
            msLog(u"Reanudando la importación del fichero "_s + r.origen + u" en la línea " +
                  QString::number(r.p.lineas + 1));
        if ((co_await importarReclamo(r)).fallido) bien = false;
    }
    co_return bien;
}

// A file still being written is left for a later cycle: its writer holds
// "{file}.LOCK", or it changed within the last two seconds.
bool enEscritura(const QString& path) {
    if (QFileInfo::exists(path + u".LOCK"_s)) return true;
    const qint64 edad = QFileInfo(path).lastModified().msecsTo(QDateTime::currentDateTime());
    return std::abs(edad) < 2000;
}

QString nombreReclamo(const QString& path) {
    const QFileInfo fi(path);
    return fi.absolutePath() + u"/."_s + fi.fileName() + u".importando."_s +
           QString::number(QDateTime::currentMSecsSinceEpoch());
}

QCoro::Task<ResumenImportacion> importarVigilado(const QString& path, bool contactos,
                                                 const QString& lista, bool addContactos) {
    bool reanudados = true;
    try {
        asegurarTabla();
        reanudados = co_await reanudarReclamos();
    } catch (const ErrorQuelmo& e) {
        msLog(u"Error importando fichero "_s + path + u" :: " + e.description());
        co_return {false, 0, 0, true};
    }
    // Nothing to read is no failure, unless an earlier claim failed now.
    const ResumenImportacion nada{false, 0, 0, !reanudados};
    if (!QFileInfo(path).isFile()) {
        msLog(u"No existen "_s + clase(contactos) + u" en el fichero " + path);
        co_return nada;
    }
    if (enEscritura(path)) {
        msLog(u"El fichero "_s + path + u" se está escribiendo; se importará en el próximo ciclo");
        co_return nada;
    }
    Reclamo r;
    r.fichero = nombreReclamo(path);
    r.origen = path;
    r.contactos = contactos;
    r.lista = lista;
    r.addContactos = addContactos;
    try {
        Conexion().exec(
            u"INSERT INTO ImportReclamado (Fichero,Origen,Contactos,Lista,AddContactos,Lineas,"
            u"Vistas,Correctas,Terminado) VALUES (?,?,?,?,?,0,0,0,0)"_s,
            {r.fichero, r.origen, contactos ? 1 : 0, lista, addContactos ? 1 : 0});
        punto("reclamar");
        if (!renombrarSinPisar(path, r.fichero)) {
            msLog(u"Error copiando fichero "_s + path + u" :: " + errorDeSistema());
            olvidar(r);
            co_return {false, 0, 0, true};
        }
        punto("reclamado");
        msLog(u"Importando "_s + clase(contactos) + u" del fichero " + path);
        ResumenImportacion resumen = co_await importarReclamo(r);
        resumen.fallido = resumen.fallido || !reanudados;
        co_return resumen;
    } catch (const ErrorQuelmo& e) {
        msLog(u"Error importando fichero "_s + path + u" :: " + e.description());
    }
    co_return {false, 0, 0, true};
}

bool g_enCurso = false;

}  // namespace

QCoro::Task<bool> msLeerFicheroImport(const QString& path, bool contactos, QString& lista,
                                      bool addContactos) {
    Progreso p;
    // Named: g++ 12 destroys a temporary of a co_await expression twice.
    const Ganchos ninguno;
    const std::optional<int16_t> porResolver;
    const Final f =
        co_await leerFichero(path, contactos, lista, porResolver, addContactos, p, ninguno);
    co_return p.vistas > 0 && f != Final::NoAbierto;
}

bool msImportarLinea(const QVariant& cuenta, const QString& numero, const QString& texto,
                     int16_t lista, bool contactos, bool addContactos) {
    const bool r = importarLinea(cuenta.toString(), numero, texto, lista, contactos,
                                 addContactos) == Linea::Bien;
    return r;
}

int16_t msCrearListaImportada(QString& nombre) {
    try {
        return crearLista(nombre, {});
    } catch (const ErrorQuelmo&) {
        return 0;
    }
}

QString aliasConSufijo(const QString& alias) {
    const ResultadoConsulta r =
        Conexion().query(u"Select count(*) from Abonados where upper(alias) like upper(?)"_s,
                         {QString(alias + u"_%"_s)});
    return alias + u'_' + QString::number(numeroDe(r.value(0, 0)) + 1);
}

namespace {

// What a path names when it is there but is no regular file (empty for a
// regular file or nothing at all): opened, a FIFO without a writer would
// hold the import for ever, and a device or a socket is no list of lines.
QString queNoEsFichero(const QString& path) {
    struct stat st {};
    if (::stat(QFile::encodeName(path).constData(), &st) != 0) return {};
    if (S_ISREG(st.st_mode)) return {};
    if (S_ISDIR(st.st_mode)) return u"una carpeta"_s;
    if (S_ISFIFO(st.st_mode)) return u"una tubería con nombre (FIFO)"_s;
    if (S_ISSOCK(st.st_mode)) return u"un socket"_s;
    if (S_ISCHR(st.st_mode) || S_ISBLK(st.st_mode)) return u"un dispositivo"_s;
    return u"un fichero especial"_s;
}

}  // namespace

QCoro::Task<ResumenImportacion> msImportarFichero(QString path, bool contactos, bool borrar,
                                                  QString lista, bool addContactos) {
    if (path.isEmpty()) co_return {};
    if (const QString que = queNoEsFichero(path); !que.isEmpty()) {
        msLog(u"El fichero "_s + path + u" no es un fichero normal sino "_s + que +
              u"; no se importa"_s);
        co_return {false, 0, 0, true};
    }
    // Read, copied or claimed by this process, the database would lose the
    // engine's locks (and a claim would take it away from the program).
    if (Conexion().esArchivoPropio(path)) {
        msLog(u"El fichero "_s + path +
              u" es la base de datos de la aplicación o uno de sus ficheros; no se importa"_s);
        co_return {false, 0, 0, true};
    }
    // The import yields between its stretches; a second import started
    // from there (a menu, a forced run) would read the same claims.
    if (g_enCurso) {
        msLog(u"Hay otra importación en curso; el fichero "_s + path + u" no se ha importado");
        co_return {};
    }
    g_enCurso = true;
    struct Fin {
        ~Fin() { g_enCurso = false; }
    } fin;
    // A long write of ours that holds the connection is waited for: the
    // claim and the lines would find it busy.
    while (Conexion().retenida()) co_await turnoSiguiente(20);

    msLog(contactos ? u"Preparando importacion de Usuarios"_s
                    : u"Preparando importacion de Mensajes"_s);
    if (borrar) co_return co_await importarVigilado(path, contactos, lista, addContactos);
    const QString copia = directorioAplicacion() + u"/Import_"_s +
                          Reloj::now().toString(u"yyMMddHHmmss"_s) + u".txt"_s;
    if (!QFileInfo::exists(path)) {
        msLog(u"No existen "_s + clase(contactos) + u" en el fichero " + path);
        co_return {};
    }
    QFile::remove(copia);
    QFile origen(path);
    if (!origen.copy(copia)) {
        msLog(u"Error copiando fichero "_s + path + u" :: " + origen.errorString());
        co_return {false, 0, 0, true};
    }
    msLog(u"Importando "_s + clase(contactos) + u" del fichero " + path);
    QString listaTexto = lista;
    Progreso p;
    // Named: g++ 12 destroys a temporary of a co_await expression twice.
    const Ganchos ninguno;
    const std::optional<int16_t> porResolver;
    const Final f =
        co_await leerFichero(copia, contactos, listaTexto, porResolver, addContactos, p, ninguno);
    QFile::remove(copia);
    if (f == Final::Ilegible || f == Final::NoAbierto) msLog(textoNoImportado(path, p, f));
    const bool leido = f == Final::Completa || f == Final::SinLineas;
    co_return {leido, p.vistas, p.correctas, !leido};
}

QCoro::Task<bool> msImportarManual() {
    const QString ruta = Ajustes::rutaImportacion(Ajustes::Importacion::Mensajes);
    if (ruta.size() <= 3) co_return false;
    co_await msImportarMensajesDe(ruta);
    estadoAplicacion().gbImportado = true;
    co_return true;
}

QCoro::Task<ResumenImportacion> msImportarMensajesDe(QString ruta, QString listaDada) {
    // A list given by the caller is taken as it stands, as the watch takes
    // its list. The saved one goes through a number and back: a name
    // becomes the empty text, which asks for a list with a default name.
    QString lista = listaDada;
    const QString listaGuardada =
        Ajustes::listaImportacion(Ajustes::Importacion::Mensajes, u"-1"_s);
    if (lista.isNull() && esNumerico(listaGuardada)) {
        try {
            lista = QString::number(aEntero16(listaGuardada));
        } catch (const ErrorQuelmo&) {
            // A stored value too large for a list code means no list.
        }
    }
    const bool anadir = Ajustes::anadirContactos(Ajustes::Importacion::Mensajes);
    co_return co_await msImportarFichero(ruta, false, false, lista, anadir);
}

QCoro::Task<bool> msImportarContactos() {
    const QString ruta = Ajustes::rutaImportacion(Ajustes::Importacion::Contactos);
    if (ruta.size() <= 3) co_return false;
    co_await msImportarContactosDe(ruta);
    co_return true;
}

QCoro::Task<ResumenImportacion> msImportarContactosDe(QString ruta, QString lista) {
    const QString elegida =
        lista.isNull() ? Ajustes::listaImportacion(Ajustes::Importacion::Contactos) : lista;
    co_return co_await msImportarFichero(ruta, true, false, elegida, true);
}

QStringList msListasSeleccion() {
    QStringList lineas;
    try {
        const ResultadoConsulta r = Conexion().query(
            u"SELECT Grupos.*, (select count(*) from abogrup where abogrup.grupo=Grupos.grupo) "
            u"AS Contactos FROM Grupos order by nombre COLLATE REGLA_LISTAS"_s);
        for (int i = 0; i < r.recordCount(); ++i)
            lineas.append(u"%1"_s.arg(numeroDe(r.value(i, u"Grupo"_s)), 3, 10, QChar(u'0')) +
                          u" - "_s + textoDe(r.value(i, u"Nombre"_s)));
    } catch (const ErrorQuelmo&) {
        // A database without lists offers none to choose.
    }
    return lineas;
}

QString msCodigoListaPorNombre(const QString& nombre) {
    try {
        QVariantList valores;
        const QString donde = condicionNombre(u"nombre"_s, nombre, valores);
        const ResultadoConsulta r =
            Conexion().query(u"select grupo from grupos where "_s + donde, valores);
        if (!r.isEmpty()) return textoDe(r.value(0, 0));
    } catch (const ErrorQuelmo&) {
        // A database without lists knows no list by that name.
    }
    return QString();
}

namespace ImportPruebas {
void establecerPuntoDeFallo(std::function<void(const char*)> f) {
    puntoDeFallo() = std::move(f);
}
void establecerLineasPorTramo(int lineas) {
    g_lineasPorTramo = lineas;
}
}  // namespace ImportPruebas
