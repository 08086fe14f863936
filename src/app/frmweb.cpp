#include "app/frmweb.h"

#include "app/mdoOpciones.h"
#include "base/Avisos.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QImageReader>
#include <QLabel>
#include <QPaintEvent>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
// A photograph larger than any screen only costs memory and scaling time.
constexpr int kLadoMaximo = 3840;
}  // namespace

frmweb::frmweb(QWidget* parent) : QMdiArea(parent) {
    setObjectName(u"frmweb"_s);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    cargarfondo();
    connect(&Avisos::instancia(), &Avisos::opcionesGuardadas, this, &frmweb::cargarfondo);
}

QImage frmweb::fondoIncluido() {
    static const QImage incluido(u":/quelmo/fondo.png"_s);
    return incluido;
}

void frmweb::cargarfondo() {
    // The user's picture; otherwise (or if it can't be read) ours.
    const QString imgfondo = leerImagenFondo();
    QImage propia;
    // The database named as the picture is never read outside the engine:
    // closing that descriptor would drop the engine's locks on it.
    if (!imgfondo.isEmpty() && !Conexion().esArchivoPropio(imgfondo)) {
        QImageReader lector(imgfondo);
        lector.setAutoTransform(true);
        propia = lector.read();
        if (propia.width() > kLadoMaximo || propia.height() > kLadoMaximo)
            propia = propia.scaled(kLadoMaximo, kLadoMaximo, Qt::KeepAspectRatio,
                                   Qt::SmoothTransformation);
    }
    m_propio = !propia.isNull();
    m_fondo = m_propio ? propia : fondoIncluido();
    m_escalado = QPixmap();
    viewport()->update();
}

void frmweb::resizeEvent(QResizeEvent* event) {
    QMdiArea::resizeEvent(event);
    m_escalado = QPixmap();
}

void frmweb::paintEvent(QPaintEvent* event) {
    QPainter p(viewport());
    const QSize tam = viewport()->size();
    if (m_fondo.isNull() || tam.isEmpty()) {
        p.fillRect(event->rect(), palette().window());
        return;
    }
    // The picture covers the whole area, cut evenly where the shapes differ;
    // scaled once per size, not at every repaint.
    if (m_escalado.size() != tam) {
        const QImage cubierta =
            m_fondo.scaled(tam, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
        const QRect corte(
            QPoint((cubierta.width() - tam.width()) / 2, (cubierta.height() - tam.height()) / 2),
            tam);
        m_escalado = QPixmap::fromImage(cubierta.copy(corte));
    }
    p.drawPixmap(event->rect(), m_escalado, event->rect());
}
