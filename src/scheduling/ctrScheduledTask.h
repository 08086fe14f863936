#pragma once

#include "scheduling/mdoProgramacion.h"

#include <QDate>
#include <QTime>
#include <QVector>
#include <QWidget>
#include <cstdint>
#include <optional>

class ctrNumberPick;
class QCalendarWidget;
class QCheckBox;
class QComboBox;
class QDateEdit;
class QGroupBox;
class QRadioButton;
class QTimeEdit;

// Where the user states a schedule: once, daily, weekly, monthly or
// yearly, at a time of day, from a start date to an optional end. It holds
// nothing beyond its widgets: each property reads or writes one. It keeps
// at least one weekday checked once the user has touched them, and keeps
// the end date at or after the start and today. Any change, by the user
// or by a property write, raises Change.
class ctrScheduledTask : public QWidget {
    Q_OBJECT
  public:
    explicit ctrScheduledTask(QWidget* parent = nullptr);

    int32_t Periodicidad() const;
    void setPeriodicidad(int32_t v);
    // "HH:mm".
    QString Hora() const;
    void setHora(const QTime& v);
    QDate p_UnaSolaVez_Fecha() const;
    void setP_UnaSolaVez_Fecha(const QDate& v);
    // The number fields read as none while they are empty.
    std::optional<int16_t> p_Diaria_Cada() const;
    void setP_Diaria_Cada(int16_t v);
    std::optional<int16_t> p_Semanal_Cada() const;
    void setP_Semanal_Cada(int16_t v);
    // Bit i set for each checked chkDay(i), Monday bit 0.
    int16_t p_Semanal_Dias() const;
    void setP_Semanal_Dias(int16_t v);
    bool p_Mensual_Es_Dia() const;
    void setP_Mensual_Es_Dia(bool v);
    std::optional<int16_t> p_Mensual_Dia_Mes() const;
    void setP_Mensual_Dia_Mes(int16_t v);
    int32_t p_Mensual_Num_Semana() const;
    void setP_Mensual_Num_Semana(int32_t v);
    int32_t p_Mensual_dia_Semana() const;
    void setP_Mensual_dia_Semana(int32_t v);
    std::optional<int16_t> p_Anual_Dia() const;
    void setP_Anual_Dia(int16_t v);
    int16_t p_Anual_Mes() const;
    void setP_Anual_Mes(int16_t v);
    QDate p_Fecha_Ini() const;
    void setP_Fecha_Ini(const QDate& v);
    bool p_Fecha_Es_Fin() const;
    // The end day, or the maximum date when there is no end; writing the
    // maximum date unchecks the end.
    QDate p_Fecha_Fin() const;
    void setP_Fecha_Fin(const QDate& v);

    // The properties by name, for the mapping onto the columns of a row.
    QVariant propiedad(Propiedad p) const;
    void setPropiedad(Propiedad p, const QVariant& v);
    Programa programa() const;
    // The hour and dates take what their fields show, as leaving a field
    // does; a closing reached by a shortcut or by Enter leaves none.
    void terminarEdicion();
    QString Descripcion() const { return descripcionPrograma(programa()); }

    QComboBox* cmbTipoTask;
    QTimeEdit* dpHora;
    QVector<QGroupBox*> frame1;
    QCalendarWidget* mvFecha;
    ctrNumberPick* crtNumberPick1;
    ctrNumberPick* crtNumberPick2;
    QVector<QCheckBox*> chkDay;
    QVector<QRadioButton*> Option1;
    ctrNumberPick* crtNumberPick3;
    QComboBox* cmbMesSemana;
    QComboBox* cmbMesDia;
    ctrNumberPick* crtNumberPickAnualDia;
    QComboBox* cmbAnualMes;
    QWidget* frameFechaIniFechaFin;
    QDateEdit* dpFechaIni;
    QCheckBox* chkFechaFin;
    QDateEdit* dpFechaFin;

  Q_SIGNALS:
    void Change();

  private:
    void construir();
    void construirDiasSemanas(const QDate& hoy);
    void construirMesesAnos(const QDate& hoy);
    void construirPeriodo(const QDate& hoy);
    void nombrarControles();
    void mostrarPaneles();
    void habilitarMensual();
    void chkDay_Click(int indice);
    void chkFechaFin_Click();
    void dpFechaIni_Change();
    void dpFechaFin_Change();
    void mvFecha_Change();
    void error(const QString& texto);
    static std::optional<int16_t> numeroDe(const ctrNumberPick* n);

    // Set while a property is written: the user's checks don't apply to
    // values the program puts in.
    bool m_escribiendo = false;
};
