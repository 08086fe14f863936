#include "widgets/Montaje.h"

#include "widgets/Iconos.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>

using namespace Qt::StringLiterals;

void identificar(QWidget* pantalla, const QString& nombre, const QString& titulo,
                 const QString& icono) {
    pantalla->setObjectName(nombre);
    pantalla->setWindowTitle(titulo);
    pantalla->setWindowIcon(iconoQuelmo(icono));
}

QLineEdit* campoTexto(QWidget* padre, const QString& nombre, int limite) {
    auto* e = control<QLineEdit>(padre, nombre);
    e->setMaxLength(limite);
    return e;
}

QLineEdit* campoClave(QWidget* padre, const QString& nombre, int limite) {
    QLineEdit* e = campoTexto(padre, nombre, limite);
    e->setEchoMode(QLineEdit::Password);
    return e;
}

QLabel* etiqueta(QWidget* padre, const QString& texto, QWidget* campo) {
    auto* l = new QLabel(texto, padre);
    if (campo) l->setBuddy(campo);
    return l;
}

QLabel* imagen(QWidget* padre, const QString& icono, int lado) {
    auto* l = new QLabel(padre);
    l->setPixmap(iconoQuelmo(icono).pixmap(lado, lado));
    l->setAlignment(Qt::AlignTop);
    return l;
}

void contarCaracteres(QPlainTextEdit* texto, QLabel* cuenta) {
    QObject::connect(texto, &QPlainTextEdit::textChanged, cuenta, [texto, cuenta] {
        const QString n = QString::number(texto->toPlainText().size());
        cuenta->setText(u"("_s + n + u")"_s);
        cuenta->setAccessibleName(n + u" caracteres"_s);
    });
}

void anadirPiezas(QBoxLayout* capa, std::initializer_list<Pieza> piezas) {
    for (const Pieza& p : piezas) {
        if (p.control)
            capa->addWidget(p.control, p.estirar);
        else
            capa->addStretch(1);
    }
}

QHBoxLayout* fila(std::initializer_list<Pieza> piezas) {
    auto* capa = new QHBoxLayout;
    anadirPiezas(capa, piezas);
    return capa;
}

QVBoxLayout* columna(std::initializer_list<Pieza> piezas) {
    auto* capa = new QVBoxLayout;
    anadirPiezas(capa, piezas);
    return capa;
}

QVBoxLayout* columnaBotones(std::initializer_list<Pieza> acciones, QWidget* cierre) {
    QVBoxLayout* capa = columna(acciones);
    capa->addStretch(1);
    capa->addWidget(cierre);
    return capa;
}

void filasFormulario(QGridLayout* rejilla, std::initializer_list<FilaFormulario> filas) {
    int f = 0;
    for (const FilaFormulario& r : filas) {
        rejilla->addWidget(etiqueta(r.campo->parentWidget(), r.texto, r.campo), f, 0);
        rejilla->addWidget(r.campo, f, 1);
        ++f;
    }
}
