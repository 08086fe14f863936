// Imports a watched file of 100,000 mixed lines through the driver, as
// headless mode does (every log line kept and echoed), and prints its rate
// beside the rate of the bare inserts of the same rows in one transaction,
// and the peak memory for files of 100,000, 300,000 and 1,000,000 lines and
// for a file whose first line is 1 GB long.
#include <QCoro/QCoroTask>
#include "SondaBucle.h"
#include "TestSupport.h"
#include "base/Conversiones.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"
#include "import/mdoImport.h"

#include <utime.h>
#include <QElapsedTimer>
#include <QFile>
#include <QTextStream>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

// Good lines, a bad account, a bad number and apostrophes, in turn;
// written as it goes, so the file never stands in memory.
void escribirFichero(QFile& f, int n, int* buenas, bool todasBuenas) {
    *buenas = 0;
    QByteArray b;
    for (int i = 0; i < n; ++i) {
        const QByteArray num = QByteArray::number(600000000 + i);
        switch (todasBuenas ? 0 : i % 10) {
            case 3:
                b += "9;" + num + ";Cuenta que no existe\r\n";
                break;
            case 6:
                b += "7;91" + num.mid(2) + ";Fijo, no movil\r\n";
                break;
            case 1:
            case 8:
                b += "7;" + num +
                     ";Cita en L'Hospitalet, ma\xc3\xb1"
                     "ana a las 10:30\r\n";
                ++*buenas;
                break;
            default:
                b += num + ";Su pedido " + QByteArray::number(i) + " ya est\xc3\xa1 en camino\r\n";
                ++*buenas;
        }
        if (b.size() > 60000) {
            f.write(b);
            b.clear();
        }
    }
    f.write(b);
}

long kbPico() {
    QFile f(u"/proc/self/status"_s);
    if (!f.open(QIODevice::ReadOnly)) return -1;
    for (const QByteArray& l : f.readAll().split('\n'))
        if (l.startsWith("VmHWM:")) return l.mid(6).trimmed().split(' ').first().toLong();
    return -1;
}

// The peak from here on: the kernel forgets the process's earlier one.
void reiniciarPico() {
    QFile f(u"/proc/self/clear_refs"_s);
    if (f.open(QIODevice::WriteOnly)) f.write("5");
}

// The largest stall of the event loop during the last import.
qint64 g_estanca = 0;

// A watched file of one line of `bytes` bytes and one good line after it.
void importarLineaLarga(const QString& ruta, qint64 bytes) {
    QFile f(ruta);
    if (!f.open(QIODevice::WriteOnly)) return;
    const QByteArray trozo(1 << 20, 'x');
    for (qint64 escrito = 0; escrito < bytes; escrito += trozo.size()) f.write(trozo);
    f.write("\n7;600123456;tras la linea larga\n");
    f.close();
    struct utimbuf t {};
    t.actime = t.modtime = ::time(nullptr) - 60;
    ::utime(QFile::encodeName(ruta).constData(), &t);
    QCoro::waitFor(msImportarFichero(ruta, false, true, u"-1"_s, false));
}

double importar(const QString& ruta, int n, int* buenas, bool todasBuenas) {
    QFile f(ruta);
    if (!f.open(QIODevice::WriteOnly)) return 0;
    escribirFichero(f, n, buenas, todasBuenas);
    f.close();
    struct utimbuf t {};
    t.actime = t.modtime = ::time(nullptr) - 60;
    ::utime(QFile::encodeName(ruta).constData(), &t);
    QElapsedTimer reloj;
    reloj.start();
    // The window's largest wait meanwhile: the import gives the loop a turn
    // between its stretches.
    Sonda sonda;
    sonda.empezar();
    QCoro::waitFor(msImportarFichero(ruta, false, true, u"-1"_s, false));
    g_estanca = sonda.terminar();
    return reloj.nsecsElapsed() / 1e9;
}

}  // namespace

int main(int argc, char** argv) {
    TestWorld world;
    QCoreApplication app(argc, argv);
    prepareTestApplication();
    world.reset();
    InterfazGuionada ui;
    TestDb::openShared(TestDb::createCurrent(world.root() + u"/bench.db"_s));
    BaseDatos& db = Conexion();
    for (int c : {5, 7})
        db.exec(u"INSERT INTO Canales (Canal,Nombre,Principal) VALUES (?,'c',?)"_s,
                {c, c == 5 ? 1 : 0});
    // As headless mode: each line also goes out, flushed, to a stream.
    QFile nulo(u"/dev/null"_s);
    if (!nulo.open(QIODevice::WriteOnly)) return 1;
    QTextStream eco(&nulo);
    RegistroActividad& log = estadoAplicacion().log;
    log.setEcho([&eco](const QString& l) { eco << l << Qt::endl; });
    const QString ruta = world.root() + u"/vigilado.txt"_s;
    auto cierre = [&log] { return log.last().mid(log.last().indexOf(u" - "_s) + 3); };
    int buenas = 0;

    // What the import itself holds: the log is kept short meanwhile, so
    // the peak shows the reader, not the log's lines.
    bool recortar = true;
    QObject::connect(&log, &RegistroActividad::lineAdded, &log, [&](int fila) {
        if (recortar && fila > 1000) log.clear();
    });
    const long inicio = kbPico();
    importar(ruta, 100000, &buenas, true);
    const QString cierreBuenas = cierre();
    const long tras100 = kbPico();
    db.exec(u"DELETE FROM envios"_s);
    importar(ruta, 300000, &buenas, true);
    const long tras300 = kbPico();
    db.exec(u"DELETE FROM envios"_s);
    // Memory follows the longest line allowed, never the file.
    reiniciarPico();
    importar(ruta, 1000000, &buenas, true);
    const QString cierreMillon = cierre();
    const long picoMillon = kbPico();
    db.exec(u"DELETE FROM envios"_s);
    reiniciarPico();
    importarLineaLarga(ruta, qint64(1) << 30);
    const QString cierreGigante = cierre();
    const long picoGigante = kbPico();
    db.exec(u"DELETE FROM envios"_s);
    recortar = false;
    log.clear();

    // The figure: the mixed file, every log line kept.
    constexpr int kLineas = 100000;
    const double segundos = importar(ruta, kLineas, &buenas, false);
    const QString cierreMixto = cierre();
    const long long filas = numeroDe(db.query(u"SELECT count(*) FROM envios"_s).value(0, 0));
    const int lineasLog = int(log.lines().size());
    const long conLog = kbPico();

    // The same rows, bare, in one transaction.
    const QVector<QString> copia =
        db.queryTexts(u"SELECT Registro,Canal,Abonado,Mensaje FROM envios ORDER BY Id"_s);
    db.exec(u"DELETE FROM envios"_s);
    QElapsedTimer reloj;
    reloj.start();
    db.begin();
    for (qsizetype i = 0; i + 3 < copia.size(); i += 4)
        db.exec(u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES (?,?,?,?,2)"_s,
                {copia.at(i), copia.at(i + 1).toInt(), copia.at(i + 2), copia.at(i + 3)});
    db.commit();
    const double desnudo = reloj.nsecsElapsed() / 1e9;

    std::printf("import of %d mixed lines through the driver (watched file, log kept and echoed)\n",
                kLineas);
    std::printf("  closing line: %s (%lld rows queued, %d log lines)\n", qPrintable(cierreMixto),
                filas, lineasLog);
    std::printf("  time: %.2f s -> %.0f lines/s, largest stall %lld ms\n", segundos,
                kLineas / segundos, static_cast<long long>(g_estanca));
    std::printf("bare inserts of the same %lld rows in one transaction: %.2f s -> %.0f rows/s\n",
                filas, desnudo, double(filas) / desnudo);
    std::printf("100000 good lines: %s\n", qPrintable(cierreBuenas));
    std::printf(
        "peak RSS with the log kept short: %ld kB at start, %ld kB after 100000 lines, "
        "%ld kB after 300000 lines\n",
        inicio, tras100, tras300);
    std::printf("peak RSS after the mixed file with its %d log lines kept: %ld kB\n", lineasLog,
                conLog);
    std::printf("peak RSS of 1000000 good lines: %ld kB (%s)\n", picoMillon,
                qPrintable(cierreMillon));
    std::printf("peak RSS of a 1 GB line and a good one: %ld kB (%s)\n", picoGigante,
                qPrintable(cierreGigante));
    const bool bien = cierreBuenas == u"Importados 100000 Mensajes de 100000"_s &&
                      cierreMillon == u"Importados 1000000 Mensajes de 1000000"_s &&
                      cierreGigante == u"Importados 1 Mensajes de 2"_s &&
                      cierreMixto == u"Importados %1 Mensajes de %2"_s.arg(buenas).arg(kLineas);
    return bien ? 0 : 1;
}
