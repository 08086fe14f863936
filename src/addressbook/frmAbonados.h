#pragma once

#include "db/BaseDatos.h"
#include "widgets/Ocupacion.h"

#include <QWidget>

class Listado;
class ModeloPaginado;
class QLabel;
class QPushButton;

// The contacts, with add, edit and delete.
class frmAbonados : public QWidget {
    Q_OBJECT
  public:
    explicit frmAbonados(QWidget* parent = nullptr);

    void msPintarContactos();
    // Reads the contacts again and redraws (after a change made elsewhere).
    void requery();
    // Opens the editor for a new contact, or says that an account must
    // exist first; true when the editor was shown.
    static bool msNuevoContacto(QWidget* padre);

    void cmdAdd_Click();
    void cmdEdit_Click();
    void cmdDelete_Click();
    void cmdDeletetodos_Click();

    Listado* ListView1;
    QLabel* lblcont;
    QPushButton* cmdAdd;
    QPushButton* cmdEdit;
    QPushButton* cmdDelete;
    QPushButton* cmdDeletetodos;
    QPushButton* cmdClose;

    // Wide enough for every column at its usual width.
    QSize sizeHint() const override;

  private:
    // Deletes the contacts numbered `codigos` (or all the list shows) and
    // says how many went.
    void borrarFilas(const QStringList& codigos, bool todos = false);
    // The buttons that change contacts, and the list, while some go.
    void permitirCambios(bool si);

    QSize m_tamano;
    ModeloPaginado* m_contactos;
    Ocupacion m_ocupacion;
};
