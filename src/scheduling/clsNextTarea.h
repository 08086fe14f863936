#pragma once

#include "base/Error.h"
#include "db/BaseDatos.h"

#include <QDate>
#include <QDateTime>
#include <QString>
#include <cstdint>

// The kinds of recurrence, as stored in Automaticos.Periodicidad.
enum class Periodicidad : int16_t {
    Una = 0,
    Diaria = 1,
    Semanal = 2,
    Mensual = 3,
    Anual = 4,
};

// A date text that names no date: a day its month lacks ("31/04/2006",
// "29/02/2006") or a time with no day in front. Thrown by the calculators
// as a type mismatch (ErrNum::TypeMismatch); the results keep what the
// calculation had assigned before it, so a caller that goes on past a
// failed row reads those values.
class FechaNoValida : public ErrorQuelmo {
  public:
    explicit FechaNoValida(const QString& texto);
};

// When does one row of Automaticos run next, and is there such a run.
// Usage: setCodigo, then one calculator, then read the results. One object
// serves many rows in turn; nothing is reset between rows except what a
// calculation assigns, so an unassigned result carries over from the row
// before. A fresh object holds false and the zero date (30/12/1899).
//
// Failures (FechaNoValida, ErrorBD, a null where a number or date is
// needed) pass to the caller.
class clsNextTarea {
  public:
    // Opens the row (only while its schedule is on); calculates nothing.
    void setCodigo(int32_t codigo);
    int32_t codigo() const { return m_codigo; }
    // The same for a row read beforehand, when a walk over many rows has
    // them all at hand: `filas` holds, first, the columns of columnasFila(),
    // and only rows whose schedule is on.
    void setFila(int32_t codigo, const ResultadoConsulta& filas, int fila);
    static QString columnasFila();

    // Last run; 01/01/1900 when the row has none.
    QDateTime UltimaTarea() const;
    // A next run exists. Only then is FechaProximaTarea meaningful.
    bool HayTarea() const { return m_hayTarea; }
    QDateTime FechaProximaTarea() const;
    // The same as wall-clock parts (a date-time in UTC): a time that
    // daylight saving skips is kept as it was worked out, where a local
    // date-time would be no date-time at all.
    QDateTime FechaProximaTareaPared() const { return m_fechaProximaTarea; }

    // To the minute, from the clock: decides that a run is due now. A run
    // stays the next run until one minute after its time.
    void CalcularProximaTarea();
    // The same as the clock would have it at `reloj`: the stored next run
    // is worked out for the instants at which it may change.
    void CalcularProximaTareaEn(const QDateTime& reloj);
    // To the day: finds today's run even when its time has passed (the
    // missed runs at start-up). The result carries the time of Hora.
    void CalcularProximaTarea2();

    // The Semana-th DiaSemana (1 Monday .. 7 Sunday) of the month; Semana 5
    // is the last one, any other Semana outside 1..5 the first one.
    static QDate DayWeekOfMonth(int16_t Mes, int16_t Anio, int16_t Semana, int16_t DiaSemana);

    // The zero date: what a result holds before anything was assigned.
    static QDateTime fechaCero();

    // Day-first texts that the calculation goes through, whatever the
    // locale: "dd/MM/yyyy", "dd/MM/yyyy HH:mm:ss", or "HH:mm:ss" for a value
    // on the zero date. leerFecha throws FechaNoValida.
    static QString textoFecha(const QDateTime& valor);
    static QDateTime leerFecha(const QString& texto);
    // A stored date-time column, as the calculation reads it, in local time.
    // Throws on a null or a text that is no date.
    static QDateTime fechaDeColumna(const QVariant& columna);

  private:
    // The tick compares thousands of rows: it reads the wall-clock values
    // directly, without a time-zone lookup for each.
    friend class clsTareasPendientes;

    void calcular(bool alDia, const QDateTime& reloj);
    void leerUltimaTarea();

    int32_t m_codigo = 0;
    QVector<QVariant> m_fila;  // empty: no such row, or its schedule is off
    bool m_hayTarea = false;
    // Wall-clock values (kept in UTC only so that no daylight-saving shift
    // ever moves them); handed out as local time.
    QDateTime m_fechaProximaTarea{QDate(1899, 12, 30), QTime(0, 0), Qt::UTC};
    QDateTime m_ultimaTarea{QDate(1899, 12, 30), QTime(0, 0), Qt::UTC};
    // The clock as the last calculation read it.
    QDateTime m_reloj;
};
