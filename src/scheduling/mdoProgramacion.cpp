#include "scheduling/mdoProgramacion.h"

#include "base/Conversiones.h"
#include "base/RegistroActividad.h"
#include "base/ReglaNombres.h"
#include "base/Reloj.h"
#include "base/Turno.h"
#include "db/Conexion.h"
#include "db/EscrituraPorTurnos.h"
#include "db/Esquema.h"
#include "db/Nombres.h"
#include "db/Transaccion.h"
#include "scheduling/ProximasTareas.h"
#include "scheduling/clsNextTarea.h"

#include <QLocale>
#include <QMap>
#include <QSet>
#include <map>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

BaseDatos& bd() {
    return Conexion();
}

QString textoDia(const QDate& d) {
    return d.toString(u"dd/MM/yyyy"_s);
}

QVariant valorDe(const std::optional<int>& n) {
    return n ? QVariant(*n) : QVariant();
}

QString textoNumero(const std::optional<int>& n) {
    return n ? QString::number(*n) : QString();
}

// The date that stands for a time of day alone, as the old engine stored it.
const QDate kDiaDeLaHora(1899, 12, 30);

}  // namespace

// ---- The schedule as the control holds it ----------------------------------

QVariant Programa::valor(Propiedad p) const {
    switch (p) {
        case Propiedad::Periodicidad:
            return periodicidad;
        case Propiedad::Hora:
            return hora;
        case Propiedad::UnaSolaVezFecha:
            return unaSolaVezFecha;
        case Propiedad::DiariaCada:
            return valorDe(diariaCada);
        case Propiedad::SemanalCada:
            return valorDe(semanalCada);
        case Propiedad::SemanalDias:
            return semanalDias;
        case Propiedad::MensualEsDia:
            return mensualEsDia;
        case Propiedad::MensualDiaMes:
            return valorDe(mensualDiaMes);
        case Propiedad::MensualNumSemana:
            return mensualNumSemana;
        case Propiedad::MensualDiaSemana:
            return mensualDiaSemana;
        case Propiedad::AnualDia:
            return valorDe(anualDia);
        case Propiedad::AnualMes:
            return anualMes;
        case Propiedad::FechaIni:
            return fechaIni;
        case Propiedad::FechaFin:
            return fechaFin;
    }
    return {};
}

QList<std::pair<Propiedad, QString>> columnasAlCargar(int periodicidad, bool mensualEsDia) {
    QList<std::pair<Propiedad, QString>> m{{Propiedad::Hora, u"Hora"_s},
                                           {Propiedad::Periodicidad, u"Periodicidad"_s},
                                           {Propiedad::FechaIni, u"FechaIni"_s},
                                           {Propiedad::FechaFin, u"FechaFin"_s}};
    switch (periodicidad) {
        case 0:
            m += {{Propiedad::UnaSolaVezFecha, u"FechaIni"_s},
                  {Propiedad::FechaIni, u"FechaIni"_s},
                  {Propiedad::FechaFin, u"FechaFin"_s}};
            break;
        case 1:
            m += {Propiedad::DiariaCada, u"Cada"_s};
            break;
        case 2:
            m += {{Propiedad::SemanalCada, u"Cada"_s}, {Propiedad::SemanalDias, u"DiasSemana"_s}};
            break;
        case 3:
            m += {Propiedad::MensualEsDia, u"MensualEsDia"_s};
            if (mensualEsDia)
                m += {Propiedad::MensualDiaMes, u"MensualDiaMes"_s};
            else
                m += {{Propiedad::MensualNumSemana, u"MensualNumSemana"_s},
                      {Propiedad::MensualDiaSemana, u"MensualDiaSemana"_s}};
            break;
        case 4:
            m += {{Propiedad::AnualDia, u"AnualDia"_s}, {Propiedad::AnualMes, u"AnualMes"_s}};
            break;
        default:
            break;
    }
    return m;
}

QList<std::pair<QString, Propiedad>> columnasAlGuardar(int periodicidad, bool mensualEsDia) {
    QList<std::pair<QString, Propiedad>> m{{u"Hora"_s, Propiedad::Hora},
                                           {u"Periodicidad"_s, Propiedad::Periodicidad},
                                           {u"FechaIni"_s, Propiedad::FechaIni},
                                           {u"FechaFin"_s, Propiedad::FechaFin}};
    switch (periodicidad) {
        case 0:
            m +=
                {{u"FechaIni"_s, Propiedad::UnaSolaVezFecha}, {u"FechaFin"_s, Propiedad::FechaFin}};
            break;
        case 1:
            m += {u"Cada"_s, Propiedad::DiariaCada};
            break;
        case 2:
            m += {{u"Cada"_s, Propiedad::SemanalCada}, {u"DiasSemana"_s, Propiedad::SemanalDias}};
            break;
        case 3:
            m += {u"MensualEsDia"_s, Propiedad::MensualEsDia};
            if (mensualEsDia)
                m += {u"MensualDiaMes"_s, Propiedad::MensualDiaMes};
            else
                m += {{u"MensualNumSemana"_s, Propiedad::MensualNumSemana},
                      {u"MensualDiaSemana"_s, Propiedad::MensualDiaSemana}};
            break;
        case 4:
            m += {{u"AnualDia"_s, Propiedad::AnualDia}, {u"AnualMes"_s, Propiedad::AnualMes}};
            break;
        default:
            break;
    }
    return m;
}

QVariant valorDeColumna(Propiedad p, const QVariant& columna) {
    if (columna.isNull()) return {};
    const QString texto = columna.toString().trimmed();
    switch (p) {
        case Propiedad::Hora: {
            const QDateTime completa = deTextoBD(texto);
            if (completa.isValid()) return completa.time();
            for (const QString& f : {u"HH:mm:ss"_s, u"HH:mm"_s}) {
                const QTime t = QTime::fromString(texto, f);
                if (t.isValid()) return t;
            }
            return {};
        }
        case Propiedad::UnaSolaVezFecha:
        case Propiedad::FechaIni:
        case Propiedad::FechaFin: {
            const QDateTime d = deTextoBD(texto);
            return d.isValid() ? QVariant(d.date()) : QVariant();
        }
        case Propiedad::MensualEsDia:
            try {
                return aBooleano(texto);
            } catch (const ErrorQuelmo&) {
                return {};
            }
        default:
            try {
                return int(aEntero16(columna));
            } catch (const ErrorQuelmo&) {
                return {};
            }
    }
}

QString descripcionPrograma(const Programa& p) {
    const QString nl = u"\n"_s;
    QString t;
    switch (p.periodicidad) {
        case 0:
            t = u"Una sola vez"_s + nl + textoDia(p.unaSolaVezFecha);
            break;
        case 1:
            t = u"Diariamente"_s + nl + u"Cada "_s + textoNumero(p.diariaCada) + u" día"_s;
            break;
        case 2: {
            // Sunday first and shortened, as the users have always read it.
            static const char16_t* const kDias[] = {
                u"Lunes ", u"Martes ", u"Miercoles ", u"Jueves ", u"Viernes ", u"Sabado ", u"Dom "};
            t = u"Semanalmente"_s + nl + u"Cada "_s + textoNumero(p.semanalCada) + u" semana"_s +
                nl + u"cada: "_s;
            for (int i = 6; i >= 0; --i)
                if (p.semanalDias & (1 << i)) t += QString::fromUtf16(kDias[i]);
            break;
        }
        case 3:
            if (p.mensualEsDia) {
                t = nl + u"Mensualmente"_s + nl + u"cada "_s + textoNumero(p.mensualDiaMes) +
                    u" de cada mes"_s;
            } else {
                static const char16_t* const kSemanas[] = {u"primer ", u"segundo ", u"tercero ",
                                                           u"cuarto ", u"último "};
                static const char16_t* const kDias[] = {u"Lunes ",  u"Martes ",  u"Miercoles ",
                                                        u"Jueves ", u"Viernes ", u"Sabado ",
                                                        u"Domingo "};
                const int s = qBound(1, p.mensualNumSemana, 5) - 1;
                const int d = qBound(1, p.mensualDiaSemana, 7) - 1;
                t = nl + u"Mensualmente"_s + nl + u"El "_s + QString::fromUtf16(kSemanas[s]) +
                    QString::fromUtf16(kDias[d]) + u"de cada mes."_s;
            }
            break;
        case 4:
            t = u"Anualmente"_s + nl + u"Dia: "_s + textoNumero(p.anualDia) + u" Mes:"_s +
                QLocale(QLocale::Spanish).monthName(qBound(1, p.anualMes, 12), QLocale::LongFormat);
            break;
        default:
            break;
    }
    if (p.periodicidad >= 1 && p.periodicidad <= 4)
        t += nl + u"Fecha Inicio: "_s + textoDia(p.fechaIni) + nl + u"Fecha Fin: "_s +
             textoDia(p.fechaFin) + nl;
    return t + nl + u"HORA:"_s + p.hora.toString(u"HH:mm"_s);
}

// ---- The list of multi-sends -----------------------------------------------

namespace {

// The stored form as wall-clock parts, without the time-zone look-up that
// a local date-time costs: the list has thousands. Invalid when the text
// is in another form.
QDateTime paredDe(const QString& s) {
    if (s.size() != 19) return {};
    const auto n = [&s](int desde, int largo) { return QStringView(s).mid(desde, largo).toInt(); };
    const QDate d(n(0, 4), n(5, 2), n(8, 2));
    const QTime t(n(11, 2), n(14, 2), n(17, 2));
    return d.isValid() && t.isValid() ? QDateTime(d, t, Qt::UTC) : QDateTime();
}

// What the list shows of a last run: its date, or "nunca" when there is
// none.
QString textoUltima(const QString& columna) {
    if (columna.isEmpty()) return u"nunca"_s;
    QDateTime ultima = paredDe(columna);
    try {
        if (!ultima.isValid()) ultima = clsNextTarea::fechaDeColumna(columna);
    } catch (const ErrorQuelmo&) {
        return u"nunca"_s;
    }
    const bool enviada = ultima.date() > QDate(1900, 1, 1) ||
                         (ultima.date() == QDate(1900, 1, 1) && ultima.time() > QTime(0, 0));
    return enviada ? clsNextTarea::textoFecha(ultima) : u"nunca"_s;
}

// A last run in another form than the stored one goes to the list marked
// with this, to be read there.
constexpr char16_t kOtraForma = u'\x1f';

}  // namespace

ListaPaginada::Definicion definicionMensajesProgramados() {
    // The next and last runs as they stand (see ProximasTareas): the list
    // reads them and works nothing out. A failed calculation is stored
    // empty. Every column sorts on an index of the file (see Esquema).
    ListaPaginada::Definicion d;
    d.desde = u"FROM Automaticos"_s;
    d.clave = u"Automaticos.Codigo"_s;
    d.cuenta = u"SELECT count(*) FROM Automaticos"_s;
    d.mayor = u"SELECT max(Codigo) FROM Automaticos"_s;
    d.columnas = {{u"Automaticos.Nombre"_s, u"Automaticos.ClaveNombre"_s},
                  {u"(SELECT count(automatico) FROM AboAuto WHERE AboAuto.automatico = "
                   u"Automaticos.Codigo)"_s,
                   Esquema::ordenDestinatarios()},
                  {Esquema::textoProximaTarea(), Esquema::textoProximaTarea()},
                  {Esquema::textoUltimaTarea(), Esquema::ordenUltimaTarea()}};
    d.mostrar = [](int columna, const QString& celda) {
        if (columna == 3 && celda.startsWith(kOtraForma)) return textoUltima(celda.mid(1));
        return celda;
    };
    return d;
}

int32_t primerCodigoConNombre(const QString& nombre) {
    const ResultadoConsulta r = bd().query(
        u"SELECT Codigo FROM Automaticos WHERE coalesce(Nombre, '') = ? COLLATE BINARY "
        u"ORDER BY Codigo LIMIT 1"_s,
        {nombre});
    return r.isEmpty() ? -1 : int32_t(numeroDe(r.value(0, 0)));
}

int32_t proximoCodigoAutomatico() {
    const ResultadoConsulta r = bd().query(u"Select max(Codigo) + 1 from Automaticos"_s);
    return r.isEmpty() || r.value(0, 0).isNull() ? 1 : int32_t(numeroDe(r.value(0, 0)));
}

namespace {
// A multi-send's recipients, a stretch of their rows at a time on its
// index: fifty thousand of them, each one's delete counted down by the
// file's trigger, are more than a turn.
EscrituraPorTurnos::Paso quitarDestinatariosDe(int32_t codigo) {
    return EscrituraPorTurnos::porTramos(
        bd(), u"DELETE FROM AboAuto WHERE Automatico = ? AND id_AboAuto BETWEEN ? AND ?"_s,
        {codigo}, {u"AboAuto"_s, u"id_AboAuto"_s, u"Automatico = ?"_s, {codigo}});
}
}  // namespace

void borrarMensajeProgramado(int32_t codigo, std::function<void(bool borrado)> alTerminar) {
    EscrituraPorTurnos::escribir(
        bd(),
        {quitarDestinatariosDe(codigo),
         EscrituraPorTurnos::sentencia(bd(), u"Delete from Automaticos where codigo = ?"_s,
                                       {codigo})},
        [alTerminar = std::move(alTerminar)](const ErrorBD* fallo) { alTerminar(!fallo); });
}

// ---- One multi-send --------------------------------------------------------

ResultadoConsulta leerAutomatico(int32_t codigo) {
    return bd().query(u"SELECT * FROM Automaticos WHERE codigo=?"_s, {codigo});
}

bool programaActivo(const ResultadoConsulta& fila) {
    if (fila.isEmpty()) return false;
    const QVariant v = fila.value(0, u"TareaProgramada"_s);
    try {
        return !v.isNull() && aBooleano(v.toString());
    } catch (const ErrorQuelmo&) {
        return false;
    }
}

namespace {
// The multi-send whose recipients the editor lists: the list's statements
// read it, as they bind nothing.
const QString kEditado = u"temp.EnvioEditado"_s;
const QString kDesdeDestinatarios =
    u"FROM AboAuto INNER JOIN Abonados ON AboAuto.Abonado = Abonados.Codigo"_s;
}  // namespace

ListaPaginada::Definicion definicionDestinatarios() {
    ListaPaginada::Definicion d;
    d.desde = kDesdeDestinatarios;
    d.filtro = u"AboAuto.Automatico = (SELECT Codigo FROM "_s + kEditado + u')';
    d.clave = u"AboAuto.id_AboAuto"_s;
    d.mayor = u"SELECT max(id_AboAuto) FROM AboAuto"_s;
    // The names' stored keys sort faster than the rule's comparison of
    // the names, but no index of the multi-send's rows holds them.
    d.columnas = {{u"Abonados.Alias"_s, u"Abonados.ClaveNombre"_s, true},
                  {u"AboAuto.Mensaje"_s, {}}};
    // Lines alike stand in the order they were loaded in: by number.
    d.desempate = u"AboAuto.Abonado"_s;
    return d;
}

void prepararDestinatarios(int32_t codigo,
                           std::function<void(std::optional<int> lineas)> alTerminar) {
    using namespace EscrituraPorTurnos;
    auto lineas = std::make_shared<int>(0);
    std::vector<Paso> pasos{
        [codigo] {
            bd().exec(u"CREATE TABLE IF NOT EXISTS "_s + kEditado + u" (Codigo INTEGER)"_s);
            bd().exec(u"DELETE FROM "_s + kEditado);
            bd().exec(u"INSERT INTO "_s + kEditado + u" (Codigo) VALUES (?)"_s, {codigo});
            return false;
        },
        // On the multi-send's index a stretch at a time: each line looks
        // its contact up, a quarter of a million of them more than a turn.
        contar(bd(),
               u"SELECT count(*) "_s + kDesdeDestinatarios +
                   u" WHERE AboAuto.Automatico = ? AND AboAuto.id_AboAuto BETWEEN ? AND ?"_s,
               {codigo}, {u"AboAuto"_s, u"id_AboAuto"_s, u"Automatico = ?"_s, {codigo}},
               lineas.get())};
    porTurnos(bd(), std::move(pasos),
              [lineas, alTerminar = std::move(alTerminar)](const ErrorBD* fallo) {
                  if (fallo) {
                      msLog(u"No se pudieron leer los destinatarios: "_s + fallo->description());
                      alTerminar(std::nullopt);
                      return;
                  }
                  alTerminar(*lineas);
              });
}

int32_t otroCodigoConNombre(int32_t codigo, const QString& nombre) {
    QVariantList valores;
    const QString donde = condicionNombre(u"nombre"_s, nombre, valores);
    const ResultadoConsulta r = bd().query(
        u"Select codigo from Automaticos where "_s + donde + u" order by codigo", valores);
    for (int i = 0; i < r.recordCount(); ++i) {
        const int32_t c = int32_t(numeroDe(r.value(i, 0)));
        if (c != codigo) return c;
    }
    return -1;
}

namespace {
// What an add of recipients has gone through so far.
struct Anadido {
    enum Paso { kBuscar, kAlta, kCambio, kDestinatarios } paso = kBuscar;
    QStringList aliases;
    qsizetype siguiente = 0;
    QSet<QString> vistos;
    // The contacts found, by their place in the contacts' table.
    std::map<long long, std::pair<QString, QString>> contactos;
    std::map<long long, std::pair<QString, QString>>::const_iterator escrito;
};

// Aliases looked up, or rows written, between two looks at the clock.
constexpr int kPorPaso = 50;
}  // namespace

void anadirDestinatarios(int32_t codigo, QString nombre, QStringList aliases, QString mensaje,
                         bool saludo, std::function<void(const Resultado<int>&)> alTerminar) {
    BaseDatos& db = bd();
    auto a = std::make_shared<Anadido>();
    a->aliases = std::move(aliases);
    // Every contact that bears one of the chosen aliases, once.
    EscrituraPorTurnos::Paso buscar = [&db, a] {
        // Grown an insert at a time, the set would rehash a quarter of a
        // million keys in one insert.
        if (a->siguiente == 0) a->vistos.reserve(a->aliases.size());
        for (int k = 0; k < kPorPaso && a->siguiente < a->aliases.size(); ++k) {
            const QString& alias = a->aliases.at(a->siguiente++);
            const QString clave = ReglaNombres::clave(alias);
            if (alias.isEmpty() || a->vistos.contains(clave)) continue;
            a->vistos.insert(clave);
            QVariantList valores;
            const QString donde = condicionNombre(u"alias"_s, alias, valores);
            const ResultadoConsulta r =
                db.query(u"select rowid, codigo, alias from abonados where "_s + donde, valores);
            for (int i = 0; i < r.recordCount(); ++i)
                a->contactos.insert_or_assign(
                    numeroDe(r.value(i, 0)),
                    std::pair{textoDe(r.value(i, 1)), textoDe(r.value(i, 2))});
        }
        return a->siguiente < a->aliases.size();
    };
    EscrituraPorTurnos::Paso fila = [&db, a, codigo, nombre] {
        a->escrito = a->contactos.cbegin();
        if (a->contactos.empty()) return false;
        const bool existe =
            numeroDe(db.query(u"Select count(*) from Automaticos where codigo = ?"_s, {codigo})
                         .value(0, 0)) > 0;
        a->paso = existe ? Anadido::kCambio : Anadido::kAlta;
        if (existe)
            db.exec(u"update Automaticos set Nombre = ? where codigo = ?"_s, {nombre, codigo});
        else
            db.exec(u"Insert into Automaticos (Codigo, Nombre) Values (?, ?)"_s, {codigo, nombre});
        a->paso = Anadido::kDestinatarios;
        return false;
    };
    EscrituraPorTurnos::Paso destinatarios = [&db, a, codigo, mensaje, saludo] {
        for (int k = 0; k < kPorPaso && a->escrito != a->contactos.cend(); ++k, ++a->escrito) {
            const auto& [numero, alias] = a->escrito->second;
            const QString texto = saludo ? alias + u", "_s + mensaje : mensaje;
            db.exec(u"Insert into AboAuto (Automatico, Abonado, Mensaje) values (?, ?, ?)"_s,
                    {codigo, numero, texto});
        }
        return a->escrito != a->contactos.cend();
    };
    EscrituraPorTurnos::escribir(
        db, {std::move(buscar), std::move(fila), std::move(destinatarios)},
        [a, alTerminar = std::move(alTerminar)](const ErrorBD* fallo) {
            const int anadidos = int(a->contactos.size());
            // A quarter of a million names and contacts are freed over
            // turns, not all in this one.
            liberarPorTurnos(std::exchange(a->aliases, {}));
            liberarPorTurnos(std::exchange(a->vistos, {}));
            liberarPorTurnos(std::exchange(a->contactos, {}));
            if (!fallo) {
                alTerminar(anadidos);
                return;
            }
            // A lookup that failed is one of the recipients' step, as when
            // it ran before the transaction.
            alTerminar(Hecho::no(a->paso == Anadido::kAlta ? u"Imposible dar de Alta este Mensaje"_s
                                 : a->paso == Anadido::kCambio
                                     ? u"Imposible Modificar este Mensaje"_s
                                     : u"Error en Mantenimiento de Mensajes Programados\n"_s +
                                           fallo->description()));
        });
}

bool quitarDestinatario(long long idAboAuto) {
    try {
        bd().exec(u"delete from aboauto where id_aboauto = ?"_s, {idAboAuto});
        return true;
    } catch (const ErrorQuelmo&) {
        return false;
    }
}

void quitarTodosDestinatarios(int32_t codigo, std::function<void(bool quitados)> alTerminar) {
    EscrituraPorTurnos::escribir(
        bd(), {quitarDestinatariosDe(codigo)},
        [alTerminar = std::move(alTerminar)](const ErrorBD* fallo) { alTerminar(!fallo); });
}

bool cambiarMensajeDestinatario(long long idAboAuto, const QString& mensaje) {
    try {
        bd().exec(u"Update AboAuto set mensaje = ? where id_aboauto = ?"_s, {mensaje, idAboAuto});
        return true;
    } catch (const ErrorQuelmo&) {
        return false;
    }
}

QString recortarBlancos(const QString& texto) {
    qsizetype desde = 0, hasta = texto.size();
    while (desde < hasta && texto[desde] == u' ') ++desde;
    while (hasta > desde && texto[hasta - 1] == u' ') --hasta;
    return texto.mid(desde, hasta - desde);
}

void olvidarUltimaTarea(int32_t codigo) {
    try {
        bd().exec(u"update automaticos set ultimatarea = Null where codigo = ?"_s, {codigo});
    } catch (const ErrorQuelmo& e) {
        msLog(u"No se pudo borrar la última ejecución: "_s + e.description());
    }
}

namespace {

// The row's update: the name and the switch, and with it on the schedule's
// columns for its kind. Throws on failure; returns the rows changed.
int escribirPrograma(int32_t codigo, const QString& nombre, bool programada,
                     const Programa& programa) {
    QStringList columnas{u"Nombre = ?"_s, u"TareaProgramada = ?"_s};
    QVariantList valores{nombre, programada ? 1 : 0};
    if (programada) {
        QMap<QString, QVariant> porColumna;
        QStringList orden;
        for (const auto& [col, prop] :
             columnasAlGuardar(programa.periodicidad, programa.mensualEsDia)) {
            QVariant v = programa.valor(prop);
            // Reading an empty field fails, and the column keeps its value.
            if (!v.isValid()) continue;
            if (prop == Propiedad::Hora)
                v = QDateTime(kDiaDeLaHora, programa.hora);
            else if (v.typeId() == QMetaType::QDate)
                v = QDateTime(v.toDate(), QTime(0, 0));
            else if (v.typeId() == QMetaType::Bool)
                v = v.toBool() ? 1 : 0;
            if (!porColumna.contains(col)) orden.append(col);
            porColumna.insert(col, v);
        }
        for (const QString& col : orden) {
            columnas.append(col + u" = ?"_s);
            valores.append(porColumna.value(col));
        }
    }
    valores.append(codigo);
    return bd().exec(u"UPDATE Automaticos SET "_s + columnas.join(u", "_s) + u" WHERE codigo = ?"_s,
                     valores);
}

}  // namespace

bool guardarMensajeProgramado(int32_t codigo, const QString& nombre, bool programada,
                              const Programa& programa) {
    try {
        // The schedule and its next run go in together.
        Transaccion t(bd());
        if (escribirPrograma(codigo, nombre, programada, programa) == 0) return false;
        ProximasTareas::guardar(codigo);
        t.commit();
        return true;
    } catch (const ErrorQuelmo&) {
        return false;
    }
}

QString proximaTareaDe(int32_t codigo, bool programada, const Programa& programa) {
    if (!programada) return u"no"_s;
    // The schedule is written into the row for the calculator to read, and
    // taken back at once: what is shown is what saving would store.
    BaseDatos& db = bd();
    const QString punto = u"vista_programa"_s;
    QString texto;
    try {
        db.savepoint(punto);
    } catch (const ErrorQuelmo&) {
        return texto;
    }
    try {
        db.exec(u"INSERT OR IGNORE INTO Automaticos (Codigo) VALUES (?)"_s, {codigo});
        escribirPrograma(codigo, textoDe(leerAutomatico(codigo).value(0, u"Nombre"_s)), true,
                         programa);
        clsNextTarea calculo;
        calculo.setCodigo(codigo);
        calculo.CalcularProximaTarea();
        texto = calculo.HayTarea() ? clsNextTarea::textoFecha(calculo.FechaProximaTarea())
                                   : u"Finalizado"_s;
    } catch (const ErrorQuelmo&) {
        texto.clear();
    }
    try {
        db.rollbackTo(punto);
        db.release(punto);
    } catch (const ErrorQuelmo&) {
        // Nothing was written under the savepoint that could be kept.
    }
    return texto;
}
