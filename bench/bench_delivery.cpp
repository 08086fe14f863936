// Drains an outbox of 10,000 rows for one account, 500 a batch, through the
// platform simulator, and prints where the time of a batch goes. The
// one-second pacing between exchanges is measured apart and left out. Beside
// its rate: the rate of the bare SQL of the same results, and the ratio.
#include "SimuladorPrueba.h"
#include "TestSupport.h"
#include "base/Cifrado.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"
#include "delivery/mdoSendRavion.h"

#include <QElapsedTimer>
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
        msEnviarLote(1, false, &m);
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
    return enviadas == kFilas ? 0 : 1;
}
