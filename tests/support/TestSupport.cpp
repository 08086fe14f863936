#include "TestSupport.h"

#include "app/Arranque.h"
#include "base/Ajustes.h"
#include "base/Cifrado.h"
#include "base/Conversiones.h"
#include "base/EstadoAplicacion.h"
#include "base/Reloj.h"
#include "db/BaseDatos.h"
#include "db/Conexion.h"
#include "db/Esquema.h"

#include <sqlite3.h>
#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <utility>

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

QString TestWorld::settingsFile() const {
    return configHome() + u"/Quelmo/Quelmo Mensajes SMS.ini"_s;
}

void TestWorld::writeSettings(const QByteArray& ini) const {
    QDir().mkpath(configHome() + u"/Quelmo"_s);
    prueba::escribir(settingsFile(), ini);
}

void TestWorld::reset() {
    EstadoAplicacion& g = estadoAplicacion();
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
    Ajustes::clear();
    QDir(appDir()).removeRecursively();
    QDir().mkpath(appDir());
}

QString TestWorld::baseNueva(const QString& nombre) {
    reset();
    const QString ruta = TestDb::createCurrent(root() + u'/' + nombre);
    TestDb::openShared(ruta);
    return ruta;
}

RelojFijo::RelojFijo(const QDateTime& at) : m_now(at) {
    Reloj::setSource([this] { return m_now; });
}

RelojFijo::~RelojFijo() {
    Reloj::setSource({});
}

InterfazGuionada::InterfazGuionada() {
    establecerInterfaz(this);
}
InterfazGuionada::~InterfazGuionada() {
    establecerInterfaz(nullptr);
}

int InterfazGuionada::msgBox(const QString& text, int style, const QString& title) {
    boxes.append({text, style, title});
    if (onMsgBox) std::exchange(onMsgBox, nullptr)();
    if (!answers.isEmpty()) return answers.takeFirst();
    return Msg::defaultAnswer(style);
}

QString InterfazGuionada::askPassword() {
    ++passwordPrompts;
    return passwords.isEmpty() ? QString() : passwords.takeFirst();
}

QString InterfazGuionada::inputBox(const QString& prompt, const QString& title,
                                   const QString& defaultText) {
    inputPrompts.append({prompt, 0, title});
    if (inputs.isEmpty()) return defaultText;
    return inputs.takeFirst();
}

QString InterfazGuionada::openFileName(const QString&, const QString&, const QString&) {
    return fileNames.isEmpty() ? QString() : fileNames.takeFirst();
}

void InterfazGuionada::openUrl(const QString& target) {
    openedUrls.append(target);
}

void InterfazGuionada::abrirSeleccionBaseDatos(const QString&) {
    ++selectDatabaseShown;
    if (onSelectDatabase) onSelectDatabase();
}

void InterfazGuionada::terminateWithoutDatabase() {
    throw TerminatedWithoutDatabase{};
}

EnCadaLinea::EnCadaLinea(std::function<void()> accion)
    : m_conexion(QObject::connect(&estadoAplicacion().log, &QAbstractItemModel::rowsInserted,
                                  [accion = std::move(accion)] { accion(); })) {}

EnCadaLinea::~EnCadaLinea() {
    QObject::disconnect(m_conexion);
}

namespace TestDb {

namespace {
QString crear(const QString& path, void (*esquema)(BaseDatos&)) {
    QFile::remove(path);
    BaseDatos db;
    if (const Hecho creada = db.create(path); !creada)
        qFatal("no se pudo crear %s", qPrintable(creada.motivo()));
    esquema(db);
    return path;
}
}  // namespace

void createWithRowWaiting(const QString& path, const QString& host, const QString& clave) {
    createCurrent(path);
    BaseDatos db;
    QVERIFY(db.open(path));
    db.exec(
        u"INSERT INTO Canales (Canal,Nombre,maxmen,Puerto,Host,usuario,clave,Principal) "
        u"VALUES (1,'Uno',160,80,?,'demo',?,1)"_s,
        {host, msCifrarClave(clave, true)});
    db.exec(
        u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) "
        u"VALUES ('2026-01-01 08:00:00',1,'0034111111111','hola',2)"_s);
}

QString createCurrent(const QString& path) {
    return crear(path, Esquema::crearActual);
}
QString createBaseline(const QString& path) {
    return crear(path, Esquema::crearBase);
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
    startProgram(world, p, args);
    return finishProgram(p, timeoutMs);
}

void startProgram(const TestWorld& world, QProcess& p, const QStringList& args) {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"XDG_CONFIG_HOME"_s, world.configHome());
    env.insert(u"XDG_DATA_HOME"_s, world.dataHome());
    env.insert(u"HOME"_s, world.root());
    p.setProcessEnvironment(env);
    p.start(programPath(), args);
}

ProcessResult finishProgram(QProcess& p, int timeoutMs) {
    ProcessResult r;
    // It may have ended already while the test's event loop turned.
    r.finished = p.waitForFinished(timeoutMs) ||
                 (p.state() == QProcess::NotRunning && p.error() != QProcess::FailedToStart);
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

namespace prueba {

BaseDatos& bd() {
    return Conexion();
}

void cuenta(int canal, const QString& nombre, const QVariantMap& columnas) {
    QVariantMap v{{u"maxmen"_s, 160},     {u"Puerto"_s, 80},    {u"Host"_s, u"h"_s},
                  {u"usuario"_s, u"u"_s}, {u"clave"_s, u"c"_s}, {u"Saldo"_s, 0},
                  {u"Principal"_s, 0}};
    v.insert(columnas);
    QVariantList valores{canal, nombre};
    valores.append(v.values());
    bd().exec(u"INSERT INTO Canales (Canal,Nombre,%1) VALUES (?,?%2)"_s.arg(
                  v.keys().join(u','), u",?"_s.repeated(v.size())),
              valores);
}

void contacto(const QString& codigo, const QString& alias, int canal, const QString& comentario) {
    bd().exec(u"INSERT INTO Abonados (Codigo,Alias,Comentario,Canal) VALUES (?,?,?,?)"_s,
              {codigo, alias, comentario, canal});
}

void lista(int grupo, const QString& nombre) {
    bd().exec(u"INSERT INTO Grupos (Grupo,Nombre) VALUES (?,?)"_s, {grupo, nombre});
}

void miembro(const QString& codigo, int grupo) {
    bd().exec(u"INSERT INTO AboGrup (Abonado,Grupo) VALUES (?,?)"_s, {codigo, grupo});
}

void programa(int codigo, const QString& columnas) {
    QVariantMap v{{u"TareaProgramada"_s, 1},
                  {u"Hora"_s, u"09:00"_s},
                  {u"FechaIni"_s, u"2006-01-01"_s},
                  {u"FechaFin"_s, u"9999-12-31"_s},
                  {u"Cada"_s, 1}};
    for (const QString& par : columnas.split(u' ', Qt::SkipEmptyParts))
        v[par.section(u'=', 0, 0)] = par.section(u'=', 1);
    v[u"Hora"_s] = QString(u"2006-01-02 " + v[u"Hora"_s].toString() + u":00");
    for (const QString& c : {u"FechaIni"_s, u"FechaFin"_s})
        v[c] = QString(v[c].toString() + u" 00:00:00");
    QVariantList valores{codigo};
    valores.append(v.values());
    bd().exec(u"INSERT INTO Automaticos (Codigo,%1) VALUES (?%2)"_s.arg(v.keys().join(u','),
                                                                        u",?"_s.repeated(v.size())),
              valores);
}

QDateTime en(const QString& texto) {
    const QDateTime d = QDateTime::fromString(texto, u"dd/MM/yyyy HH:mm:ss"_s);
    return d.isValid() ? d : QDateTime::fromString(texto, u"dd/MM/yyyy HH:mm"_s);
}

QStringList columna(const QString& sql, const QVariantList& params) {
    const ResultadoConsulta r = bd().query(sql, params);
    QStringList valores;
    for (int f = 0; f < r.recordCount(); ++f) valores.append(textoDe(r.value(f, 0)));
    return valores;
}

QStringList filas(const QString& sql, const QVariantList& params) {
    const ResultadoConsulta r = bd().query(sql, params);
    QStringList t;
    for (int f = 0; f < r.recordCount(); ++f) {
        QStringList celdas;
        for (int c = 0; c < r.columnCount(); ++c) celdas.append(textoDe(r.value(f, c)));
        t.append(celdas.join(u'|'));
    }
    return t;
}

long long cuantos(const QString& sql, const QVariantList& params) {
    return numeroDe(bd().query(sql, params).value(0, 0));
}

void cuentaPrincipal(const QString& host, const QString& clave, const QVariantMap& columnas) {
    QVariantMap v{{u"Host"_s, host},
                  {u"usuario"_s, u"demo"_s},
                  {u"clave"_s, msCifrarClave(clave, true)},
                  {u"Principal"_s, 1}};
    v.insert(columnas);
    cuenta(1, u"Principal"_s, v);
}

void pendiente(const QString& abonado, const QString& mensaje, const QVariant& canal,
               const QVariant& id) {
    bd().exec(
        u"INSERT INTO envios (Id,Registro,Canal,Abonado,Mensaje,intento) "
        u"VALUES (?,'2026-01-01 08:00:00',?,?,?,2)"_s,
        {id, canal, abonado, mensaje});
}

QString registro() {
    return estadoAplicacion().log.lines().join(u'\n');
}

bool enRegistro(const QString& texto) {
    return registro().contains(texto);
}

void escribir(const QString& ruta, const QByteArray& bytes) {
    QFile f(ruta);
    QVERIFY2(f.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(ruta));
    f.write(bytes);
}

QByteArray leer(const QString& ruta) {
    QFile f(ruta);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

QString shell(const QString& ruta, const QString& sql) {
    QProcess p;
    p.start(u"sqlite3"_s, {ruta, sql});
    if (!p.waitForFinished(20000) || p.exitCode() != 0)
        qFatal("sqlite3 failed: %s", p.readAllStandardError().constData());
    return QString::fromUtf8(p.readAllStandardOutput()).trimmed();
}

QString caja(int estilo, const QString& texto) {
    return QString::number(estilo) + u' ' + texto;
}

const QString kCajaBaseNoValida =
    u"16 La Base de Datos Seleccionada no es válida\nPor favor seleccione la Base de Datos "
    u"correcta de Quelmo Mensajes"_s;

QStringList cajas(const InterfazGuionada& ui) {
    QStringList t;
    for (const ShownBox& b : ui.boxes) t << caja(b.style, b.text);
    return t;
}

QString saldo(const Saldo& s) {
    switch (s.estado) {
        case Saldo::Estado::Conocido:
            return s.creditos;
        case Saldo::Estado::Denegado:
            return u"denegado"_s;
        case Saldo::Estado::Fallido:
            return u"fallido"_s;
        case Saldo::Estado::SinCuenta:
            return u"sin cuenta"_s;
        case Saldo::Estado::Error:
            return u"error"_s;
    }
    return {};
}

}  // namespace prueba

namespace prueba {
OtroPrograma::OtroPrograma(const QString& ruta) {
    if (sqlite3_open(ruta.toUtf8().constData(), &m_db) != SQLITE_OK ||
        sqlite3_exec(m_db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) != SQLITE_OK)
        qFatal("another connection could not take the lock of %s", qPrintable(ruta));
}
void filasOtroPrograma(const char* sola) {
    QTest::addColumn<bool>("ajeno");
    QTest::addColumn<bool>("cortar");
    QTest::newRow(sola) << false << false;
    QTest::newRow("another program holds the file a moment") << true << false;
    QTest::newRow("the file closed while it waits") << true << true;
}
void dejarPasar(std::optional<OtroPrograma>& otro, bool cortar,
                const std::function<bool()>& esperando) {
    if (!otro) return;
    QTest::qWait(150);
    QVERIFY2(esperando(), "the write went on while another program held the file");
    if (cortar) bd().close();
    otro->soltar();
}
void OtroPrograma::soltar() {
    if (!m_db) return;
    sqlite3_exec(m_db, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_close(m_db);
    m_db = nullptr;
}
}  // namespace prueba
