#pragma once

#include "widgets/Ocupacion.h"

#include <QDialog>
#include <functional>
#include <memory>

class Listado;
struct LecturaContactos;
class QLineEdit;
class QPushButton;

// "Selección de destinatarios": contacts and lists are moved into a third
// list; accepting turns it into one destinations text in `gsDestinos`.
class frmSeleccion : public QDialog {
    Q_OBJECT
  public:
    explicit frmSeleccion(QWidget* parent = nullptr);
    ~frmSeleccion() override;
    // The chosen lines as one destinations text, empty when none, given to
    // `alTerminar` once worked out, over turns; a failure shows its box and
    // gives what was gathered.
    void elegirDestinos(std::function<void(const QString&)> alTerminar);

  private:
    void crearControles();
    void colocar();
    void nombrarControles();
    void msCargarListados();
    void seguirContactos(std::shared_ptr<LecturaContactos> lectura, int numero, bool primera);
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
    Ocupacion m_ocupacion;
    // The reading of the contacts under way; an older one stops.
    int m_lectura = 0;
};
