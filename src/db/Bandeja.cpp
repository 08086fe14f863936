#include "db/Bandeja.h"

#include "base/Avisos.h"
#include "base/Movil.h"
#include "base/Reloj.h"
#include "db/BaseDatos.h"

using namespace Qt::StringLiterals;

EntradaBandeja::EntradaBandeja(BaseDatos& bd) : m_bd(bd) {}

EntradaBandeja::~EntradaBandeja() {
    if (m_puestos == 0) return;
    // A destructor must not throw, also while an error unwinds the
    // routine: a screen that can't redraw now redraws at its next refresh.
    try {
        Q_EMIT Avisos::instancia().bandejaCambiada();
    } catch (...) {
    }
}

bool EntradaBandeja::poner(const QString& destino, const QString& texto, const QVariant& canal,
                           const QVariant& registro) {
    if (!Movil::enviable(destino)) return false;
    m_bd.exec(u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES (?,?,?,?,2)"_s,
              {registro.isNull() ? QVariant(Reloj::now()) : registro, canal, destino, texto});
    ++m_puestos;
    return true;
}
