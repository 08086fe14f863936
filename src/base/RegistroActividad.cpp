#include "base/RegistroActividad.h"

#include "base/EstadoAplicacion.h"
#include "base/Reloj.h"
#include "base/SecretoOculto.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

bool esControl(char16_t c) {
    return c < 32 || (c >= 127 && c < 160);
}

}  // namespace

// Lines quote the texts of files and replies, which may carry control
// characters; raw, an escape sequence would reach the terminal that shows
// the log of --headless or --import. Letters, accented ones too, stay.
QString msEscaparControles(const QString& line) {
    if (std::none_of(line.cbegin(), line.cend(), [](QChar c) { return esControl(c.unicode()); }))
        return line;
    QString out;
    out.reserve(line.size() + 8);
    for (const QChar c : line) {
        if (esControl(c.unicode()))
            out += u'<' + QString::number(c.unicode()) + u'>';
        else
            out += c;
    }
    return out;
}

RegistroActividad::RegistroActividad(QObject* parent) : QAbstractListModel(parent) {}

void RegistroActividad::append(const QString& texto) {
    const QString line = msEscaparControles(texto);
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
    } catch (...) {
        // Silent by necessity: a line that can't be written has nowhere
        // else to go, and logging must never stop the routine that logs.
    }
}
