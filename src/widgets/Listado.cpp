#include "widgets/Listado.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QStyledItemDelegate>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The focus frame goes round the whole line (VistaLineas::paintEvent), so
// no cell draws one of its own.
class SinMarcoDeCelda : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* p, const QStyleOptionViewItem& opcion,
               const QModelIndex& i) const override {
        QStyleOptionViewItem celda(opcion);
        celda.state &= ~QStyle::State_HasFocus;
        QStyledItemDelegate::paint(p, celda, i);
    }
};

}  // namespace

VistaLineas::VistaLineas(QWidget* parent) : QTableView(parent) {
    setItemDelegate(new SinMarcoDeCelda(this));
    setShowGrid(false);
    setWordWrap(false);
    setCornerButtonEnabled(false);
    setTabKeyNavigation(false);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setSortingEnabled(false);
    QHeaderView* filas = verticalHeader();
    filas->hide();
    filas->setSectionResizeMode(QHeaderView::Fixed);
    filas->setMinimumSectionSize(1);
    QHeaderView* h = horizontalHeader();
    h->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    h->setHighlightSections(false);
    h->setSectionsClickable(true);
    h->setSectionsMovable(false);
    h->setSortIndicatorShown(true);
    ajustarAlto();
}

void VistaLineas::ajustarAlto() {
    // A line as tall as the style makes one line of text in this font.
    QStyleOptionViewItem opcion;
    initViewItemOption(&opcion);
    opcion.features |= QStyleOptionViewItem::HasDisplay;
    opcion.text = u"Ág"_s;
    const QSize alto = style()->sizeFromContents(QStyle::CT_ItemViewItem, &opcion, QSize(), this);
    verticalHeader()->setDefaultSectionSize(std::max(alto.height(), fontMetrics().height()));
}

void VistaLineas::changeEvent(QEvent* event) {
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) ajustarAlto();
}

void VistaLineas::paintEvent(QPaintEvent* event) {
    QTableView::paintEvent(event);
    const QModelIndex actual = currentIndex();
    if (!hasFocus() || !actual.isValid()) return;
    QStyleOptionFocusRect marco;
    marco.initFrom(this);
    marco.state |= QStyle::State_KeyboardFocusChange;
    marco.rect = QRect(-horizontalOffset(), rowViewportPosition(actual.row()),
                       horizontalHeader()->length(), rowHeight(actual.row()));
    const bool elegida = selectionModel()->isRowSelected(actual.row(), rootIndex());
    marco.backgroundColor = palette().color(elegida ? QPalette::Highlight : QPalette::Base);
    QPainter pintor(viewport());
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &marco, &pintor, this);
}

void VistaLineas::repintarLinea(int fila) {
    viewport()->update(QRect(0, rowViewportPosition(fila), viewport()->width(), rowHeight(fila)));
}

void VistaLineas::currentChanged(const QModelIndex& actual, const QModelIndex& anterior) {
    QTableView::currentChanged(actual, anterior);
    if (anterior.isValid()) repintarLinea(anterior.row());
    if (actual.isValid()) repintarLinea(actual.row());
}

void VistaLineas::focusInEvent(QFocusEvent* event) {
    QTableView::focusInEvent(event);
    if (currentIndex().isValid()) repintarLinea(currentIndex().row());
}

void VistaLineas::focusOutEvent(QFocusEvent* event) {
    QTableView::focusOutEvent(event);
    if (currentIndex().isValid()) repintarLinea(currentIndex().row());
}

QModelIndex VistaLineas::moveCursor(CursorAction accion, Qt::KeyboardModifiers teclas) {
    // Home and End go along the lines, as in any list, not along the columns.
    const QModelIndex actual = currentIndex();
    const int filas = model() ? model()->rowCount(rootIndex()) : 0;
    if ((accion == MoveHome || accion == MoveEnd) && actual.isValid() && filas > 0)
        return model()->index(accion == MoveHome ? 0 : filas - 1, actual.column(), rootIndex());
    return QTableView::moveCursor(accion, teclas);
}

void VistaLineas::keyPressEvent(QKeyEvent* event) {
    const int columna = event->key() - Qt::Key_1;
    if (event->modifiers() == Qt::ControlModifier && columna >= 0 && columna <= 8 && model() &&
        columna < model()->columnCount()) {
        Q_EMIT horizontalHeader()->sectionClicked(columna);
        return;
    }
    QTableView::keyPressEvent(event);
}

Listado::Listado(const QString& nombre, const QStringList& cabeceras, QWidget* parent)
    : VistaLineas(parent), m_modelo(new ModeloListado(cabeceras, this)) {
    setObjectName(nombre);
    setModel(m_modelo);
    QHeaderView* h = header();
    h->setSectionResizeMode(QHeaderView::Interactive);
    h->setStretchLastSection(true);
    h->setSortIndicator(0, Qt::AscendingOrder);
    connect(h, &QHeaderView::sectionClicked, this, &Listado::ordenarPorColumna);
    connect(this, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& i) {
        if (i.isValid()) Q_EMIT dobleClicFila(i.row());
    });
}

void Listado::keyPressEvent(QKeyEvent* event) {
    // What a double click does, for those who work with the keyboard.
    const bool intro = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (intro && (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier &&
        currentIndex().isValid()) {
        Q_EMIT dobleClicFila(currentIndex().row());
        return;
    }
    VistaLineas::keyPressEvent(event);
}

void Listado::showEvent(QShowEvent* event) {
    VistaLineas::showEvent(event);
    if (m_anchosMirados) return;
    m_anchosMirados = true;
    // A column starts at least as wide as its caption and the sort arrow,
    // whatever width the screen gave it; the user's widths come later.
    for (int c = 0; c < header()->count(); ++c)
        if (!isColumnHidden(c) && columnWidth(c) < header()->sectionSizeHint(c))
            setColumnWidth(c, header()->sectionSizeHint(c));
}

void Listado::usarModelo(ModeloListado* modelo) {
    ModeloListado* viejo = m_modelo;
    modelo->setParent(this);
    m_modelo = modelo;
    QItemSelectionModel* seleccion = selectionModel();
    setModel(modelo);
    delete seleccion;
    if (viejo != modelo) delete viejo;
}

void Listado::setSeleccionMultiple(bool multiple) {
    setSelectionMode(multiple ? QAbstractItemView::ExtendedSelection
                              : QAbstractItemView::SingleSelection);
}

void Listado::ordenarPorColumna(int columna) {
    m_descendente = !m_descendente;
    const Qt::SortOrder orden = m_descendente ? Qt::DescendingOrder : Qt::AscendingOrder;
    m_modelo->sort(columna, orden);
    header()->setSortIndicator(columna, orden);
}

int Listado::filaActual() const {
    const QModelIndex i = currentIndex();
    if (i.isValid() && selectionModel()->isRowSelected(i.row(), QModelIndex())) return i.row();
    const QList<int> filas = filasSeleccionadas();
    return filas.isEmpty() ? -1 : filas.first();
}

QList<int> Listado::filasSeleccionadas() const {
    QList<int> filas;
    const QModelIndexList sel = selectionModel()->selectedRows();
    filas.reserve(sel.size());
    for (const QModelIndex& i : sel) filas.append(i.row());
    std::sort(filas.begin(), filas.end());
    return filas;
}

void Listado::seleccionarFila(int fila, bool anadir) {
    const QModelIndex i = m_modelo->index(fila, 0);
    if (!i.isValid()) return;
    auto flags = QItemSelectionModel::Rows |
                 (anadir ? QItemSelectionModel::Select : QItemSelectionModel::ClearAndSelect);
    selectionModel()->setCurrentIndex(i, flags);
}
