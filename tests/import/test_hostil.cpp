// Hostile input, from a fixed seed: random and mutated import lines and
// platform replies. A line is imported with its text intact or refused with
// a log line, never with a broken statement; a reply is read with every
// value intact or refused with words. QUELMO_HOSTIL sets how many lines and
// replies (10,000 of each unless set).
#include <QCoro/QCoroTask>
#include "AyudaImport.h"
#include "base/Error.h"
#include "base/RegistroActividad.h"
#include "delivery/qmXMLSend.h"
#include "import/mdoImport.h"

#include <QRandomGenerator>
#include <QStringDecoder>
#include <QXmlStreamWriter>

using namespace Qt::StringLiterals;
using namespace import_prueba;

namespace {

constexpr quint32 kSemilla = 20260301;

int veces() {
    const int n = qEnvironmentVariableIntValue("QUELMO_HOSTIL");
    return n > 0 ? n : 10000;
}

// What has broken parsers, statements and decoders before.
const QList<QByteArray>& piezas() {
    // clang-format off
    static const QList<QByteArray> p = {
        "'", "\"", "--", "; DROP TABLE envios; --", ";;;;;;;;", "\\", QByteArray(1, '\0'),
        QByteArray(3, '\0'), "&amp;", "&#0;", "&lt;b&gt;", "<![CDATA[", "]]>", "%s%n", "?", "?1",
        "99999999999999999999999999", "1e308", "-1e308", "nan", "inf", "0x1F", "-0", "5.0", "256",
        "-1", "\r", "\t", " ", "\xc2\xa0", "\xe2\x80\xa8", "\xf0\x9f\x98\x80", "ñ", "€",
        "((((((((((", "<a><a><a><a>"};
    // clang-format on
    return p;
}
// Bytes that are not UTF-8: a file that holds one is read as Windows-1252.
const QList<QByteArray>& noUtf8() {
    static const QList<QByteArray> p = {"\xff",         "\xc3",     "\xc3\x28", "\xe2\x82",
                                        "\xed\xa0\x80", "\xc0\xaf", "\x80"};
    return p;
}

QByteArray elegir(QRandomGenerator& azar, const QList<QByteArray>& de) {
    return de.at(azar.bounded(int(de.size())));
}

QByteArray texto(QRandomGenerator& azar, bool utf8) {
    QByteArray t;
    const int trozos = azar.bounded(8);
    for (int i = 0; i < trozos; ++i) {
        switch (azar.bounded(4)) {
            case 0:
                t += elegir(azar, piezas());
                break;
            case 1:
                if (!utf8) {
                    t += elegir(azar, noUtf8());
                    break;
                }
                [[fallthrough]];
            case 2:
                t += QByteArray(azar.bounded(1, 4000) == 1 ? 1000 : 1, '(');
                break;
            default:
                t += "Hola mundo";
        }
    }
    // Now and then a line of a megabyte.
    if (azar.bounded(2500) == 0) t += QByteArray(1 << 20, 'x');
    return t;
}

// A message line, often whole, often mangled.
QByteArray linea(QRandomGenerator& azar, bool utf8) {
    static const QList<QByteArray> cuentas = {"5", "7", "", " 7 ", "9", "300", "1e400", "5.5"};
    static const QList<QByteArray> numeros = {"600123456", "0034600123456", "34600123456",
                                              "912345678", ""};
    QByteArray l = azar.bounded(4) == 0 ? texto(azar, utf8)
                                        : elegir(azar, cuentas) + ';' + elegir(azar, numeros) +
                                              ';' + texto(azar, utf8);
    if (azar.bounded(3) == 0 && !l.isEmpty()) {
        // Between characters, so that a line of UTF-8 stays UTF-8.
        qsizetype en = azar.bounded(int(l.size()));
        while (en < l.size() && (uchar(l.at(en)) & 0xC0) == 0x80) ++en;
        l.insert(en, elegir(azar, piezas()));
    }
    l.replace('\n', ' ');
    return l;
}

// A file's lines as the import reads them: UTF-8 when the whole file is,
// else Windows-1252; a line ends at "\n", a "\r" before it goes.
QStringList lineasLeidas(const QByteArray& fichero) {
    QString todo = QString::fromUtf8(fichero);
    if (todo.toUtf8() != fichero) todo = QStringDecoder("windows-1252")(fichero);
    QStringList out = todo.split(u'\n');
    for (QString& l : out)
        if (l.endsWith(u'\r')) l.chop(1);
    return out;
}

// The text field of a line: after the second ";", or the first, or none.
QString campoTexto(const QString& linea) {
    const QStringList partes = linea.split(u';');
    if (partes.size() >= 3) return linea.section(u';', 2).trimmed();
    return partes.size() == 2 ? partes.at(1).trimmed() : QString();
}

const QStringList kNegativas = {u"Error en el formato de la Cuenta, "_s,
                                u"Error en Campo Cuenta, No existe una Cuenta"_s,
                                u"ERROR en número de movil para el Destino : "_s};
const QString kImportado = u"Mensaje Importado para el Destino : "_s;

// Each line's outcome against the next outbox row: imported with its text
// intact, or refused in words. Returns how many were imported.
int comprobarDesenlaces(const QStringList& desenlaces, const QStringList& textos,
                        QVariant& ultimoId) {
    int importados = 0;
    for (int i = 0; i < desenlaces.size(); ++i) {
        const QString& d = desenlaces.at(i);
        if (!d.startsWith(kImportado)) {
            bool negativa = false;
            for (const QString& n : kNegativas) negativa = negativa || d.startsWith(n);
            if (!negativa) qWarning("%s", qPrintable(d.left(200)));
            if (!negativa) return -1;
            continue;
        }
        const ResultadoConsulta r = bd().query(
            u"SELECT Id, Abonado, Mensaje FROM envios WHERE Id > ? ORDER BY Id LIMIT 1"_s,
            {ultimoId.isNull() ? QVariant(0) : ultimoId});
        // The row holds the text as it came; the log, without its control characters.
        if (r.recordCount() != 1 || r.value(0, 2).toString() != textos.at(i) ||
            d != msEscaparControles(kImportado + r.value(0, 1).toString() + u", Texto: "_s +
                                    textos.at(i))) {
            qWarning("línea %d: %s", i, qPrintable(d.left(200)));
            return -1;
        }
        ultimoId = r.value(0, 0);
        ++importados;
    }
    return importados;
}

}  // namespace

class TestHostil : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

    InterfazGuionada ui;  // every question takes its default answer

  private Q_SLOTS:
    void init() { baseConCuentas(world); }

    // Files of 1,000 lines; every other one holds bytes that are not UTF-8,
    // and some end in the middle of a character.
    void lineasDeFichero() {
        QRandomGenerator azar(kSemilla);
        const QString ruta = world.root() + u"/hostil.txt"_s;
        QVariant ultimoId;
        for (int hechas = 0, n = 0; hechas < veces(); ++n) {
            const int cuantas = std::min(1000, veces() - hechas);
            QByteArray fichero;
            for (int i = 0; i < cuantas; ++i) fichero += linea(azar, n % 2 == 0) + "\r\n";
            if (n % 4 == 0) fichero.replace(fichero.size() - 2, 2, "\xc3");
            hechas += cuantas;
            escribir(ruta, fichero);
            QStringList textos;
            int noVacias = 0;
            for (const QString& l : lineasLeidas(fichero)) {
                if (l.isEmpty()) continue;
                ++noVacias;
                textos << campoTexto(l);
            }
            estadoAplicacion().log.clear();
            QString lista = u"-1"_s;
            prueba::esperar(msLeerFicheroImport(ruta, false, lista, false));
            QStringList desenlaces = registro();
            const QString resumen = desenlaces.takeLast();
            QCOMPARE(desenlaces.size(), noVacias);
            const int importados = comprobarDesenlaces(desenlaces, textos, ultimoId);
            QVERIFY2(importados >= 0, "a line neither imported intact nor refused in words");
            QCOMPARE(resumen, u"Importados %1 Mensajes de %2"_s.arg(importados).arg(noVacias));
        }
    }

    // The fields straight to the line routine: line breaks, NULs and
    // semicolons a file could not carry into one field.
    void camposDeUnaLinea() {
        QRandomGenerator azar(kSemilla + 1);
        QVariant ultimoId;
        const auto campo = [&azar] {
            QString c = QString::fromUtf8(texto(azar, azar.bounded(2) == 0));
            if (azar.bounded(4) == 0) {
                // Not between the halves of a character beyond the basic plane.
                qsizetype en = azar.bounded(int(c.size()) + 1);
                if (en < c.size() && c.at(en).isLowSurrogate()) ++en;
                c.insert(en, u'\n');
            }
            return c;
        };
        static const QStringList cuentas = {u"5"_s, u"7"_s, u" 7 "_s, u"9"_s, u"-0"_s};
        for (int i = 0; i < veces(); ++i) {
            // Lines share commits, as in a file, or each costs a disk sync.
            if (i % 500 == 0) {
                if (i > 0) bd().commit();
                bd().begin();
            }
            const QString cuenta = azar.bounded(3) == 0 ? campo() : cuentas.at(azar.bounded(5));
            const QString numero = azar.bounded(3) == 0 ? campo() : u"600123456"_s;
            const QString mensaje = campo();
            estadoAplicacion().log.clear();
            const bool bien = msImportarLinea(cuenta, numero, mensaje, -1, false, false);
            const QStringList desenlaces = registro();
            QCOMPARE(desenlaces.size(), 1);
            const int importados = comprobarDesenlaces(desenlaces, {mensaje.trimmed()}, ultimoId);
            QVERIFY2(importados >= 0, "a line neither imported intact nor refused in words");
            QCOMPARE(bien, importados == 1);
        }
        bd().commit();
    }

    // Replies written well with awkward values read back equal; replies
    // then mangled byte by byte are read or refused as not valid.
    void respuestas() {
        QRandomGenerator azar(kSemilla + 2);
        const auto valor = [&azar] {
            // What a well-formed document can carry: no control characters.
            QString v = QString::fromUtf8(texto(azar, true));
            v.removeIf([](QChar c) { return c.unicode() < 0x20; });
            return v;
        };
        static const QStringList nFuera = {u"0"_s,   u"4"_s,   u"-1"_s, u"99999999999999999999"_s,
                                           u"abc"_s, QString()};
        for (int i = 0; i < veces(); ++i) {
            const auto cliente = qmXMLSend::crear();
            for (int k = 1; k <= 3; ++k) cliente->XMLMensajes.Add(k, u"0034600123456"_s, u"hola"_s);
            const QString comentario = valor(), saldo = valor(), movil = valor(), version = valor(),
                          traza = valor();
            QByteArray doc;
            QXmlStreamWriter w(&doc);
            w.writeStartDocument();
            w.writeStartElement(u"respuesta"_s);
            w.writeStartElement(u"autentificacion"_s);
            w.writeAttribute(u"resultado"_s, u"1"_s);
            w.writeAttribute(u"saldo"_s, saldo);
            w.writeAttribute(u"movil"_s, movil);
            w.writeAttribute(u"version"_s, version);
            w.writeTextElement(u"comentario"_s, comentario);
            w.writeTextElement(u"traza"_s, traza);
            w.writeEndElement();
            w.writeStartElement(u"mensajes"_s);
            QStringList comentarios(3);
            QList<bool> aceptados(3, false);
            int fuera = 0;
            for (int k = 1; k <= 3; ++k) {
                const bool propio = azar.bounded(4) != 0;
                w.writeStartElement(u"mensaje"_s);
                w.writeAttribute(u"n"_s, propio ? QString::number(k) : nFuera.at(azar.bounded(6)));
                const bool aceptado = azar.bounded(2) == 0;
                w.writeAttribute(u"resultado"_s, aceptado ? u"1"_s : u"0"_s);
                const QString c = valor();
                w.writeCharacters(c);
                w.writeEndElement();
                if (propio) {
                    comentarios[k - 1] = c;
                    aceptados[k - 1] = aceptado;
                } else {
                    ++fuera;
                }
            }
            w.writeEndElement();
            w.writeEndElement();
            w.writeEndDocument();

            if (azar.bounded(2) == 0) {
                qmXMLSend::leerRespuesta(*cliente, doc);
                const qmXMLSend::Autentificacion& a = cliente->RXAutentificacion;
                QCOMPARE(a.Resultado, u"1"_s);
                QCOMPARE(a.saldo, saldo);
                QCOMPARE(a.Movil, movil);
                QCOMPARE(a.Version, version);
                QCOMPARE(a.Comentario, comentario);
                QCOMPARE(a.AuTrace, traza);
                QCOMPARE(cliente->RXAvisos.size(), fuera);
                for (int k = 0; k < 3; ++k) {
                    QCOMPARE(cliente->XMLMensajes.items().at(k).Comentario, comentarios.at(k));
                    QCOMPARE(cliente->XMLMensajes.items().at(k).Resultado, aceptados.at(k));
                }
                continue;
            }
            const int caso = azar.bounded(40);
            if (caso == 0) {
                // Nested deeper than any reader could recurse.
                doc.insert(doc.indexOf("<mensajes>"), QByteArray("<a>").repeated(10000));
            } else if (caso < 8) {
                // Entities that would expand to a megabyte.
                doc.insert(doc.indexOf("<respuesta>"),
                           "<!DOCTYPE respuesta [<!ENTITY a \"aaaaaaaaaa\">"
                           "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
                           "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\">"
                           "<!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;\">"
                           "<!ENTITY e \"&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;\">]>");
                doc.replace("<traza>", "<traza>&e;&e;&e;&e;&e;&e;&e;&e;&e;&e;");
            } else if (caso < 24) {
                doc.truncate(azar.bounded(int(doc.size())));
            } else {
                for (int m = azar.bounded(1, 4); m > 0; --m)
                    doc.insert(azar.bounded(int(doc.size()) + 1),
                               elegir(azar, azar.bounded(2) ? piezas() : noUtf8()));
            }
            try {
                qmXMLSend::leerRespuesta(*cliente, doc);
            } catch (const ErrorQuelmo& e) {
                QVERIFY2(e.description().startsWith(u"Respuesta no válida de la plataforma: "_s),
                         qPrintable(e.description()));
            }
        }
    }
};

QUELMO_TEST_MAIN(TestHostil)
#include "test_hostil.moc"
