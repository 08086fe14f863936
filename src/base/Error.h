#pragma once

#include <QString>
#include <exception>

// A run-time failure of a routine. Routines that the program describes as
// "jumping to their handler" catch this and log its number and description.
class ErrorQuelmo : public std::exception {
  public:
    explicit ErrorQuelmo(QString description, int number = 5)
        : m_description(std::move(description)), m_number(number), m_what(m_description.toUtf8()) {}

    const QString& description() const { return m_description; }
    int number() const { return m_number; }
    const char* what() const noexcept override { return m_what.constData(); }

  private:
    QString m_description;
    int m_number;
    QByteArray m_what;
};

// Failure numbers that callers tell apart.
namespace ErrNum {
inline constexpr int InvalidProcedureCall = 5;
inline constexpr int Overflow = 6;
inline constexpr int TypeMismatch = 13;
inline constexpr int InvalidUseOfNull = 94;
inline constexpr int ItemNotFound = 3265;
inline constexpr int BaseDatos = 3000;
inline constexpr int Plataforma = 4000;
}  // namespace ErrNum
