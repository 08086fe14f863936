#pragma once

#include "widgets/Ocupacion.h"

#include <QDialog>
#include <cstdint>
#include <functional>
#include <vector>

class Listado;
class ModeloPaginado;
class QLabel;
class QPushButton;

// The members of one list: contacts outside it on the left, inside on the
// right. Moves are kept apart until cmdAdd stores them all at once;
// closing drops them. Both lists read a page at a time.
class frmUserGroup : public QDialog {
    Q_OBJECT
  public:
    explicit frmUserGroup(QWidget* parent = nullptr);

    // Loads both lists for sNombreGrupo and nCodGrupo (set them first).
    void msCargarUsuariosParaGrupo();

    void Command1_Click();
    void cmdTodos_Click();
    void cmdQuitar_Click();
    void cmdquitarTodos_Click();
    void cmdAdd_Click();
    void cmdClose_Click();
    void done(int resultado) override;
    // Reading or storing the list: nothing to click, no closing.
    bool ocupada() const { return m_ocupacion.activa(); }

    QString sNombreGrupo;
    int16_t nCodGrupo = -1;

    Listado* lstcontactos;
    Listado* lstLista;
    QPushButton* Command1;
    QPushButton* cmdTodos;
    QPushButton* cmdQuitar;
    QPushButton* cmdquitarTodos;
    QPushButton* cmdAdd;
    QPushButton* cmdClose;
    QLabel* lblcont;

  private:
    void ocupar(bool ocupada);
    // Moves lines of one side to the end of the other, from the last up.
    void mover(bool haciaDentro, const QList<int>& filas);
    void moverTodos(bool haciaDentro);
    // Runs a move, given what to call once it is done.
    void trasMover(const std::function<void(std::function<void()>)>& mover);
    // Reads both sides after a move.
    void recargar();

    ModeloPaginado* m_dentro;
    ModeloPaginado* m_fuera;
    Ocupacion m_ocupacion;
};
