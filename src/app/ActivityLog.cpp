#include "app/ActivityLog.h"

ActivityLog::ActivityLog(QObject* parent) : QAbstractListModel(parent) {}

void ActivityLog::append(const QString& line) {
    const int row = int(m_lines.size());
    beginInsertRows(QModelIndex(), row, row);
    m_lines.append(line);
    endInsertRows();
    if (m_echo) m_echo(line);
    Q_EMIT lineAdded(row);
}

void ActivityLog::clear() {
    if (m_lines.isEmpty()) return;
    beginResetModel();
    m_lines.clear();
    endResetModel();
}

int ActivityLog::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_lines.size());
}

QVariant ActivityLog::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_lines.size()) return {};
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole) return m_lines.at(index.row());
    return {};
}
