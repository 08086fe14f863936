#pragma once

#include "base/Hecho.h"

#include <QString>
#include <QStringList>
#include <QVector>
#include <functional>

// The recipient picker's work on the database: what it lists, how a
// search finds a contact, and how the chosen lines become one
// destinations text.

// The contacts it lists are read by leerContactosEnOrden (Envio.h).
// Lists as lines "000" number, name, member count, by number; false when
// there are none.
bool leerListasSeleccion(QVector<QString>* celdas);

QString detalleLista(const QString& contactos);

// The aliases of the chosen lines joined by ";": the members of the chosen
// lists first, then the single contacts, each contact once; worked out
// over turns of the event loop, half a million contacts being more than
// one. `elegidos` holds the lines' two cells row after row: a contact's
// alias and number, or a list's name and "Lista (n Contactos)". A
// database failure is refused, with what was gathered until then.
using AlElegir = std::function<void(const Hecho& hecho, const QString& aliases)>;
void msDestinosSeleccionados(QVector<QString> elegidos, AlElegir alTerminar);

// The line that a search for `buscado` selects: the first that begins with
// it, or the last when none does, provided it contains `buscado`; -1 when
// it doesn't.
int buscarContacto(const QStringList& textos, const QString& buscado);
