#include "TestSupportGui.h"

#include "app/mdiMain.h"
#include "widgets/Listado.h"
#include "widgets/ModeloListado.h"

#include <QScreen>
#include <QSignalSpy>
#include <QTimer>

namespace prueba {

std::unique_ptr<mdiMain> ventanaPrincipal(std::function<void()> terminar,
                                          const std::function<void()>& antesDeMostrar) {
    auto w = std::make_unique<mdiMain>();
    w->terminar = std::move(terminar);
    if (antesDeMostrar) antesDeMostrar();
    QSignalSpy lista(w.get(), &mdiMain::primeraActivacionTerminada);
    w->show();
    if (!lista.wait(5000)) qFatal("no first activation");
    return w;
}

void alAbrirModal(std::function<void(QDialog*)> accion, int intentos) {
    QTimer::singleShot(10, qApp, [accion, intentos] {
        if (auto* d = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
            // A screen still reading what it shows has its controls off and
            // the busy pointer up: a user waits for it, and so does this.
            const bool ocupada =
                d->testAttribute(Qt::WA_SetCursor) && d->cursor().shape() == Qt::BusyCursor;
            if (!ocupada || intentos == 0) {
                accion(d);
                return;
            }
        }
        if (intentos > 0) alAbrirModal(accion, intentos - 1);
    });
}

void captura(QWidget* w, const QString& nombre) {
    const QString dir = qEnvironmentVariable("QUELMO_CAPTURAS") + u'/';
    const QString pantalla = qEnvironmentVariable("QUELMO_CAPTURA_PANTALLA");
    w->show();
    QVERIFY(QTest::qWaitForWindowExposed(w));
    QTest::qWait(300);
    QVERIFY(w->grab().save(dir + nombre + u".png"));
    if (!pantalla.isEmpty())
        QVERIFY(w->screen()->grabWindow(0).save(dir + nombre + u'-' + pantalla + u".png"));
}

QStringList textosDe(const ModeloListado* m, int col) {
    QStringList t;
    for (int f = 0; f < m->rowCount(); ++f) t.append(m->texto(f, col));
    return t;
}

QStringList textosDe(const Listado* l, int col) {
    return textosDe(l->modelo(), col);
}

QStringList filasDe(const Listado* l) {
    QStringList t;
    for (int f = 0; f < l->modelo()->rowCount(); ++f) t.append(l->modelo()->fila(f).join(u'|'));
    return t;
}

}  // namespace prueba
