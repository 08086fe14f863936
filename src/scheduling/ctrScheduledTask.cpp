#include "scheduling/ctrScheduledTask.h"

#include "base/EstadoAplicacion.h"
#include "base/Reloj.h"
#include "scheduling/ctrNumberPick.h"
#include "widgets/Accesible.h"
#include "widgets/Montaje.h"

#include <QAbstractSpinBox>
#include <QButtonGroup>
#include <QCalendarWidget>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QTimeEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

const QLocale& espanol() {
    static const QLocale l(QLocale::Spanish, QLocale::Spain);
    return l;
}

QString capital(const QString& s) {
    return s.isEmpty() ? s : s.left(1).toUpper() + s.mid(1);
}

QString nombreDia(int dia) {
    return capital(espanol().dayName(dia, QLocale::LongFormat));
}

ctrNumberPick* numero(QWidget* padre, const QString& nombre, int16_t min, int16_t max) {
    auto* n = new ctrNumberPick(padre);
    n->setObjectName(nombre);
    n->setMinValue(min);
    n->setMaxValue(max);
    n->setValor(u"1"_s);
    return n;
}

QDateEdit* selectorFecha(QWidget* padre, const QString& nombre) {
    auto* d = new QDateEdit(padre);
    d->setObjectName(nombre);
    d->setLocale(espanol());
    d->setDisplayFormat(u"dd/MM/yyyy"_s);
    d->setCalendarPopup(true);
    d->calendarWidget()->setLocale(espanol());
    d->setMaximumDate(fechaMaxima());
    // Checked once the date is complete, not at every digit typed.
    d->setKeyboardTracking(false);
    return d;
}

}  // namespace

ctrScheduledTask::ctrScheduledTask(QWidget* parent) : QWidget(parent) {
    setObjectName(u"ctrScheduledTask"_s);
    construir();

    for (int i = 0; i < 5; ++i) frame1[i]->setVisible(i == 0);
    frameFechaIniFechaFin->setVisible(false);
    habilitarMensual();

    connect(cmbTipoTask, &QComboBox::currentIndexChanged, this, [this] {
        mostrarPaneles();
        Q_EMIT Change();
    });
    for (QComboBox* c : {cmbAnualMes, cmbMesDia, cmbMesSemana})
        connect(c, &QComboBox::currentIndexChanged, this, &ctrScheduledTask::Change);
    for (ctrNumberPick* n : {crtNumberPick1, crtNumberPick2, crtNumberPick3, crtNumberPickAnualDia})
        connect(n, &ctrNumberPick::Change, this, &ctrScheduledTask::Change);
    for (int i = 0; i < 7; ++i)
        connect(chkDay[i], &QCheckBox::clicked, this, [this, i] { chkDay_Click(i); });
    for (QRadioButton* o : Option1)
        connect(o, &QRadioButton::clicked, this, [this] {
            habilitarMensual();
            Q_EMIT Change();
        });
    connect(chkFechaFin, &QCheckBox::clicked, this, &ctrScheduledTask::chkFechaFin_Click);
    connect(dpFechaIni, &QDateEdit::dateChanged, this, &ctrScheduledTask::dpFechaIni_Change);
    connect(dpFechaFin, &QDateEdit::dateChanged, this, &ctrScheduledTask::dpFechaFin_Change);
    connect(dpHora, &QTimeEdit::timeChanged, this, &ctrScheduledTask::Change);
    connect(mvFecha, &QCalendarWidget::selectionChanged, this, &ctrScheduledTask::mvFecha_Change);
}

void ctrScheduledTask::construir() {
    const QDate hoy = Reloj::today();
    cmbTipoTask = control<QComboBox>(this, u"cmbTipoTask"_s);
    cmbTipoTask->addItems(
        {u"Una vez"_s, u"Diariamente"_s, u"Semanalmente"_s, u"Mesualmente"_s, u"Anualmente"_s});
    dpHora = control<QTimeEdit>(this, u"dpHora"_s);
    dpHora->setDisplayFormat(u"HH:mm"_s);
    dpHora->setKeyboardTracking(false);
    dpHora->setTime(QTime((Reloj::now().time().hour() + 1) % 24, 0));

    const QStringList titulos{u"Tarea - Una sola vez "_s, u"Tarea - Diaria "_s,
                              u"Tarea - Semanales "_s, u"Tarea - Mensual "_s, u"Tarea - Anual"_s};
    for (int i = 0; i < 5; ++i)
        frame1.append(control<QGroupBox>(this, u"frame1(%1)"_s.arg(i), titulos[i]));
    construirDiasSemanas(hoy);
    construirMesesAnos(hoy);
    construirPeriodo(hoy);

    auto* cabecera = fila({etiqueta(this, u"Tarea Programada:"_s, cmbTipoTask), cmbTipoTask});
    cabecera->addSpacing(16);
    anadirPiezas(cabecera, {etiqueta(this, u"Hora comienzo:"_s), dpHora, nullptr});
    auto* v = new QVBoxLayout(this);
    v->setContentsMargins(0, 0, 0, 0);
    v->addLayout(cabecera);
    for (QGroupBox* g : frame1) v->addWidget(g);
    v->addWidget(frameFechaIniFechaFin);
    v->addStretch(1);
    nombrarControles();
}

void ctrScheduledTask::construirDiasSemanas(const QDate& hoy) {
    // Once: the day on a calendar.
    mvFecha = control<QCalendarWidget>(frame1[0], u"mvFecha"_s);
    mvFecha->setLocale(espanol());
    mvFecha->setFirstDayOfWeek(Qt::Monday);
    mvFecha->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
    mvFecha->setMaximumDate(fechaMaxima());
    mvFecha->setSelectedDate(hoy);
    auto* g0 = new QHBoxLayout(frame1[0]);
    g0->addWidget(etiqueta(frame1[0], u"Fecha Tarea:"_s), 0, Qt::AlignTop);
    g0->addWidget(mvFecha, 1);

    // Daily and weekly: every so many days or weeks.
    crtNumberPick1 = numero(frame1[1], u"crtNumberPick1"_s, 1, 100);
    anadirPiezas(new QHBoxLayout(frame1[1]), {etiqueta(frame1[1], u"Cada"_s), crtNumberPick1,
                                              etiqueta(frame1[1], u"dia(s)"_s), nullptr});

    crtNumberPick2 = numero(frame1[2], u"crtNumberPick2"_s, 1, 100);
    auto* g2 = new QGridLayout(frame1[2]);
    g2->addLayout(fila({etiqueta(frame1[2], u"Cada"_s), crtNumberPick2,
                        etiqueta(frame1[2], u"semana(s)"_s), nullptr}),
                  0, 0, 1, 4);
    for (int i = 0; i < 7; ++i) {
        auto* c = control<QCheckBox>(frame1[2], u"chkDay(%1)"_s.arg(i), nombreDia(i + 1));
        chkDay.append(c);
        g2->addWidget(c, 1 + i / 4, i % 4);
    }
    // A new weekly schedule starts on today's weekday, so that it never
    // stands without a day.
    chkDay[hoy.dayOfWeek() - 1]->setChecked(true);
}

void ctrScheduledTask::construirMesesAnos(const QDate& hoy) {
    // Monthly: a fixed day, or the nth weekday.
    for (const QString& t : {u"Dia"_s, u"el"_s})
        Option1.append(control<QRadioButton>(frame1[3], u"Option1(%1)"_s.arg(Option1.size()), t));
    Option1[0]->setChecked(true);
    crtNumberPick3 = numero(frame1[3], u"crtNumberPick3"_s, 1, 31);
    cmbMesSemana = control<QComboBox>(frame1[3], u"cmbMesSemana"_s);
    cmbMesSemana->addItems({u"primer"_s, u"segundo"_s, u"tercer"_s, u"cuarto"_s, u"ultimo"_s});
    cmbMesDia = control<QComboBox>(frame1[3], u"cmbMesDia"_s);
    for (int d = 1; d <= 7; ++d) cmbMesDia->addItem(nombreDia(d));
    auto* g3 = new QGridLayout(frame1[3]);
    g3->addWidget(Option1[0], 0, 0);
    g3->addWidget(crtNumberPick3, 0, 1);
    g3->addWidget(etiqueta(frame1[3], u"del mes(es)"_s), 0, 2, 1, 2);
    g3->addWidget(Option1[1], 1, 0);
    g3->addWidget(cmbMesSemana, 1, 1);
    g3->addWidget(cmbMesDia, 1, 2);
    g3->addWidget(etiqueta(frame1[3], u"del mes(es)"_s), 1, 3);
    g3->setColumnStretch(4, 1);

    // Yearly: a day and a month.
    crtNumberPickAnualDia = numero(frame1[4], u"crtNumberPickAnualDia"_s, 1, 31);
    cmbAnualMes = control<QComboBox>(frame1[4], u"cmbAnualMes"_s);
    for (int m = 1; m <= 12; ++m)
        cmbAnualMes->addItem(capital(espanol().monthName(m, QLocale::LongFormat)));
    cmbAnualMes->setCurrentIndex(hoy.month() - 1);
    auto* g4 = new QHBoxLayout(frame1[4]);
    anadirPiezas(g4, {etiqueta(frame1[4], u"Dia:"_s), crtNumberPickAnualDia});
    g4->addSpacing(12);
    anadirPiezas(g4, {etiqueta(frame1[4], u"Mes:"_s, cmbAnualMes), cmbAnualMes, nullptr});
}

void ctrScheduledTask::construirPeriodo(const QDate& hoy) {
    // The span of every kind but the first.
    frameFechaIniFechaFin = control<QWidget>(this, u"frameFechaIniFechaFin"_s);
    dpFechaIni = selectorFecha(frameFechaIniFechaFin, u"dpFechaIni"_s);
    dpFechaIni->setDate(hoy);
    chkFechaFin = control<QCheckBox>(frameFechaIniFechaFin, u"chkFechaFin"_s, u"Fecha Fin"_s);
    dpFechaFin = selectorFecha(frameFechaIniFechaFin, u"dpFechaFin"_s);
    dpFechaFin->setDate(hoy);
    dpFechaFin->setEnabled(false);
    auto* gf = new QHBoxLayout(frameFechaIniFechaFin);
    gf->setContentsMargins(0, 0, 0, 0);
    anadirPiezas(gf, {etiqueta(frameFechaIniFechaFin, u"Fecha Inicio:"_s), dpFechaIni});
    gf->addSpacing(16);
    anadirPiezas(gf, {chkFechaFin, dpFechaFin, nullptr});
}

void ctrScheduledTask::nombrarControles() {
    // The labels stand apart from their fields, or say half of it ("Cada").
    nombreAccesible(cmbTipoTask, u"Tarea Programada"_s);
    nombreAccesible(dpHora, u"Hora comienzo"_s);
    nombreAccesible(mvFecha, u"Fecha Tarea"_s);
    nombreAccesible(crtNumberPick1->txtNumber, u"Cada cuántos días"_s);
    nombreAccesible(crtNumberPick2->txtNumber, u"Cada cuántas semanas"_s);
    nombreAccesible(Option1[0], u"Un día fijo del mes"_s);
    nombreAccesible(crtNumberPick3->txtNumber, u"Día del mes"_s);
    nombreAccesible(Option1[1], u"Un día de la semana del mes"_s);
    nombreAccesible(cmbMesSemana, u"Semana del mes"_s);
    nombreAccesible(cmbMesDia, u"Día de la semana"_s);
    nombreAccesible(crtNumberPickAnualDia->txtNumber, u"Día"_s);
    nombreAccesible(cmbAnualMes, u"Mes"_s);
    nombreAccesible(dpFechaIni, u"Fecha Inicio"_s);
    nombreAccesible(dpFechaFin, u"Fecha de fin"_s);
}

void ctrScheduledTask::mostrarPaneles() {
    const int tipo = cmbTipoTask->currentIndex();
    frameFechaIniFechaFin->setVisible(tipo >= 1);
    for (int i = 0; i < frame1.size(); ++i) frame1[i]->setVisible(i == tipo);
}

void ctrScheduledTask::habilitarMensual() {
    const bool esDia = Option1[0]->isChecked();
    crtNumberPick3->setEnabled(esDia);
    cmbMesSemana->setEnabled(!esDia);
    cmbMesDia->setEnabled(!esDia);
}

void ctrScheduledTask::error(const QString& texto) {
    ui().msgBox(texto, Msg::Critical, u"Error - Entrada de datos"_s);
}

void ctrScheduledTask::chkDay_Click(int indice) {
    bool alguno = false;
    for (const QCheckBox* c : chkDay) alguno = alguno || c->isChecked();
    if (!alguno) {
        error(u"Debe de seleccionar al menos un día de la semana"_s);
        chkDay[indice]->setChecked(true);
    }
    Q_EMIT Change();
}

void ctrScheduledTask::chkFechaFin_Click() {
    dpFechaFin->setEnabled(chkFechaFin->isChecked());
    if (dpFechaFin->isEnabled() && dpFechaFin->date() < dpFechaIni->date()) {
        const QSignalBlocker bloqueo(dpFechaFin);
        dpFechaFin->setDate(dpFechaIni->date());
    }
    Q_EMIT Change();
}

void ctrScheduledTask::dpFechaIni_Change() {
    if (dpFechaFin->date() < dpFechaIni->date()) {
        const QSignalBlocker bloqueo(dpFechaFin);
        dpFechaFin->setDate(dpFechaIni->date());
    }
    Q_EMIT Change();
}

void ctrScheduledTask::dpFechaFin_Change() {
    if (!m_escribiendo) {
        const QSignalBlocker bloqueo(dpFechaFin);
        if (dpFechaFin->date() < dpFechaIni->date()) {
            error(u"La fecha seleccionada, no debe ser anterior a la fecha de inicio."_s);
            dpFechaFin->setDate(dpFechaIni->date());
        } else if (dpFechaFin->date() < Reloj::today()) {
            error(u"La fecha seleccionada, no debe ser anterior a la fecha actual."_s);
            dpFechaFin->setDate(Reloj::today());
        }
    }
    Q_EMIT Change();
}

void ctrScheduledTask::mvFecha_Change() {
    if (!m_escribiendo && mvFecha->selectedDate() < Reloj::today()) {
        error(u"La fecha seleccionada, no debe ser anterior a la fecha actual."_s);
        const QSignalBlocker bloqueo(mvFecha);
        mvFecha->setSelectedDate(Reloj::today());
    }
    Q_EMIT Change();
}

std::optional<int16_t> ctrScheduledTask::numeroDe(const ctrNumberPick* n) {
    const std::optional<int> v = n->numero();
    if (!v) return std::nullopt;
    return int16_t(*v);
}

// ---- Properties -------------------------------------------------------------

int32_t ctrScheduledTask::Periodicidad() const {
    return cmbTipoTask->currentIndex();
}
void ctrScheduledTask::setPeriodicidad(int32_t v) {
    cmbTipoTask->setCurrentIndex(v);
}

QString ctrScheduledTask::Hora() const {
    return dpHora->time().toString(u"HH:mm"_s);
}
void ctrScheduledTask::setHora(const QTime& v) {
    dpHora->setTime(QTime(v.hour(), v.minute()));
}

QDate ctrScheduledTask::p_UnaSolaVez_Fecha() const {
    return mvFecha->selectedDate();
}
void ctrScheduledTask::setP_UnaSolaVez_Fecha(const QDate& v) {
    m_escribiendo = true;
    mvFecha->setSelectedDate(v);
    m_escribiendo = false;
}

std::optional<int16_t> ctrScheduledTask::p_Diaria_Cada() const {
    return numeroDe(crtNumberPick1);
}
void ctrScheduledTask::setP_Diaria_Cada(int16_t v) {
    crtNumberPick1->setValor(QString::number(v));
}

std::optional<int16_t> ctrScheduledTask::p_Semanal_Cada() const {
    return numeroDe(crtNumberPick2);
}
void ctrScheduledTask::setP_Semanal_Cada(int16_t v) {
    crtNumberPick2->setValor(QString::number(v));
}

int16_t ctrScheduledTask::p_Semanal_Dias() const {
    int16_t dias = 0;
    for (int i = 0; i < chkDay.size(); ++i)
        if (chkDay[i]->isChecked()) dias = int16_t(dias | (1 << i));
    return dias;
}
void ctrScheduledTask::setP_Semanal_Dias(int16_t v) {
    const int16_t antes = p_Semanal_Dias();
    int resto = v;
    for (int i = 6; i >= 0; --i) {
        const bool marcado = resto >= (1 << i);
        if (marcado) resto -= 1 << i;
        chkDay[i]->setChecked(marcado);
    }
    if (p_Semanal_Dias() != antes) Q_EMIT Change();
}

bool ctrScheduledTask::p_Mensual_Es_Dia() const {
    return Option1[0]->isChecked();
}
void ctrScheduledTask::setP_Mensual_Es_Dia(bool v) {
    const bool antes = p_Mensual_Es_Dia();
    Option1[v ? 0 : 1]->setChecked(true);
    habilitarMensual();
    if (v != antes) Q_EMIT Change();
}

std::optional<int16_t> ctrScheduledTask::p_Mensual_Dia_Mes() const {
    return numeroDe(crtNumberPick3);
}
void ctrScheduledTask::setP_Mensual_Dia_Mes(int16_t v) {
    crtNumberPick3->setValor(QString::number(v));
}

int32_t ctrScheduledTask::p_Mensual_Num_Semana() const {
    return cmbMesSemana->currentIndex() + 1;
}
void ctrScheduledTask::setP_Mensual_Num_Semana(int32_t v) {
    cmbMesSemana->setCurrentIndex(v - 1);
}

int32_t ctrScheduledTask::p_Mensual_dia_Semana() const {
    return cmbMesDia->currentIndex() + 1;
}
void ctrScheduledTask::setP_Mensual_dia_Semana(int32_t v) {
    cmbMesDia->setCurrentIndex(v - 1);
}

std::optional<int16_t> ctrScheduledTask::p_Anual_Dia() const {
    return numeroDe(crtNumberPickAnualDia);
}
void ctrScheduledTask::setP_Anual_Dia(int16_t v) {
    crtNumberPickAnualDia->setValor(QString::number(v));
}

int16_t ctrScheduledTask::p_Anual_Mes() const {
    return int16_t(cmbAnualMes->currentIndex() + 1);
}
void ctrScheduledTask::setP_Anual_Mes(int16_t v) {
    cmbAnualMes->setCurrentIndex(v - 1);
}

QDate ctrScheduledTask::p_Fecha_Ini() const {
    return dpFechaIni->date();
}
void ctrScheduledTask::setP_Fecha_Ini(const QDate& v) {
    dpFechaIni->setDate(v);
}

bool ctrScheduledTask::p_Fecha_Es_Fin() const {
    return chkFechaFin->isChecked();
}

QDate ctrScheduledTask::p_Fecha_Fin() const {
    return chkFechaFin->isChecked() ? dpFechaFin->date() : fechaMaxima();
}
void ctrScheduledTask::setP_Fecha_Fin(const QDate& v) {
    m_escribiendo = true;
    const bool sinFin = v == fechaMaxima();
    chkFechaFin->setChecked(!sinFin);
    dpFechaFin->setEnabled(!sinFin);
    dpFechaFin->setDate(sinFin ? Reloj::today() : v);
    m_escribiendo = false;
    Q_EMIT Change();
}

QVariant ctrScheduledTask::propiedad(Propiedad p) const {
    return programa().valor(p);
}

void ctrScheduledTask::setPropiedad(Propiedad p, const QVariant& v) {
    switch (p) {
        case Propiedad::Periodicidad:
            setPeriodicidad(v.toInt());
            break;
        case Propiedad::Hora:
            setHora(v.toTime());
            break;
        case Propiedad::UnaSolaVezFecha:
            setP_UnaSolaVez_Fecha(v.toDate());
            break;
        case Propiedad::DiariaCada:
            setP_Diaria_Cada(int16_t(v.toInt()));
            break;
        case Propiedad::SemanalCada:
            setP_Semanal_Cada(int16_t(v.toInt()));
            break;
        case Propiedad::SemanalDias:
            setP_Semanal_Dias(int16_t(v.toInt()));
            break;
        case Propiedad::MensualEsDia:
            setP_Mensual_Es_Dia(v.toBool());
            break;
        case Propiedad::MensualDiaMes:
            setP_Mensual_Dia_Mes(int16_t(v.toInt()));
            break;
        case Propiedad::MensualNumSemana:
            setP_Mensual_Num_Semana(v.toInt());
            break;
        case Propiedad::MensualDiaSemana:
            setP_Mensual_dia_Semana(v.toInt());
            break;
        case Propiedad::AnualDia:
            setP_Anual_Dia(int16_t(v.toInt()));
            break;
        case Propiedad::AnualMes:
            setP_Anual_Mes(int16_t(v.toInt()));
            break;
        case Propiedad::FechaIni:
            setP_Fecha_Ini(v.toDate());
            break;
        case Propiedad::FechaFin:
            setP_Fecha_Fin(v.toDate());
            break;
    }
}

void ctrScheduledTask::terminarEdicion() {
    for (QAbstractSpinBox* campo :
         {static_cast<QAbstractSpinBox*>(dpHora), static_cast<QAbstractSpinBox*>(dpFechaIni),
          static_cast<QAbstractSpinBox*>(dpFechaFin)})
        campo->interpretText();
}

Programa ctrScheduledTask::programa() const {
    Programa p;
    p.periodicidad = Periodicidad();
    p.hora = dpHora->time();
    p.unaSolaVezFecha = p_UnaSolaVez_Fecha();
    p.diariaCada = p_Diaria_Cada();
    p.semanalCada = p_Semanal_Cada();
    p.semanalDias = p_Semanal_Dias();
    p.mensualEsDia = p_Mensual_Es_Dia();
    p.mensualDiaMes = p_Mensual_Dia_Mes();
    p.mensualNumSemana = p_Mensual_Num_Semana();
    p.mensualDiaSemana = p_Mensual_dia_Semana();
    p.anualDia = p_Anual_Dia();
    p.anualMes = p_Anual_Mes();
    p.fechaIni = p_Fecha_Ini();
    p.fechaFin = p_Fecha_Fin();
    return p;
}
