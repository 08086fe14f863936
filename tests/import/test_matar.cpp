// The watched file is taken exactly once even when the program is killed:
// a child `quelmo-sms --headless --once` imports a file of 20,000 lines and
// is killed at random instants, then restarted until it finishes.
#include "AyudaImport.h"
#include "base/Ajustes.h"
#include "db/BaseDatos.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>

using namespace Qt::StringLiterals;

class TestMatar : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    QString base() const { return world.root() + u"/matar.db"_s; }
    QString carpeta() const { return world.root() + u"/buzon"_s; }
    QString vigilado() const { return carpeta() + u"/envios.txt"_s; }

    void iniciar(QProcess& p) {
        p.setStandardOutputFile(QProcess::nullDevice());
        startProgram(world, p, {u"--headless"_s, u"--once"_s});
        QVERIFY(p.waitForStarted());
    }

    struct Estado {
        long long filas = 0;
        long long reclamos = 0;
    };
    // The rows of the file whose texts begin with `prefijo`, and the claims.
    Estado estado(const QString& prefijo) {
        BaseDatos db;
        Estado e;
        if (!db.open(base())) return e;
        e.filas = numeroDe(db.query(u"SELECT count(*) FROM envios WHERE Mensaje LIKE ?"_s,
                                    {QString(prefijo + u'%')})
                               .value(0, 0));
        if (db.hasTable(u"ImportReclamado"_s))
            e.reclamos = numeroDe(db.query(u"SELECT count(*) FROM ImportReclamado"_s).value(0, 0));
        return e;
    }

  private Q_SLOTS:
    void cadaLineaUnaVezAunqueLoMaten() {
        world.reset();
        QDir().mkpath(carpeta());
        {
            BaseDatos db;
            TestDb::createCurrent(base());
            QVERIFY(db.open(base()));
            // Port 1 refuses at once: the rows stay in the outbox.
            db.exec(
                u"INSERT INTO Canales (Canal,Nombre,maxmen,Puerto,Host,usuario,clave,Saldo,"
                u"Principal) VALUES (7,'c',160,1,'127.0.0.1','u','c',0,1)"_s);
        }
        Ajustes::saveSetting(u"BD"_s, u"Path"_s, base());
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        Ajustes::saveSetting(u"ImportA"_s, u"Path"_s, vigilado());
        Ajustes::saveSetting(u"Import"_s, u"Lista"_s, u"-1"_s);
        Ajustes::sync();

        constexpr int kLineas = 20000;
        const quint32 semilla = QRandomGenerator::global()->generate();
        qInfo("semilla %u", semilla);
        QRandomGenerator azar(semilla);
        int muertes = 0;
        int aMedias = 0;
        // A fast run may finish a file between two kills; a new file then
        // gives the kills another chance to land inside an import.
        for (int fichero = 0; fichero < 6 && aMedias < 2; ++fichero) {
            const QString prefijo = u"F%1 "_s.arg(fichero);
            QByteArray b;
            for (int i = 1; i <= kLineas; ++i)
                b += "7;600000001;" + prefijo.toUtf8() + "L'" + QByteArray::number(i) +
                     (i % 2 ? "\r\n" : "\n");
            prueba::escribir(vigilado(), b);
            import_prueba::envejecer(vigilado());

            for (int intento = 0; intento < 10 && aMedias < 4; ++intento) {
                const Estado antes = estado(prefijo);
                if (intento > 0 && !QFile::exists(vigilado()) && antes.reclamos == 0) break;
                if (kLineas - antes.filas < 300) break;
                QProcess p;
                iniciar(p);
                // Each kill comes once a random number of further rows is in
                // (short of the last stretches, so the file is not done yet),
                // a few milliseconds later, so it lands anywhere in a stretch.
                const long long objetivo =
                    antes.filas + azar.bounded(1, int(kLineas - antes.filas) * 6 / 10);
                QElapsedTimer reloj;
                reloj.start();
                bool terminado = false;
                {
                    BaseDatos mirando;
                    QVERIFY(mirando.open(base()));
                    while (!(terminado = p.waitForFinished(2)) && reloj.elapsed() < 60000)
                        if (numeroDe(mirando
                                         .query(u"SELECT count(*) FROM envios WHERE Mensaje "
                                                u"LIKE ?"_s,
                                                {QString(prefijo + u'%')})
                                         .value(0, 0)) >= objetivo)
                            break;
                    if (!terminado) terminado = p.waitForFinished(azar.bounded(0, 10));
                }
                if (terminado) {
                    if (!QFile::exists(vigilado()) && estado(prefijo).reclamos == 0) break;
                    continue;
                }
                p.kill();
                QVERIFY(p.waitForFinished(10000));
                ++muertes;
                const Estado e = estado(prefijo);
                qInfo("muerte a los %lld ms: %lld filas, %lld reclamos", reloj.elapsed(), e.filas,
                      e.reclamos);
                // A claim left behind: lines to resume, or a finished file to clear.
                if (e.reclamos > 0) ++aMedias;
            }
            // Restart until a run ends by itself.
            const ProcessResult final = runProgram(world, {u"--headless"_s, u"--once"_s}, 120000);
            QVERIFY(final.finished);
            // The import is done; the platform refused the batch, which --once reports.
            QCOMPARE(final.exitCode, 4);

            BaseDatos db;
            QVERIFY(db.open(base()));
            const QVector<QString> textos = db.queryTexts(
                u"SELECT Mensaje FROM envios WHERE Mensaje LIKE ?"_s, {QString(prefijo + u'%')});
            QCOMPARE(textos.size(), kLineas);
            QSet<QString> distintos(textos.begin(), textos.end());
            QCOMPARE(distintos.size(), kLineas);
            for (int i = 1; i <= kLineas; i += 997)
                QVERIFY(distintos.contains(prefijo + u"L'"_s + QString::number(i)));
            QCOMPARE(numeroDe(db.query(u"SELECT count(*) FROM ImportReclamado"_s).value(0, 0)), 0);
            QCOMPARE(QDir(carpeta()).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot),
                     QStringList());
        }
        qInfo("%d muertes, %d en mitad de la importación", muertes, aMedias);
        QVERIFY(aMedias > 0);
    }
};

QUELMO_TEST_MAIN(TestMatar)
#include "test_matar.moc"
