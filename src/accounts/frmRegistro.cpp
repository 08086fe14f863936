#include "accounts/frmRegistro.h"

#include "accounts/mdoCuentas.h"
#include "base/EstadoAplicacion.h"
#include "base/Pantallas.h"
#include "delivery/Intercambio.h"
#include "delivery/Registro.h"
#include "widgets/Boton.h"
#include "widgets/Cuadros.h"
#include "widgets/Montaje.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWizardPage>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

QLabel* explicacion(QWidget* padre, const QString& texto) {
    auto* l = new QLabel(texto, padre);
    l->setWordWrap(true);
    return l;
}

}  // namespace

namespace {
// A page whose fields the wizard registers, and whose "Siguiente" may run a
// check first.
class Pagina : public QWizardPage {
  public:
    using QWizardPage::QWizardPage;
    using QWizardPage::registerField;
    std::function<bool()> validar;
    bool validatePage() override { return validar ? validar() : true; }
};

template <class P>
P* pagina(QWizard* asistente, int id, const QString& nombre, const QString& titulo) {
    auto* p = control<P>(asistente, nombre);
    p->setTitle(titulo);
    asistente->setPage(id, p);
    return p;
}

// A page of fields: what it asks for, then each field under its caption,
// registered under its name (a "*" makes it required).
struct CampoPagina {
    QString texto;
    QLineEdit* campo;
    QString registro;
};
void formulario(Pagina* p, const QString& pide, std::initializer_list<CampoPagina> campos) {
    auto* f = new QFormLayout(p);
    f->addRow(explicacion(p, pide));
    for (const CampoPagina& c : campos) {
        f->addRow(c.texto, c.campo);
        p->registerField(c.registro, c.campo);
    }
}
}  // namespace

frmRegistro::frmRegistro(QWidget* parent) : QWizard(parent) {
    identificar(this, u"frmRegistro"_s, u"Registro de una nueva cuenta"_s, u"cuentas"_s);
    setWizardStyle(QWizard::ClassicStyle);
    setOption(QWizard::NoBackButtonOnLastPage);
    // Going back to correct a field keeps what was typed on the later pages.
    setOption(QWizard::IndependentPages);
    setButtonText(QWizard::BackButton, u"< &Atrás"_s);
    setButtonText(QWizard::NextButton, u"&Siguiente >"_s);
    setButtonText(QWizard::FinishButton, u"&Finalizar"_s);
    setButtonText(QWizard::CancelButton, u"&Cancelar"_s);
    crearPaginaDatos();
    crearPaginaCondiciones();
    crearPaginaUsuario();
    crearPaginaFin();
    setMinimumSize(560, 400);
}

void frmRegistro::crearPaginaDatos() {
    auto* datos = pagina<Pagina>(this, Datos, u"pagDatos"_s, u"Sus datos"_s);
    txtNombre = campoTexto(datos, u"txtNombre"_s, 100);
    txtEmail = campoTexto(datos, u"txtEmail"_s, 100);
    txtMovil = campoTexto(datos, u"txtMovil"_s, 16);
    formulario(datos,
               u"Regístrese gratis en la plataforma de mensajes. Indíquenos "
               u"su nombre, su correo electrónico y su número de móvil."_s,
               {{u"Nombre y apellidos :"_s, txtNombre, u"nombre*"_s},
                {u"Correo electrónico :"_s, txtEmail, u"email*"_s},
                {u"Número de móvil :"_s, txtMovil, u"movil*"_s}});
}

void frmRegistro::crearPaginaCondiciones() {
    auto* condiciones =
        pagina<Pagina>(this, Condiciones, u"pagCondiciones"_s, u"Condiciones del servicio"_s);
    cmdCondiciones =
        botonConNombre(condiciones, u"cmdCondiciones"_s, u"&Ver las condiciones del servicio"_s);
    chkAcepto = control<QCheckBox>(condiciones, u"chkAcepto"_s,
                                   u"He leído y acepto las condiciones del servicio"_s);
    auto* vc = new QVBoxLayout(condiciones);
    vc->addWidget(explicacion(condiciones,
                              u"Para darse de alta debe aceptar las condiciones del servicio. "
                              u"Léalas antes de continuar."_s));
    vc->addWidget(cmdCondiciones, 0, Qt::AlignLeft);
    vc->addWidget(chkAcepto);
    vc->addStretch();
    condiciones->registerField(u"acepto*"_s, chkAcepto);
    connect(cmdCondiciones, &QPushButton::clicked, this,
            [] { Pantallas::abrir(u"condiciones"_s); });
}

void frmRegistro::crearPaginaUsuario() {
    auto* usuario = pagina<Pagina>(this, Usuario, u"pagUsuario"_s, u"Usuario y contraseña"_s);
    usuario->validar = [this] {
        if (m_registrado) return true;
        if (!m_registrando) registrarYSeguir();
        return false;
    };
    txtUsuario = campoTexto(usuario, u"txtUsuario"_s, 50);
    txtClave = campoClave(usuario, u"txtClave"_s, 50);
    txtClave2 = campoClave(usuario, u"txtClave2"_s, 50);
    formulario(usuario,
               u"Elija el nombre de usuario y la contraseña con los que "
               u"enviará sus mensajes."_s,
               {{u"Usuario :"_s, txtUsuario, u"usuario*"_s},
                {u"Contraseña :"_s, txtClave, u"clave*"_s},
                {u"Repita la Contraseña :"_s, txtClave2, u"clave2*"_s}});
    usuario->setCommitPage(true);
    setButtonText(QWizard::CommitButton, u"&Registrarme"_s);
}

void frmRegistro::crearPaginaFin() {
    auto* fin = pagina<QWizardPage>(this, Fin, u"pagFin"_s, u"Cuenta dada de alta"_s);
    auto* lblFin = explicacion(fin, QString());
    lblFin->setObjectName(u"lblFin"_s);
    (new QVBoxLayout(fin))->addWidget(lblFin);
    connect(this, &QWizard::currentIdChanged, this, [this, lblFin](int id) {
        if (id != Fin) return;
        const QString saldo = m_saldo.isEmpty()
                                  ? u", con un saldo que se conocerá en el próximo envío"_s
                                  : u", con un saldo de "_s + m_saldo + u" SMS"_s;
        lblFin->setText(u"Su cuenta '"_s + m_usuario +
                        u"' está dada de alta en la plataforma y en la aplicación"_s + saldo +
                        u".\n\nYa puede enviar mensajes. En Configurar > Cuentas puede "
                        u"personalizar su cuenta."_s);
    });
}

QCoro::Task<> frmRegistro::registrarYSeguir() {
    m_registrando = true;
    const QPointer<frmRegistro> yo(this);
    setCursor(Qt::BusyCursor);
    const bool hecho = co_await registrar();
    if (!yo) co_return;
    unsetCursor();
    m_registrando = false;
    if (!hecho) co_return;
    m_registrado = true;
    next();
}

QCoro::Task<bool> frmRegistro::registrar() {
    if (txtClave->text() != txtClave2->text()) {
        ui().msgBox(
            u"Los datos insertados en los campos Contraseña no coinciden, inserte de "
            u"nuevo la Contraseña"_s,
            Msg::Critical);
        co_return false;
    }
    SolicitudRegistro s;
    s.nombre = txtNombre->text().trimmed();
    s.email = txtEmail->text().trimmed();
    s.movil = txtMovil->text().trimmed();
    s.usuario = txtUsuario->text().trimmed();
    s.clave = txtClave->text();
    s.condiciones = chkAcepto->isChecked();
    const Intercambio::Encargo encargo(this);
    const RespuestaRegistro r = co_await msRegistrarUsuario(s, encargo.cancelacion());
    // Closed meanwhile: the screen is gone, and so is the answer.
    if (encargo.abandonada()) co_return false;
    if (!r.conectado) {
        ui().msgBox(
            u"Error de conexión. Imposible conectar con Quelmo Mensajes, revise su "
            u"conexión a Internet.\n"_s +
                r.comentario,
            Msg::Critical);
        co_return false;
    }
    if (!r.aceptado) {
        // The user corrects here, or goes back to the page at fault.
        QString texto = u"La plataforma no ha aceptado el registro: "_s + r.comentario;
        if (r.motivo == u"movil"_s)
            texto += u"\nVuelva a la primera página para corregir el número de móvil."_s;
        else if (r.motivo == u"condiciones"_s)
            texto += u"\nVuelva atrás para aceptar las condiciones del servicio."_s;
        ui().msgBox(texto, Msg::Exclamation);
        co_return false;
    }
    // Signed up: the account is added even if the screen closes meanwhile.
    const Resultado<QString> saldo = co_await msAnadirCuentaRegistrada(s.usuario, s.clave);
    if (!mostrar(saldo) || encargo.abandonada()) co_return false;
    m_saldo = *saldo;
    m_usuario = s.usuario;
    co_return true;
}
