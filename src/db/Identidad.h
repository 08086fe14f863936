#pragma once

#include "db/BaseDatos.h"

#include <QString>

// A random identifier of the database, created at its first use and kept in
// it: with an item's key it makes a reference that no other database or
// installation gives, so the platform can tell a resent item from a new one.
QString identidadBase(BaseDatos& db);
