#include "scheduling/frmNewMenAuto2.h"

#include "base/EstadoAplicacion.h"
#include "base/RegistroActividad.h"
#include "scheduling/ctrScheduledTask.h"
#include "scheduling/frmSeleccionMensaje.h"
#include "scheduling/frmSeleccionMensaje2.h"
#include "scheduling/mdoProgramacion.h"
#include "widgets/Accesible.h"
#include "widgets/Boton.h"
#include "widgets/Cuadros.h"
#include "widgets/Listado.h"
#include "widgets/ModeloPaginado.h"
#include "widgets/Montaje.h"
#include "widgets/ReglasPantallas.h"

#include <QCoreApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmNewMenAuto2::frmNewMenAuto2(QWidget* parent) : QDialog(parent) {
    identificar(this, u"frmNewMenAuto2"_s, u"Mantenimiento de Mensajes Programados"_s,
                u"programar"_s);
    setModal(true);

    tabs = control<QTabWidget>(this, u"tabs"_s);
    tabs->addTab(crearGeneral(), u"&General"_s);
    tabs->addTab(crearMensajes(), u"&Mensajes"_s);
    tabs->addTab(crearProgramar(), u"&Programar"_s);

    XPButton2 = botonConNombre(this, u"XPButton2"_s, u"&Cerrar"_s);
    // Enter in a field closes and saves, as Alt+C does; so does Escape.
    XPButton2->setDefault(true);
    ReglasPantallas::marcarCierre(XPButton2);
    auto* v = new QVBoxLayout(this);
    v->addWidget(tabs, 1);
    v->addLayout(fila({nullptr, XPButton2}));
    resize(640, 560);

    // Lines show by contact name from the start, with the arrow on it.
    m_destinatarios->ordenar(0, false);
    lblTarea->setText(u"No hay ninguna tarea programada"_s);

    connect(ctrScheduledTask1, &ctrScheduledTask::Change, this,
            &frmNewMenAuto2::ctrScheduledTask1_Change);
    for (int i = 0; i < optTask.size(); ++i)
        connect(optTask[i], &QRadioButton::clicked, this, [this, i] { optTask_Click(i); });
    connect(cmdAdd, &QPushButton::clicked, this, &frmNewMenAuto2::cmdAdd_Click);
    connect(XPButton1, &QPushButton::clicked, this, &frmNewMenAuto2::XPButton1_Click);
    connect(cmdDelete, &QPushButton::clicked, this, &frmNewMenAuto2::cmdDelete_Click);
    connect(XPButton3, &QPushButton::clicked, this, &frmNewMenAuto2::XPButton3_Click);
    connect(ListView1, &Listado::dobleClicFila, this, [this](int fila) {
        if (!ListView1->modelo()->texto(fila, 0).isEmpty()) XPButton3_Click();
    });
    conectarUnaVez(XPButton2, this, &frmNewMenAuto2::XPButton2_Click);
    // The tab list, not only its open tab, has a name of its own.
    nombreAccesible(tabs, u"Mensaje programado"_s);
    nombreAccesible(tabs->tabBar(), u"Apartados del mensaje programado"_s);
    nombreAccesible(txtNombre, u"Descripción"_s);
    nombreAccesible(ListView1, u"Contactos y mensajes"_s);
}

QWidget* frmNewMenAuto2::crearGeneral() {
    auto* general = new QWidget(tabs);
    txtNombre = campoTexto(general, u"txtNombre"_s, 50);
    lblTarea = control<QLabel>(general, u"lblTarea"_s);
    lblTarea->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    lblTarea->setMinimumHeight(140);
    lblTarea->setFrameShape(QFrame::StyledPanel);
    lblTarea->setMargin(6);
    lblProximaTarea = control<QLabel>(general, u"lblProximaTarea"_s);
    lblContactos = control<QLabel>(general, u"lblContactos"_s);
    auto* g = new QGridLayout(general);
    filasFormulario(g, {{u"Descripción : "_s, txtNombre}});
    g->addWidget(lblTarea, 1, 0, 1, 2);
    g->addWidget(lblProximaTarea, 2, 0, 1, 2);
    g->addWidget(lblContactos, 3, 0, 1, 2);
    g->setRowStretch(4, 1);
    return general;
}

QWidget* frmNewMenAuto2::crearMensajes() {
    auto* mensajes = new QWidget(tabs);
    const QStringList cabeceras{u"Contacto"_s, u"Mensaje a enviar"_s};
    ListView1 = new Listado(u"ListView1"_s, cabeceras, mensajes);
    m_destinatarios = new ModeloPaginado(definicionDestinatarios(), cabeceras, this);
    ListView1->usarModelo(m_destinatarios);
    ListView1->setColumnWidth(0, 160);
    cmdAdd = botonConNombre(mensajes, u"cmdAdd"_s, u"Ag&regar Contactos"_s);
    XPButton1 = botonConNombre(mensajes, u"XPButton1"_s, u"&Eliminar Contacto seleccionado"_s);
    cmdDelete = botonConNombre(mensajes, u"cmdDelete"_s, u"E&liminar Todos los Contactos"_s);
    XPButton3 = botonConNombre(mensajes, u"XPButton3"_s, u"&Modificar Mensajes"_s);
    auto* m = new QVBoxLayout(mensajes);
    m->addWidget(ListView1, 1);
    m->addLayout(fila({cmdAdd, XPButton1, cmdDelete, XPButton3, nullptr}));
    return mensajes;
}

QWidget* frmNewMenAuto2::crearProgramar() {
    auto* programar = new QWidget(tabs);
    for (const QString& t : {u"No programar"_s, u"Programar tarea"_s})
        optTask.append(control<QRadioButton>(programar, u"optTask(%1)"_s.arg(optTask.size()), t));
    optTask[0]->setChecked(true);
    ctrScheduledTask1 = control<ctrScheduledTask>(programar, u"ctrScheduledTask1"_s);
    ctrScheduledTask1->setEnabled(false);
    auto* p = new QVBoxLayout(programar);
    p->addLayout(fila({optTask[0], optTask[1], nullptr}));
    p->addWidget(ctrScheduledTask1, 1);
    return programar;
}

void frmNewMenAuto2::editar(int32_t codigo, QWidget* parent) {
    frmNewMenAuto2 editor(parent);
    editor.setCodigo(codigo);
    editor.exec();
}

void frmNewMenAuto2::setCodigo(int32_t codigo) {
    m_codigo = codigo;
    m_cargado = false;
    m_enCarga = true;
    txtNombre->clear();
    lblTarea->setText(u"No hay ninguna tarea programada"_s);
    ResultadoConsulta fila;
    try {
        fila = leerAutomatico(codigo);
    } catch (const ErrorQuelmo&) {
        // An unreadable row opens as a new one, below.
    }
    if (fila.isEmpty()) {
        m_enCarga = false;
        mostrarProximaTarea();
        return;
    }
    const int opcion = programaActivo(fila) ? 1 : 0;
    optTask[opcion]->setChecked(true);
    optTask_Click(opcion);

    // A column that is null leaves its property as it was.
    auto columna = [&fila](const QString& nombre) {
        const int c = fila.columnIndex(nombre);
        return c < 0 ? QVariant() : fila.value(0, c);
    };
    const QVariant tipo = valorDeColumna(Propiedad::Periodicidad, columna(u"Periodicidad"_s));
    const QVariant esDia = valorDeColumna(Propiedad::MensualEsDia, columna(u"MensualEsDia"_s));
    for (const auto& [prop, col] :
         columnasAlCargar(tipo.isValid() ? tipo.toInt() : -1, esDia.isValid() && esDia.toBool())) {
        const QVariant v = valorDeColumna(prop, columna(col));
        if (v.isValid()) ctrScheduledTask1->setPropiedad(prop, v);
    }
    txtNombre->setText(columna(u"Nombre"_s).toString());
    cargarDestinatarios();
    m_cargado = true;
    m_enCarga = false;
    mostrarProximaTarea();
}

void frmNewMenAuto2::cargarDestinatarios() {
    // A quarter of a million lines are counted over turns: meanwhile the
    // list and what acts on its lines take nothing.
    const int lectura = ++m_lectura;
    if (!m_ocupacion.activa())
        m_ocupacion.ocupar(this, {ListView1, cmdAdd, XPButton1, cmdDelete, XPButton3});
    QPointer<frmNewMenAuto2> pantalla(this);
    prepararDestinatarios(m_codigo, [pantalla, lectura](std::optional<int> lineas) {
        if (!pantalla || lectura != pantalla->m_lectura) return;
        pantalla->m_ocupacion.soltar();
        // Unreadable, the list shows empty, as it does with no lines.
        pantalla->lblContactos->setText(u"Este envío tiene "_s +
                                        QString::number(lineas.value_or(0)) + u" mensaje(s)"_s);
        pantalla->m_destinatarios->cargar(lineas.value_or(0));
    });
}

void frmNewMenAuto2::ctrScheduledTask1_Change() {
    // Loading writes the control too; only a change the user makes lets a
    // changed schedule fire again today.
    if (m_cargado) olvidarUltimaTarea(m_codigo);
    if (optTask[0]->isChecked())
        lblTarea->setText(u"No hay ninguna tera programada"_s);
    else
        lblTarea->setText(ctrScheduledTask1->Descripcion());
    if (!m_enCarga) mostrarProximaTarea();
}

void frmNewMenAuto2::optTask_Click(int indice) {
    ctrScheduledTask1->setEnabled(indice != 0);
    ctrScheduledTask1_Change();
}

void frmNewMenAuto2::mostrarProximaTarea() {
    lblProximaTarea->setText(u"Programado: "_s + proximaTareaDe(m_codigo, optTask[1]->isChecked(),
                                                                ctrScheduledTask1->programa()));
}

void frmNewMenAuto2::frmAux_CambiaMensaje(const QString& Mensaje, bool Personalizar) {
    m_mensaje = Mensaje;
    m_saludo = Personalizar;
}

void frmNewMenAuto2::frmAux2_changeMensaje(long long Id_AboAuto, const QString& Mensaje) {
    cambiarMensajeDestinatario(Id_AboAuto, Mensaje);
    cargarDestinatarios();
}

void frmNewMenAuto2::cmdAdd_Click() {
    estadoAplicacion().gsDestinos.clear();
    const QString nombre = txtNombre->text();
    try {
        if (otroCodigoConNombre(m_codigo, nombre) >= 0) {
            ui().msgBox(u"El nombre seleccionado para este Envío Múltiple ya existe..."_s,
                        Msg::Critical);
            return;
        }
    } catch (const ErrorQuelmo& e) {
        ui().msgBox(u"Error en Mantenimiento de Mensajes Programados\n"_s + e.description(),
                    Msg::Critical);
        return;
    }
    {
        frmSeleccionMensaje picker(this);
        connect(&picker, &frmSeleccionMensaje::CambiaMensaje, this,
                &frmNewMenAuto2::frmAux_CambiaMensaje);
        picker.exec();
    }
    const QString elegidos = estadoAplicacion().gsDestinos;
    estadoAplicacion().gsDestinos.clear();
    if (elegidos.isEmpty()) return;
    // Thousands of recipients go in over turns: meanwhile the editor takes
    // nothing.
    m_ocupacion.ocupar(this, {ListView1, cmdAdd, XPButton1, cmdDelete, XPButton3, XPButton2});
    QPointer<frmNewMenAuto2> pantalla(this);
    anadirDestinatarios(m_codigo, nombre, elegidos.split(u';'), m_mensaje, m_saludo,
                        [pantalla](const Resultado<int>& anadidos) {
                            if (pantalla) pantalla->m_ocupacion.soltar();
                            mostrar(anadidos);
                            if (pantalla) pantalla->cargarDestinatarios();
                        });
}

void frmNewMenAuto2::XPButton1_Click() {
    const int fila = ListView1->filaActual();
    if (fila < 0) return;
    if (quitarDestinatario(m_destinatarios->clave(fila))) cargarDestinatarios();
}

void frmNewMenAuto2::cmdDelete_Click() {
    if (m_destinatarios->rowCount() == 0) return;
    if (ui().msgBox(
            u"Esta seguro que desea eliminar todos los Contactos para este mensaje automático ?"_s,
            Msg::YesNo | 32) != Msg::Yes)
        return;
    m_ocupacion.ocupar(this, {ListView1, cmdAdd, XPButton1, cmdDelete, XPButton3, XPButton2});
    QPointer<frmNewMenAuto2> pantalla(this);
    quitarTodosDestinatarios(m_codigo, [pantalla](bool) {
        if (!pantalla) return;
        pantalla->m_ocupacion.soltar();
        pantalla->cargarDestinatarios();
    });
}

void frmNewMenAuto2::XPButton3_Click() {
    const int fila = ListView1->filaActual();
    if (fila < 0) return;
    frmSeleccionMensaje2 editor(this);
    editor.setId_AboAuto(m_destinatarios->clave(fila));
    editor.setMensaje(m_destinatarios->texto(fila, 1));
    connect(&editor, &frmSeleccionMensaje2::changeMensaje, this,
            &frmNewMenAuto2::frmAux2_changeMensaje);
    editor.exec();
}

void frmNewMenAuto2::XPButton2_Click() {
    // What the fields show is what is stored, however Cerrar was reached.
    ctrScheduledTask1->terminarEdicion();
    guardarMensajeProgramado(m_codigo, txtNombre->text(), optTask[1]->isChecked(),
                             ctrScheduledTask1->programa());
    accept();
}
