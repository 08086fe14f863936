#pragma once

#include <QDialog>

class Listado;
class QLineEdit;
class QPushButton;

// "Selección de destinatarios": contacts and lists are moved into a third
// list; accepting turns it into one destinations text in `gsDestinos`.
class frmSeleccion : public QDialog {
    Q_OBJECT
  public:
    explicit frmSeleccion(QWidget* parent = nullptr);
    // The chosen lines as one destinations text, empty when none; a
    // failure shows its box and gives what was gathered.
    QString destinosElegidos() const;

  private:
    void crearControles();
    void colocar();
    void nombrarControles();
    void msCargarListados();
    void moverContactos(QList<int> filas);
    void anadirListas(QList<int> filas);
    void devolverDestino(int fila);
    void cmdVaciarLista_Click();
    void cmdBuscar_Click();
    void cmdAdd_Click();

    Listado* lstcontactos;
    Listado* lstlistas;
    Listado* lstdestinos;
    QLineEdit* txtBuscar;
    QPushButton* cmdBuscar;
    QPushButton* Command1;
    QPushButton* cmdTodos;
    QPushButton* Command2;
    QPushButton* cmdTodoslista;
    QPushButton* cmdVaciarLista;
    QPushButton* cmdAdd;
    QPushButton* cmdClose;
};
