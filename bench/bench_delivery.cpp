// Drains an outbox of 10,000 rows for one account, 500 a batch, through the
// platform simulator, and prints where the time of a batch goes. The
// one-second pacing between exchanges is measured apart and left out. Beside
// its rate: the rate of the bare SQL of the same results, and the ratio.
// Then the same outbox end to end through the transmitter in continuous
// mode, pacing included, for one account and for ten side by side, beside
// what the normal cycle makes of those runs.
#include "SimuladorPrueba.h"
#include "TestSupport.h"
#include "app/Transmisor.h"
#include "base/Ajustes.h"
#include "base/Cifrado.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"
#include "delivery/mdoSendRavion.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char** argv) {
    TestWorld world;
    QCoreApplication app(argc, argv);
    prepareTestApplication();
    world.reset();
    InterfazGuionada ui;
    constexpr int kFilas = 10000;
    constexpr int kLote = 500;

    SimuladorPrueba sim(world.root(),
                        u"[cuenta1]\nusuario=demo\nclave=demo\nsaldo=1000000\n"
                        "movil=0034600123456\n"_s);
    if (!sim.listo()) {
        std::fprintf(stderr, "the platform simulator did not start\n");
        return 1;
    }
    TestDb::openShared(TestDb::createCurrent(world.root() + u"/bench.db"_s));
    BaseDatos& db = Conexion();
    db.exec(u"update opciones set maxlote=? where id=1"_s, {kLote});
    db.exec(
        u"INSERT INTO Canales (Canal,Nombre,Host,usuario,clave,Saldo,Principal,Remitente,"
        "remopc,imptextos) VALUES (1,'Banco',?,'demo',?,0,1,'Tienda ',0,0)"_s,
        {sim.host(), msCifrarClave(u"demo"_s, true)});
    const QString texto =
        u"Su cita del día 12 a las 10:30 está confirmada. Responda NO para "
        "anularla. Gracias & hasta pronto <ñ>"_s;
    const auto llenar = [&] {
        db.begin();
        for (int i = 0; i < kFilas; ++i)
            db.exec(
                u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES (?,1,?,?,2)"_s,
                {QDateTime::currentDateTime(), u"6%1"_s.arg(i, 8, 10, QChar(u'0')), texto});
        db.commit();
    };
    llenar();

    MedidaLote suma;
    qint64 total = 0;
    int lotes = 0;
    QElapsedTimer reloj;
    while (db.query(u"select count(*) from envios"_s).value(0, 0).toInt() > 0) {
        estadoAplicacion().log.clear();
        reloj.start();
        MedidaLote m;
        QCoro::waitFor(msEnviarLote(1, false, &m));
        total += reloj.nsecsElapsed();
        if (m.http == 0) {
            std::fprintf(stderr, "a batch made no exchange: %s\n",
                         qPrintable(estadoAplicacion().log.last()));
            return 1;
        }
        suma.lectura += m.lectura;
        suma.carga += m.carga;
        suma.pausa += m.pausa;
        suma.documento += m.documento;
        suma.http += m.http;
        suma.respuesta += m.respuesta;
        suma.escritura += m.escritura;
        ++lotes;
    }
    const int enviadas = db.query(u"select count(*) from HEnvios"_s).value(0, 0).toInt();
    const double segundos = double(total - suma.pausa) / 1e9;

    // The floor under the batch sender: the same results as bare SQL, every
    // history insert and outbox delete of the same rows in one transaction.
    llenar();
    const ResultadoConsulta filas = db.query(u"select Id, Abonado, Mensaje from envios"_s);
    reloj.start();
    db.begin();
    for (int i = 0; i < filas.recordCount(); ++i) {
        db.exec(
            u"insert into HEnvios (Abonado,Registro,Mensaje,Resultado,Canal,crem) Values (?,?,?,?,?,?)"_s,
            {filas.value(i, 1), QDateTime::currentDateTime(), filas.value(i, 2),
             u"Mensaje aceptado"_s, 1, u"Banco (Tienda)"_s});
        db.exec(u"delete from envios where id = ?"_s, {filas.value(i, 0)});
    }
    db.commit();
    const double segundosSql = double(reloj.nsecsElapsed()) / 1e9;
    const auto ms = [&](qint64 ns) { return double(ns) / lotes / 1e6; };
    std::printf("bench_delivery: %d rows, %d batches of %d, one account, over loopback\n", enviadas,
                lotes, kLote);
    std::printf("%.0f rows/s (excluding pacing; %.2f s of work, %.2f s of pacing)\n",
                enviadas / segundos, segundos, double(suma.pausa) / 1e9);
    std::printf(
        "%.0f rows/s as bare SQL of the same results (%.2f s); the sender reaches %.1f%% "
        "of it\n",
        filas.recordCount() / segundosSql, segundosSql,
        100.0 * (enviadas / segundos) / (filas.recordCount() / segundosSql));
    std::printf("one %d-row exchange, mean of %d:\n", kLote, lotes);
    std::printf("  database read   %8.2f ms\n", ms(suma.lectura));
    std::printf("  document build  %8.2f ms (items %.2f ms + XML %.2f ms)\n",
                ms(suma.carga + suma.documento), ms(suma.carga), ms(suma.documento));
    std::printf("  HTTP            %8.2f ms\n", ms(suma.http));
    std::printf("  reply parse     %8.2f ms\n", ms(suma.respuesta));
    std::printf("  result writes   %8.2f ms\n", ms(suma.escritura));
    std::printf("  total           %8.2f ms beyond the pacing\n",
                double(total - suma.pausa) / lotes / 1e6);

    // Continuous mode: from the first tick until the transmitter settles on a
    // whole interval again, which it does once the outbox is empty. With
    // several accounts their exchanges go side by side, each paced on its own.
    Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
    Ajustes::saveSetting(u"Tr"_s, u"Continuo"_s, u"1"_s);
    struct Drenaje {
        int filas = 0;
        int ejecuciones = 0;
        double segundos = 0;
    };
    const auto drenar = [&](int cuentas) {
        for (int c = 2; c <= cuentas; ++c)
            db.exec(
                u"INSERT OR IGNORE INTO Canales (Canal,Nombre,Host,usuario,clave,Saldo,Principal,"
                "Remitente,remopc,imptextos) VALUES (?,'Banco',?,'demo',?,0,0,'Tienda ',0,0)"_s,
                {c, sim.host(), msCifrarClave(u"demo"_s, true)});
        db.exec(u"delete from envios"_s);
        db.begin();
        for (int c = 1; c <= cuentas; ++c)
            for (int i = 0; i < kFilas; ++i)
                db.exec(
                    u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES (?,?,?,?,2)"_s,
                    {QDateTime::currentDateTime(), c, u"6%1"_s.arg(i, 8, 10, QChar(u'0')), texto});
        db.commit();
        Transmisor transmisor;
        transmisor.armarTemporizador();
        Drenaje d;
        QEventLoop bucle;
        QObject::connect(&transmisor, &Transmisor::tickTerminado, &bucle, [&] {
            ++d.ejecuciones;
            if (transmisor.Timer1().isActive()) bucle.quit();
        });
        reloj.start();
        transmisor.msForzarEnvio();
        bucle.exec();
        d.segundos = double(reloj.nsecsElapsed()) / 1e9;
        transmisor.detener();
        d.filas = cuentas * kFilas - db.query(u"select count(*) from envios"_s).value(0, 0).toInt();
        return d;
    };
    const int intervalo = [] {
        Transmisor t;
        t.armarTemporizador();
        return t.intervaloSegundos();
    }();
    const Drenaje una = drenar(1);
    const Drenaje diez = drenar(10);
    // The normal cycle makes the same runs with a whole interval between
    // them: one batch a run for each account.
    const auto normal = [&](int segundosIntervalo) {
        const double s = una.segundos + double(una.ejecuciones - 1) * segundosIntervalo;
        std::printf("  interval %2d s: %8.1f rows/s (%d rows in %.0f s)\n", segundosIntervalo,
                    una.filas / s, una.filas, s);
    };
    std::printf("continuous mode (Tr/Continuo=1), end to end through the transmitter:\n");
    std::printf("  one account:  %8.1f rows/s (%d rows in %d runs, %.2f s, pacing included)\n",
                una.filas / una.segundos, una.filas, una.ejecuciones, una.segundos);
    std::printf("  ten accounts: %8.1f rows/s (%d rows in %d runs, %.2f s), %.1f times one\n",
                diez.filas / diez.segundos, diez.filas, diez.ejecuciones, diez.segundos,
                (diez.filas / diez.segundos) / (una.filas / una.segundos));
    std::printf("normal cycle, one account, the same runs a whole interval apart:\n");
    normal(intervalo);
    normal(15);
    return enviadas == kFilas && una.filas == kFilas && diez.filas == 10 * kFilas ? 0 : 1;
}
