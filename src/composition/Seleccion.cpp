#include "composition/Seleccion.h"

#include "base/Conversiones.h"
#include "base/Error.h"
#include "base/ReglaNombres.h"
#include "db/Conexion.h"
#include "db/Nombres.h"

#include <QSet>

using namespace Qt::StringLiterals;

bool leerContactosSeleccion(QVector<QString>* celdas) {
    try {
        const ResultadoConsulta r = Conexion().query(
            u"Select Alias, Codigo from abonados order by alias COLLATE REGLA_LISTAS"_s);
        if (r.isEmpty()) return false;
        celdas->clear();
        celdas->reserve(qsizetype(r.recordCount()) * 2);
        for (int i = 0; i < r.recordCount(); ++i) {
            celdas->append(textoDe(r.value(i, 0)));
            celdas->append(textoDe(r.value(i, 1)));
        }
        return true;
    } catch (const ErrorQuelmo&) {
        return false;
    }
}

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

Hecho msDestinosSeleccionados(const QVector<DestinoElegido>& destinos, QString& aliases) {
    aliases.clear();
    try {
        // The members of the chosen lists, each number once.
        QStringList listas;
        QVariantList nombres;
        for (const DestinoElegido& d : destinos) {
            if (d.texto.isEmpty() || !d.detalle.startsWith(u"Lista"_s)) continue;
            listas.append(condicionNombre(u"Grupos.Nombre"_s, d.texto, nombres));
        }
        // Aliases compare as names do (base/ReglaNombres).
        QSet<QString> excluidos;
        if (!listas.isEmpty()) {
            const ResultadoConsulta r = Conexion().query(
                u"SELECT AboGrup.Abonado,(Select alias from abonados where Abonados.codigo = "
                u"AboGrup.Abonado) as alias FROM Grupos inner JOIN AboGrup ON Grupos.Grupo = "
                u"AboGrup.Grupo WHERE "_s +
                    listas.join(u" Or "_s) +
                    u" group by AboGrup.Abonado order by AboGrup.Abonado"_s,
                nombres);
            for (int i = 0; i < r.recordCount(); ++i) {
                const QString alias = textoDe(r.value(i, 1));
                aliases += u';' + alias;
                excluidos.insert(ReglaNombres::clave(alias));
            }
        }
        if (aliases.startsWith(u';')) aliases.remove(0, 1);
        // The single contacts not already named by a list. The choice
        // is matched here rather than in the statement, so that choosing
        // every contact of a large book stays within the engine's limits.
        QSet<QString> elegidos;
        for (const DestinoElegido& d : destinos)
            if (!d.texto.isEmpty() && !d.detalle.startsWith(u"Lista"_s))
                elegidos.insert(ReglaNombres::clave(d.texto));
        if (!elegidos.isEmpty()) {
            // Each name once, however many contacts bear it.
            const ResultadoConsulta r = Conexion().query(
                u"select alias from abonados where alias is not null order by alias COLLATE "
                u"REGLA_LISTAS"_s);
            QSet<QString> dados;
            for (int i = 0; i < r.recordCount(); ++i) {
                const QString alias = textoDe(r.value(i, 0));
                const QString clave = ReglaNombres::clave(alias);
                if (elegidos.contains(clave) && !excluidos.contains(clave) &&
                    !dados.contains(clave)) {
                    dados.insert(clave);
                    aliases += u';' + alias;
                }
            }
        }
        if (aliases.startsWith(u';')) aliases.remove(0, 1);
    } catch (const ErrorQuelmo& e) {
        return Hecho::no(u"Error en Funcion Seleccionar Destinatarios\n"_s + e.description());
    }
    return {};
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
