#pragma once

#include <QDeadlineTimer>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

// The rows of a query as a list screen shows them, read only when shown.
// A list of a million rows knows its count at once and reads the rows a
// page at a time in the order the engine gives: an index's order where one
// serves, a bounded sort for the other columns, a small table's order for
// a text of its key (see PorClave). Nothing but the pages in view and a
// few around them stays in memory.
//
// The rows are those of the moment of `cargar`: what is written later
// shows at the next `cargar`, which keeps the order chosen.
//
// A page whose order sorts a long list (a text column of a million rows)
// is read a stretch of row numbers at a time, each stretch keeping its
// first rows. What a paint asks for (`textoMostrado`) is read so over
// turns of the event loop: its lines show empty until `alLlegar` says
// they came. Every other read waits for its page, as a click's action
// needs the row it names.
class ListaPaginada {
  public:
    struct Columna {
        // The cell as the list shows it, as SQL text (null shows empty).
        QString texto;
        // What an index orders this column by, when the shown text isn't
        // sorted by the lists' rule (a date shown day first sorts by the
        // stored date); empty sorts by `texto` under the rule.
        QString orden;
        // `orden` is a stored key that no index of the rows gives (one of
        // a joined table): sorted as a text is, over stretches, comparing
        // the keys.
        bool sinIndice = false;
    };
    // A column whose text depends on one key of a small table alone (an
    // account's name on its code) is sorted on that table: `valores` lists
    // each key with its text ("SELECT key, text FROM table"), `clave` is
    // the key's column in `desde`, indexed. The rows are then read a key
    // at a time instead of sorting every row by its text.
    struct PorClave {
        int columna = -1;
        QString clave;
        QString valores;
    };
    // A run of rows in the order of a step number of their own.
    struct Serie {
        // "SELECT number, cells FROM `tabla` ..." with the joins that give
        // the cells, no WHERE.
        QString celdas;
        // The run's own table (its alias after it), which of its rows are
        // the run's, and the column that orders them (`descendente`: turned
        // round): unique among them, and after what `condicion` fixes in
        // an index, so that a far page is reached on that index alone.
        QString tabla;
        QString condicion;
        QString paso;
        bool descendente = false;
    };
    struct Definicion;
    // One run of the rows shown after the ordered ones: `filas` rows of
    // `serie`, or of a list of their own (`lista`) in the order of
    // `columna` (as `ordenar` takes it).
    struct TramoCola {
        int filas = 0;
        Serie serie;
        std::shared_ptr<const Definicion> lista;
        int columna = -1;
        bool descendente = false;
    };
    struct Definicion {
        // "FROM ..." with its joins, no WHERE and no ORDER BY.
        QString desde;
        // A condition the rows shown meet, ANDed to every statement; empty:
        // all rows of `desde`. It binds nothing: what it depends on it
        // reads from the database (a temporary table of the connection).
        QString filtro;
        // The filter is a test of each row that no index serves (a side of
        // a split kept in temporary tables): pages of an index's order walk
        // the other rows with the list's, the filter read as a value, and a
        // turn ends between any two rows however few are the list's.
        // Otherwise the engine looks for the filter's rows, as an index on
        // it can.
        bool filtroPorFila = false;
        // The row's number (a rowid), unique and growing with each insert.
        QString clave;
        // Statements that count the rows and give the highest number more
        // cheaply than `desde` does (on the table alone, its index); empty
        // runs them over `desde`.
        QString cuenta;
        QString mayor;
        QVector<Columna> columnas;
        PorClave porClave;
        // Rows equal in the column sorted by go by this order (SQL that
        // sorts as the list is loaded), then by their number; empty: by
        // their number alone.
        QString desempate;
        // Rows equal in the column sorted by keep the order they stood in
        // (the sort before, then the order of loading) whichever the
        // direction, as a sorted report list keeps them; otherwise they
        // go by `desempate` and their number in the same direction.
        bool estable = true;
        // Rows shown after the ordered ones until the next sort takes them
        // in (lines just moved here from another list), run after run, as
        // they stand at each `cargar` (throws ErrorBD); and what the sort
        // runs first so that the filter then holds them (false when it
        // could not: they stay after the others).
        std::function<QVector<TramoCola>()> cola;
        std::function<bool()> asentarCola;
        // Turns a cell read into what the list shows (a date into the
        // list's form), when SQL can't.
        std::function<QString(int columna, const QString& celda)> mostrar;
    };

    explicit ListaPaginada(Definicion definicion);
    ListaPaginada(const ListaPaginada&) = delete;
    ListaPaginada& operator=(const ListaPaginada&) = delete;

    // Counts the rows (unless `filas` is known) and starts over in the
    // order chosen; throws ErrorBD.
    void cargar(int filas = -1);
    // The rows there are now, without reading them; throws ErrorBD.
    int contar() const;
    void limpiar();

    int filas() const { return m_filas + m_filasCola; }
    int columnas() const { return int(m_def.columnas.size()); }
    // The text of a cell as the list shows it; empty when the row can't be
    // read.
    QString texto(int fila, int columna) const;
    // The cell without waiting: nullopt while its page is read over turns.
    std::optional<QString> textoMostrado(int fila, int columna) const;
    // A page is being read over turns.
    bool leyendo() const;
    // Told the lines of each page read over turns, once it has come.
    void alLlegar(std::function<void(int primera, int ultima)> aviso) {
        m_alLlegar = std::move(aviso);
    }
    // The row's number, 0 when it can't be read.
    int64_t clave(int fila) const;
    // Where the row numbered `clave` stands now; -1 when it isn't there,
    // or when it moved far in a list too long to walk for it. `cerca`,
    // where it stood, is looked at first: rows that came or went move a
    // line by a few places at most.
    int filaDe(int64_t clave, int cerca = -1) const;
    // The same without waiting: nullopt while the page where it stood is
    // read over turns.
    std::optional<int> filaDeSinEsperar(int64_t clave, int cerca) const;

    // Orders by a column (-1: by the rows' numbers, the order they were
    // written in).
    void ordenar(int columna, bool descendente);
    int columnaOrden() const { return m_columna; }
    bool descendente() const { return m_descendente; }

  private:
    struct Fila {
        int64_t clave = 0;
        QVector<QString> celdas;
        // The row's values of the order's terms but the last (its number).
        QVector<QString> orden;
    };
    // One term of the order: SQL and direction.
    struct Termino {
        QString sql;
        bool descendente = false;
    };
    struct Pagina {
        int numero = -1;
        std::vector<Fila> filas;
    };
    // Where a page of a text order ended: the next one starts after it.
    struct Ancla {
        QVector<QString> orden;
        int64_t clave = 0;
        // The group of keys (see PorClave) it ended in.
        size_t grupo = 0;
    };
    // Keys of a column's small table whose texts sort alike, and how many
    // rows they hold (counted up to a bound; -1 not counted yet).
    struct Grupo {
        QVariantList claves;
        int filas = -1;
        // Counted whole, for a jump (-1 not yet).
        int64_t todas = -1;
    };

    // Ends a turn's share of a read over turns.
    struct Pendiente {};
    // A sort over stretches of row numbers, kept between the turns.
    struct Tramos {
        bool empezado = false;
        int64_t desde = 0;
        int64_t largo = 4096;
        std::vector<int64_t> candidatas;
        // What the rows after the last candidate meet, once there are
        // enough, and its parameters.
        QString corte;
        QVariantList parametrosCorte;
    };

    // A jump far into a text order, over turns: the rows between two
    // sampled ones, the count of those before.
    struct Salto {
        int numero = -1;
        // This round's two rows are chosen; it walks the table, or the
        // rows the round before kept (`fuente`).
        bool listo = false;
        bool enTabla = true;
        QString corte, techo;
        QVariantList parametrosCorte, parametrosTecho;
        int64_t desde = 0;
        int64_t largo = 4096;
        // Rows of the order before those kept: of the rounds done, of this.
        int64_t antes = 0;
        int64_t antesRonda = 0;
        std::vector<int64_t> fuente, ventana;
    };
    // Where a page of an index's order ends: its row's values of the
    // order's terms but the last, as stored (a null among them), and its
    // number.
    struct Marca {
        QVariantList valores;
        int64_t clave = 0;
    };
    // A condition on the rows and what it binds.
    struct Parte {
        QString donde;
        QVariantList params;
    };
    // A run of the order read for a jump, from line `inicio`.
    struct Ventana {
        int64_t inicio = -1;
        std::vector<int64_t> claves;
    };

    // Where a jump looks: the rows that meet `donde` (binding `params`),
    // `filas` of them in the order `t`, the first on line `base`.
    struct Ambito {
        QString donde;
        QVariantList params;
        QVector<Termino> t;
        int64_t filas = 0;
        int64_t base = 0;
        // A page that goes on into the next group takes its first `cola`
        // rows, those that meet `siguiente`.
        QString siguiente;
        QVariantList parametrosSiguiente;
        int cola = 0;
    };

    const Fila* fila(int n) const;
    const Pagina* pagina(int numero) const;
    // Reads the run of the order page `numero` falls in; false when it
    // can't be found so (the whole order is read instead).
    bool leerVentana(int numero, const Ambito& ambito) const;
    // The first rows after the group of `ambito`, when the page goes on
    // into them.
    std::vector<int64_t> leerCola(const Ambito& ambito) const;
    // In a sort by groups of keys, the group the page falls in (and the
    // next one's first rows, when the page goes on into it); nullopt when
    // the groups end before it.
    std::optional<Ambito> ambitoDeGrupo(int numero) const;
    bool enVentana(int numero) const;
    std::vector<Fila> leerDeVentana(int numero) const;
    // The numbers of page `numero` of an index's order whose equal rows
    // are sorted by the other terms.
    std::vector<int64_t> leerHastaBloque(int numero) const;
    // Reads page `numero` into memory by `plazo`; false when it goes on
    // in a later turn.
    bool leerPaginaAntesDe(int numero, QDeadlineTimer plazo) const;
    void seguirLeyendo() const;
    // `limite` numbers after `saltar` in `orden` of the rows that meet
    // `donde`: sorted at once, or (`ordena` in a long list) over stretches.
    std::vector<int64_t> leerClavesOrdenadas(const QString& donde, const QVector<Termino>& t,
                                             QVariantList params, int limite, int saltar,
                                             bool ordena) const;
    const Fila* filaCola(int k) const;
    // `grupo`: where the page ended, when read by keys.
    std::vector<Fila> leerPagina(int numero, size_t& grupo) const;
    std::vector<Fila> leerFilas(const QString& donde, const QString& resto,
                                const QVariantList& params) const;
    std::vector<Fila> leerPorClave(const int64_t* claves, size_t n) const;
    std::vector<int64_t> leerClaves(const QString& donde, const QString& resto,
                                    const QVariantList& params) const;
    void leerOrdenCompleto() const;
    bool porGrupos() const;
    const std::vector<Grupo>& grupos() const;
    // `saltar` rows then a page, from the start or after `ancla`, a group
    // of keys at a time.
    std::vector<int64_t> leerClavesPorGrupos(const Ancla* ancla, int saltar, size_t& grupo) const;
    std::vector<int64_t> leerClavesGrupo(size_t g, const Ancla* ancla, int limite) const;
    void leerOrdenPorGrupos() const;
    QString seleccion() const;
    // `desde` with the filter and `condicion` (either may be empty).
    QString desdeDonde(const QString& condicion = QString()) const;
    QString valorDe(int columna) const;
    // The order, its row number last.
    QVector<Termino> terminos() const;
    static QString ordenSql(const QVector<Termino>& t);
    QString ordenSql() const { return ordenSql(terminos()); }
    // The rows that come after the row numbered `clave` in the order `t`;
    // empty when that row is gone.
    QString despuesDeFila(QVariantList& params, const QVector<Termino>& t, int64_t clave) const;
    // The lowest row number of `desde`: where stretches start.
    int64_t menorClave() const;
    // The rows that come after the row with these values in the order `t`
    // (its terms but the last, which is the number).
    static QString despuesDe(QVariantList& params, const QVector<Termino>& t,
                             const QVariantList& orden, int64_t clave);
    static QVariantList comoValores(const QVector<QString>& textos);
    // Page `numero` of an index's order far from the start: the rows
    // before it are skipped a stretch at a time, from the nearest page
    // whose end is marked, each stretch marking where it ended.
    std::vector<Fila> leerPaginaLejos(int numero) const;
    // Page `numero` of an index's order whose filter is tested row by row
    // (`filtroPorFila`): from the nearest page whose end is marked, every
    // row walked, each page passed marked.
    std::vector<Fila> leerPaginaFiltrada(int numero) const;
    // The row `filas` rows after `desde` (after none: from the start);
    // nullopt when the list ends before it.
    std::optional<Marca> saltarFilas(const Marca* desde, int64_t filas) const;
    // The rows after `desde` in parts, in the order's order, each of which
    // the index finds by a seek rather than by walking from the start.
    QVector<Parte> partesDespues(const Marca* desde) const;
    // The rows of a part loaded before the list was (`m_tope`).
    QString hastaTope(const Parte& parte) const;
    QVariantList parametrosHastaTope(const Parte& parte) const;
    // An index gives the order of column `columna`.
    bool indexada(int columna) const;
    bool porIndice() const;
    // Whether an index gives the order within a group of keys.
    bool restoPorIndice() const;
    void vaciarPaginas();

    Definicion m_def;
    int m_filas = 0;
    int64_t m_tope = 0;  // the highest number at `cargar`: later rows don't show
    int m_columna = -1;
    bool m_descendente = false;
    // The sort before the last: what rows equal in this one keep.
    int m_anterior = -1;
    bool m_anteriorDescendente = false;
    mutable std::vector<Pagina> m_paginas;
    mutable std::map<int, Ancla> m_anclas;
    // Pages of an index's order whose end is known, and the rows a
    // stretch skips to reach the next one in a few milliseconds: short at
    // first, as the pages may have to come from the file.
    static constexpr int64_t kPrimerPaso = 2048;
    mutable std::map<int, Marca> m_marcas;
    mutable int64_t m_pasoMarcas = kPrimerPaso;
    // Where the walk toward page `numero` of a filter tested row by row
    // stood when its turn ended: after row `pos`, in page `pagina`, of
    // which it had passed `enPagina` rows (the keys of page `numero`).
    struct Recorrido {
        int numero = -1;
        int pagina = 0;
        int enPagina = 0;
        Marca pos;
        std::vector<int64_t> claves;
    };
    mutable Recorrido m_recorrido;
    // Every number in a text order, read only when the user jumps far
    // into it; an index's order never needs it.
    mutable std::vector<int64_t> m_orden;
    // Read at the first page of a sort by a column of `porClave`.
    mutable std::vector<Grupo> m_grupos;
    // A run of the rows after the ordered ones as read, from line
    // `inicio` of them.
    struct Corrida {
        TramoCola def;
        int inicio = 0;
        std::unique_ptr<ListaPaginada> lista;
    };
    // A page of a run by step.
    struct PaginaCola {
        size_t corrida = 0;
        int numero = -1;
        std::vector<Fila> filas;
    };
    // Row `k` of run `c`, read by its step.
    const Fila* filaSerie(size_t c, int k) const;
    // The run row `k` of those after the ordered ones falls in.
    size_t corridaDe(int k) const;
    // The pages of the runs by step read last (a view between two reads
    // both), the runs, and how many rows they hold.
    mutable std::vector<PaginaCola> m_cola;
    std::vector<Corrida> m_corridas;
    int m_filasCola = 0;
    // The page read over turns (-1: none), those asked for meanwhile, the
    // stretches sorted so far, and by when this turn's share ends.
    mutable int m_leyendo = -1;
    mutable std::vector<int> m_enEspera;
    mutable std::map<QString, Tramos> m_tramos;
    mutable Salto m_salto;
    mutable Ventana m_ventana;
    mutable QDeadlineTimer m_plazo{QDeadlineTimer::Forever};
    // A turn is due, and this one's share of reading is spent.
    mutable bool m_turnoProgramado = false;
    mutable bool m_turnoGastado = false;
    // Gone with this list: the turns queued for it find it gone.
    std::shared_ptr<char> m_vida = std::make_shared<char>();
    mutable bool m_sinEsperar = false;
    std::function<void(int, int)> m_alLlegar;
};
