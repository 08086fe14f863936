// The lines of an import file: fields, accounts, numbers, contacts, lists,
// encodings and the counts of the closing log line.
#include <QCoro/QCoroTask>
#include "AyudaImport.h"
#include "import/mdoImport.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace import_prueba;

class TestLineas : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    std::optional<InterfazGuionada> ui;  // scripted answers, new for each test

    QString fichero() const { return world.root() + u"/lineas.txt"_s; }

    bool importar(const QByteArray& bytes, bool contactos = false, QString lista = u"-1"_s,
                  bool addContactos = false) {
        escribir(fichero(), bytes);
        return prueba::esperar(msLeerFicheroImport(fichero(), contactos, lista, addContactos));
    }

  private Q_SLOTS:
    void init() {
        baseConCuentas(world);
        ui.emplace();
    }

    void lineaDeMensajes_data() {
        QTest::addColumn<QString>("linea");
        QTest::addColumn<QString>("registro");
        QTest::addColumn<QString>("fila");  // canal|abonado|mensaje, or none

        const QString ok = u"Mensaje Importado para el Destino : "_s;
        const QString malNumero = u"ERROR en número de movil para el Destino : "_s;
        QTest::newRow("tres campos") << u"7;600123456;Hola"_s << ok + u"0034600123456, Texto: Hola"
                                     << u"7|0034600123456|Hola"_s;
        QTest::newRow("dos campos, cuenta principal")
            << u"34600123456;Hola"_s << ok + u"0034600123456, Texto: Hola"
            << u"5|0034600123456|Hola"_s;
        QTest::newRow("solo el número")
            << u"0034600123456"_s << ok + u"0034600123456, Texto: " << u"5|0034600123456|"_s;
        QTest::newRow("punto y coma en el texto")
            << u"7;600123456;uno;dos;tres"_s << ok + u"0034600123456, Texto: uno;dos;tres"
            << u"7|0034600123456|uno;dos;tres"_s;
        QTest::newRow("blancos alrededor")
            << u"  7 ; 600123456 ;  Hola mundo  "_s << ok + u"0034600123456, Texto: Hola mundo"
            << u"7|0034600123456|Hola mundo"_s;
        QTest::newRow("apóstrofo intacto")
            << u"7;600123456;L'Hospitalet"_s << ok + u"0034600123456, Texto: L'Hospitalet"
            << u"7|0034600123456|L'Hospitalet"_s;
        QTest::newRow("cuenta no numérica")
            << u"abc;600123456;Hola"_s << u"Error en el formato de la Cuenta, no es numerico"_s
            << QString();
        QTest::newRow("cuenta 256")
            << u"256;600123456;Hola"_s
            << u"Error en el formato de la Cuenta, Valor superior a 255"_s << QString();
        QTest::newRow("cuenta inexistente")
            << u"9;600123456;Hola"_s
            << u"Error en Campo Cuenta, No existe una Cuenta definida con el codigo 9"_s
            << QString();
        QTest::newRow("fijo español")
            << u"912345678;Hola"_s << malNumero + u"0034912345678" << QString();
        QTest::newRow("ocho cifras")
            << u"60012345;Hola"_s << malNumero + u"003460012345" << QString();
        QTest::newRow("extranjero sin prueba de longitud")
            << u"00447700900123;Hola"_s << ok + u"00447700900123, Texto: Hola"
            << u"5|00447700900123|Hola"_s;
        QTest::newRow("prefijo con más")
            << u"+34600123456;Hola"_s << malNumero + u"0034+34600123456" << QString();
        QTest::newRow("línea de blancos") << u"   "_s << malNumero + u"0034" << QString();
    }
    void lineaDeMensajes() {
        QFETCH(QString, linea);
        QFETCH(QString, registro);
        QFETCH(QString, fila);
        QVERIFY(importar(linea.toUtf8() + "\r\n"));
        const QStringList log = import_prueba::registro();
        QCOMPARE(log.value(log.size() - 2), registro);
        QCOMPARE(log.last(), u"Importados %1 Mensajes de 1"_s.arg(fila.isEmpty() ? 0 : 1));
        const QStringList esperadas = fila.isEmpty() ? QStringList() : QStringList{fila};
        QCOMPARE(filas(u"SELECT Canal,Abonado,Mensaje FROM envios"_s), esperadas);
        if (!fila.isEmpty()) QCOMPARE(filas(u"SELECT intento FROM envios"_s), QStringList{u"2"_s});
    }

    // A write the database refuses is said with its cause, not only as a
    // message not imported.
    void escrituraRechazadaDiceSuCausa_data() {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QString>("causa");
        QTest::newRow("solo lectura")
            << u"PRAGMA query_only = 1"_s << u"el fichero de la base de datos es de solo lectura"_s;
        QTest::newRow("otra base de datos")
            << u"DROP TABLE envios"_s
            << u"el fichero no es una base de datos de Quelmo Mensajes SMS"_s;
    }
    void escrituraRechazadaDiceSuCausa() {
        QFETCH(QString, sql);
        QFETCH(QString, causa);
        bd().exec(sql);
        const bool importada = msImportarLinea(7, u"600123456"_s, u"Hola"_s, -1, false, false);
        bd().exec(u"PRAGMA query_only = 0"_s);
        QVERIFY(!importada);
        const QStringList log = import_prueba::registro();
        QCOMPARE(log.value(log.size() - 2),
                 u"Mensaje NO Importado para el Destino : 0034600123456, Texto: Hola"_s);
        QCOMPARE(log.last(), u"No se pudo escribir en la base de datos: "_s + causa);
    }

    // A line past the limit is one bad line with its number, read in
    // bounded memory; the lines after it are imported.
    void lineaDemasiadoLarga() {
        QVERIFY(importar(QByteArray(5 * 1024 * 1024, 'x') + "\n7;600123456;Hola\n"));
        const QStringList log = import_prueba::registro();
        QVERIFY(log.contains(u"La línea 1 tiene más de 4 MB: no se importa"_s));
        QCOMPARE(log.last(), u"Importados 1 Mensajes de 2"_s);
        QCOMPARE(filas(u"SELECT Canal,Abonado,Mensaje FROM envios"_s),
                 QStringList{u"7|0034600123456|Hola"_s});
    }

    void sinCuentaPrincipal() {
        bd().exec(u"UPDATE Canales SET Principal=0"_s);
        QVERIFY(importar("600123456;Hola\n"));
        QVERIFY(import_prueba::registro().contains(
            u"Error en Campo Cuenta, No existe una Cuenta definida con el codigo 0"_s));
    }

    void ficheros_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("textos");
        QTest::addColumn<bool>("leido");
        QTest::addColumn<QString>("cierre");

        QTest::newRow("UTF-8 con LF")
            << QByteArray("7;600123456;A\xc3\xb1o \xe2\x82\xac\n") << QStringList{u"Año €"_s}
            << true << u"Importados 1 Mensajes de 1"_s;
        // The mark would otherwise stand in front of the account.
        QTest::newRow("UTF-8 con BOM y CR LF")
            << QByteArray(
                   "\xef\xbb\xbf"
                   "7;600123456;Jos\xc3\xa9\r\n7;600123457;b\r\n")
            << QStringList{u"José"_s, u"b"_s} << true << u"Importados 2 Mensajes de 2"_s;
        QTest::newRow("Windows-1252")
            << QByteArray("7;600123456;A\xf1o \x80\r\n7;600123457;\xe1\r\n")
            << QStringList{u"Año €"_s, u"á"_s} << true << u"Importados 2 Mensajes de 2"_s;
        // One byte that is no UTF-8 anywhere makes the whole file 1252.
        QTest::newRow("UTF-8 roto al final")
            << QByteArray("7;600123456;\xc3\xa1\n7;600123457;\xe9\n")
            << QStringList{u"Ã¡"_s, u"é"_s} << true << u"Importados 2 Mensajes de 2"_s;
        QTest::newRow("última línea sin fin")
            << QByteArray("7;600123456;uno\n7;600123457;dos") << QStringList{u"uno"_s, u"dos"_s}
            << true << u"Importados 2 Mensajes de 2"_s;
        QTest::newRow("tres buenas y una mala")
            << QByteArray("7;600123456;a\n\n7;600123457;b\n7;600123458;c\n9;600123459;d\n")
            << QStringList{u"a"_s, u"b"_s, u"c"_s} << true << u"Importados 3 Mensajes de 4"_s;
        QTest::newRow("solo malas") << QByteArray("x;1;2\r\n912345678\r\n") << QStringList() << true
                                    << u"Importados 0 Mensajes de 2"_s;
        QTest::newRow("solo líneas vacías")
            << QByteArray("\n\r\n\n") << QStringList() << false << u"Importados 0 Mensajes de 0"_s;
        QTest::newRow("vacío") << QByteArray() << QStringList() << false
                               << u"Importados 0 Mensajes de 0"_s;
    }
    void ficheros() {
        QFETCH(QByteArray, bytes);
        QTEST(importar(bytes), "leido");
        QTEST(import_prueba::registro().last(), "cierre");
        QTEST(filas(u"SELECT Mensaje FROM envios ORDER BY Id"_s), "textos");
    }

    void ficheroQueNoSeAbre() {
        QString lista = u"-1"_s;
        const QString ruta = world.root() + u"/no-esta.txt"_s;
        QVERIFY(!prueba::esperar(msLeerFicheroImport(ruta, false, lista, false)));
        QCOMPARE(import_prueba::registro(), QStringList{u"Error Abriendo fichero : "_s + ruta});
    }

    void contactos_data() {
        QTest::addColumn<QStringList>("previos");  // aliases already there, besides Eva
        QTest::addColumn<bool>("contactos");
        QTest::addColumn<bool>("addContactos");
        QTest::addColumn<QString>("linea");
        QTest::addColumn<QStringList>("registro");  // what the line logged
        QTest::addColumn<QStringList>("abonados");  // Codigo|Alias|Comentario
        QTest::addColumn<QStringList>("miembros");  // Abonado|Grupo
        QTest::addColumn<bool>("correcta");

        const QString existente = u"0034600999999|Eva|cliente"_s;
        QTest::newRow("contacto nuevo en la lista")
            << QStringList() << true << true << u"5;600123456;Ana"_s
            << QStringList{u"Contacto: Ana Importado, Número: 0034600123456"_s,
                           u"Contacto: Ana Añadido a lista: 003"_s}
            << QStringList{u"0034600123456|Ana|"_s, existente} << QStringList{u"0034600123456|3"_s}
            << true;
        QTest::newRow("sin alias, el número")
            << QStringList() << true << true << u"600123456"_s
            << QStringList{u"Contacto: 0034600123456 Importado, Número: 0034600123456"_s,
                           u"Contacto: 0034600123456 Añadido a lista: 003"_s}
            << QStringList{u"0034600123456|0034600123456|"_s, existente}
            << QStringList{u"0034600123456|3"_s} << true;
        QTest::newRow("número ya conocido: no se toca, pero entra en la lista")
            << QStringList() << true << true << u"7;600999999;Ana"_s
            << QStringList{u"ERROR: Contacto: Ana NO Importado, Número: 0034600999999"_s,
                           u"Contacto: Ana Añadido a lista: 003"_s}
            << QStringList{existente} << QStringList{u"0034600999999|3"_s} << false;
        QTest::newRow("mensaje que añade contacto conocido")
            << QStringList() << false << true << u"7;600999999;Hola"_s
            << QStringList{u"Mensaje Importado para el Destino : 0034600999999, Texto: Hola"_s,
                           u"ERROR: Contacto: 0034600999999 NO Importado, Número: 0034600999999"_s,
                           u"Contacto: 0034600999999 Añadido a lista: 003"_s}
            << QStringList{existente} << QStringList{u"0034600999999|3"_s} << false;
        QTest::newRow("fichero de contactos sin añadir")
            << QStringList() << true << false << u"5;600123456;Ana"_s << QStringList()
            << QStringList{existente} << QStringList() << false;
        // A taken alias gets a suffix (its rule: aliasConSufijo); the logged
        // name stays the line's.
        QTest::newRow("alias tomado por otro número")
            << QStringList{u"Luis"_s} << true << true << u"5;600000014;Luis"_s
            << QStringList{u"Contacto: Luis Importado, Número: 0034600000014"_s,
                           u"Contacto: Luis Añadido a lista: 003"_s}
            << QStringList{u"0034600000000|Luis|"_s, u"0034600000014|Luis_1|"_s, existente}
            << QStringList{u"0034600000014|3"_s} << true;
        QTest::newRow("mensaje que añade un contacto cuyo número es ya un alias")
            << QStringList{u"0034600123456"_s} << false << true << u"7;600123456;Hola"_s
            << QStringList{u"Mensaje Importado para el Destino : 0034600123456, Texto: Hola"_s,
                           u"Contacto: 0034600123456 Importado, Número: 0034600123456"_s,
                           u"Contacto: 0034600123456 Añadido a lista: 003"_s}
            << QStringList{u"0034600000000|0034600123456|"_s, u"0034600123456|0034600123456_1|"_s,
                           existente}
            << QStringList{u"0034600123456|3"_s} << true;
    }
    void contactos() {
        QFETCH(QStringList, previos);
        QFETCH(bool, contactos);
        QFETCH(bool, addContactos);
        QFETCH(QString, linea);
        QFETCH(QStringList, registro);
        QFETCH(QStringList, abonados);
        QFETCH(bool, correcta);
        prueba::lista(3, u"Clientes"_s);
        prueba::contacto(u"0034600999999"_s, u"Eva"_s, 5, u"cliente"_s);
        for (int i = 0; i < previos.size(); ++i)
            prueba::contacto(u"00346000000%1"_s.arg(i, 2, 10, QChar(u'0')), previos.at(i), 5,
                             u""_s);
        QVERIFY(importar(linea.toUtf8() + "\n", contactos, u"3"_s, addContactos));
        QStringList log = import_prueba::registro();
        const QString cierre = log.takeLast();
        QCOMPARE(log, registro);
        QCOMPARE(cierre, u"Importados %1 %2 de 1"_s.arg(correcta ? 1 : 0)
                             .arg(contactos ? u"Contactos"_s : u"Mensajes"_s));
        QCOMPARE(filas(u"SELECT Codigo,Alias,Comentario FROM Abonados ORDER BY Codigo"_s),
                 abonados);
        QTEST(filas(u"SELECT Abonado,Grupo FROM AboGrup"_s), "miembros");
    }

    // What a line quotes reaches the log, and the terminal of --import,
    // without its control characters; the row keeps them.
    void controlesEnElRegistro_data() {
        QTest::addColumn<QByteArray>("linea");
        QTest::addColumn<bool>("contactos");
        QTest::addColumn<QString>("registro");
        QTest::addColumn<QString>("guardado");  // the outbox's text or the new alias
        QTest::newRow("texto con escape, campana y borrado")
            << QByteArray("7;600123456;\x1b[2J\x1b]0;t\x07 Ñandú \x7f fin") << false
            << u"Mensaje Importado para el Destino : 0034600123456, Texto: <27>[2J<27>]0;t<7> "
               u"Ñandú <127> fin"_s
            << u"\x1b[2J\x1b]0;t\x07 Ñandú \x7f fin"_s;
        QTest::newRow("nulo en el número")
            << QByteArray("7;6001\0\x1b[31m;Hola", 17) << false
            << u"ERROR en número de movil para el Destino : 00346001<0><27>[31m"_s << QString();
        QTest::newRow("alias con un carácter C1")
            << QByteArray(
                   "5;600123456;Jos\xc3\xa9\xc2\x9b"
                   "2J")
            << true << u"Contacto: José<155>2J Importado, Número: 0034600123456"_s
            << u"José"_s + QChar(0x9b) + u"2J"_s;
    }
    void controlesEnElRegistro() {
        QFETCH(QByteArray, linea);
        QFETCH(bool, contactos);
        QFETCH(QString, guardado);
        importar(linea + "\r\n", contactos, u"-1"_s, contactos);
        QTEST(import_prueba::registro().value(0), "registro");
        for (const QString& l : estadoAplicacion().log.lines())
            QVERIFY(std::none_of(l.cbegin(), l.cend(), [](QChar c) { return c.unicode() < 32; }));
        const QString tabla =
            contactos ? u"SELECT Alias FROM Abonados"_s : u"SELECT Mensaje FROM envios"_s;
        QCOMPARE(filas(tabla), guardado.isNull() ? QStringList() : QStringList{guardado});
    }

    void aliasConSufijo_data() {
        QTest::addColumn<QStringList>("existentes");
        QTest::addColumn<QString>("alias");
        QTest::addColumn<QString>("esperado");
        QTest::newRow("uno igual") << QStringList{u"Ana"_s} << u"Ana"_s << u"Ana_1"_s;
        // Names that merely begin with the alias count too.
        QTest::newRow("sufijo y nombre más largo")
            << QStringList{u"Ana"_s, u"Ana_1"_s, u"Anabel"_s} << u"Ana"_s << u"Ana_3"_s;
        QTest::newRow("mayúsculas, grafía de la línea")
            << QStringList{u"ana"_s, u"ana_1"_s} << u"ANA"_s << u"ANA_2"_s;
        QTest::newRow("acentos") << QStringList{u"álvaro"_s, u"ÁLVARO_1"_s} << u"Álvaro"_s
                                 << u"Álvaro_2"_s;
    }
    void aliasConSufijo() {
        QFETCH(QStringList, existentes);
        QFETCH(QString, alias);
        for (int i = 0; i < existentes.size(); ++i)
            prueba::contacto(u"00346000000%1"_s.arg(i, 2, 10, QChar(u'0')), existentes.at(i), 5);
        QTEST(::aliasConSufijo(alias), "esperado");
    }

    void listas_data() {
        QTest::addColumn<QList<int>>("existentes");
        QTest::addColumn<QString>("lista");
        QTest::addColumn<bool>("addContactos");
        QTest::addColumn<QStringList>("nuevas");    // Grupo|Nombre created
        QTest::addColumn<QStringList>("miembros");  // Abonado|Grupo
        QTest::addColumn<bool>("caja");

        const QString numero = u"0034600123456|"_s;
        QTest::newRow("ninguna lista, nombre vacío")
            << QList<int>() << QString() << true
            << QStringList{u"0|Lista de Contactos Importada Nº 0"_s} << QStringList{numero + u"0"}
            << false;
        QTest::newRow("listas hasta 4, nombre vacío")
            << QList<int>{0, 1, 2, 3, 4} << QString() << true
            << QStringList{u"5|Lista de Contactos Importada Nº5"_s} << QStringList{numero + u"5"}
            << false;
        QTest::newRow("código que no existe: siguiente libre con su número por nombre")
            << QList<int>{0, 1, 2, 3, 4} << u"12"_s << true << QStringList{u"5|12"_s}
            << QStringList{numero + u"5"} << false;
        QTest::newRow("código que existe") << QList<int>{0, 3} << u"3"_s << true << QStringList()
                                           << QStringList{numero + u"3"} << false;
        QTest::newRow("un nombre crea la lista aunque no se añadan contactos")
            << QList<int>{0, 1} << u"Clientes"_s << false << QStringList{u"2|Clientes"_s}
            << QStringList() << false;
        QTest::newRow("código sin añadir contactos")
            << QList<int>{0} << u"7"_s << false << QStringList() << QStringList() << false;
        QTest::newRow("sin lista")
            << QList<int>{0} << u"-1"_s << true << QStringList() << QStringList() << false;
        QTest::newRow("no caben más listas") << QList<int>{251} << QString() << true
                                             << QStringList() << QStringList{numero + u"0"} << true;
    }
    void listas() {
        QFETCH(QList<int>, existentes);
        QFETCH(QString, lista);
        QFETCH(bool, addContactos);
        QFETCH(QStringList, nuevas);
        QFETCH(bool, caja);
        for (int g : existentes) prueba::lista(g, u"Existente %1"_s.arg(g));
        QVERIFY(importar("7;600123456;Hola\n", false, lista, addContactos));
        QCOMPARE(filas(u"SELECT Grupo,Nombre FROM Grupos WHERE Nombre NOT LIKE 'Existente %' "
                       u"ORDER BY Grupo"_s),
                 nuevas);
        QTEST(filas(u"SELECT Abonado,Grupo FROM AboGrup"_s), "miembros");
        QCOMPARE(import_prueba::registro().contains(u"Creando Nueva lista de Contactos"_s),
                 !nuevas.isEmpty() || caja);
        QCOMPARE(prueba::cajas(*ui),
                 caja ? QStringList{prueba::caja(16, u"No es posible añadir mas Listas"_s)}
                      : QStringList());
    }

    void nombrePorDefectoVuelveAlLlamador() {
        QString nombre;
        QCOMPARE(msCrearListaImportada(nombre), int16_t(0));
        QCOMPARE(nombre, u"Lista de Contactos Importada Nº 0"_s);
        nombre.clear();
        QCOMPARE(msCrearListaImportada(nombre), int16_t(1));
        QCOMPARE(nombre, u"Lista de Contactos Importada Nº1"_s);
    }
};

QUELMO_TEST_MAIN(TestLineas)
#include "test_lineas.moc"
