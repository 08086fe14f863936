// Writes an empty database of the current schema (or, with --baseline, of
// an older release) to a new file.
#include "db/BaseDatos.h"
#include "db/Esquema.h"

#include <QCoreApplication>
#include <QFile>
#include <cstdio>
#include <cstring>

int main(int argc, char** argv) {
    if (argc != 3 ||
        (std::strcmp(argv[1], "--current") != 0 && std::strcmp(argv[1], "--baseline") != 0)) {
        std::fprintf(stderr, "Uso: quelmo-makedb --current|--baseline FICHERO\n");
        return 2;
    }
    const QString ruta = QString::fromLocal8Bit(argv[2]);
    QFile::remove(ruta);
    QFile::remove(ruta + QStringLiteral("-wal"));
    QFile::remove(ruta + QStringLiteral("-shm"));
    BaseDatos db;
    if (const Hecho creada = db.create(ruta); !creada) {
        std::fprintf(stderr, "%s\n", qPrintable(creada.motivo()));
        return 1;
    }
    try {
        if (std::strcmp(argv[1], "--current") == 0)
            Esquema::crearActual(db);
        else
            Esquema::crearBase(db);
        // A self-contained file: no journal beside it.
        db.exec(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
        db.query(QStringLiteral("PRAGMA journal_mode=DELETE"));
    } catch (const ErrorBD& e) {
        std::fprintf(stderr, "%s\n", qPrintable(e.description()));
        return 1;
    }
    return 0;
}
