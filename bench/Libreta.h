// What the benches of the address book share: a book of contacts with
// names that the lists' rule has work to do on, half of them in list 0,
// and a figure printed with the largest stall of the window's event loop.
#pragma once

#include "SondaBucle.h"
#include "db/BaseDatos.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <cstdio>

// `contactos` contacts instead of those there were, their names in a
// scrambled order, with accents, "ñ" and case; the odd numbers in list 0.
inline void llenarLibreta(BaseDatos& bd, int contactos) {
    using namespace Qt::StringLiterals;
    bd.begin();
    bd.exec(u"DELETE FROM AboGrup"_s);
    bd.exec(u"DELETE FROM Abonados"_s);
    bd.exec(
        u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < ?), "
        u"k(k) AS (SELECT (i * 7919) % ? FROM n) "
        u"INSERT INTO Abonados (Codigo,Alias,Comentario,Canal) "
        u"SELECT '0034' || (600000000 + k), "
        u"CASE k % 10 WHEN 0 THEN 'Álvaro' WHEN 1 THEN 'beatriz' WHEN 2 THEN 'Carmen' "
        u"WHEN 3 THEN 'David' WHEN 4 THEN 'Elena' WHEN 5 THEN 'Ñuño' WHEN 6 THEN 'óscar' "
        u"WHEN 7 THEN 'Pilar' WHEN 8 THEN 'Quique' ELSE 'Rosa' END || ' ' || printf('%06d', k), "
        u"'comentario ' || (k % 977), k % 3 FROM k"_s,
        {contactos - 1, contactos});
    bd.exec(
        u"INSERT INTO AboGrup (Abonado,Grupo) SELECT Codigo, 0 FROM Abonados "
        u"WHERE CAST(substr(Codigo, 5) AS INTEGER) % 2 = 1"_s);
    bd.commit();
}

// An action's wall time, and the probe running meanwhile.
struct Medida {
    QElapsedTimer reloj;
    Sonda sonda;
    void empezar() {
        sonda.empezar();
        reloj.start();
    }
};

// Prints the action's figures. What an action leaves for the turns after
// it (a write's copy of the log into the file) stalls the window too: the
// probe goes on for 50 ms.
inline void cifra(const QString& que, Medida& m, int limite) {
    const qint64 ms = m.reloj.elapsed();
    for (QDeadlineTimer resto(50); !resto.hasExpired();)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, resto.remainingTime());
    const qint64 parada = m.sonda.terminar();
    std::printf("%-58s %6lld ms %6lld ms stall  (target < %d ms)\n", qPrintable(que),
                static_cast<long long>(ms), static_cast<long long>(parada), limite);
    std::fflush(stdout);
}
