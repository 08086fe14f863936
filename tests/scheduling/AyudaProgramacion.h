// What the schedule screens' tests share: the address book's helpers and a
// way to choose in the recipient and message picker.
#pragma once

#include "TestSupportGui.h"

#include "widgets/Listado.h"

#include <QCheckBox>
#include <QPlainTextEdit>
#include <QPushButton>

namespace programacion_prueba {

using namespace Qt::StringLiterals;
using namespace prueba;

// Chooses contacts (by alias) and lists (by name) in the picker once it is
// up, types the text and accepts; a picker still open afterwards (a refused
// text) is left.
inline void elegir(const QStringList& contactos, const QStringList& listas, const QString& texto,
                   bool saludo = false) {
    alAbrirModal([=](QDialog* d) {
        auto* lc = d->findChild<Listado*>(u"lstcontactos"_s);
        lc->clearSelection();
        for (const QString& c : contactos)
            lc->seleccionarFila(int(textosDe(lc, 0).indexOf(c)), true);
        if (!contactos.isEmpty()) d->findChild<QPushButton*>(u"Command1"_s)->click();
        auto* ll = d->findChild<Listado*>(u"lstlistas"_s);
        ll->clearSelection();
        for (const QString& l : listas) ll->seleccionarFila(int(textosDe(ll, 1).indexOf(l)), true);
        if (!listas.isEmpty()) d->findChild<QPushButton*>(u"Command2"_s)->click();
        d->findChild<QPlainTextEdit*>(u"txtMensaje"_s)->setPlainText(texto);
        d->findChild<QCheckBox*>(u"Check1"_s)->setChecked(saludo);
        auto* anadir = d->findChild<QPushButton*>(u"cmdAdd"_s);
        anadir->click();
        // The answer is worked out over turns, the button waiting; a text
        // refused leaves the picker open at once.
        if (!QTest::qWaitFor([&] { return !d->isVisible() || anadir->isEnabled(); }))
            qFatal("the picker never answered");
        if (d->isVisible()) d->reject();
    });
}

}  // namespace programacion_prueba
