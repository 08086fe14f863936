#pragma once

#include <QWidget>
#include <cstdint>
#include <optional>

class QLineEdit;
class QToolButton;

// A small number field with a spin button beside it. The text is clamped
// to the bounds as it changes; only digits can be typed (a slip is mended
// with Delete or by selecting), and an empty text is left as it is.
class ctrNumberPick : public QWidget {
    Q_OBJECT
  public:
    explicit ctrNumberPick(QWidget* parent = nullptr);

    int16_t MinValue() const { return m_min; }
    void setMinValue(int16_t v) { m_min = v; }
    int16_t MaxValue() const { return m_max; }
    void setMaxValue(int16_t v) { m_max = v; }
    // The text of the field; callers that want a number convert it.
    QString Valor() const;
    void setValor(const QString& valor);
    // The number shown; none when the field is empty: reading it fails.
    std::optional<int> numero() const;

    QLineEdit* txtNumber;
    QToolButton* arriba;
    QToolButton* abajo;

  Q_SIGNALS:
    void Change();

  protected:
    bool eventFilter(QObject* objeto, QEvent* evento) override;

  private:
    void textoCambiado();
    void girar(int paso);

    int16_t m_min = 0;
    int16_t m_max = 100;
};
