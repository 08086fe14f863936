// The file dialog in the folder of the open database, then another program
// that writes the database and ends: the window's writes must still reach
// the file. Every open() of the process is watched, and one of the
// database's files opened by anything but the engine fails the test (its
// close would drop the engine's locks, and the other program would then
// take the database's log away from under the window).
#include "TestSupportGui.h"
#include "app/InterfazGrafica.h"
#include "base/Ajustes.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <QFileDialog>
#include <QMutex>
#include <atomic>
#include <cstdarg>
#include <cstring>

using namespace Qt::StringLiterals;
using namespace prueba;

namespace {

std::atomic<bool> g_vigilando{false};
QByteArray g_prefijo;  // the database's path: its log and shared memory share it
QMutex g_cerrojo;
QStringList g_ajenas;  // what opened one of its files, and which

bool delMotor(void* llamador) {
    Dl_info info{};
    return dladdr(llamador, &info) != 0 && info.dli_fname &&
           std::strstr(info.dli_fname, "libsqlite3") != nullptr;
}

// Notes an open of one of the database's files by anything but the engine;
// the mode the call passes after its flags, if any.
mode_t anotar(const char* ruta, int flags, va_list& args, void* llamador) {
    const mode_t modo = (flags & (O_CREAT | O_TMPFILE)) ? mode_t(va_arg(args, int)) : 0;
    if (!g_vigilando.load() || !ruta ||
        std::strncmp(ruta, g_prefijo.constData(), size_t(g_prefijo.size())) != 0 ||
        delMotor(llamador))
        return modo;
    Dl_info info{};
    dladdr(llamador, &info);
    const QMutexLocker bloqueo(&g_cerrojo);
    g_ajenas.append(QString::fromUtf8(ruta) + u" desde "_s +
                    QString::fromUtf8(info.dli_fname ? info.dli_fname : "?"));
    return modo;
}

template <typename F>
F real(const char* nombre) {
    return reinterpret_cast<F>(dlsym(RTLD_NEXT, nombre));
}

}  // namespace

// Every way a library opens a file by its name goes through one of these;
// each notes the call and reads the mode that may follow the flags.
#define QUELMO_ANOTAR(ruta, flags)                                           \
    va_list a;                                                               \
    va_start(a, flags);                                                      \
    const mode_t modo = anotar(ruta, flags, a, __builtin_return_address(0)); \
    va_end(a)
extern "C" int open(const char* ruta, int flags, ...) {
    QUELMO_ANOTAR(ruta, flags);
    static const auto f = real<int (*)(const char*, int, ...)>("open");
    return f(ruta, flags, modo);
}
extern "C" int open64(const char* ruta, int flags, ...) {
    QUELMO_ANOTAR(ruta, flags);
    static const auto f = real<int (*)(const char*, int, ...)>("open64");
    return f(ruta, flags, modo);
}
extern "C" int openat(int dir, const char* ruta, int flags, ...) {
    QUELMO_ANOTAR(ruta, flags);
    static const auto f = real<int (*)(int, const char*, int, ...)>("openat");
    return f(dir, ruta, flags, modo);
}
extern "C" int openat64(int dir, const char* ruta, int flags, ...) {
    QUELMO_ANOTAR(ruta, flags);
    static const auto f = real<int (*)(int, const char*, int, ...)>("openat64");
    return f(dir, ruta, flags, modo);
}

class TestDialogoArchivos : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private Q_SLOTS:
    void init() { world.reset(); }

    void theDialogLeavesTheDatabaseToTheEngine() {
        const QString ruta = TestDb::createCurrent(world.appDir() + u"/mensajes.db"_s);
        TestDb::openShared(ruta);
        cuenta(1, u"Uno"_s, {{u"Principal"_s, 1}});
        pendiente(u"0034600000001"_s, u"antes"_s);
        Ajustes::saveSetting(u"BD"_s, u"Path"_s, ruta);
        Ajustes::sync();

        g_prefijo = QFile::encodeName(QFileInfo(ruta).canonicalFilePath());
        g_ajenas.clear();
        g_vigilando = true;
        InterfazGrafica ventana;
        // As the user did: the folder listed in detail, with its types and
        // icons, for a while; then Escape.
        alAbrirModal([](QDialog* d) {
            auto* dialogo = qobject_cast<QFileDialog*>(d);
            QVERIFY(dialogo);
            dialogo->setViewMode(QFileDialog::Detail);
            QTest::qWait(1500);
            QTest::keyClick(d, Qt::Key_Escape);
        });
        const QString elegido =
            ventana.openFileName(u"Importar"_s, world.appDir(), u"Todos los ficheros (*.*)"_s);
        g_vigilando = false;
        QVERIFY(elegido.isEmpty());
        QCOMPARE(g_ajenas, QStringList{});

        // A script sends while the window runs, and ends.
        const ProcessResult envio = runProgram(world, {u"--send"_s, u"600999777"_s, u"X"_s});
        QCOMPARE(envio.exitCode, 0);
        QVERIFY(QFile::exists(ruta + u"-wal"_s));
        QVERIFY(Conexion().archivosIntactos());
        pendiente(u"0034600000002"_s, u"despues"_s);

        // What any other program reads now: the window's rows and the script's.
        QCOMPARE(shell(ruta, u"SELECT Mensaje FROM envios ORDER BY Id"_s), u"antes\nX\ndespues"_s);
    }
};

QUELMO_GUI_TEST_MAIN(TestDialogoArchivos)
#include "test_dialogo_archivos.moc"
