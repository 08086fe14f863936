#pragma once

#include "history/mdoHistorico.h"
#include "widgets/Ocupacion.h"

#include <QWidget>

class ModeloPaginado;
class QDateEdit;
class QGroupBox;
class QPushButton;
class QRadioButton;
class VistaLineas;

// "Mensajes Enviados": what the batch sender delivered, newest first; a
// past message can be queued again and old history deleted.
class frmHEnvios : public QWidget {
    Q_OBJECT
  public:
    explicit frmHEnvios(QWidget* parent = nullptr);

    // Fills the list from the table and sorts it by date, newest first.
    void msCargarHistorico();
    // What a click on the header of column `columna` (from 0) does.
    void ordenarPorColumna(int columna);
    // The column the list is sorted by (Historico::Id for the date) and
    // its direction.
    int columnaOrden() const { return m_columna; }
    bool descendente() const { return m_descendente; }

    void XPButton1_Click();
    void XPButton2_Click();
    // A deletion or a count is under way: the screen takes no input but
    // "Cerrar".
    bool ocupada() const { return m_ocupacion.activa(); }

    VistaLineas* ListView1;
    QGroupBox* Frame1;
    QRadioButton* Option1_0;
    QRadioButton* Option1_1;
    QDateEdit* txtfecha;
    QPushButton* XPButton1;
    QPushButton* XPButton2;
    QPushButton* cmdClose;

  private:
    void crearLista();
    void crearEliminacion();
    void pintarCabecera();
    int filaElegida() const;
    void borrar(bool todos, const QDate& dia);
    void ocupar(bool ocupada);

    ModeloPaginado* m_modelo;
    int m_columna = Historico::Id;
    bool m_descendente = true;
    // The last reading of the list asked for: an earlier one that ends
    // later shows nothing.
    int m_lectura = 0;
    Ocupacion m_ocupacion;
};
