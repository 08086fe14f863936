#pragma once

#include <QDialog>
#include <QIcon>
#include <QImage>
#include <QMdiArea>

// The background panel of the frame: the area where child screens open,
// painted with the user's picture (`opciones.imgfondo`) or, when none is
// set or it can't be read, the picture that comes with the program.
class frmweb : public QMdiArea {
    Q_OBJECT
  public:
    explicit frmweb(QWidget* parent = nullptr);

    // Decides what the panel shows; after the options are saved it shows a
    // new picture at once.
    void cargarfondo();
    const QImage& fondo() const { return m_fondo; }
    // True when the picture shown is the user's own.
    bool fondoPropio() const { return m_propio; }

    // The picture that comes with the program.
    static QImage fondoIncluido();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    QImage m_fondo;
    QPixmap m_escalado;
    bool m_propio = false;
};

// "Acerca de": the program, its version and the way to the maker.
class frmWinfo : public QDialog {
    Q_OBJECT
  public:
    explicit frmWinfo(QWidget* parent = nullptr);
};

// One of the program's own icons by name ("enviar", "ayuda"...).
QIcon iconoQuelmo(const QString& nombre);

// Opens the help manual in the desktop's browser.
void msAyuda();
// Where the manual is written out for the browser.
QString rutaAyuda();
