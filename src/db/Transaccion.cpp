#include "db/Transaccion.h"

#include "base/RegistroActividad.h"

using namespace Qt::StringLiterals;

Transaccion::Transaccion(BaseDatos& db) : m_db(db) {
    m_db.begin();
}

Transaccion::~Transaccion() {
    if (!m_abierta) return;
    try {
        m_db.rollback();
    } catch (const ErrorQuelmo& e) {
        msLog(u"No se pudo deshacer la transacción: "_s + e.description());
    }
}

void Transaccion::commit() {
    m_abierta = false;
    try {
        m_db.commit();
    } catch (...) {
        try {
            m_db.rollback();
        } catch (const ErrorQuelmo& e) {
            msLog(u"No se pudo deshacer la transacción: "_s + e.description());
        }
        throw;
    }
}
