#include "app/frmLog.h"

#include "base/EstadoAplicacion.h"
#include "widgets/Accesible.h"

#include <QFontDatabase>
#include <QListView>
#include <QScrollBar>
#include <QShortcut>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmLog::frmLog(QWidget* parent) : QDockWidget(u"Eventos de la aplicación"_s, parent) {
    setObjectName(u"frmLog"_s);
    // It stays along the lower edge: no moving, floating or closing.
    setFeatures(QDockWidget::NoDockWidgetFeatures);
    setAllowedAreas(Qt::BottomDockWidgetArea);

    m_list = new QListView(this);
    m_list->setObjectName(u"List1"_s);
    m_list->setModel(&estadoAplicacion().log);
    m_list->setUniformItemSizes(true);
    // Laid out in batches, a new line costs the same with 20,000 lines above
    // it as with none; a full layout at each line grows with the list.
    m_list->setLayoutMode(QListView::Batched);
    m_list->setBatchSize(1000);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setAlternatingRowColors(true);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setTextElideMode(Qt::ElideRight);
    m_list->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_list->setMinimumHeight(90);
    setWidget(m_list);

    connect(&estadoAplicacion().log, &RegistroActividad::lineAdded, m_list,
            [this](int row) { m_list->setCurrentIndex(estadoAplicacion().log.index(row)); });
    // The batches reach the end after the selection has moved there: keep
    // the newest line in sight as the list grows.
    connect(m_list->verticalScrollBar(), &QScrollBar::rangeChanged, m_list, [this](int, int max) {
        if (m_list->currentIndex().row() == estadoAplicacion().log.rowCount() - 1)
            m_list->verticalScrollBar()->setValue(max);
    });
    connect(m_list, &QListView::doubleClicked, this, &frmLog::List1_DblClick);
    // Enter opens the current line in full, as a double click does.
    for (const auto tecla : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* atajo = new QShortcut(QKeySequence(tecla), m_list);
        atajo->setContext(Qt::WidgetShortcut);
        connect(atajo, &QShortcut::activated, this,
                [this] { List1_DblClick(m_list->currentIndex()); });
    }
    nombreAccesible(m_list, u"Eventos de la aplicación"_s,
                    u"Intro muestra la línea elegida completa"_s);
}

void frmLog::List1_DblClick(const QModelIndex& index) {
    if (!index.isValid()) return;
    if (!m_detalle) {
        m_detalle = new frmShowLineLog(window());
        m_detalle->setAttribute(Qt::WA_DeleteOnClose);
    }
    m_detalle->mostrar(index.data().toString());
}
