#include "composition/Seleccion.h"

#include "base/Conversiones.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"

#include <QSet>

using namespace Qt::StringLiterals;

bool leerContactosSeleccion(QVector<QString>* celdas) {
    try {
        const ResultadoConsulta r =
            Conexion().query(u"Select Alias, Codigo from abonados order by alias"_s);
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

QString msDestinosSeleccionados(const QVector<DestinoElegido>& destinos) {
    QString resultado;
    try {
        // The members of the chosen lists, each number once.
        QStringList listas;
        QVariantList nombres;
        for (const DestinoElegido& d : destinos) {
            if (d.texto.isEmpty() || !d.detalle.startsWith(u"Lista"_s)) continue;
            listas.append(u"Grupos.Nombre = ?"_s);
            nombres.append(d.texto);
        }
        // Aliases compare ignoring case, as in the database.
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
                resultado += u';' + alias;
                excluidos.insert(alias.toCaseFolded());
            }
        }
        if (resultado.startsWith(u';')) resultado.remove(0, 1);
        // The single contacts not already named by a list. The choice
        // is matched here rather than in the statement, so that choosing
        // every contact of a large book stays within the engine's limits.
        QSet<QString> elegidos;
        for (const DestinoElegido& d : destinos)
            if (!d.texto.isEmpty() && !d.detalle.startsWith(u"Lista"_s))
                elegidos.insert(d.texto.toCaseFolded());
        if (!elegidos.isEmpty()) {
            const ResultadoConsulta r = Conexion().query(
                u"select alias from abonados where alias is not null group by alias order by alias"_s);
            for (int i = 0; i < r.recordCount(); ++i) {
                const QString alias = textoDe(r.value(i, 0));
                const QString clave = alias.toCaseFolded();
                if (elegidos.contains(clave) && !excluidos.contains(clave))
                    resultado += u';' + alias;
            }
        }
        if (resultado.startsWith(u';')) resultado.remove(0, 1);
    } catch (const ErrorQuelmo& e) {
        ui().msgBox(u"Error en Funcion Seleccionar Destinatarios\n"_s + e.description(),
                    Msg::Critical);
    }
    return resultado;
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
