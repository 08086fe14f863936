#include "widgets/Listado.h"

#include <QHeaderView>
#include <QKeyEvent>

#include <algorithm>

namespace {

// Ctrl and a column's number do what a click on that header does.
class OrdenTeclado : public QObject {
  public:
    using QObject::QObject;

  protected:
    bool eventFilter(QObject* objeto, QEvent* e) override {
        if (e->type() != QEvent::KeyPress) return false;
        auto* vista = static_cast<QTreeView*>(objeto);
        const auto* tecla = static_cast<QKeyEvent*>(e);
        const int columna = tecla->key() - Qt::Key_1;
        if (tecla->modifiers() != Qt::ControlModifier || columna < 0 || columna > 8 ||
            !vista->model() || columna >= vista->model()->columnCount())
            return false;
        Q_EMIT vista->header()->sectionClicked(columna);
        return true;
    }
};

}  // namespace

void ordenarConTeclado(QTreeView* vista) {
    vista->installEventFilter(new OrdenTeclado(vista));
}

Listado::Listado(const QString& nombre, const QStringList& cabeceras, QWidget* parent)
    : QTreeView(parent), m_modelo(new ModeloListado(cabeceras, this)) {
    setObjectName(nombre);
    setModel(m_modelo);
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSortingEnabled(false);
    QHeaderView* h = header();
    h->setSectionsClickable(true);
    h->setSectionsMovable(false);
    h->setSectionResizeMode(QHeaderView::Interactive);
    h->setStretchLastSection(true);
    h->setSortIndicatorShown(true);
    h->setSortIndicator(0, Qt::AscendingOrder);
    connect(h, &QHeaderView::sectionClicked, this, &Listado::ordenarPorColumna);
    ordenarConTeclado(this);
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
    QTreeView::keyPressEvent(event);
}

void Listado::showEvent(QShowEvent* event) {
    QTreeView::showEvent(event);
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
