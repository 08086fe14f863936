#pragma once

#include "widgets/Ocupacion.h"

#include <QCoro/QCoroTask>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <memory>

class ImagenInterruptor;
class Listado;
class ModeloPaginado;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTimer;
class crtAutoComplete;
struct LecturaContactos;

// "Envío de Mensajes": one text, its destinations and the account that
// pays for it become outbox rows; below, the outbox itself, which the user
// can change, empty or push out at once.
class frmEnvio : public QWidget {
    Q_OBJECT
  public:
    explicit frmEnvio(QWidget* parent = nullptr);

    // Rebuilds the account combo with the stored balances and renews the
    // counter; false when there was no account to show. Screens that
    // change accounts, and the batch sender, call it.
    bool msCargarCanales();
    // Reads the outbox anew and redraws the list.
    void msActualizaLista();
    // Renews the counter after the text was set from outside.
    void txtMensaje_cambiar();

  protected:
    bool eventFilter(QObject* objeto, QEvent* evento) override;
    void showEvent(QShowEvent* evento) override;
    void keyPressEvent(QKeyEvent* evento) override;

  private:
    void construir();
    void crearCampos();
    void crearBotones();
    void colocar();
    void cmdAbonados_Click();
    void cmdAnadir_Click();
    // The add routine; `despues` runs once it has ended, whatever the end.
    void anadir(std::function<void()> despues);
    void tomarRechazados(const QString& rechazados);
    void pedirEnvio();
    void cmdEnviar_Click();
    void cmdModificar_Click();
    void cmdEliminar_Click();
    void cmdEliminarTodos_Click();
    QCoro::Task<> cmdSaldo_Click();
    void cmdRecarga_Click();
    void imgmt_DblClick();
    void Timer1_Timer();
    void msAbrirBandeja();
    void msPintarBandeja();
    void msCargarContactos();
    void seguirContactos(std::shared_ptr<LecturaContactos> lectura, std::shared_ptr<QString> lista);
    void contador();
    void mostrarTransmisor(bool activo);
    void colocarEnMarco(bool activacion);
    int64_t canalElegido() const;
    QString preguntaFila(const QString& inicio, int fila) const;
    void tomarTexto(const QString& texto);
    void tomarCuenta(int canal);

    QComboBox* ImageCombo1 = nullptr;
    crtAutoComplete* crtAutoComplete1 = nullptr;
    // The box's text as the add routine and the picker work through it;
    // not a hidden line of its own, which would lay out every name again.
    QString m_destinos;
    QPlainTextEdit* txtMensaje = nullptr;
    QLabel* lblCaracteres = nullptr;
    QLabel* lblmas = nullptr;
    QLabel* lblcont = nullptr;
    ImagenInterruptor* imgmt = nullptr;
    QLabel* lmt = nullptr;
    QPushButton* cmdAbonados = nullptr;
    QPushButton* cmdMenPro = nullptr;
    QPushButton* cmdAnadir = nullptr;
    QPushButton* cmdEnvMult = nullptr;
    QPushButton* cmdSaldo = nullptr;
    QPushButton* cmdRecarga = nullptr;
    QPushButton* cmdEnviar = nullptr;
    QPushButton* cmdModificar = nullptr;
    QPushButton* cmdEliminar = nullptr;
    QPushButton* cmdEliminarTodos = nullptr;
    QPushButton* CmdSalir = nullptr;
    Listado* ListView1 = nullptr;
    ModeloPaginado* m_bandeja = nullptr;
    QTimer* Timer1 = nullptr;

    int32_t mlMensajes = 0;
    int miCanal = -1;
    int miLargoTextos = 0;
    QString msNotaTextos;
    bool m_colocada = false;
    Ocupacion m_ocupacion;

  public:
    // "Eliminar Todos" is emptying the outbox over turns.
    bool ocupada() const { return m_ocupacion.activa(); }
};
