#pragma once

#include "composition/AutoCompletado.h"

#include <QListView>
#include <QPointer>
#include <QWidget>

class QLineEdit;
class QStringListModel;

// The recipient box: a one-line field of names separated by ";" that, for
// the name under the caret, offers matching names of `SearchList` in a
// list dropping below it. Up and Down choose, Enter takes the chosen one;
// Enter with nothing offered hands over to the next field.
class crtAutoComplete : public QWidget {
    Q_OBJECT
  public:
    explicit crtAutoComplete(QWidget* parent = nullptr);
    ~crtAutoComplete() override;

    QString SearchList() const { return m_searchList; }
    void setSearchList(const QString& lista) { m_searchList = lista; }
    QString Delimeter() const { return m_delimitador; }
    void setDelimeter(const QString& d) { m_delimitador = d; }
    // The whole list, also when the box shows only its start.
    QString Texto() const;
    void setTexto(const QString& texto);
    // The box shows the start of a list too long to lay out, and how many
    // names follow; it then takes no typing, and Delete, Backspace or Esc
    // empty it.
    bool resumido() const { return !m_completo.isEmpty(); }

    QLineEdit* Text1() const { return m_text1; }
    QListView* List1() const { return m_list1.data(); }
    // The names offered now, in order, and the chosen one.
    QStringList ofrecidos() const;
    QString elegido() const;

  Q_SIGNALS:
    // Enter with nothing offered.
    void enterSinSugerencias();

  protected:
    bool eventFilter(QObject* objeto, QEvent* evento) override;
    void resizeEvent(QResizeEvent* evento) override;

  private:
    void teclaSoltada(int tecla);
    bool teclaPulsada(int tecla);
    bool teclaEnResumen(int tecla);
    void mostrarLista(bool visible);
    void vaciarLista();
    void colocarLista();

    QLineEdit* m_text1;
    QPointer<QListView> m_list1;
    QStringListModel* m_ofrecidos;
    QString m_searchList;
    QString m_completo;
    QString m_delimitador = QStringLiteral(";");
};
