#include "composition/Seleccion.h"

#include "composition/Envio.h"

#include "base/Conversiones.h"
#include "base/Error.h"
#include "base/ReglaNombres.h"
#include "base/Turno.h"
#include "db/Conexion.h"
#include "db/EscrituraPorTurnos.h"
#include "db/Nombres.h"

#include <QSet>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

bool leerListasSeleccion(QVector<QString>* celdas) {
    try {
        const ResultadoConsulta r = Conexion().query(
            u"SELECT Grupos.Grupo, Grupos.Nombre, (select count(*) from abogrup where "
            u"abogrup.grupo=Grupos.grupo) AS Contactos FROM Grupos order by grupo"_s);
        if (r.isEmpty()) return false;
        celdas->clear();
        for (int i = 0; i < r.recordCount(); ++i) {
            celdas->append(QString::number(numeroDe(r.value(i, 0))).rightJustified(3, u'0'));
            celdas->append(textoDe(r.value(i, 1)));
            celdas->append(textoDe(r.value(i, 2)));
        }
        return true;
    } catch (const ErrorQuelmo&) {
        return false;
    }
}

QString detalleLista(const QString& contactos) {
    return u"Lista ("_s + contactos + u" Contactos)"_s;
}

namespace {
// What working out the chosen lines has gathered so far.
struct Eleccion {
    QStringList listas;
    QVariantList nombres;
    QString desde;
    bool miembrosLeidos = false;
    // Aliases compare as names do (base/ReglaNombres).
    QSet<QString> excluidos, elegidos, dados;
    LecturaContactos lectura;
    QString aliases;
};
constexpr int kMiembrosPorPaso = 2000;
}  // namespace

void msDestinosSeleccionados(QVector<QString> elegidos, AlElegir alTerminar) {
    auto e = std::make_shared<Eleccion>();
    // The chosen lists, and the single contacts' keys, a few thousand
    // lines at a time.
    EscrituraPorTurnos::Paso lineas = [e, elegidos = std::move(elegidos),
                                       siguiente = qsizetype(0)]() mutable {
        // Grown an insert at a time, a set of half a million rehashes
        // all of it in one insert: 20-40 ms.
        if (siguiente == 0) e->elegidos.reserve(elegidos.size() / 2);
        for (int k = 0; k < kMiembrosPorPaso && siguiente + 1 < elegidos.size(); ++k) {
            const QString& texto = elegidos.at(siguiente++);
            const QString& detalle = elegidos.at(siguiente++);
            if (texto.isEmpty()) continue;
            if (detalle.startsWith(u"Lista"_s))
                e->listas.append(condicionNombre(u"Grupos.Nombre"_s, texto, e->nombres));
            else
                e->elegidos.insert(ReglaNombres::clave(texto));
        }
        return siguiente + 1 < elegidos.size();
    };
    BaseDatos& db = Conexion();
    // The members of the chosen lists, each number once, a stretch of
    // numbers at a time.
    EscrituraPorTurnos::Paso miembros = [&db, e] {
        if (e->listas.isEmpty()) return false;
        const ResultadoConsulta r = db.query(
            u"SELECT AboGrup.Abonado,(Select alias from abonados where Abonados.codigo = "
            u"AboGrup.Abonado) as alias FROM Grupos inner JOIN AboGrup ON Grupos.Grupo = "
            u"AboGrup.Grupo WHERE ("_s +
                e->listas.join(u" Or "_s) +
                u") AND AboGrup.Abonado > ? group by AboGrup.Abonado order by AboGrup.Abonado "
                u"LIMIT ?"_s,
            e->nombres + QVariantList{e->desde, kMiembrosPorPaso});
        for (int i = 0; i < r.recordCount(); ++i) {
            const QString alias = textoDe(r.value(i, 1));
            e->aliases += u';' + alias;
            e->excluidos.insert(ReglaNombres::clave(alias));
        }
        if (r.recordCount() > 0) e->desde = textoDe(r.value(r.recordCount() - 1, 0));
        return r.recordCount() == kMiembrosPorPaso;
    };
    // The single contacts not already named by a list, each name once
    // however many contacts bear it, in the lists' order. The choice is
    // matched here rather than in a statement, so that choosing every
    // contact of a large book stays within the engine's limits.
    EscrituraPorTurnos::Paso contactos = [e] {
        if (!e->miembrosLeidos) {
            e->miembrosLeidos = true;
            e->dados.reserve(e->elegidos.size());
            if (e->aliases.startsWith(u';')) e->aliases.remove(0, 1);
        }
        if (e->elegidos.isEmpty()) return false;
        QVector<QString> celdas;
        leerContactosEnOrden(e->lectura, celdas, 6);
        for (qsizetype i = 0; i < celdas.size(); i += 2) {
            const QString& alias = celdas.at(i);
            if (alias.isNull()) continue;
            const QString clave = ReglaNombres::clave(alias);
            if (e->elegidos.contains(clave) && !e->excluidos.contains(clave) &&
                !e->dados.contains(clave)) {
                e->dados.insert(clave);
                e->aliases += u';' + alias;
            }
        }
        return !e->lectura.terminada;
    };
    EscrituraPorTurnos::porTurnos(
        db, {std::move(lineas), std::move(miembros), std::move(contactos)},
        [e, alTerminar = std::move(alTerminar)](const ErrorBD* fallo) {
            if (e->aliases.startsWith(u';')) e->aliases.remove(0, 1);
            liberarPorTurnos(std::exchange(e->elegidos, {}));
            liberarPorTurnos(std::exchange(e->excluidos, {}));
            liberarPorTurnos(std::exchange(e->dados, {}));
            alTerminar(fallo ? Hecho::no(u"Error en Funcion Seleccionar Destinatarios\n"_s +
                                         fallo->description())
                             : Hecho(),
                       e->aliases);
        });
}

int buscarContacto(const QStringList& textos, const QString& buscado) {
    if (textos.isEmpty()) return -1;
    int linea = int(textos.size()) - 1;
    for (int i = 0; i < textos.size(); ++i) {
        if (textos.at(i).startsWith(buscado, Qt::CaseInsensitive)) {
            linea = i;
            break;
        }
    }
    return textos.at(linea).contains(buscado, Qt::CaseInsensitive) ? linea : -1;
}
