#pragma once

#include "base/Hecho.h"
#include "db/BaseDatos.h"
#include "db/ListaPaginada.h"

#include <QDate>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTime>
#include <QVariant>
#include <QVector>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

// The schedule screens' work on the database: the multi-sends of
// Automaticos with their recipients in AboAuto, and how a schedule as the
// editor shows it maps onto the columns of a row. No widget and no box
// here: the screens ask, and show what these routines refused.

// ---- The schedule as the control holds it ----------------------------------

// The properties of the schedule control, one for each thing it can be
// asked or told.
enum class Propiedad {
    Periodicidad,
    Hora,
    UnaSolaVezFecha,
    DiariaCada,
    SemanalCada,
    SemanalDias,
    MensualEsDia,
    MensualDiaMes,
    MensualNumSemana,
    MensualDiaSemana,
    AnualDia,
    AnualMes,
    FechaIni,
    FechaFin,
};

// The greatest date of the date pickers; as FechaFin it means "no end".
inline QDate fechaMaxima() {
    return QDate(9999, 12, 31);
}

// What the control holds, property by property.
struct Programa {
    int periodicidad = 0;
    QTime hora;
    QDate unaSolaVezFecha;
    // A number field left empty holds none: its column keeps its value.
    std::optional<int> diariaCada = 1;
    std::optional<int> semanalCada = 1;
    int semanalDias = 0;  // bit 0 Monday .. bit 6 Sunday
    bool mensualEsDia = true;
    std::optional<int> mensualDiaMes = 1;
    int mensualNumSemana = 1;  // 1..4, 5 the last
    int mensualDiaSemana = 1;  // 1 Monday .. 7 Sunday
    std::optional<int> anualDia = 1;
    int anualMes = 1;
    QDate fechaIni;
    QDate fechaFin;  // fechaMaxima() when there is no end

    // An invalid QVariant for a number field left empty.
    QVariant valor(Propiedad p) const;
};

// Which column feeds which property when a row is loaded into the control,
// in the order of the writes: the common ones, then those of the row's
// kind (a monthly row by its own MensualEsDia).
QList<std::pair<Propiedad, QString>> columnasAlCargar(int periodicidad, bool mensualEsDia);
// Which property goes to which column when the control is saved into the
// row; a column named twice takes the later value. Columns of another kind
// are not named, so they keep what they had.
QList<std::pair<QString, Propiedad>> columnasAlGuardar(int periodicidad, bool mensualEsDia);

// A stored value as the type of the property (time, date, number or flag);
// an invalid QVariant when the column is null or holds no such value.
QVariant valorDeColumna(Propiedad p, const QVariant& columna);

// The lines that tell what a schedule does, as the editor shows them.
QString descripcionPrograma(const Programa& p);

// ---- The list of multi-sends -----------------------------------------------

// The list's lines: name, number of recipients, next run as stored (see
// ProximasTareas), last run; read a page at a time.
ListaPaginada::Definicion definicionMensajesProgramados();
// The code of the first row (in code order) named `nombre`, -1 if none;
// throws ErrorBD.
int32_t primerCodigoConNombre(const QString& nombre);
// The code a new multi-send gets: the highest plus 1, or 1 for the first.
int32_t proximoCodigoAutomatico();
// Removes a multi-send with its recipients, both or neither, over turns of
// the event loop; `alTerminar` is told whether it went.
void borrarMensajeProgramado(int32_t codigo, std::function<void(bool borrado)> alTerminar);

// ---- One multi-send --------------------------------------------------------

// The row, or an empty result when it does not exist (yet).
ResultadoConsulta leerAutomatico(int32_t codigo);
bool programaActivo(const ResultadoConsulta& fila);
// The editor's list of the recipients that are contacts: alias and
// message, each line numbered by its id_AboAuto; read a page at a time,
// those of the multi-send `prepararDestinatarios` named last (the editor
// is modal: one at a time).
ListaPaginada::Definicion definicionDestinatarios();
// Points that list at multi-send `codigo` and counts its lines, over
// turns of the event loop once they are many; nullopt when they can't be
// read.
void prepararDestinatarios(int32_t codigo,
                           std::function<void(std::optional<int> lineas)> alTerminar);
// The code of the first other row named `nombre`, -1 if none.
int32_t otroCodigoConNombre(int32_t codigo, const QString& nombre);

// Adds one recipient row per contact that bears one of `aliases` (every
// contact of an alias, each once, in the order of the contacts' table),
// each with `mensaje`, preceded by "{alias}, " when `saludo`. The row of
// Automaticos is created with `nombre` when it doesn't exist, and renamed
// otherwise; with no such contact nothing is written. All or nothing, in
// one transaction over turns of the event loop: `alTerminar` gets the rows
// added, or the refusal naming the step that failed.
void anadirDestinatarios(int32_t codigo, QString nombre, QStringList aliases, QString mensaje,
                         bool saludo, std::function<void(const Resultado<int>&)> alTerminar);
bool quitarDestinatario(long long idAboAuto);
// Every recipient of a multi-send, over turns, all or none.
void quitarTodosDestinatarios(int32_t codigo, std::function<void(bool quitados)> alTerminar);
bool cambiarMensajeDestinatario(long long idAboAuto, const QString& mensaje);

// Blanks at both ends of a text taken away; those inside, and line breaks,
// stay.
QString recortarBlancos(const QString& texto);

// Any change of the schedule lets it fire again today.
void olvidarUltimaTarea(int32_t codigo);

// Stores the name and whether the schedule is on; with it on, also the
// schedule's columns; and the row's next run. Nothing is stored when the
// row doesn't exist.
bool guardarMensajeProgramado(int32_t codigo, const QString& nombre, bool programada,
                              const Programa& programa);

// The next run the row would have with `programa` saved, the list's way:
// "no" when off, "Finalizado" when it has ended, or the date and time.
// An empty text when the calculation fails. Nothing is stored.
QString proximaTareaDe(int32_t codigo, bool programada, const Programa& programa);
