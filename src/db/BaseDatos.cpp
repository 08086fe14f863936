#include "db/BaseDatos.h"

#include "base/Avisos.h"
#include "base/ReglaListas.h"
#include "base/ReglaNombres.h"
#include "base/Reloj.h"
#include "db/Esquema.h"
#include "db/mdoDB.h"

#include <malloc.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QTimer>
#include <atomic>
#include <cerrno>

using namespace Qt::StringLiterals;

namespace {

// The file's pages kept in memory, in KiB. Lists read pages of large
// tables over and over: kept here, they are not read from the file again
// while nobody else writes.
constexpr int kMemoriaLectura = -65536;
// A table of a million rows, read before it is emptied.
constexpr int kMemoriaVaciado = -262144;

// Names and aliases compare without regard to case, accented letters too
// ("Á" equals "á"), as users expect of an address book. Only the program's
// queries name this collation; the schema names none of ours.
constexpr char kSinCaso[] = "SINCASO";
int compararSinMayusculas(void*, int n1, const void* s1, int n2, const void* s2) {
    return ReglaNombres::comparar(static_cast<const char*>(s1), n1, static_cast<const char*>(s2),
                                  n2);
}

// The order of the lists the user sees, so that the engine can sort a list
// too large to hold (the sent history) as the lists sort in memory.
constexpr char kReglaListas[] = "REGLA_LISTAS";
int compararReglaListas(void*, int n1, const void* s1, int n2, const void* s2) {
    return ReglaListas::comparar(static_cast<const char*>(s1), n1, static_cast<const char*>(s2),
                                 n2);
}

// upper() and lower() of the engine know only ASCII; these know every letter.
template <bool Mayusculas>
void funcionCaso(sqlite3_context* ctx, int, sqlite3_value** argv) {
    if (sqlite3_value_type(argv[0]) == SQLITE_NULL) {
        sqlite3_result_null(ctx);
        return;
    }
    const auto* t = reinterpret_cast<const char*>(sqlite3_value_text(argv[0]));
    const QString texto = QString::fromUtf8(t, sqlite3_value_bytes(argv[0]));
    const QByteArray u = (Mayusculas ? texto.toUpper() : texto.toLower()).toUtf8();
    sqlite3_result_text(ctx, u.constData(), int(u.size()), SQLITE_TRANSIENT);
}

// The name's place in the lists' order as a text that sorts by plain
// comparison, so that a column of it can be indexed by any client (and read
// back and compared as text): each unit of the rule's key as four hex
// digits. A missing name sorts first.
void funcionClaveNombre(sqlite3_context* ctx, int, sqlite3_value** argv) {
    const auto* t = reinterpret_cast<const char*>(sqlite3_value_text(argv[0]));
    const QString clave =
        ReglaListas::clave(QString::fromUtf8(t, t ? sqlite3_value_bytes(argv[0]) : 0));
    static constexpr char kHex[] = "0123456789ABCDEF";
    QByteArray b(clave.size() * 4, Qt::Uninitialized);
    for (qsizetype i = 0; i < clave.size(); ++i) {
        const char16_t u = clave.at(i).unicode();
        for (int k = 0; k < 4; ++k) b[4 * i + k] = kHex[(u >> (12 - 4 * k)) & 0xf];
    }
    sqlite3_result_text(ctx, b.constData(), int(b.size()), SQLITE_TRANSIENT);
}

const QString kTextoPerdida =
    u"La base de datos ha sido borrada o sustituida por otro programa mientras estaba abierta: "
    u"no se escribe más en ella"_s;

QVariant leerColumna(sqlite3_stmt* stmt, int i) {
    switch (sqlite3_column_type(stmt, i)) {
        case SQLITE_NULL:
            return QVariant();
        case SQLITE_INTEGER:
            return QVariant(qlonglong(sqlite3_column_int64(stmt, i)));
        case SQLITE_FLOAT:
            return QVariant(sqlite3_column_double(stmt, i));
        default: {
            const auto* t = reinterpret_cast<const char*>(sqlite3_column_text(stmt, i));
            return QVariant(QString::fromUtf8(t, sqlite3_column_bytes(stmt, i)));
        }
    }
}

}  // namespace

int ResultadoConsulta::columnIndex(const QString& name) const {
    for (int i = 0; i < m_columns.size(); ++i)
        if (m_columns.at(i).compare(name, Qt::CaseInsensitive) == 0) return i;
    return -1;
}

const QVariant& ResultadoConsulta::value(int row, const QString& column) const {
    const int i = columnIndex(column);
    if (i < 0)
        throw ErrorBD(u"No se encontró el elemento en la colección: "_s + column,
                      ErrNum::ItemNotFound);
    return m_rows.at(row).at(i);
}

BaseDatos::~BaseDatos() {
    close();
}

namespace {

// The engine's refusals that the user can act on, said in Spanish.
// `sistema` is the system's error behind it: a write the disk refused is
// reported by the engine as a mere I/O error.
QString causaDe(int codigo, const QString& msg, int sistema) {
    if ((codigo & 0xff) == SQLITE_IOERR || (codigo & 0xff) == SQLITE_CANTOPEN) {
        if (sistema == ENOSPC || sistema == EDQUOT) return u"el disco está lleno"_s;
        if (sistema == EROFS) return u"el disco es de solo lectura"_s;
        if (sistema == EACCES || sistema == EPERM)
            return u"no hay permiso para escribir el fichero de la base de datos"_s;
    }
    switch (codigo & 0xff) {
        case SQLITE_READONLY:
            return u"el fichero de la base de datos es de solo lectura"_s;
        case SQLITE_FULL:
            return u"el disco está lleno"_s;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return u"la base de datos está bloqueada por otro programa"_s;
        case SQLITE_NOTADB:
        case SQLITE_CORRUPT:
            return u"el fichero no es una base de datos válida"_s;
        case SQLITE_IOERR:
            return u"error de lectura o escritura en el disco"_s;
        case SQLITE_CANTOPEN:
        case SQLITE_PERM:
            return u"no se puede abrir el fichero de la base de datos"_s;
        default:
            if (msg.startsWith(u"no such table"_s))
                return u"el fichero no es una base de datos de Quelmo Mensajes SMS"_s;
            return {};
    }
}

}  // namespace

namespace {

// Why a file is no database of ours, judged through a read-only connection
// before anything writes it: a file we refuse stays byte for byte as it was
// (no journal mode switched, no change counter bumped). Empty when it is
// ours, or when it can't be read now (busy): the open that follows says so.
QString motivoAjena(const QString& path) {
    sqlite3* db = nullptr;
    const int rc = sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READONLY, nullptr);
    const auto cerrar = qScopeGuard([db] { sqlite3_close(db); });
    if (rc != SQLITE_OK) return {};
    sqlite3_extended_result_codes(db, 1);
    sqlite3_stmt* stmt = nullptr;
    // Every release of the program had these two.
    int r = sqlite3_prepare_v2(db,
                               "SELECT count(*) FROM sqlite_master WHERE type='table' AND "
                               "lower(name) IN ('canales','envios')",
                               -1, &stmt, nullptr);
    int tablas = -1;
    if (r == SQLITE_OK && (r = sqlite3_step(stmt)) == SQLITE_ROW)
        tablas = sqlite3_column_int(stmt, 0);
    sqlite3_finalize(stmt);
    if ((r & 0xff) == SQLITE_NOTADB)
        return u"El fichero "_s + path + u" no es una base de datos SQLite"_s;
    if (tablas < 0 || tablas == 2) return {};
    return u"El fichero "_s + path +
           u" no es una base de datos de Quelmo Mensajes SMS (no tiene sus tablas); no se "
           u"modifica"_s;
}

}  // namespace

Hecho BaseDatos::open(const QString& path) {
    const QString rechazo =
        QFileInfo(path).isFile() ? motivoAjena(path) : u"No existe el fichero: "_s + path;
    if (!rechazo.isEmpty()) {
        close();
        m_busy = false;
        m_motivo = rechazo;
        return Hecho::no(rechazo);
    }
    return openWith(path, SQLITE_OPEN_READWRITE);
}

Hecho BaseDatos::create(const QString& path) {
    // The file holds the platforms' passwords: readable by its owner only,
    // from its first byte on. The engine gives its journal files the same
    // permissions.
    if (!QFileInfo::exists(path)) {
        QFile nuevo(path);
        if (nuevo.open(QIODevice::WriteOnly))
            nuevo.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }
    return openWith(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
}

Hecho BaseDatos::openWith(const QString& path, int flags) {
    close();
    m_busy = false;
    sqlite3* db = nullptr;
    const int rc = sqlite3_open_v2(path.toUtf8().constData(), &db, flags, nullptr);
    if (rc != SQLITE_OK) {
        const QString msg = QString::fromUtf8(db ? sqlite3_errmsg(db) : sqlite3_errstr(rc));
        const QString causa = causaDe(rc, msg, db ? sqlite3_system_errno(db) : 0);
        m_motivo = path + u": "_s + (causa.isEmpty() ? msg : causa);
        sqlite3_close(db);
        return Hecho::no(m_motivo);
    }
    m_motivo.clear();
    m_db = db;
    m_path = path;
    static unsigned long long aperturas = 0;
    m_apertura = ++aperturas;
    m_perdida = false;
    m_base = m_diario = {};
    m_exterior.clear();
    sqlite3_busy_timeout(m_db, m_espera);
    sqlite3_extended_result_codes(m_db, 1);
    sqlite3_create_collation(m_db, kSinCaso, SQLITE_UTF8, nullptr, compararSinMayusculas);
    sqlite3_create_collation(m_db, kReglaListas, SQLITE_UTF8, nullptr, compararReglaListas);
    sqlite3_create_function(m_db, "upper", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr,
                            funcionCaso<true>, nullptr, nullptr);
    sqlite3_create_function(m_db, "lower", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr,
                            funcionCaso<false>, nullptr, nullptr);
    sqlite3_create_function(m_db, "clave_nombre", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr,
                            funcionClaveNombre, nullptr, nullptr);
    try {
        // A file that is not a database opens lazily; reading the schema tells.
        query(u"SELECT count(*) FROM sqlite_master"_s);
        // A committed row survives a crash or a power cut.
        query(u"PRAGMA journal_mode=WAL"_s);
        exec(u"PRAGMA synchronous=FULL"_s);
        exec(u"PRAGMA main.cache_size="_s + QString::number(kMemoriaLectura));
        // The screens' own temporary tables (a list's members) as well.
        exec(u"PRAGMA temp.cache_size=-65536"_s);
        // Deleted text is still zeroed where it costs no extra write; a
        // page freed whole (an emptied table) is not written again.
        exec(u"PRAGMA secure_delete=FAST"_s);
        recordarArchivos();
        // A file of an earlier release still names our collations.
        msQuitarIntercalaciones(*this);
        try {
            Esquema::prepararClavesNombre(*this);
        } catch (const ErrorBD&) {
            // A file without contacts yet, or of an earlier release.
        }
    } catch (const ErrorBD& e) {
        m_motivo = path + u": "_s + (e.causa().isEmpty() ? e.description() : e.causa());
        const int codigo = sqlite3_errcode(m_db) & 0xff;
        m_busy = codigo == SQLITE_BUSY || codigo == SQLITE_LOCKED;
        close();
        return Hecho::no(m_motivo);
    }
    return {};
}

void BaseDatos::establecerEspera(int ms) {
    m_espera = ms;
    // Set when the connection comes back.
    if (m_db && !enOtroHilo()) sqlite3_busy_timeout(m_db, ms);
}

bool BaseDatos::lastWasBusy() const {
    if (!m_db) return false;
    if (m_rehusada) return true;
    const int codigo = sqlite3_errcode(m_db) & 0xff;
    return codigo == SQLITE_BUSY || codigo == SQLITE_LOCKED;
}

void BaseDatos::confirmarEnOtroHilo(bool copiar,
                                    std::function<void(const ErrorBD* fallo)> alTerminar) {
    exigirArchivos();
    // The other thread reaches nothing of this one but this: its end is
    // looked for here every few milliseconds, so that nothing it does can
    // outlive the objects of the event loop (at the program's end).
    struct Entrega {
        std::atomic<bool> hecha{false};
        int rc = SQLITE_OK;
    };
    auto entrega = std::make_shared<Entrega>();
    m_hilo = std::thread([db = m_db, copiar, entrega] {
        entrega->rc = sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
        // Another program reading may keep part of it for later, as ever.
        if (entrega->rc == SQLITE_OK && copiar)
            sqlite3_wal_checkpoint_v2(db, nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
        entrega->hecha.store(true, std::memory_order_release);
    });
    auto* reloj = new QTimer(QCoreApplication::instance());
    reloj->setInterval(2);
    QObject::connect(reloj, &QTimer::timeout, reloj,
                     [this, reloj, entrega, vida = std::weak_ptr<char>(m_vida),
                      apertura = m_apertura, alTerminar = std::move(alTerminar)] {
                         if (!vida.expired() && !entrega->hecha.load(std::memory_order_acquire))
                             return;
                         reloj->stop();
                         reloj->deleteLater();
                         if (vida.expired()) return;
                         const int rc = entrega->rc;
                         // Closed meanwhile, closing waited for the other thread (the
                         // connection may be in another's hands again since): what it
                         // committed stands, and the rest went with the close.
                         if (!enOtroHilo() || m_apertura != apertura) {
                             const ErrorBD cerrada(u"La conexión con la base de datos se cerró"_s,
                                                   ErrNum::BaseDatos);
                             alTerminar(rc == SQLITE_OK ? nullptr : &cerrada);
                             return;
                         }
                         m_hilo.join();
                         sqlite3_busy_timeout(m_db, m_espera);
                         if (rc == SQLITE_OK) {
                             alTerminar(nullptr);
                             return;
                         }
                         try {
                             fail(u"COMMIT"_s);
                         } catch (const ErrorBD& fallo) {
                             alTerminar(&fallo);
                         }
                     });
    reloj->start();
}

void BaseDatos::close() {
    // The other thread's calls end first; what it hands back finds the
    // connection closed.
    if (m_hilo.joinable()) m_hilo.join();
    for (sqlite3_stmt* s : std::as_const(m_cache)) sqlite3_finalize(s);
    m_cache.clear();
    if (m_db) sqlite3_close_v2(m_db);
    m_db = nullptr;
    m_path.clear();
    // Its transaction went with it.
    retener(false);
}

void BaseDatos::fail(const QString& sql) {
    const QString msg = m_db ? QString::fromUtf8(sqlite3_errmsg(m_db)) : u"Base de datos cerrada"_s;
    const int num = msg.contains(u"no such column"_s) ? ErrNum::ItemNotFound : ErrNum::BaseDatos;
    throw ErrorBD(msg + u" [" + sql.left(200) + u']', num,
                  m_db ? causaDe(sqlite3_extended_errcode(m_db), msg, sqlite3_system_errno(m_db))
                       : QString());
}

bool BaseDatos::enTransaccion() const {
    return m_db && sqlite3_get_autocommit(m_db) == 0;
}

void BaseDatos::retener(bool retenida) {
    m_retenida = retenida;
    m_pasoPropio = false;
    // A write keeps the readers' page memory: shrinking it would free
    // thousands of blocks in the click that begins the write. An emptying
    // undone halfway lets go of its wider memory.
    if (!retenida && m_memoriaAmplia) memoriaParaVaciar(false);
}

void BaseDatos::memoriaParaVaciar(bool amplia) {
    const bool soltar = m_memoriaAmplia && !amplia;
    m_memoriaAmplia = amplia;
    if (!m_db) return;
    // A hint, which can't fail in a way that matters.
    const int kib = amplia ? kMemoriaVaciado : kMemoriaLectura;
    sqlite3_exec(m_db, (u"PRAGMA main.cache_size="_s + QString::number(kib)).toUtf8().constData(),
                 nullptr, nullptr, nullptr);
    // The pages let go go back to the system, not only to the heap.
    if (soltar) malloc_trim(0);
}

namespace {
const QString kTextoRetenida = u"la base de datos está ocupada guardando otro cambio"_s;

// Whether the statement writes, or begins or ends a transaction, which the
// engine counts as reading.
bool escribe(sqlite3_stmt* s) {
    if (!sqlite3_stmt_readonly(s)) return true;
    static const QRegularExpression control(
        u"^\\s*(BEGIN|COMMIT|END|ROLLBACK|SAVEPOINT|RELEASE)\\b"_s,
        QRegularExpression::CaseInsensitiveOption);
    return control.match(QString::fromUtf8(sqlite3_sql(s))).hasMatch();
}
}  // namespace

void BaseDatos::rehusar(const QString& sql) {
    m_rehusada = true;
    throw ErrorBD(u"La base de datos está ocupada guardando otro cambio ["_s + sql.left(200) + u']',
                  ErrNum::BaseDatos, kTextoRetenida);
}

void BaseDatos::rehusarEnOtroHilo(const QString& sql) {
    if (enOtroHilo()) rehusar(sql);
}

void BaseDatos::rehusarSiRetenida(sqlite3_stmt* s, const QString& sql) {
    if (!m_retenida || m_pasoPropio || (s && !escribe(s))) return;
    rehusar(sql);
}

sqlite3_stmt* BaseDatos::prepare(const QString& sql) {
    if (!m_db)
        throw ErrorBD(
            m_perdida ? kTextoPerdida : u"La conexión con la base de datos no está abierta"_s,
            ErrNum::BaseDatos);
    m_rehusada = false;
    rehusarEnOtroHilo(sql);
    if (sqlite3_stmt* s = m_cache.value(sql)) {
        sqlite3_reset(s);
        sqlite3_clear_bindings(s);
        rehusarSiRetenida(s, sql);
        return s;
    }
    sqlite3_stmt* s = nullptr;
    const QByteArray u = sql.toUtf8();
    const char* tail = nullptr;
    if (sqlite3_prepare_v2(m_db, u.constData(), int(u.size()), &s, &tail) != SQLITE_OK || !s) {
        if (s) sqlite3_finalize(s);
        fail(sql);
    }
    if (m_cache.size() > 200) {
        for (sqlite3_stmt* old : std::as_const(m_cache)) sqlite3_finalize(old);
        m_cache.clear();
    }
    m_cache.insert(sql, s);
    rehusarSiRetenida(s, sql);
    return s;
}

void BaseDatos::bind(sqlite3_stmt* stmt, const QVariantList& params, const QString& sql) {
    if (params.size() != sqlite3_bind_parameter_count(stmt))
        throw ErrorBD(u"Número de parámetros incorrecto [" + sql.left(200) + u']',
                      ErrNum::BaseDatos);
    for (int i = 0; i < params.size(); ++i) {
        const QVariant& v = params.at(i);
        int rc = SQLITE_OK;
        if (v.isNull()) {
            rc = sqlite3_bind_null(stmt, i + 1);
        } else {
            switch (v.typeId()) {
                case QMetaType::Bool:
                case QMetaType::Int:
                case QMetaType::UInt:
                case QMetaType::LongLong:
                case QMetaType::ULongLong:
                case QMetaType::Short:
                case QMetaType::UShort:
                case QMetaType::Char:
                case QMetaType::UChar:
                    rc = sqlite3_bind_int64(stmt, i + 1, v.toLongLong());
                    break;
                case QMetaType::Double:
                case QMetaType::Float:
                    rc = sqlite3_bind_double(stmt, i + 1, v.toDouble());
                    break;
                case QMetaType::QDateTime: {
                    const QByteArray t = aTextoBD(v.toDateTime()).toUtf8();
                    rc = sqlite3_bind_text(stmt, i + 1, t.constData(), int(t.size()),
                                           SQLITE_TRANSIENT);
                    break;
                }
                case QMetaType::QDate: {
                    const QByteArray t = aTextoBD(QDateTime(v.toDate(), QTime(0, 0))).toUtf8();
                    rc = sqlite3_bind_text(stmt, i + 1, t.constData(), int(t.size()),
                                           SQLITE_TRANSIENT);
                    break;
                }
                default: {
                    const QByteArray t = v.toString().toUtf8();
                    rc = sqlite3_bind_text(stmt, i + 1, t.constData(), int(t.size()),
                                           SQLITE_TRANSIENT);
                }
            }
        }
        if (rc != SQLITE_OK) fail(sql);
    }
}

ResultadoConsulta BaseDatos::query(const QString& sql, const QVariantList& params) {
    sqlite3_stmt* s = prepare(sql);
    bind(s, params, sql);
    if (!sqlite3_stmt_readonly(s) && sqlite3_get_autocommit(m_db)) exigirArchivos();
    ResultadoConsulta r;
    const int n = sqlite3_column_count(s);
    r.m_columns.reserve(n);
    for (int i = 0; i < n; ++i) r.m_columns.append(QString::fromUtf8(sqlite3_column_name(s, i)));
    int rc;
    while ((rc = sqlite3_step(s)) == SQLITE_ROW) {
        QVector<QVariant> fila;
        fila.reserve(n);
        for (int i = 0; i < n; ++i) fila.append(leerColumna(s, i));
        r.m_rows.append(std::move(fila));
    }
    if (rc != SQLITE_DONE) {
        sqlite3_reset(s);
        fail(sql);
    }
    sqlite3_reset(s);
    return r;
}

void BaseDatos::recorrer(const QString& sql, const QVariantList& params,
                         const std::function<bool(sqlite3_stmt*)>& porFila) {
    sqlite3_stmt* s = prepare(sql);
    bind(s, params, sql);
    // Stopped early or by a throw, the statement lets go of its read.
    const auto fin = qScopeGuard([s] { sqlite3_reset(s); });
    int rc;
    while ((rc = sqlite3_step(s)) == SQLITE_ROW)
        if (!porFila(s)) return;
    if (rc != SQLITE_DONE) fail(sql);
}

QVariant BaseDatos::valorDe(sqlite3_stmt* s, int columna) {
    return leerColumna(s, columna);
}

QVector<QString> BaseDatos::queryTexts(const QString& sql, const QVariantList& params) {
    sqlite3_stmt* s = prepare(sql);
    bind(s, params, sql);
    const int n = sqlite3_column_count(s);
    QVector<QString> celdas;
    int rc;
    while ((rc = sqlite3_step(s)) == SQLITE_ROW) {
        for (int i = 0; i < n; ++i) {
            const auto* t = reinterpret_cast<const char*>(sqlite3_column_text(s, i));
            celdas.append(t ? QString::fromUtf8(t, sqlite3_column_bytes(s, i)) : QString());
        }
    }
    if (rc != SQLITE_DONE) {
        sqlite3_reset(s);
        fail(sql);
    }
    sqlite3_reset(s);
    return celdas;
}

int BaseDatos::exec(const QString& sql, const QVariantList& params) {
    sqlite3_stmt* s = prepare(sql);
    bind(s, params, sql);
    if (!sqlite3_stmt_readonly(s) && sqlite3_get_autocommit(m_db)) exigirArchivos();
    int rc;
    while ((rc = sqlite3_step(s)) == SQLITE_ROW) {
    }
    if (rc != SQLITE_DONE) {
        sqlite3_reset(s);
        fail(sql);
    }
    sqlite3_reset(s);
    return sqlite3_changes(m_db);
}

void BaseDatos::execScript(const QString& sql) {
    if (!m_db)
        throw ErrorBD(u"La conexión con la base de datos no está abierta"_s, ErrNum::BaseDatos);
    // A script isn't looked into: held, it is refused whole.
    m_rehusada = false;
    rehusarEnOtroHilo(sql);
    rehusarSiRetenida(nullptr, sql);
    char* err = nullptr;
    if (sqlite3_exec(m_db, sql.toUtf8().constData(), nullptr, nullptr, &err) != SQLITE_OK) {
        const QString msg = QString::fromUtf8(err ? err : "error");
        sqlite3_free(err);
        throw ErrorBD(msg, ErrNum::BaseDatos);
    }
}

long long BaseDatos::lastInsertId() const {
    return m_db ? sqlite3_last_insert_rowid(m_db) : 0;
}

bool BaseDatos::hasTable(const QString& table) {
    return !query(u"SELECT 1 FROM sqlite_master WHERE type='table' AND name=? COLLATE NOCASE"_s,
                  {table})
                .isEmpty();
}

bool BaseDatos::hasColumn(const QString& table, const QString& column) {
    const ResultadoConsulta r = query(u"SELECT name FROM pragma_table_info(?)"_s, {table});
    for (int i = 0; i < r.recordCount(); ++i)
        if (r.value(i, 0).toString().compare(column, Qt::CaseInsensitive) == 0) return true;
    return false;
}

void BaseDatos::begin() {
    exec(u"BEGIN IMMEDIATE"_s);
}
void BaseDatos::commit() {
    exigirArchivos();
    exec(u"COMMIT"_s);
}
void BaseDatos::rollback() {
    if (m_db && !sqlite3_get_autocommit(m_db)) exec(u"ROLLBACK"_s);
}
void BaseDatos::savepoint(const QString& name) {
    const bool exterior = m_db && sqlite3_get_autocommit(m_db);
    exec(u"SAVEPOINT "_s + name);
    if (exterior) m_exterior = name;
}
void BaseDatos::release(const QString& name) {
    if (name == m_exterior) exigirArchivos();
    exec(u"RELEASE "_s + name);
    if (name == m_exterior) m_exterior.clear();
}
void BaseDatos::rollbackTo(const QString& name) {
    exec(u"ROLLBACK TO "_s + name);
}

// ---- the files under the connection -----------------------------------------

BaseDatos::Identidad BaseDatos::identidad(const QString& ruta) {
    struct stat st {};
    if (::stat(QFile::encodeName(ruta).constData(), &st) != 0) return {};
    return {static_cast<unsigned long long>(st.st_dev), static_cast<unsigned long long>(st.st_ino)};
}

void BaseDatos::recordarArchivos() {
    m_base = identidad(m_path);
    // None when the file could not take a log (read-only folder): only the
    // database itself is watched then.
    m_diario = identidad(m_path + u"-wal"_s);
}

bool BaseDatos::archivosIntactos() {
    if (!m_db || m_base == Identidad{}) return true;
    if (identidad(m_path) == m_base &&
        (m_diario == Identidad{} || identidad(m_path + u"-wal"_s) == m_diario))
        return true;
    perder();
    return false;
}

void BaseDatos::exigirArchivos() {
    if (m_perdida || !archivosIntactos()) throw ErrorBD(kTextoPerdida, ErrNum::BaseDatos);
}

void BaseDatos::perder() {
    const QString ruta = m_path;
    // No checkpoint on close: the log this connection holds may be one that
    // another process has already copied into the file and removed, and
    // copying it again would undo that process's later writes.
    sqlite3_db_config(m_db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    close();
    m_perdida = true;
    if (m_avisar) Q_EMIT Avisos::instancia().baseDatosPerdida(ruta);
}

bool BaseDatos::esArchivoPropio(const QString& ruta) const {
    if (!m_db) return false;
    const Identidad id = identidad(ruta);
    if (id == Identidad{}) return false;
    const QStringList propios = {m_path, m_path + u"-wal"_s, m_path + u"-shm"_s,
                                 m_path + u"-journal"_s};
    for (const QString& propio : propios)
        if (identidad(propio) == id) return true;
    return false;
}
