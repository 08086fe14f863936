#pragma once

#include "widgets/Ocupacion.h"

#include <QDialog>
#include <QVector>
#include <cstdint>

class ctrScheduledTask;
class Listado;
class ModeloPaginado;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;

// "Mantenimiento de Mensajes Programados": one multi-send (a name and its
// recipients, each with a text of its own) and, if wanted, its schedule.
// Recipients are stored as they are added or removed; the name and the
// schedule when the screen is closed with XPButton2. A new multi-send
// exists only once a recipient was added.
class frmNewMenAuto2 : public QDialog {
    Q_OBJECT
  public:
    explicit frmNewMenAuto2(QWidget* parent = nullptr);

    // Shows the editor of multi-send `codigo` modally over `parent`.
    static void editar(int32_t codigo, QWidget* parent);

    int32_t codigo() const { return m_codigo; }
    // Loads the screen from the row (if it exists yet).
    void setCodigo(int32_t codigo);

    void frmAux_CambiaMensaje(const QString& Mensaje, bool Personalizar);
    void frmAux2_changeMensaje(long long Id_AboAuto, const QString& Mensaje);

    QTabWidget* tabs;
    QLineEdit* txtNombre;
    QLabel* lblTarea;
    QLabel* lblProximaTarea;
    QLabel* lblContactos;
    Listado* ListView1;
    QPushButton* cmdAdd;
    QPushButton* XPButton1;
    QPushButton* cmdDelete;
    QPushButton* XPButton3;
    QVector<QRadioButton*> optTask;
    ctrScheduledTask* ctrScheduledTask1;
    QPushButton* XPButton2;

  private:
    QWidget* crearGeneral();
    QWidget* crearMensajes();
    QWidget* crearProgramar();
    void cargarDestinatarios();
    void ctrScheduledTask1_Change();
    void optTask_Click(int indice);
    void mostrarProximaTarea();
    void cmdAdd_Click();
    void XPButton1_Click();
    void cmdDelete_Click();
    void XPButton3_Click();
    void XPButton2_Click();

    int32_t m_codigo = 0;
    // False until a stored row was loaded: only then does a change of the
    // schedule touch the database.
    bool m_cargado = false;
    // While setCodigo writes the control: the next run is shown once, after.
    bool m_enCarga = false;
    QString m_mensaje;
    bool m_saludo = false;
    ModeloPaginado* m_destinatarios;
    // The last reading of the list asked for: an earlier one that ends
    // later shows nothing.
    int m_lectura = 0;
    Ocupacion m_ocupacion;

  public:
    // Its recipients are being added, deleted or counted over turns.
    bool ocupada() const { return m_ocupacion.activa(); }
};
