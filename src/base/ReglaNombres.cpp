#include "base/ReglaNombres.h"

#include "base/ReglaListas.h"

#include <QHash>
#include <QVarLengthArray>
#include <array>
#include <cstdint>

namespace ReglaNombres {

namespace {

// Each UTF-16 unit folded to the case the rule compares in, computed once;
// the weight of a unit is its folded unit plus 1.
struct Tablas {
    std::array<uint32_t, 0x10000> pesos{};
    // Units outside ASCII that share a fold, by that fold.
    QHash<char16_t, QVarLengthArray<char16_t, 4>> parientes;
};

const Tablas& tablas() {
    static const Tablas t = [] {
        Tablas n;
        for (uint32_t u = 0; u < 0x10000; ++u) {
            char16_t f = char16_t(u);
            if (u < 0x80) {
                if (u >= 'A' && u <= 'Z') f = char16_t(u + 32);
            } else if (!QChar::isSurrogate(char32_t(u))) {
                const char16_t plegado = QChar(char16_t(u)).toCaseFolded().unicode();
                if (plegado >= 0x80) f = plegado;
            }
            n.pesos[u] = uint32_t(f) + 1;
        }
        for (uint32_t u = 0x80; u < 0x10000; ++u) {
            const char16_t f = char16_t(n.pesos[u] - 1);
            if (f == u) continue;
            auto& clase = n.parientes[f];
            if (clase.isEmpty()) clase.append(f);
            clase.append(char16_t(u));
        }
        return n;
    }();
    return t;
}

char16_t plegar(char16_t u) {
    return char16_t(tablas().pesos[u] - 1);
}

}  // namespace

QString clave(const QString& nombre) {
    QString k(nombre.size(), Qt::Uninitialized);
    for (qsizetype i = 0; i < nombre.size(); ++i) k[i] = QChar(plegar(nombre.at(i).unicode()));
    return k;
}

bool iguales(const QString& a, const QString& b) {
    return a.size() == b.size() && clave(a) == clave(b);
}

int comparar(const char* a, int na, const char* b, int nb) {
    return ReglaListas::compararPorPesos(tablas().pesos.data(), a, na, b, nb);
}

QStringList variantes(const QString& nombre, int maximo) {
    QStringList v{nombre};
    for (qsizetype i = 0; i < nombre.size(); ++i) {
        const char16_t u = nombre.at(i).unicode();
        if (u < 0x80) continue;
        const auto& otras = tablas().parientes.value(plegar(u));
        if (otras.size() < 2) continue;
        if (v.size() * otras.size() > maximo) return {};
        QStringList mas;
        for (const QString& base : std::as_const(v))
            for (const char16_t o : otras) {
                QString s = base;
                s[i] = QChar(o);
                mas.append(s);
            }
        v = std::move(mas);
    }
    return v;
}

}  // namespace ReglaNombres
