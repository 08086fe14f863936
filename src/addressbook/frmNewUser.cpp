#include "addressbook/frmNewUser.h"

#include "addressbook/mdoAgenda.h"
#include "base/Conversiones.h"
#include "widgets/Boton.h"
#include "widgets/Cuadros.h"
#include "widgets/Montaje.h"

#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QStringListModel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmNewUser::frmNewUser(QWidget* parent) : QDialog(parent), m_listas(new QStringListModel(this)) {
    identificar(this, u"frmNewUser"_s, u"Nuevo Contacto"_s, u"contactos"_s);
    setModal(true);

    txtAbonado = campoTexto(this, u"txtAbonado"_s, 15);
    txtAlias = campoTexto(this, u"txtAlias"_s, 30);
    txtComentario = campoTexto(this, u"txtComentario"_s, 50);
    for (QLineEdit* e : {txtAbonado, txtAlias, txtComentario}) e->installEventFilter(this);
    cmbCanales = control<QComboBox>(this, u"cmbCanales"_s);
    lstGrupos = control<QListView>(this, u"lstGrupos"_s);
    lstGrupos->setModel(m_listas);
    lstGrupos->setUniformItemSizes(true);
    lstGrupos->setSelectionMode(QAbstractItemView::MultiSelection);
    lstGrupos->setEditTriggers(QAbstractItemView::NoEditTriggers);
    lstGrupos->setAccessibleName(u"Asignación a Listas"_s);
    cmdAnadir = botonConNombre(this, u"cmdAñadir"_s, u"&Añadir Contacto"_s);
    CmdSalir = botonConNombre(this, u"CmdSalir"_s, u"&Cerrar"_s);

    auto* form = new QFormLayout;
    form->addRow(u"Número de Móvil"_s, txtAbonado);
    form->addRow(u"Nombre de Contacto"_s, txtAlias);
    form->addRow(u"Comentario del contacto"_s, txtComentario);
    form->addRow(u"Cuenta"_s, cmbCanales);
    auto* v = new QVBoxLayout(this);
    v->addLayout(form);
    anadirPiezas(v, {etiqueta(this, u"Asignación a Listas"_s), {lstGrupos, 1}});
    v->addLayout(fila({nullptr, cmdAnadir, CmdSalir}));

    connect(cmdAnadir, &QPushButton::clicked, this, [this] {
        if (mbGuardarContacto()) accept();
    });
    connect(CmdSalir, &QPushButton::clicked, this, &QDialog::reject);
}

bool frmNewUser::eventFilter(QObject* watched, QEvent* event) {
    // The field being typed in stands out in yellow.
    if (auto* e = qobject_cast<QLineEdit*>(watched)) {
        if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
            QPalette p = e->palette();
            p.setColor(QPalette::Base,
                       event->type() == QEvent::FocusIn ? QColor(255, 255, 0) : QColor(Qt::white));
            e->setPalette(p);
        }
    }
    return QDialog::eventFilter(watched, event);
}

void frmNewUser::prepararEdicion(const QString& codigo, int16_t canal, const QString& alias,
                                 const QString& comentario) {
    txtAbonado->setText(codigo);
    txtAbonado->setEnabled(false);
    miCanalContacto = canal;
    txtAlias->setText(alias);
    txtComentario->setText(comentario);
    cmdAnadir->setText(u"&Modificar Usuario"_s);
    setWindowTitle(u"Modificar Usuario"_s);
}

bool frmNewUser::msLoad() {
    msCargarListas();
    return mbCargarCuentas();
}

void frmNewUser::msCargarListas() {
    const ResultadoConsulta rs = abrirListas();
    if (rs.isEmpty()) {
        lstGrupos->setEnabled(false);
        return;
    }
    QStringList entradas;
    for (int f = 0; f < rs.recordCount(); ++f)
        entradas.append(entradaLista(int(numeroDe(rs.value(f, u"Grupo"_s))),
                                     textoDe(rs.value(f, u"Nombre"_s))));
    m_listas->setStringList(entradas);
    if (txtAbonado->isEnabled()) return;
    for (int f = 0; f < rs.recordCount(); ++f)
        if (mbEstaEnLista(txtAbonado->text(), int16_t(numeroDe(rs.value(f, u"Grupo"_s)))))
            lstGrupos->selectionModel()->select(m_listas->index(f), QItemSelectionModel::Select);
}

bool frmNewUser::mbCargarCuentas() {
    const ResultadoConsulta rs = abrirCuentas();
    if (rs.isEmpty()) {
        cmbCanales->setEnabled(false);
        return false;
    }
    cmbCanales->clear();
    m_canales.clear();
    for (int f = 0; f < rs.recordCount(); ++f) {
        const auto canal = int16_t(numeroDe(rs.value(f, u"Canal"_s)));
        cmbCanales->addItem(textoDe(rs.value(f, u"Nombre"_s)));
        m_canales.append(canal);
    }
    // A new contact gets no account preselected, not even the principal one:
    // the user has to choose.
    cmbCanales->setCurrentIndex(txtAbonado->isEnabled() ? -1
                                                        : int(m_canales.indexOf(miCanalContacto)));
    return true;
}

bool frmNewUser::mbGuardarContacto() {
    FichaContacto f;
    f.codigo = txtAbonado->text();
    f.alias = txtAlias->text();
    f.comentario = txtComentario->text();
    f.cuenta = cmbCanales->currentText();
    const int i = cmbCanales->currentIndex();
    f.canal = i >= 0 && i < m_canales.size() ? m_canales.at(i) : int16_t(0);
    f.nuevo = txtAbonado->isEnabled();
    const QStringList entradas = m_listas->stringList();
    for (int r = 0; r < entradas.size(); ++r)
        if (lstGrupos->selectionModel()->isSelected(m_listas->index(r)))
            f.listas.append(entradas.at(r));
    return mostrar(::mbGuardarContacto(f));
}
