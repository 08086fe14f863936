#include "scheduling/ctrNumberPick.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

ctrNumberPick::ctrNumberPick(QWidget* parent) : QWidget(parent) {
    txtNumber = new QLineEdit(this);
    txtNumber->setObjectName(u"txtNumber"_s);
    txtNumber->installEventFilter(this);
    auto* UpDown1 = new QWidget(this);
    UpDown1->setObjectName(u"UpDown1"_s);
    arriba = new QToolButton(UpDown1);
    arriba->setObjectName(u"arriba"_s);
    arriba->setArrowType(Qt::UpArrow);
    abajo = new QToolButton(UpDown1);
    abajo->setObjectName(u"abajo"_s);
    abajo->setArrowType(Qt::DownArrow);
    for (QToolButton* b : {arriba, abajo}) {
        b->setAutoRepeat(true);
        b->setFixedSize(18, 12);
        b->setFocusPolicy(Qt::NoFocus);
    }
    auto* v = new QVBoxLayout(UpDown1);
    v->setContentsMargins(0, 0, 0, 0);
    v->setSpacing(0);
    v->addWidget(arriba);
    v->addWidget(abajo);
    auto* h = new QHBoxLayout(this);
    h->setContentsMargins(0, 0, 0, 0);
    h->setSpacing(1);
    h->addWidget(txtNumber, 1);
    h->addWidget(UpDown1);
    txtNumber->setMaximumWidth(48);

    connect(txtNumber, &QLineEdit::textChanged, this, &ctrNumberPick::textoCambiado);
    connect(arriba, &QToolButton::clicked, this, [this] { girar(1); });
    connect(abajo, &QToolButton::clicked, this, [this] { girar(-1); });
}

QString ctrNumberPick::Valor() const {
    return txtNumber->text();
}

void ctrNumberPick::setValor(const QString& valor) {
    txtNumber->setText(valor);
}

std::optional<int> ctrNumberPick::numero() const {
    bool ok = false;
    const int n = txtNumber->text().toInt(&ok);
    if (!ok) return std::nullopt;
    return n;
}

// Only digits are typed; keys that type nothing (arrows, Delete, Tab) move
// and mend as usual. Backspace types a character and is swallowed too.
bool ctrNumberPick::eventFilter(QObject* objeto, QEvent* evento) {
    if (objeto == txtNumber && evento->type() == QEvent::KeyPress) {
        const auto* tecla = static_cast<QKeyEvent*>(evento);
        const int k = tecla->key();
        if (k == Qt::Key_Delete || k == Qt::Key_Tab || k == Qt::Key_Backtab) return false;
        const QString t = tecla->text();
        if (t.isEmpty() || (tecla->modifiers() & Qt::ControlModifier)) return false;
        return !(t.size() == 1 && t[0] >= u'0' && t[0] <= u'9');
    }
    return QWidget::eventFilter(objeto, evento);
}

void ctrNumberPick::textoCambiado() {
    bool ok = false;
    const int n = txtNumber->text().toInt(&ok);
    if (ok && (n > m_max || n < m_min)) {
        const QSignalBlocker bloqueo(txtNumber);
        txtNumber->setText(QString::number(n > m_max ? m_max : m_min));
    }
    Q_EMIT Change();
}

void ctrNumberPick::girar(int paso) {
    bool ok = false;
    const int n = txtNumber->text().toInt(&ok);
    if (!ok) return;
    if ((paso > 0 && n < m_max) || (paso < 0 && n > m_min))
        txtNumber->setText(QString::number(n + paso));
}
