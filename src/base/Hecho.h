#pragma once

#include "base/InterfazUsuario.h"

#include <QString>
#include <optional>
#include <utility>

// What a routine that the user's data may refuse tells its caller: done,
// or why not and how serious that is. The routine decides nothing about
// showing it; the screen that called it does (mostrar(), a caption, a log
// line). Exceptions stay for the unexpected.
class [[nodiscard]] Hecho {
  public:
    Hecho() = default;  // done
    static Hecho no(QString motivo, int estilo = Msg::Critical) {
        Hecho h;
        h.m_motivo = std::move(motivo);
        h.m_estilo = estilo;
        return h;
    }

    bool ok() const { return m_motivo.isEmpty(); }
    explicit operator bool() const { return ok(); }
    // Why it was refused, in the user's words; empty when done.
    const QString& motivo() const { return m_motivo; }
    // The box style that fits the refusal (Msg::Critical, Exclamation...).
    int estilo() const { return m_estilo; }

  private:
    QString m_motivo;
    int m_estilo = Msg::Critical;
};

// A value, or why there is none.
template <class T>
class [[nodiscard]] Resultado {
  public:
    Resultado(T valor) : m_valor(std::move(valor)) {}
    Resultado(Hecho fallo) : m_fallo(std::move(fallo)) {}

    bool ok() const { return m_valor.has_value(); }
    explicit operator bool() const { return ok(); }
    const T& valor() const { return *m_valor; }
    const T& operator*() const { return *m_valor; }
    const T* operator->() const { return &*m_valor; }
    // Done when there is a value.
    const Hecho& hecho() const { return m_fallo; }

  private:
    std::optional<T> m_valor;
    Hecho m_fallo;
};
