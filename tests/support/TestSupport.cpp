#include "TestSupport.h"

#include "app/Startup.h"
#include "base/AppState.h"
#include "base/Clock.h"
#include "base/Settings.h"
#include "db/Conexion.h"
#include "db/Database.h"
#include "db/Schema.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

TestWorld::TestWorld() {
    QDir(m_dir.path()).mkpath(u"config"_s);
    QDir(m_dir.path()).mkpath(u"data"_s);
    qputenv("XDG_CONFIG_HOME", configHome().toUtf8());
    qputenv("XDG_DATA_HOME", dataHome().toUtf8());
    qputenv("HOME", m_dir.path().toUtf8());
    qputenv("LC_ALL", "C.UTF-8");
}

QString TestWorld::appDir() const {
    return dataHome() + u"/Quelmo/Quelmo Mensajes SMS"_s;
}

void TestWorld::reset() {
    AppState& g = appState();
    Conexion().close();
    g.log.clear();
    g.gbEnviando = g.gbImportado = false;
    g.gsClaveAcceso = QString::fromUtf16(kSinClave);
    g.gsClaveIntroducida.clear();
    g.MovilCuenta.clear();
    g.gsVersionPlataforma.clear();
    g.gsSaldoCuenta.clear();
    g.gsDestinos.clear();
    g.giMaxLote = 0;
    Settings::clear();
    QDir(appDir()).removeRecursively();
    QDir().mkpath(appDir());
}

FixedClock::FixedClock(const QDateTime& at) : m_now(at) {
    Clock::setSource([this] { return m_now; });
}

FixedClock::~FixedClock() {
    Clock::setSource({});
}

ScriptedInterface::ScriptedInterface() {
    setUserInterface(this);
}
ScriptedInterface::~ScriptedInterface() {
    setUserInterface(nullptr);
}

int ScriptedInterface::msgBox(const QString& text, int style, const QString& title) {
    boxes.append({text, style, title});
    if (!answers.isEmpty()) return answers.takeFirst();
    return Msg::defaultAnswer(style);
}

QString ScriptedInterface::askPassword() {
    ++passwordPrompts;
    return passwords.isEmpty() ? QString() : passwords.takeFirst();
}

QString ScriptedInterface::inputBox(const QString& prompt, const QString& title,
                                    const QString& defaultText) {
    inputPrompts.append({prompt, 0, title});
    if (inputs.isEmpty()) return defaultText;
    return inputs.takeFirst();
}

QString ScriptedInterface::openFileName(const QString&, const QString&, const QString&) {
    return fileNames.isEmpty() ? QString() : fileNames.takeFirst();
}

void ScriptedInterface::showSelectDatabase() {
    ++selectDatabaseShown;
    if (onSelectDatabase) onSelectDatabase();
}

void ScriptedInterface::showFirstRunSetup() {
    ++firstRunShown;
}

void ScriptedInterface::openUrl(const QString& target) {
    openedUrls.append(target);
}

void ScriptedInterface::terminateWithoutDatabase() {
    throw TerminatedWithoutDatabase{};
}

void ScriptedInterface::processEvents() {
    if (onProcessEvents) onProcessEvents();
}

namespace TestDb {

namespace {
QString crear(const QString& path, void (*esquema)(Database&)) {
    QFile::remove(path);
    Database db;
    QString error;
    if (!db.create(path, &error))
        qFatal("no se pudo crear %s: %s", qPrintable(path), qPrintable(error));
    esquema(db);
    return path;
}
}  // namespace

QString createCurrent(const QString& path) {
    return crear(path, Schema::crearActual);
}
QString createBaseline(const QString& path) {
    return crear(path, Schema::crearBase);
}

void openShared(const QString& path) {
    if (!Conexion().open(path)) qFatal("no se pudo abrir %s", qPrintable(path));
}

}  // namespace TestDb

QString programPath() {
    return QStringLiteral(QUELMO_BIN_DIR "/quelmo-sms");
}

ProcessResult runProgram(const TestWorld& world, const QStringList& args, int timeoutMs) {
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"XDG_CONFIG_HOME"_s, world.configHome());
    env.insert(u"XDG_DATA_HOME"_s, world.dataHome());
    env.insert(u"HOME"_s, world.root());
    p.setProcessEnvironment(env);
    p.start(programPath(), args);
    ProcessResult r;
    r.finished = p.waitForFinished(timeoutMs);
    if (!r.finished) {
        p.kill();
        p.waitForFinished();
    }
    r.exitCode = p.exitCode();
    r.out = QString::fromUtf8(p.readAllStandardOutput());
    r.err = QString::fromUtf8(p.readAllStandardError());
    return r;
}

void prepareTestApplication() {
    nombrarAplicacion();
}
