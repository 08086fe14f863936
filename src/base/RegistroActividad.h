#pragma once

#include <QAbstractListModel>
#include <QStringList>
#include <functional>

// The in-memory activity log: one line per event, "{date time} - {text}",
// in order of arrival, without limit, written to no file. A list model, so
// the log panel shows thousands of lines without a widget per line.
class RegistroActividad : public QAbstractListModel {
    Q_OBJECT
  public:
    explicit RegistroActividad(QObject* parent = nullptr);

    // Control characters (below 32, 127 to 159) are written as "<code>",
    // as in a "Buffer: " line; every other character stays as it is.
    void append(const QString& line);
    void clear();
    const QStringList& lines() const { return m_lines; }
    QString last() const { return m_lines.isEmpty() ? QString() : m_lines.last(); }

    // Headless mode prints each line as it comes.
    void setEcho(std::function<void(const QString&)> echo) { m_echo = std::move(echo); }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

  Q_SIGNALS:
    // After a line was added; the panel selects it, which scrolls to the end.
    void lineAdded(int row);

  private:
    QStringList m_lines;
    std::function<void(const QString&)> m_echo;
};

// Adds a line "{date time} - {text}" to the activity log; a text starting
// "Buffer: " has its control and non-ASCII characters written as "<code>".
void msLog(const QString& text);
QString msEscaparBuffer(const QString& text);
// Control characters only (below 32, 127 to 159) as "<code>": what every
// line of the log gets, whatever text it quotes.
QString msEscaparControles(const QString& text);
// The date and time in front of every log line.
QString marcaTiempoLog();
