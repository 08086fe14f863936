#pragma once

#include "base/Error.h"
#include "base/Hecho.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>
#include <functional>
#include <memory>
#include <thread>

struct sqlite3;
struct sqlite3_stmt;

// A failed statement or open. Its number is ErrNum::BaseDatos (or
// ErrNum::ItemNotFound for a missing column), its description the engine's.
class ErrorBD : public ErrorQuelmo {
  public:
    using ErrorQuelmo::ErrorQuelmo;
    ErrorBD(QString description, int number, QString causa)
        : ErrorQuelmo(std::move(description), number), m_causa(std::move(causa)) {}
    // Why the engine refused, in the user's words ("el disco está lleno"),
    // when it is one the user can act on; empty otherwise.
    const QString& causa() const { return m_causa; }

  private:
    QString m_causa;
};

// Why a routine failed, in the user's words when the engine gave them, else
// its description.
inline QString causaDeError(const ErrorQuelmo& e) {
    const auto* bd = dynamic_cast<const ErrorBD*>(&e);
    return bd && !bd->causa().isEmpty() ? bd->causa() : e.description();
}

// The rows of a query, fetched at once, so their count is known at once and
// no read lock outlives the call.
class ResultadoConsulta {
  public:
    int recordCount() const { return int(m_rows.size()); }
    bool isEmpty() const { return m_rows.isEmpty(); }
    int columnCount() const { return int(m_columns.size()); }
    const QStringList& columns() const { return m_columns; }
    // Column position by name, ignoring case; -1 when absent.
    int columnIndex(const QString& name) const;

    const QVariant& value(int row, int column) const { return m_rows.at(row).at(column); }
    // Throws ErrorBD (ErrNum::ItemNotFound) for a column the result lacks.
    const QVariant& value(int row, const QString& column) const;
    const QVector<QVariant>& row(int row) const { return m_rows.at(row); }

  private:
    friend class BaseDatos;
    QStringList m_columns;
    QVector<QVector<QVariant>> m_rows;
};

// One SQLite connection. Every value is a bound parameter: "?" in the text,
// in the order of `params`. Dates go in as QDateTime and are stored as
// "yyyy-MM-dd HH:mm:ss"; they come back as that text.
class BaseDatos {
  public:
    BaseDatos() = default;
    ~BaseDatos();
    BaseDatos(const BaseDatos&) = delete;
    BaseDatos& operator=(const BaseDatos&) = delete;

    // Opens an existing database file (never creates one). Refused when
    // the file is missing or is not a database of ours, with the reason.
    Hecho open(const QString& path);
    // Creates a new, empty database file (for the build and for tests).
    Hecho create(const QString& path);
    void close();
    // The last open failed because another connection (another process)
    // held the file locked past the wait: the file is busy, not broken.
    bool openWasBusy() const { return m_busy; }
    // Why the last open failed (the reason it gave), kept for the screen
    // that asks for another file later; empty after an open that succeeded.
    const QString& motivoFallo() const { return m_motivo; }
    bool isOpen() const { return m_db != nullptr; }
    // How long a statement waits for a lock another connection holds
    // before it fails as busy (5 s from the open on).
    void establecerEspera(int ms);
    int espera() const { return m_espera; }
    // The last statement failed because another connection held the lock.
    bool lastWasBusy() const;
    const QString& path() const { return m_path; }
    // Tells one open from another, also of the same file: what a routine
    // derived from the file's contents is stale once this changes.
    unsigned long long apertura() const { return m_apertura; }

    ResultadoConsulta query(const QString& sql, const QVariantList& params = {});
    // Every column of every row as text (null as a null string), row after
    // row in one vector: a list of a hundred thousand rows is read without
    // a value object per cell.
    QVector<QString> queryTexts(const QString& sql, const QVariantList& params = {});
    // Runs a read row by row on the engine's own statement: `porFila`
    // returns false to stop there, and the rest is not walked. A list of a
    // million rows is read without a value per cell. `porFila` runs no
    // statement of its own: the one it reads from could be let go. Throws
    // ErrorBD.
    void recorrer(const QString& sql, const QVariantList& params,
                  const std::function<bool(sqlite3_stmt*)>& porFila);
    // A column of the row a statement stands on, as `query` gives it.
    static QVariant valorDe(sqlite3_stmt* s, int columna);
    // Runs one statement; returns the number of rows it changed.
    int exec(const QString& sql, const QVariantList& params = {});
    // Runs several statements without parameters (schema scripts).
    void execScript(const QString& sql);
    long long lastInsertId() const;
    bool hasColumn(const QString& table, const QString& column);
    bool hasTable(const QString& table);

    // Transactions and savepoints, for the few places that group writes.
    void begin();
    void commit();
    void rollback();
    void savepoint(const QString& name);
    void release(const QString& name);
    void rollbackTo(const QString& name);
    // A transaction is open: false after an error that made the engine undo
    // it (a full disk), which a routine passing over failures must not miss.
    bool enTransaccion() const;

    // Null while the connection is in the hands of another thread.
    sqlite3* handle() const { return enOtroHilo() ? nullptr : m_db; }

    // Commits the transaction on a thread of its own, and then copies the
    // log into the file when `copiar`: calls of tens of milliseconds for a
    // write of half a million rows. Meanwhile every statement of this
    // thread fails at once as busy, as while another program holds the
    // file (none waits for the other thread), and `enOtroHilo` tells
    // readers that can come back later. `alTerminar` is called on this
    // thread once the connection is back: null when committed, else why
    // it failed (the transaction still open, as after a failed COMMIT).
    void confirmarEnOtroHilo(bool copiar, std::function<void(const ErrorBD* fallo)> alTerminar);
    bool enOtroHilo() const { return m_hilo.joinable(); }

    // A write done over several turns of the event loop holds the
    // connection's transaction (EscrituraPorTurnos). Meanwhile every other
    // statement that writes or ends a transaction fails as busy, as when
    // another program holds the file, so that nothing of theirs joins a
    // transaction that may still be undone; what they read is the write
    // half done. Only the holder's own steps (`pasoPropio`) write.
    bool retenida() const { return m_retenida; }
    void retener(bool retenida);
    void pasoPropio(bool propio) { m_pasoPropio = propio; }
    // Room in memory for a whole table, up to a bound, while a held write
    // reads it over turns before emptying it: the engine then frees pages
    // it holds, where it would read each from the file in that one call.
    void memoriaParaVaciar(bool amplia);

    // The files this connection writes to are still the ones at its path:
    // the database not unlinked or replaced, its write-ahead log not taken
    // from under it. Another process removes the log when it believes
    // itself the file's last user, which it does once something in this
    // process has opened and closed the file outside the engine (the
    // engine's locks belong to the process and go with any descriptor
    // closed). Every write checks first; when they are gone, the
    // connection is closed without touching the file, Avisos tells, and
    // the write fails: nothing is written where no one would read it.
    bool archivosIntactos();
    // The connection was closed because its files were taken from under it.
    bool perdida() const { return m_perdida; }
    // Tells Avisos::baseDatosPerdida when that happens (the shared
    // connection does; a short-lived one that checks a file does not).
    void avisarSiSePierde() { m_avisar = true; }
    // `ruta` is the database file, or its log or shared-memory file, of
    // this connection: reading it outside the engine would drop its locks.
    bool esArchivoPropio(const QString& ruta) const;

  private:
    Hecho openWith(const QString& path, int flags);
    sqlite3_stmt* prepare(const QString& sql);
    void bind(sqlite3_stmt* stmt, const QVariantList& params, const QString& sql);
    [[noreturn]] void fail(const QString& sql);

    struct Identidad {
        unsigned long long dispositivo = 0, nodo = 0;
        bool operator==(const Identidad&) const = default;
    };
    static Identidad identidad(const QString& ruta);
    void recordarArchivos();
    // Before a statement that writes (or commits) outside a transaction.
    void exigirArchivos();
    // Throws, as busy, when the connection is held and `s` (null: a script)
    // is another's write.
    void rehusarSiRetenida(sqlite3_stmt* s, const QString& sql);
    // Throws, as busy, while the connection is in another thread's hands.
    void rehusarEnOtroHilo(const QString& sql);
    [[noreturn]] void rehusar(const QString& sql);
    void perder();

    sqlite3* m_db = nullptr;
    QString m_path;
    Identidad m_base, m_diario;
    bool m_perdida = false;
    bool m_avisar = false;
    QString m_exterior;  // the savepoint whose release commits
    bool m_busy = false;
    bool m_retenida = false;
    bool m_memoriaAmplia = false;
    bool m_pasoPropio = false;
    // The last statement was refused because the connection was held.
    bool m_rehusada = false;
    QString m_motivo;
    int m_espera = 5000;
    unsigned long long m_apertura = 0;
    QHash<QString, sqlite3_stmt*> m_cache;
    // The commit's thread, until the connection is taken back.
    std::thread m_hilo;
    // Gone with the object: what the other thread hands back finds it so.
    std::shared_ptr<char> m_vida = std::make_shared<char>();
};
