#include "widgets/Accesible.h"

#include <QAbstractItemView>
#include <QAccessibleWidget>
#include <QComboBox>
#include <QLineEdit>
#include <QPointer>
#include <QTabBar>

using namespace Qt::StringLiterals;

namespace {

// "&General" as it is read: "General".
QString sinAtajo(const QString& texto) {
    QString s;
    for (qsizetype i = 0; i < texto.size(); ++i) {
        if (texto[i] == u'&' && i + 1 < texto.size()) ++i;
        s += texto[i];
    }
    return s;
}

class ComboNombrado : public QAccessibleWidget {
  public:
    explicit ComboNombrado(QComboBox* c) : QAccessibleWidget(c, QAccessible::ComboBox) {}

    QString text(QAccessible::Text t) const override {
        if (t == QAccessible::Value)
            return combo()->lineEdit() ? combo()->lineEdit()->text() : combo()->currentText();
        const QString s = QAccessibleWidget::text(t);
        return t == QAccessible::Name && s.isEmpty() ? combo()->currentText() : s;
    }
    // Its list of lines (and the box it is typed in), as Qt gives them.
    int childCount() const override { return combo()->lineEdit() ? 2 : 1; }
    QAccessibleInterface* child(int i) const override {
        if (i == 0) return QAccessible::queryAccessibleInterface(combo()->view());
        if (i == 1 && combo()->lineEdit())
            return QAccessible::queryAccessibleInterface(combo()->lineEdit());
        return nullptr;
    }
    int indexOfChild(const QAccessibleInterface* c) const override {
        if (c->object() == combo()->view()) return 0;
        if (combo()->lineEdit() && c->object() == combo()->lineEdit()) return 1;
        return -1;
    }
    QAccessible::State state() const override {
        QAccessible::State s = QAccessibleWidget::state();
        s.expandable = true;
        s.expanded = combo()->view()->isVisible();
        s.editable = combo()->isEditable();
        return s;
    }
    QStringList actionNames() const override { return {showMenuAction(), pressAction()}; }
    void doAction(const QString& accion) override {
        if (accion != showMenuAction() && accion != pressAction()) return;
        if (combo()->view()->isVisible())
            combo()->hidePopup();
        else
            combo()->showPopup();
    }

  private:
    QComboBox* combo() const { return static_cast<QComboBox*>(widget()); }
};

// One tab of a tab list.
class Pestana : public QAccessibleInterface, public QAccessibleActionInterface {
  public:
    Pestana(QTabBar* barra, int indice) : m_barra(barra), m_indice(indice) {}

    void* interface_cast(QAccessible::InterfaceType t) override {
        return t == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                 : nullptr;
    }
    bool isValid() const override { return m_barra && m_indice < m_barra->count(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override {
        return m_barra ? m_barra->window()->windowHandle() : nullptr;
    }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(m_barra.data());
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QString text(QAccessible::Text t) const override {
        if (!isValid()) return QString();
        if (t == QAccessible::Name) {
            const QString propio = m_barra->accessibleTabName(m_indice);
            return propio.isEmpty() ? sinAtajo(m_barra->tabText(m_indice)) : propio;
        }
        return t == QAccessible::Description ? m_barra->tabToolTip(m_indice) : QString();
    }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override {
        if (!isValid()) return QRect();
        const QRect r = m_barra->tabRect(m_indice);
        return QRect(m_barra->mapToGlobal(r.topLeft()), r.size());
    }
    QAccessible::Role role() const override { return QAccessible::PageTab; }
    QAccessible::State state() const override {
        QAccessible::State s;
        if (!isValid()) return s;
        s.selectable = true;
        s.selected = m_barra->currentIndex() == m_indice;
        s.focused = s.selected && m_barra->hasFocus();
        s.disabled = !m_barra->isTabEnabled(m_indice);
        s.invisible = !m_barra->isVisible();
        return s;
    }
    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString& accion) override {
        if (isValid() && accion == pressAction()) m_barra->setCurrentIndex(m_indice);
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

  private:
    QPointer<QTabBar> m_barra;
    int m_indice;
};

class PestanasNombradas : public QAccessibleWidget {
  public:
    explicit PestanasNombradas(QTabBar* b) : QAccessibleWidget(b, QAccessible::PageTabList) {}
    ~PestanasNombradas() override {
        for (const QAccessible::Id id : std::as_const(m_pestanas))
            QAccessible::deleteAccessibleInterface(id);
    }

    QString text(QAccessible::Text t) const override {
        const QString s = QAccessibleWidget::text(t);
        if (t != QAccessible::Name || !s.isEmpty() || barra()->currentIndex() < 0) return s;
        return sinAtajo(barra()->tabText(barra()->currentIndex()));
    }
    int childCount() const override { return barra()->count(); }
    QAccessibleInterface* child(int i) const override {
        if (i < 0 || i >= barra()->count()) return nullptr;
        if (!m_pestanas.contains(i))
            m_pestanas.insert(i, QAccessible::registerAccessibleInterface(new Pestana(barra(), i)));
        return QAccessible::accessibleInterface(m_pestanas.value(i));
    }
    int indexOfChild(const QAccessibleInterface* c) const override {
        for (auto it = m_pestanas.cbegin(); it != m_pestanas.cend(); ++it)
            if (QAccessible::accessibleInterface(it.value()) == c) return it.key();
        return -1;
    }
    QAccessibleInterface* focusChild() const override {
        return barra()->hasFocus() ? child(barra()->currentIndex()) : nullptr;
    }

  private:
    QTabBar* barra() const { return static_cast<QTabBar*>(widget()); }
    mutable QHash<int, QAccessible::Id> m_pestanas;
};

QAccessibleInterface* fabrica(const QString& clase, QObject* objeto) {
    if (!objeto || !objeto->isWidgetType()) return nullptr;
    if (clase == "QComboBox"_L1) return new ComboNombrado(static_cast<QComboBox*>(objeto));
    if (clase == "QTabBar"_L1) return new PestanasNombradas(static_cast<QTabBar*>(objeto));
    return nullptr;
}

}  // namespace

void instalarNombresAccesibles() {
    static bool hecho = false;
    if (hecho) return;
    hecho = true;
    QAccessible::installFactory(&fabrica);
}
