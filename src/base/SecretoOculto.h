#pragma once

#include <QString>

// While it lives, every line msLog writes shows `secreto` as "****": as it
// is and in the forms an exchange with the platform gives it (XML escapes,
// nested ones too, and percent-encoding), so a debug line that repeats a
// request or a reply can't show an account's password. An empty secret
// hides nothing.
class SecretoOculto {
  public:
    explicit SecretoOculto(const QString& secreto);
    ~SecretoOculto();
    SecretoOculto(const SecretoOculto&) = delete;
    SecretoOculto& operator=(const SecretoOculto&) = delete;

  private:
    bool m_activo = false;
};

// `texto` with every secret alive hidden.
QString ocultarSecretos(const QString& texto);
