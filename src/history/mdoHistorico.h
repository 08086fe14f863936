#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>
#include <array>
#include <cstdint>
#include <vector>

// The sent history (HEnvios) as the history screen lists it, and what the
// user can do from there: queue a past message again, delete history.

// The rows of HEnvios, newest first, held compactly: a heavy user's history
// of a million rows must open in a second and in little memory, so there is
// no object per cell. A date is a number (yyyyMMddhhmmss), the number and
// the text live in one UTF-8 buffer, and the account and the platform's
// words, which repeat endlessly, are kept once each.
class Historico {
  public:
    enum Columna { Enviado = 0, Numero, Cuenta, Mensaje, Resultado, Id, kColumnas };

    // Reads the whole table, newest first; throws ErrorBD. The order is
    // then that of the "id" column, descending.
    void cargar();
    void limpiar();

    int filas() const { return int(m_orden.size()); }
    // The text of a cell as the list shows it.
    QString texto(int fila, int columna) const;

    // Reorders the rows by a column: "Enviado" and "id" by the date, the
    // others by their text with the lists' rule (case and accents don't
    // count, "ñ" after "n"). Rows that compare equal keep their order.
    void ordenar(int columna, bool descendente);

  private:
    uint32_t anadirTexto(const QByteArray& t);
    uint32_t internar(const char* t, int n);
    QString textoPropio(uint32_t fila, int columna) const;
    std::vector<uint32_t> rangosInternados() const;

    std::vector<uint32_t> m_orden;  // shown row -> stored row
    std::vector<int64_t> m_fecha;   // yyyyMMddhhmmss, 0 when none
    // Number and text of row i: m_textos[m_cortes[2i] .. m_cortes[2i+1]]
    // and [m_cortes[2i+1] .. m_cortes[2i+2]].
    QByteArray m_textos;
    std::vector<uint32_t> m_cortes;
    std::vector<uint32_t> m_cuenta, m_resultado;  // into m_distintos
    QStringList m_distintos;
    std::vector<QByteArray> m_utf8;  // the same, as stored
    QHash<QByteArray, uint32_t> m_indice;
    std::array<uint32_t, 4> m_recientes{UINT32_MAX, UINT32_MAX, UINT32_MAX, UINT32_MAX};
    size_t m_siguienteReciente = 0;
};

// The sort key of the date column: "yyyymmddhhnnss".
QString idDeFecha(int64_t fecha);

// Queues the row's message once more, after asking, through today's
// principal account (0 when there is none); tells the user how it went.
// True when a row went into the outbox.
bool msReenviarMensaje(const QString& numero, const QString& mensaje, const QString& fecha);

// Deletes what is older than the day `fecha` ("dd/MM/yyyy"), after asking:
// messages of that day itself stay. True when the delete was reached (the
// list is to be read again), false when the date isn't valid or the user
// said no.
bool msBorrarAnteriores(const QString& fecha);
// Deletes the whole history after asking; true when the delete was reached.
bool msBorrarTodos();
