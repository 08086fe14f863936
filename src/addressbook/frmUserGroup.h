#pragma once

#include <QDialog>
#include <cstdint>

class Listado;
class QLabel;
class QPushButton;

// The members of one list: contacts outside it on the left, inside on the
// right. Moves stay on screen until cmdAdd stores them all at once.
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
    // Moves lines from `origen` to the end of `destino`, from the last up.
    static void mover(Listado* origen, Listado* destino, const QList<int>& filas);
};
