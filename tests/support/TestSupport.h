#pragma once

#include "base/Conversiones.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazUsuario.h"
#include "base/Pantallas.h"
#include "db/BaseDatos.h"
#include "db/Conexion.h"
#include "delivery/mdoSendRavion.h"

#include <QCoro/QCoroTask>
#include <QDateTime>
#include <QEventLoop>
#include <QList>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariantMap>
#include <QtTest>
#include <exception>
#include <functional>
#include <optional>

// A temporary home for one test executable: XDG_CONFIG_HOME, XDG_DATA_HOME
// and HOME point into it, so no test touches the real home.
class TestWorld {
  public:
    TestWorld();
    QString root() const { return m_dir.path(); }
    QString configHome() const { return m_dir.path() + QStringLiteral("/config"); }
    QString dataHome() const { return m_dir.path() + QStringLiteral("/data"); }
    // The application directory inside the data home.
    QString appDir() const;
    // The settings file a program started in this world reads, written whole.
    QString settingsFile() const;
    void writeSettings(const QByteArray& ini) const;
    // A fresh settings store and an empty application directory, and the
    // shared connection closed (call in each test's init).
    void reset();
    // reset(), then a new database `nombre` in the root as the shared
    // connection; its path.
    QString baseNueva(const QString& nombre);

  private:
    QTemporaryDir m_dir;
};

// A test class of one executable: the temporary world its main built.
class Prueba : public QObject {
  public:
    explicit Prueba(TestWorld& w) : world(w) {}

  protected:
    TestWorld& world;
};

// The clock pinned to an instant that the test moves.
class RelojFijo {
  public:
    explicit RelojFijo(const QDateTime& at);
    ~RelojFijo();
    void set(const QDateTime& at) { m_now = at; }
    void advance(int seconds) { m_now = m_now.addSecs(seconds); }
    QDateTime now() const { return m_now; }

  private:
    QDateTime m_now;
};

// A message box that the scripted interface saw.
struct ShownBox {
    QString text;
    int style;
    QString title;
};

// Answers questions from a script; without one, a box takes its default
// answer. It records every box, prompt and address it was given.
class InterfazGuionada : public InterfazUsuario {
  public:
    InterfazGuionada();
    ~InterfazGuionada() override;

    QList<int> answers;                      // next answers to message boxes, in order
    QStringList passwords;                   // next texts typed at the password prompt
    QStringList inputs;                      // next answers to input boxes (a null string cancels)
    QStringList fileNames;                   // next files chosen in file dialogs (empty cancels)
    std::function<void()> onSelectDatabase;  // what the selection screen does
    std::function<void()> onMsgBox;          // runs once while the next box is shown

    QList<ShownBox> boxes;
    QList<ShownBox> inputPrompts;  // prompt, 0, title of each input box
    int passwordPrompts = 0;
    int selectDatabaseShown = 0;
    int firstRunShown = 0;
    QStringList openedUrls;

    int msgBox(const QString& text, int style, const QString& title) override;
    QString askPassword() override;
    QString inputBox(const QString& prompt, const QString& title,
                     const QString& defaultText) override;
    QString openFileName(const QString& caption, const QString& dir,
                         const QString& filter) override;
    void openUrl(const QString& target) override;
    [[noreturn]] void terminateWithoutDatabase() override;
    // The two modal screens the core asks for stand in as counters.
    void altaCuenta() override { ++firstRunShown; }
    // The principal account's editor is whatever the test registered.
    void completarCuentaPrincipal() override {
        Pantallas::abrir(QStringLiteral("frmNewCanal.Principal"));
    }

  protected:
    void abrirSeleccionBaseDatos(const QString&) override;
};

// What terminateWithoutDatabase throws in tests instead of ending the process.
struct TerminatedWithoutDatabase {};

// Runs `accion` at each line the activity log takes, inside the routine
// that logs: where a test acts in the middle of a routine.
class EnCadaLinea {
  public:
    explicit EnCadaLinea(std::function<void()> accion);
    ~EnCadaLinea();
    EnCadaLinea(const EnCadaLinea&) = delete;
    EnCadaLinea& operator=(const EnCadaLinea&) = delete;

  private:
    QMetaObject::Connection m_conexion;
};

namespace TestDb {
// New database files of either generation; the path of the file.
QString createCurrent(const QString& path);
QString createBaseline(const QString& path);
// Opens `path` as the shared connection (fails the test if it can't).
void openShared(const QString& path);
// A database file at `path` whose principal account 1 ('Uno', user "demo")
// speaks to `host` with password `clave`, and one message waiting for it
// in the outbox.
void createWithRowWaiting(const QString& path, const QString& host,
                          const QString& clave = QStringLiteral("demo"));
}  // namespace TestDb

// Runs `quelmo-sms` with arguments in the test world; collects its output.
struct ProcessResult {
    int exitCode = -1;
    bool finished = false;
    QString out;
    QString err;
};
ProcessResult runProgram(const TestWorld& world, const QStringList& args, int timeoutMs = 30000);
// Starts it without waiting, for a test that acts while it runs.
void startProgram(const TestWorld& world, QProcess& p, const QStringList& args);
// Waits for a started one and collects its output.
ProcessResult finishProgram(QProcess& p, int timeoutMs = 30000);
QString programPath();

// A QTest main that builds the temporary world before anything reads the
// settings store or the data directory.
#define QUELMO_TEST_MAIN_WITH(TestClass, AppClass) \
    int main(int argc, char** argv) {              \
        TestWorld world;                           \
        AppClass app(argc, argv);                  \
        prepareTestApplication();                  \
        TestClass tc(world);                       \
        QTEST_SET_MAIN_SOURCE_PATH                 \
        return QTest::qExec(&tc, argc, argv);      \
    }
#define QUELMO_TEST_MAIN(TestClass) QUELMO_TEST_MAIN_WITH(TestClass, QCoreApplication)

void prepareTestApplication();

// Rows and readings of the shared connection that tests of every subsystem
// need.
namespace prueba {

// Another program holding the file's write lock, from its construction
// until `soltar` (or its end), as a script in the sqlite3 shell would.
class OtroPrograma {
  public:
    explicit OtroPrograma(const QString& ruta);
    ~OtroPrograma() { soltar(); }
    OtroPrograma(const OtroPrograma&) = delete;
    OtroPrograma& operator=(const OtroPrograma&) = delete;
    void soltar();

  private:
    sqlite3* m_db = nullptr;
};

// Another program holding the shared connection's file when `ajeno`.
inline std::optional<OtroPrograma> otroPrograma(bool ajeno, const QString& ruta) {
    return ajeno ? std::optional<OtroPrograma>(std::in_place, ruta) : std::nullopt;
}
// The rows of a test of a write over turns, in columns "ajeno" and
// "cortar": `sola` alone; another program holding the file a moment; the
// file closed while the write waits for it.
void filasOtroPrograma(const char* sola);
// With another program holding the file (`otro` set), a write of ours
// waits for it a moment, `esperando` holding meanwhile; then the file is
// closed when `cortar`, and the other program lets go.
void dejarPasar(std::optional<OtroPrograma>& otro, bool cortar,
                const std::function<bool()>& esperando);

// Awaits a coroutine of the program's from a test, the event loop turning
// meanwhile, and rethrows what it threw (QCoro's own waitFor would wait
// for ever on a coroutine that threw).
template <typename T>
T esperar(QCoro::Task<T> tarea) {
    QEventLoop bucle;
    bool fin = false;
    std::exception_ptr fallo;
    std::optional<T> valor;
    const auto envoltura = [&]() -> QCoro::Task<> {
        try {
            valor.emplace(co_await tarea);
        } catch (...) {
            fallo = std::current_exception();
        }
        fin = true;
        bucle.quit();
    };
    QCoro::Task<> enCurso = envoltura();
    if (!fin) bucle.exec();
    if (fallo) std::rethrow_exception(fallo);
    return std::move(*valor);
}

BaseDatos& bd();

// Account `canal` named `nombre`: 160 characters a text, port 80, host "h",
// user "u", key "c", no credit, not the main one; `columnas` change those
// or fill others.
void cuenta(int canal, const QString& nombre, const QVariantMap& columnas = {});
void contacto(const QString& codigo, const QString& alias, int canal,
              const QString& comentario = QString());
void lista(int grupo, const QString& nombre);
void miembro(const QString& codigo, int grupo);

// Writes schedule `codigo`: on, at 09:00, started long ago and without an
// end, changed by the "Column=value" pairs of `columnas` (dates yyyy-MM-dd,
// Hora HH:mm). Hora is stored as the editor stores it, a full date and time.
void programa(int codigo, const QString& columnas);
// "dd/MM/yyyy HH:mm" or with seconds: a local date and time.
QDateTime en(const QString& texto);

// The first column of a query, as text.
QStringList columna(const QString& sql, const QVariantList& params = {});
// Every row of a query as "a|b|c".
QStringList filas(const QString& sql, const QVariantList& params = {});
long long cuantos(const QString& sql, const QVariantList& params = {});

// Principal account 1 named "Principal" (user "demo", password `clave`)
// that speaks to `host`; `columnas` change those or fill others.
void cuentaPrincipal(const QString& host, const QString& clave = QStringLiteral("demo"),
                     const QVariantMap& columnas = {});
// A message to `abonado` waiting in the outbox since 2026-01-01 08:00
// with both attempts left.
void pendiente(const QString& abonado, const QString& mensaje = QStringLiteral("hola"),
               const QVariant& canal = 1, const QVariant& id = {});

// The activity log as one text, one line a line, and whether it holds `texto`.
QString registro();
bool enRegistro(const QString& texto);

// A file's bytes written whole (fails the test if it can't), and read back.
void escribir(const QString& ruta, const QByteArray& bytes);
QByteArray leer(const QString& ruta);

// What another program, the sqlite3 shell, prints for `sql` on the file
// at `ruta` (trimmed); a failing shell ends the run.
QString shell(const QString& ruta, const QString& sql);

// Message boxes as "style text", so one comparison checks both.
QString caja(int estilo, const QString& texto);
QStringList cajas(const InterfazGuionada& ui);
// The box of a routine that found the open file is no database of ours.
extern const QString kCajaBaseNoValida;

// A balance query's outcome in one word, or its credits when known.
QString saldo(const Saldo& s);

}  // namespace prueba
