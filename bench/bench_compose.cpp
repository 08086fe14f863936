// Figures of the compose screen: opening it over a large outbox, its
// refresh with and without a change in the row count, and a key typed in
// the recipient box over a large address book.
#include "TestSupportGui.h"
#include "base/EstadoAplicacion.h"
#include "composition/crtAutoComplete.h"
#include "composition/frmEnvio.h"
#include "db/Conexion.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QTimer>
#include <QTreeView>
#include <cstdio>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {

constexpr int kFilas = 100000;
constexpr int kContactos = 20000;

void llenarBandeja(BaseDatos& db) {
    db.exec(
        u"INSERT INTO Canales (Canal,Nombre,Saldo,Principal,Remitente) VALUES "
        u"(1,'Cuenta_1',500,1,'Juan'),(2,'Cuenta_2',20,0,'')"_s);
    db.begin();
    for (int i = 0; i < kFilas; ++i)
        db.exec(u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES (?,?,?,?,2)"_s,
                {u"2026-11-23 10:%1:%2"_s.arg(i / 60 % 60, 2, 10, QChar(u'0'))
                     .arg(i % 60, 2, 10, QChar(u'0')),
                 1 + i % 2, u"0034%1"_s.arg(600000000 + i),
                 u"Mensaje número %1 de la prueba de la bandeja de salida"_s.arg(i)});
    db.commit();
}

QString libreta() {
    static const char16_t* nombres[] = {u"Ana",        u"Andrés", u"Beatriz", u"Carlos", u"Marta",
                                        u"María José", u"Pedro",  u"Lucía",   u"Jorge",  u"Elena"};
    QStringList alias;
    for (int i = 0; i < kContactos; ++i)
        alias.append(QString::fromUtf16(nombres[i % 10]) + u' ' + QString::number(i));
    alias.sort(Qt::CaseInsensitive);
    return alias.join(u';');
}

void refrescar(frmEnvio& f) {
    QMetaObject::invokeMethod(f.findChild<QTimer*>(u"Timer1"_s), "timeout");
}

// Wall time, and the processor time of this process: the machine is
// shared, so the second tells what the work itself costs.
struct Medida {
    QElapsedTimer reloj;
    std::clock_t cpu = 0;
    void restart() {
        reloj.restart();
        cpu = std::clock();
    }
};

void cifra(const char* que, const Medida& m, double limite, int vueltas = 1) {
    const double pared = m.reloj.nsecsElapsed() / 1e6 / vueltas;
    const double cpu = double(std::clock() - m.cpu) * 1000.0 / CLOCKS_PER_SEC / vueltas;
    std::printf("%-54s %8.1f ms wall %8.1f ms cpu  (target < %.0f ms)\n", que, pared, cpu, limite);
}

}  // namespace

int main(int argc, char** argv) {
    BancoPantallas banco(argc, argv);
    BaseDatos& db = Conexion();
    llenarBandeja(db);

    Medida t;
    t.restart();
    auto* f = new frmEnvio();
    f->show();
    QCoreApplication::processEvents();
    cifra("open the screen, 100,000 outbox rows", t, 1000);
    const int filas = f->findChild<QTreeView*>(u"ListView1"_s)->model()->rowCount();

    constexpr int kVueltas = 20;
    t.restart();
    for (int i = 0; i < kVueltas; ++i) {
        refrescar(*f);
        QCoreApplication::processEvents();
    }
    cifra("refresh, row count unchanged (mean of 20)", t, 50, kVueltas);

    db.exec(
        u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES "
        u"('2026-11-23 11:00:00',1,'0034699999999','una más',2)"_s);
    t.restart();
    refrescar(*f);
    QCoreApplication::processEvents();
    cifra("refresh after one row came", t, 50);

    // What a drain does every few seconds: a batch of 500 leaves.
    db.exec(u"DELETE FROM envios WHERE Id IN (SELECT Id FROM envios ORDER BY Id LIMIT 500)"_s);
    t.restart();
    refrescar(*f);
    QCoreApplication::processEvents();
    cifra("refresh after a batch of 500 left", t, 50);
    const int filasDespues = f->findChild<QTreeView*>(u"ListView1"_s)->model()->rowCount();

    crtAutoComplete caja;
    caja.setSearchList(libreta());
    caja.show();
    QLineEdit* texto = caja.Text1();
    texto->setFocus();
    QTest::keyClicks(texto, u"Ma"_s);
    t.restart();
    QTest::keyClick(texto, Qt::Key_R);
    QCoreApplication::processEvents();
    cifra("key in the recipient box, 20,000 contacts (\"Mar\")", t, 50);
    const qsizetype ofrecidosMar = caja.ofrecidos().size();
    texto->clear();
    t.restart();
    QTest::keyClick(texto, Qt::Key_A);
    QCoreApplication::processEvents();
    cifra("key in the recipient box, 20,000 contacts (\"a\")", t, 50);
    std::printf(
        "rows shown %d, after insert and batch %d; names offered for \"Mar\" %lld, for \"a\" "
        "%lld\n",
        filas, filasDespues, qlonglong(ofrecidosMar), qlonglong(caja.ofrecidos().size()));
    delete f;
    return 0;
}
