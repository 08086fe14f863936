#include "base/ReglaListas.h"

#include <array>
#include <cstdint>

namespace ReglaListas {

namespace {

// Letters folded to lower case and stripped of accents, "ñ" just after
// "n": a weight per unit, computed once.
const std::array<uint32_t, 0x10000>& tabla() {
    static const auto pesos = [] {
        std::array<uint32_t, 0x10000> t{};
        for (uint32_t u = 0; u < 0x10000; ++u) {
            const QChar c(char16_t(u), 0);
            char16_t base = char16_t(u);
            uint32_t extra = 0;
            if (u < 0x80) {
                if (u >= 'A' && u <= 'Z') base = char16_t(u + 32);
            } else if (u == u'ñ' || u == u'Ñ') {
                base = u'n';
                extra = 1;
            } else if (c.decompositionTag() == QChar::Canonical) {
                base = c.decomposition().at(0).toCaseFolded().unicode();
            } else {
                base = c.toCaseFolded().unicode();
            }
            t[u] = uint32_t(base) * 2 + extra + 1;
        }
        return t;
    }();
    return pesos;
}

// Walks a UTF-8 text as the UTF-16 units that the rule weighs.
class Unidades {
  public:
    Unidades(const uint32_t* pesos, const char* p, const char* fin)
        : m_p(reinterpret_cast<const unsigned char*>(p)),
          m_fin(reinterpret_cast<const unsigned char*>(fin)),
          m_pesos(pesos) {}

    // The next unit's weight; 0 at the end.
    uint32_t siguiente() {
        if (m_pendiente) {
            const uint32_t w = m_pesos[m_pendiente];
            m_pendiente = 0;
            return w;
        }
        if (m_p == m_fin) return 0;
        const uint32_t c = *m_p++;
        if (c < 0x80) return m_pesos[c];
        uint32_t cp = 0xFFFD;
        if ((c & 0xE0) == 0xC0 && m_fin - m_p >= 1) {
            cp = ((c & 0x1F) << 6) | (m_p[0] & 0x3F);
            m_p += 1;
        } else if ((c & 0xF0) == 0xE0 && m_fin - m_p >= 2) {
            cp = ((c & 0x0F) << 12) | ((m_p[0] & 0x3Fu) << 6) | (m_p[1] & 0x3F);
            m_p += 2;
        } else if ((c & 0xF8) == 0xF0 && m_fin - m_p >= 3) {
            cp = ((c & 0x07) << 18) | ((m_p[0] & 0x3Fu) << 12) | ((m_p[1] & 0x3Fu) << 6) |
                 (m_p[2] & 0x3F);
            m_p += 3;
        }
        if (cp > 0xFFFF) {
            cp -= 0x10000;
            m_pendiente = char16_t(0xDC00 | (cp & 0x3FF));
            return m_pesos[0xD800 | (cp >> 10)];
        }
        return m_pesos[cp];
    }

  private:
    const unsigned char* m_p;
    const unsigned char* m_fin;
    const uint32_t* m_pesos;
    char16_t m_pendiente = 0;
};

}  // namespace

QString clave(const QString& texto) {
    QString k;
    k.reserve(texto.size() + 1);
    for (const QChar c : texto) {
        const uint32_t w = tabla()[c.unicode()] - 1;
        k.append(QChar(char16_t(w / 2)));
        // "ñ" right after "n": a unit above every letter follows it.
        if (w % 2) k.append(QChar(0xFFFF));
    }
    return k;
}

int comparar(const char* s1, int n1, const char* s2, int n2) {
    return compararPorPesos(tabla().data(), s1, n1, s2, n2);
}

// Bytes that two texts share at the start weigh the same: the walk begins
// at the first character in which they differ.
int compararPorPesos(const uint32_t* pesos, const char* s1, int n1, const char* s2, int n2) {
    const auto* a = reinterpret_cast<const unsigned char*>(s1);
    const auto* b = reinterpret_cast<const unsigned char*>(s2);
    const int n = std::min(n1, n2);
    int i = 0;
    while (i < n && a[i] == b[i]) ++i;
    while (i > 0 && (a[i - 1] & 0x80)) --i;
    const auto* ca = reinterpret_cast<const char*>(a);
    const auto* cb = reinterpret_cast<const char*>(b);
    Unidades x(pesos, ca + i, ca + n1), y(pesos, cb + i, cb + n2);
    for (;;) {
        const uint32_t p = x.siguiente(), q = y.siguiente();
        if (p != q) return p < q ? -1 : 1;
        if (p == 0) return 0;
    }
}

}  // namespace ReglaListas
