#include "history/mdoEmergencias.h"

#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "base/Movil.h"
#include "base/RegistroActividad.h"
#include "base/Reloj.h"
#include "db/Bandeja.h"
#include "db/Conexion.h"
#include "db/Nombres.h"
#include "scheduling/clsNextTarea.h"

using namespace Qt::StringLiterals;

namespace {

const QDateTime& nuncaEnviado() {
    static const QDateTime d(QDate(1900, 1, 1), QTime(0, 0));
    return d;
}

}  // namespace

QList<FilaEmergencia> msCargarEmergencias(bool* completa) {
    QList<FilaEmergencia> filas;
    if (completa) *completa = false;
    try {
        // One read for all: the calculator's columns first, then ours.
        const ResultadoConsulta r = Conexion().query(
            u"SELECT "_s + clsNextTarea::columnasFila() +
            u", Codigo, Nombre, (TareaProgramada = true) AS activa, "
            u"(SELECT count(Automatico) FROM AboAuto WHERE Automatico = Automaticos.Codigo) "
            u"AS n FROM Automaticos ORDER BY Codigo"_s);
        const int cCodigo = r.columnIndex(u"Codigo"_s), cNombre = r.columnIndex(u"Nombre"_s),
                  cActiva = r.columnIndex(u"activa"_s), cN = r.columnIndex(u"n"_s);
        filas.reserve(r.recordCount());
        clsNextTarea tarea;
        for (int i = 0; i < r.recordCount(); ++i) {
            FilaEmergencia f;
            f.codigo = int32_t(numeroDe(r.value(i, cCodigo)));
            f.nombre = textoDe(r.value(i, cNombre));
            f.mensajes = QString::number(numeroDe(r.value(i, cN)));
            if (numeroDe(r.value(i, cActiva)) == 0) {
                f.programado = u"no"_s;
            } else {
                tarea.setFila(f.codigo, r, i);
                tarea.CalcularProximaTarea();
                if (!tarea.HayTarea()) {
                    f.programado = u"Finalizado"_s;
                } else {
                    f.programado = tarea.FechaProximaTarea().toString(u"dd/MM/yyyy"_s);
                    const QDateTime ultima = tarea.UltimaTarea();
                    f.ultimo =
                        ultima <= nuncaEnviado() ? u"nunca"_s : ultima.toString(u"dd/MM/yyyy"_s);
                }
            }
            filas.append(f);
        }
        if (completa) *completa = true;
    } catch (const ErrorQuelmo&) {
        // The list stays as far as it came.
    }
    return filas;
}

int32_t codigoDeNombre(const QString& nombre) {
    try {
        QVariantList valores;
        const QString donde = condicionNombre(u"Nombre"_s, nombre, valores);
        const ResultadoConsulta r = Conexion().query(
            u"SELECT Codigo FROM Automaticos WHERE "_s + donde + u" ORDER BY Codigo LIMIT 1",
            valores);
        return r.isEmpty() ? -1 : int32_t(numeroDe(r.value(0, 0)));
    } catch (const ErrorBD&) {
        return -1;
    }
}

Resultado<int> msEnviarEmergencia(int32_t codigo) {
    BaseDatos& bd = Conexion();
    EntradaBandeja entrada(bd);
    try {
        const ResultadoConsulta destinos =
            bd.query(u"SELECT Abonado, Mensaje FROM AboAuto WHERE Automatico = ? ORDER BY rowid"_s,
                     {codigo});
        if (destinos.isEmpty())
            return Hecho::no(
                u"ATENCIÓN, no existen Mensajes asignados a este mensaje programado"_s);
        // All the recipients or none: a failure halfway must not leave half
        // of them queued, to go twice when the user tries again.
        bd.begin();
        try {
            const QDateTime ahora = Reloj::now();
            for (int i = 0; i < destinos.recordCount(); ++i) {
                const QString abonado = textoDe(destinos.value(i, 0));
                // The account is the contact's; a deleted contact is left out.
                const ResultadoConsulta contacto =
                    bd.query(u"SELECT Canal FROM Abonados WHERE Codigo = ?"_s, {abonado});
                if (contacto.isEmpty()) continue;
                const QString numero = Movil::leer(Movil::Via::Emergencia, abonado).numero;
                if (!entrada.poner(numero, textoDe(destinos.value(i, 1)),
                                   numeroDe(contacto.value(0, 0)), ahora))
                    msLog(u"Número no válido --> "_s + numero);
            }
            bd.commit();
        } catch (...) {
            bd.rollback();
            throw;
        }
    } catch (const ErrorBD& e) {
        return Hecho::no(u"Encontrado Error: "_s + e.description());
    }
    return entrada.puestos();
}
