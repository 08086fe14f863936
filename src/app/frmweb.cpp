#include "app/frmweb.h"

#include "app/AppState.h"
#include "app/Conversions.h"
#include "app/mdoMain.h"
#include "delivery/Despliegue.h"

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

// The compiled-in pictures live in this static library: register them as
// soon as any screen that shows one is linked in.
static void iniciarRecursos() {
    Q_INIT_RESOURCE(quelmo);
}

namespace {
[[maybe_unused]] const bool kRecursos = (iniciarRecursos(), true);

// A photograph larger than any screen only costs memory and scaling time.
constexpr int kLadoMaximo = 3840;
}  // namespace

frmweb::frmweb(QWidget* parent) : QMdiArea(parent) {
    setObjectName(u"frmweb"_s);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    cargarfondo();
}

QImage frmweb::fondoIncluido() {
    static const QImage incluido(u":/quelmo/fondo.png"_s);
    return incluido;
}

void frmweb::cargarfondo() {
    // 1. No row, or no connection yet, counts as no picture.
    QString imgfondo;
    try {
        const QueryResult r = appState().Conexion.query(u"select imgfondo from opciones"_s);
        if (!r.isEmpty()) imgfondo = textoDe(r.value(0, 0));
    } catch (const QuelmoError&) {
    }
    // 2-3. The user's picture; otherwise (or if it can't be read) ours.
    QImage propia;
    if (!imgfondo.isEmpty()) {
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
    // 4.
    ui().processEvents();
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

frmWinfo::frmWinfo(QWidget* parent) : QDialog(parent) {
    setObjectName(u"frmWinfo"_s);
    setWindowTitle(u"Acerca de Quelmo Mensajes SMS"_s);

    auto* icono = new QLabel(this);
    icono->setPixmap(iconoQuelmo(u"aplicacion"_s).pixmap(64, 64));
    icono->setAlignment(Qt::AlignTop);

    auto* titulo = new QLabel(u"Quelmo Mensajes SMS"_s, this);
    titulo->setObjectName(u"lblTitulo"_s);
    QFont f = titulo->font();
    f.setPointSizeF(f.pointSizeF() * 1.6);
    f.setBold(true);
    titulo->setFont(f);

    auto* version = new QLabel(
        u"Versión %1.%2.%3"_s.arg(kVersionMajor).arg(kVersionMinor).arg(kVersionRevision), this);
    version->setObjectName(u"lblVersion"_s);

    auto* texto = new QLabel(
        u"Envío de mensajes SMS a sus contactos y listas a través de la plataforma web de "
        u"mensajería: mensajes al momento, programados o importados desde ficheros de texto, "
        u"con el histórico de todo lo enviado."_s,
        this);
    texto->setWordWrap(true);

    auto* web =
        new QLabel(u"<a href=\"%1\">%2</a>"_s.arg(Despliegue::web(), Despliegue::web()), this);
    web->setObjectName(u"lblWeb"_s);
    web->setTextInteractionFlags(Qt::TextBrowserInteraction);
    connect(web, &QLabel::linkActivated, this, [](const QString& url) { msAbrirUrl(url); });

    auto* textos = new QVBoxLayout;
    textos->addWidget(titulo);
    textos->addWidget(version);
    textos->addSpacing(8);
    textos->addWidget(texto);
    textos->addWidget(web);
    textos->addStretch();

    auto* arriba = new QHBoxLayout;
    arriba->addWidget(icono);
    arriba->addSpacing(12);
    arriba->addLayout(textos, 1);

    auto* botones = new QDialogButtonBox(this);
    QPushButton* contacta = botones->addButton(u"C&ontacta"_s, QDialogButtonBox::ActionRole);
    contacta->setObjectName(u"cmdContacta"_s);
    QPushButton* cerrar = botones->addButton(u"&Cerrar"_s, QDialogButtonBox::RejectRole);
    cerrar->setObjectName(u"cmdCerrar"_s);
    cerrar->setDefault(true);
    connect(contacta, &QPushButton::clicked, this,
            [] { msAbrirUrl(Despliegue::web() + u"/paginas_de_programas/contactqm.php"_s); });
    connect(botones, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* todo = new QVBoxLayout(this);
    todo->addLayout(arriba);
    todo->addSpacing(12);
    todo->addWidget(botones);
    setFixedWidth(480);
}

QIcon iconoQuelmo(const QString& nombre) {
    return QIcon(u":/quelmo/iconos/"_s + nombre + u".png"_s);
}

QString rutaAyuda() {
    return directorioAplicacion() + u"/ayuda/Quelmo Mensajes SMS.html"_s;
}

void msAyuda() {
    // The browser can't read inside the program, so the manual is written out
    // next to the user's data, and only when it changed.
    QFile origen(u":/quelmo/ayuda/index.html"_s);
    if (!origen.open(QIODevice::ReadOnly)) return;
    const QByteArray manual = origen.readAll();
    const QString ruta = rutaAyuda();
    QFile destino(ruta);
    const bool igual = destino.open(QIODevice::ReadOnly) && destino.readAll() == manual;
    destino.close();
    if (!igual) {
        QDir().mkpath(QFileInfo(ruta).absolutePath());
        if (!destino.open(QIODevice::WriteOnly | QIODevice::Truncate)) return;
        destino.write(manual);
        destino.close();
    }
    msAbrirUrl(ruta);
}
