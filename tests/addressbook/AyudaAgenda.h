#pragma once

// What the address book's tests share: a database with accounts, rows to
// look at, and a way to act on a modal screen once it is up.
#include "TestSupportGui.h"
#include "base/AppState.h"
#include "base/Conversions.h"
#include "db/Conexion.h"
#include "widgets/Listado.h"

#include <QApplication>
#include <QDialog>
#include <QTimer>
#include <functional>

namespace agenda_prueba {

using namespace Qt::StringLiterals;

inline Database& bd() {
    return Conexion();
}

inline void cuenta(int canal, const QString& nombre) {
    bd().exec(
        u"INSERT INTO Canales (Canal,Nombre,maxmen,Puerto,Host,usuario,clave,Saldo,"
        u"Principal) VALUES (?,?,160,80,'h','u','c',0,0)"_s,
        {canal, nombre});
}

inline void contacto(const QString& codigo, const QString& alias, int canal,
                     const QString& comentario = QString()) {
    bd().exec(u"INSERT INTO Abonados (Codigo,Alias,Comentario,Canal) VALUES (?,?,?,?)"_s,
              {codigo, alias, comentario, canal});
}

inline void lista(int grupo, const QString& nombre) {
    bd().exec(u"INSERT INTO Grupos (Grupo,Nombre) VALUES (?,?)"_s, {grupo, nombre});
}

inline void miembro(const QString& codigo, int grupo) {
    bd().exec(u"INSERT INTO AboGrup (Abonado,Grupo) VALUES (?,?)"_s, {codigo, grupo});
}

// The first column of a query, as text.
inline QStringList columna(const QString& sql, const QVariantList& params = {}) {
    const QueryResult r = bd().query(sql, params);
    QStringList valores;
    for (int f = 0; f < r.recordCount(); ++f) valores.append(textoDe(r.value(f, 0)));
    return valores;
}

inline long long cuantos(const QString& sql, const QVariantList& params = {}) {
    return numeroDe(bd().query(sql, params).value(0, 0));
}

// One column of a report list, in the order shown.
inline QStringList textosDe(const Listado* l, int col) {
    QStringList t;
    for (int f = 0; f < l->modelo()->rowCount(); ++f) t.append(l->modelo()->texto(f, col));
    return t;
}

// Message boxes as "style text", so one comparison checks both.
inline QString caja(int estilo, const QString& texto) {
    return QString::number(estilo) + u' ' + texto;
}
inline QStringList cajas(const ScriptedInterface& ui) {
    QStringList t;
    for (const ShownBox& b : ui.boxes) t << caja(b.style, b.text);
    return t;
}

// Runs `accion` on the next modal dialog once it is up; `accion` must
// close it.
inline void alAbrirModal(std::function<void(QDialog*)> accion, int intentos = 200) {
    QTimer::singleShot(10, qApp, [accion, intentos] {
        if (auto* d = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
            accion(d);
            return;
        }
        if (intentos > 0) alAbrirModal(accion, intentos - 1);
    });
}

}  // namespace agenda_prueba
