// Scheduled rows for the scheduling tests: a schedule with the defaults of
// the editor (no end, started long ago) and a writer for Automaticos.
#pragma once

#include "app/AppState.h"

#include <QDate>
#include <QDateTime>
#include <QMetaType>
#include <QTime>
#include <QVariant>

struct Programa {
    int periodicidad = 0;
    QTime hora{9, 0};
    QDate ini{2006, 1, 1};
    QDate fin{9999, 12, 31};
    int cada = 1;
    int dias = 0;
    QVariant esDia;  // null: nth weekday
    int diaMes = 0;
    int numSemana = 0;
    int diaSemana = 0;
    int anualDia = 0;
    int anualMes = 0;
    QVariant ultima;  // null: never ran
    bool activa = true;

    Programa& a(QTime h) {
        hora = h;
        return *this;
    }
    Programa& desde(QDate d) {
        ini = d;
        return *this;
    }
    Programa& hasta(QDate d) {
        fin = d;
        return *this;
    }
    Programa& cadaDias(int n) {
        cada = n;
        return *this;
    }

    static Programa unaVez(QDate dia, QTime h) {
        Programa p;
        p.periodicidad = 0;
        p.ini = dia;
        p.hora = h;
        return p;
    }
    static Programa diaria(int cada) {
        Programa p;
        p.periodicidad = 1;
        p.cada = cada;
        return p;
    }
    static Programa semanal(int dias) {
        Programa p;
        p.periodicidad = 2;
        p.dias = dias;
        return p;
    }
    static Programa diaDelMes(int dia) {
        Programa p;
        p.periodicidad = 3;
        p.esDia = true;
        p.diaMes = dia;
        return p;
    }
    static Programa enesimoDelMes(int semana, int diaSemana) {
        Programa p;
        p.periodicidad = 3;
        p.numSemana = semana;
        p.diaSemana = diaSemana;
        return p;
    }
    static Programa anual(int dia, int mes) {
        Programa p;
        p.periodicidad = 4;
        p.anualDia = dia;
        p.anualMes = mes;
        return p;
    }

    // Stored as the editor stores it: Hora as a full date and time.
    void guardar(int codigo) const {
        appState().Conexion.exec(
            QStringLiteral(
                "INSERT INTO Automaticos (Codigo, Nombre, TareaProgramada, Hora, Periodicidad, "
                "FechaIni, FechaFin, Cada, DiasSemana, MensualEsDia, MensualDiaMes, "
                "MensualNumSemana, MensualDiaSemana, AnualDia, AnualMes, UltimaTarea) "
                "VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"),
            {codigo, QStringLiteral("Programa %1").arg(codigo), activa,
             QDateTime(QDate(2006, 1, 2), hora), periodicidad, ini, fin, cada, dias, esDia, diaMes,
             numSemana, diaSemana, anualDia, anualMes, ultima});
    }
};
Q_DECLARE_METATYPE(Programa)

// "dd/MM/yyyy HH:mm" of the clock's calendar, for readable tables.
inline QDateTime en(const char* texto) {
    return QDateTime::fromString(QString::fromLatin1(texto), QStringLiteral("dd/MM/yyyy HH:mm:ss"));
}
