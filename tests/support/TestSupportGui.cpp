#include "TestSupportGui.h"

#include "widgets/Listado.h"
#include "widgets/ModeloListado.h"

#include <QTimer>

namespace prueba {

void alAbrirModal(std::function<void(QDialog*)> accion, int intentos) {
    QTimer::singleShot(10, qApp, [accion, intentos] {
        if (auto* d = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
            accion(d);
            return;
        }
        if (intentos > 0) alAbrirModal(accion, intentos - 1);
    });
}

QStringList textosDe(const ModeloListado* m, int col) {
    QStringList t;
    for (int f = 0; f < m->rowCount(); ++f) t.append(m->texto(f, col));
    return t;
}

QStringList textosDe(const Listado* l, int col) {
    return textosDe(l->modelo(), col);
}

}  // namespace prueba
