#include "app/frmShowLineLog.h"

#include <QPlainTextEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmShowLineLog::frmShowLineLog(QWidget* parent) : QDialog(parent) {
    setObjectName(u"frmShowLineLog"_s);
    setWindowTitle(u"Detalle del Log"_s);
    m_txtLog = new QPlainTextEdit(this);
    m_txtLog->setObjectName(u"txtLog"_s);
    m_txtLog->setReadOnly(true);
    m_txtLog->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    m_txtLog->setAccessibleName(u"Línea del registro de eventos"_s);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_txtLog);
    resize(520, 200);
}

void frmShowLineLog::mostrar(const QString& linea) {
    m_txtLog->setPlainText(linea);
    show();
    raise();
    activateWindow();
}
