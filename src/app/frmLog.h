#pragma once

#include "app/frmShowLineLog.h"

#include <QDockWidget>
#include <QPointer>

class QListView;
class QModelIndex;

// The activity log along the lower edge of the frame. The list is a view
// over the log itself, so thousands of lines cost no widget each; it
// follows the newest line.
class frmLog : public QDockWidget {
    Q_OBJECT
  public:
    explicit frmLog(QWidget* parent = nullptr);
    QListView* List1() const { return m_list; }
    // The detail screen, once a line has been opened.
    frmShowLineLog* detalle() const { return m_detalle; }

  private:
    void List1_DblClick(const QModelIndex& index);

    QListView* m_list;
    QPointer<frmShowLineLog> m_detalle;
};
