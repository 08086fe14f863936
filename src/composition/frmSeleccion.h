#pragma once

#include <QDialog>

class ListaInforme;
class QLineEdit;
class QPushButton;

// "Selección de destinatarios": contacts and lists are moved into a third
// list; accepting turns it into one destinations text in `gsDestinos`.
class frmSeleccion : public QDialog {
    Q_OBJECT
  public:
    explicit frmSeleccion(QWidget* parent = nullptr);

  private:
    void msCargarListados();
    void moverContactos(bool todos);
    void anadirListas(bool todos);
    void moverContacto(int fila);
    void anadirLista(int fila);
    void devolverDestino(int fila);
    void cmdVaciarLista_Click();
    void cmdBuscar_Click();
    void cmdAdd_Click();

    ListaInforme* lstcontactos;
    ListaInforme* lstlistas;
    ListaInforme* lstdestinos;
    QLineEdit* txtBuscar;
};
