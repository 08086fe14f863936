#pragma once

#include "base/Hecho.h"

#include <QString>
#include <QStringList>
#include <QVector>

// The recipient picker's work on the database: what it lists, how a
// search finds a contact, and how the chosen lines become one
// destinations text.

// Contacts as lines "alias, number", by alias; false when there are none.
bool leerContactosSeleccion(QVector<QString>* celdas);
// Lists as lines "000" number, name, member count, by number; false when
// there are none.
bool leerListasSeleccion(QVector<QString>* celdas);

// A line of the chosen destinations: a contact (alias and number) or a
// list (its name and "Lista (n Contactos)").
struct DestinoElegido {
    QString texto;
    QString detalle;
};
QString detalleLista(const QString& contactos);

// Puts in `aliases` the aliases of the chosen lines joined by ";": the
// members of the chosen lists first, then the single contacts, each
// contact once. A database failure is refused, with what was gathered so
// far left in `aliases`.
Hecho msDestinosSeleccionados(const QVector<DestinoElegido>& destinos, QString& aliases);

// The line that a search for `buscado` selects: the first that begins with
// it, or the last when none does, provided it contains `buscado`; -1 when
// it doesn't.
int buscarContacto(const QStringList& textos, const QString& buscado);
