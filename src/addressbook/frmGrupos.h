#pragma once

#include "db/BaseDatos.h"
#include "widgets/Ocupacion.h"

#include <QWidget>
#include <cstdint>

class Listado;
class QPushButton;

// The lists, with their member counts.
class frmGrupos : public QWidget {
    Q_OBJECT
  public:
    explicit frmGrupos(QWidget* parent = nullptr);

    void cmdAdd_Click();
    void cmdEdit_Click();
    void cmdDelete_Click();
    void cmdUsuarios_Click();
    void cmdPublicar_Click();

    // The list that the publication screen is to publish.
    struct ListaElegida {
        QString nombre;
        int16_t grupo = -1;
    };
    // The list of the last publication asked for here.
    const ListaElegida& listaAPublicar() const { return m_listaAPublicar; }

    Listado* ListView1;
    QPushButton* cmdAdd;
    QPushButton* cmdEdit;
    QPushButton* cmdDelete;
    QPushButton* cmdUsuarios;
    QPushButton* cmdPublicar;
    QPushButton* cmdClose;

  Q_SIGNALS:
    // `cmdPublicar` on a list: the publication screen is to open for it.
    void publicacionPedida(const frmGrupos::ListaElegida& lista);

  private:
    void msAbrirListas();
    void msPintarListas();
    // The row of adoPrimaryRS for the selected line, -1 when none.
    int filaElegida() const;
    void abrirMiembros(const QString& nombre, int16_t grupo);

    ResultadoConsulta adoPrimaryRS;
    ListaElegida m_listaAPublicar;
    Ocupacion m_ocupacion;

  public:
    // A list is being deleted over turns.
    bool ocupada() const { return m_ocupacion.activa(); }
};
