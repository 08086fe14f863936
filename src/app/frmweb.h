#pragma once

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
