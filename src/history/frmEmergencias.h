#pragma once

#include "history/mdoEmergencias.h"

#include <QWidget>

class Listado;
class QPushButton;

// "Selección de Mensajes Programados para envío inmediato": a saved
// multi-send put into the outbox at once. Opening and closing it changes
// nothing in the schedule.
class frmEmergencias : public QWidget {
    Q_OBJECT
  public:
    explicit frmEmergencias(QWidget* parent = nullptr);

    // Shows the one instance, or says that there is nothing to send and
    // closes it.
    static void abrir();

    // Reads the multi-sends and fills the list; false when there is none.
    bool msCargar();
    void cmdEnviar_Click();
    // Opens the scheduled message editor on the line's multi-send, then
    // reads the list again.
    void editar(int fila);

    Listado* ListView1;
    QPushButton* cmdEnviar;
    QPushButton* cmdClose;

  private:
    int codigoDeFila(int fila) const;
};
