#include "base/RegistroActividad.h"

#include "base/EstadoAplicacion.h"
#include "base/Reloj.h"
#include "base/SecretoOculto.h"

using namespace Qt::StringLiterals;

RegistroActividad::RegistroActividad(QObject* parent) : QAbstractListModel(parent) {}

void RegistroActividad::append(const QString& line) {
    const int row = int(m_lines.size());
    beginInsertRows(QModelIndex(), row, row);
    m_lines.append(line);
    endInsertRows();
    if (m_echo) m_echo(line);
    Q_EMIT lineAdded(row);
}

void RegistroActividad::clear() {
    if (m_lines.isEmpty()) return;
    beginResetModel();
    m_lines.clear();
    endResetModel();
}

int RegistroActividad::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_lines.size());
}

QVariant RegistroActividad::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_lines.size()) return {};
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole) return m_lines.at(index.row());
    return {};
}

QString marcaTiempoLog() {
    return Reloj::now().toString(u"dd/MM/yyyy HH:mm:ss"_s);
}

QString msEscaparBuffer(const QString& text) {
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        const int codigo = c.unicode();
        if (codigo < 32 || codigo > 127)
            out += u'<' + QString::number(codigo) + u'>';
        else
            out += c;
    }
    return out;
}

void msLog(const QString& text) {
    try {
        const QString oculto = ocultarSecretos(text);
        const QString t = oculto.startsWith(u"Buffer: "_s) ? msEscaparBuffer(oculto) : oculto;
        estadoAplicacion().log.append(marcaTiempoLog() + u" - "_s + t);
        // The yield that lets the user act during a transmitter run.
        ui().processEvents();
    } catch (...) {
        // Silent by necessity: a line that can't be written has nowhere
        // else to go, and logging must never stop the routine that logs.
    }
}
