#include "composition/crtAutoComplete.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QLocale>
#include <QStringListModel>
#include <QVBoxLayout>
#include <limits>

using namespace Qt::StringLiterals;

crtAutoComplete::crtAutoComplete(QWidget* parent) : QWidget(parent) {
    m_text1 = new QLineEdit(this);
    m_text1->setObjectName(u"Text1"_s);
    // The picker may leave every contact of a large book here: the line's
    // usual limit would cut the list without a word.
    m_text1->setMaxLength(std::numeric_limits<int>::max());
    m_text1->setToolTip(
        u"Si desea enviar el mensajes a más de un contacto, separe los mismo por ;"_s);
    auto* capa = new QVBoxLayout(this);
    capa->setContentsMargins(0, 0, 0, 0);
    capa->addWidget(m_text1);
    setFocusProxy(m_text1);

    // The list lies over whatever is under the box, so it belongs to the
    // window rather than to the box's layout; it is placed when shown.
    m_ofrecidos = new QStringListModel(this);
    m_list1 = new QListView(this);
    m_list1->setObjectName(u"List1"_s);
    m_list1->setModel(m_ofrecidos);
    m_list1->setUniformItemSizes(true);
    // A click on the list takes the focus from the field, and with it the
    // suggestions: only the keys accept one.
    m_list1->setFocusPolicy(Qt::ClickFocus);
    m_list1->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list1->hide();
    m_text1->installEventFilter(this);
}

crtAutoComplete::~crtAutoComplete() {
    // The list may have moved to the window; it goes with the box.
    delete m_list1.data();
}

namespace {
// The longest list the box shows whole: a line lays out and paints all its
// text at each repaint, the caret's blink included (110 ms for the 700,000
// characters of 50,000 names).
constexpr qsizetype kLargoMostrado = 4000;
// A longer one shows the names that fit in about this many characters, so
// that how many follow is in view.
constexpr qsizetype kInicioMostrado = 60;
}  // namespace

QString crtAutoComplete::Texto() const {
    return resumido() ? m_completo : m_text1->text();
}

void crtAutoComplete::setTexto(const QString& texto) {
    // One name, however long, is no list to sum up.
    if (texto.size() <= kLargoMostrado || !texto.contains(u';')) {
        m_completo.clear();
        m_text1->setReadOnly(false);
        m_text1->setText(texto);
        return;
    }
    m_completo = texto;
    qsizetype corte = texto.lastIndexOf(u';', kInicioMostrado);
    if (corte <= 0) corte = texto.indexOf(u';');
    const qsizetype resto = QStringView(texto).mid(corte).count(u';');
    m_text1->setReadOnly(true);
    m_text1->setText(texto.left(corte) + u";  … y "_s +
                     QLocale(QLocale::Spanish, QLocale::Spain).toString(resto) + u" más"_s);
    m_text1->setCursorPosition(0);
}

QStringList crtAutoComplete::ofrecidos() const {
    return m_ofrecidos->stringList();
}

QString crtAutoComplete::elegido() const {
    const QModelIndex i = m_list1->currentIndex();
    return i.isValid() ? i.data().toString() : QString();
}

bool crtAutoComplete::eventFilter(QObject* objeto, QEvent* evento) {
    if (objeto == m_text1 && m_list1) {
        switch (evento->type()) {
            case QEvent::KeyPress:
                if (resumido()) return teclaEnResumen(static_cast<QKeyEvent*>(evento)->key());
                if (teclaPulsada(static_cast<QKeyEvent*>(evento)->key())) return true;
                break;
            case QEvent::KeyRelease:
                if (resumido()) break;
                teclaSoltada(static_cast<QKeyEvent*>(evento)->key());
                break;
            case QEvent::FocusOut:
                vaciarLista();
                mostrarLista(false);
                break;
            default:
                break;
        }
    }
    return QWidget::eventFilter(objeto, evento);
}

bool crtAutoComplete::teclaEnResumen(int tecla) {
    switch (tecla) {
        case Qt::Key_Delete:
        case Qt::Key_Backspace:
        case Qt::Key_Escape:
            setTexto({});
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            Q_EMIT enterSinSugerencias();
            return true;
        default:
            // Moving about and Tab go on as usual.
            return false;
    }
}

bool crtAutoComplete::teclaPulsada(int tecla) {
    if (tecla != Qt::Key_Down && tecla != Qt::Key_Up) return false;
    const int n = m_ofrecidos->rowCount();
    const int actual = m_list1->currentIndex().isValid() ? m_list1->currentIndex().row() : -1;
    const int nueva = tecla == Qt::Key_Down ? actual + 1 : actual - 1;
    if (nueva >= 0 && nueva < n) m_list1->setCurrentIndex(m_ofrecidos->index(nueva));
    return true;
}

void crtAutoComplete::teclaSoltada(int tecla) {
    if (tecla == Qt::Key_Up || tecla == Qt::Key_Down) return;
    const QString texto = m_text1->text();
    const AutoCompletado::NombreActual actual =
        AutoCompletado::nombreActual(texto, m_text1->cursorPosition());
    const bool enter = tecla == Qt::Key_Return || tecla == Qt::Key_Enter;
    if (enter && m_ofrecidos->rowCount() > 0) {
        int cursor = 0;
        m_text1->setText(AutoCompletado::aceptar(texto, actual, elegido(), &cursor));
        m_text1->setCursorPosition(cursor);
        vaciarLista();
        mostrarLista(false);
        return;
    }
    if (enter) {
        Q_EMIT enterSinSugerencias();
        return;
    }
    vaciarLista();
    const QStringList encontrados =
        AutoCompletado::sugerencias(m_searchList, m_delimitador, actual.nombre);
    if (!encontrados.isEmpty() && m_text1->hasSelectedText()) m_text1->del();
    m_ofrecidos->setStringList(encontrados);
    mostrarLista(!encontrados.isEmpty());
    if (!encontrados.isEmpty()) m_list1->setCurrentIndex(m_ofrecidos->index(0));
}

void crtAutoComplete::vaciarLista() {
    m_ofrecidos->setStringList({});
}

void crtAutoComplete::mostrarLista(bool visible) {
    if (!visible) {
        m_list1->hide();
        return;
    }
    colocarLista();
    m_list1->show();
    m_list1->raise();
}

void crtAutoComplete::colocarLista() {
    QWidget* ventana = window();
    if (m_list1->parentWidget() != ventana) m_list1->setParent(ventana);
    // Two lines' height for one or two names, one per name up to four,
    // five lines' height beyond.
    const int n = m_ofrecidos->rowCount();
    const int lineas = n <= 2 ? 2 : (n <= 4 ? n : 5);
    const int alto =
        m_list1->sizeHintForRow(0) > 0 ? m_list1->sizeHintForRow(0) : fontMetrics().height() + 2;
    const QPoint abajo = m_text1->mapTo(ventana, QPoint(0, m_text1->height()));
    m_list1->setGeometry(abajo.x(), abajo.y(), m_text1->width(),
                         lineas * alto + 2 * m_list1->frameWidth());
}

void crtAutoComplete::resizeEvent(QResizeEvent* evento) {
    QWidget::resizeEvent(evento);
    if (m_list1->isVisible()) colocarLista();
}
