#pragma once

#include <QString>
#include <QVector>
#include <cstdint>

// The compose screen's routines that work on the database alone: the add
// loop with its destination rules, and the reading of the outbox.

// The option that limits sending to contacts; false when it can't be read.
bool leerSoloContactos();

// The number of the contact whose alias is `elemento` exactly as it stands
// (blanks count, case doesn't), trimmed; empty when there is none or the
// element is blank.
QString msBuscarAlias(const QString& elemento);

// The compose screen's number rule: "+" becomes "00"; without "00" in
// front the national prefix "0034" is put before it.
QString normalizarNumeroEnvio(const QString& numero);

// Splits `destinos` at ";" and inserts one outbox row per accepted element,
// with `texto` as typed and account `canal`. Returns the refused elements
// joined by ";"; every refusal has its log line.
QString agregarMensajes(const QString& destinos, const QString& texto, bool soloContactos,
                        int64_t canal);

// The character counter: "(n)" and the note about the account's texts.
QString textoContador(int caracteres, const QString& nota);
inline constexpr int kLargoUnSms = 160;

// The outbox as the list shows it: the rows whose account exists.
int contarBandeja();
// Cells row after row: Id, date "dd/MM hh:mm:ss", destination, account
// (with its sender in brackets), text.
QVector<QString> leerBandeja();
inline constexpr int kColumnasBandeja = 5;
