#pragma once

#include "db/BaseDatos.h"

#include "base/InterfazUsuario.h"

#include <QCoro/QCoroTask>
#include <QDateTime>
#include <QString>
#include <cstdint>
#include <functional>

class QElapsedTimer;

// The start-up question that offers today's pending runs, and its style.
QString preguntaPendientes();
inline constexpr int kEstiloPreguntaPendientes = Msg::YesNo + Msg::Information;

// Turns scheduled messages that came due into outbox rows; sends nothing.
// Asks nothing either: at start-up its caller asks between finding what is
// pending today and firing it.
class clsTareasPendientes {
  public:
    // At each tick: fires what falls due in this minute, without a word,
    // going on past any failure. Gives the number of rows fired, once they
    // are stored: a run of many recipients is written over turns of the
    // event loop, in one transaction.
    // During a re-work of the next runs (see ProximasTareas) it first
    // takes the re-work on by `filasRepaso` rows (a few milliseconds),
    // then looks only at the rows already reached; the re-work fires the
    // others when it reaches them.
    static QCoro::Task<int16_t> ReLoad(int filasRepaso = 100);
    // One slice of a re-work under way: the next rows in the order of the
    // codes, at most `filasMax` and what fits in `msMax` (0: no limit),
    // worked out at the clock of now and fired when due, as the tick
    // would. Gives the number of rows fired.
    static QCoro::Task<int16_t> Repasar(int filasMax = 200, qint64 msMax = 3);
    // Has a re-work under way go on from the event loop, slice after slice.
    static void programarRepaso(int esperaMs = 0);
    // At start-up, before asking (preguntaPendientes()): whether runs of
    // today have come and not gone out. False when the first such run
    // found is of another day, or the table can't be read.
    bool HayPendientesHoy();
    // Once the user said yes: fires every run that has come and not gone
    // out, each judged again on what the database holds, in the
    // transaction that fires it (a tick may have fired it meanwhile).
    // Returns the number of rows fired; 0 when a failure stopped the walk
    // (what was queued until then stays queued).
    int16_t EnviarPendientes();

  private:
    int16_t recorrerPendientes();
    // Fires the rows of m_activas that are due at `ahora` and stores the
    // next run of the others that changed; all in one commit, with
    // `ademas` run inside it. With `reloj`, stops after `msMax` and leaves
    // in `filas` how many rows of the first `*filas` it judged.
    QCoro::Task<int16_t> juzgar(QDateTime ahora, const QElapsedTimer* reloj, qint64 msMax = 0,
                                int* filas = nullptr, std::function<void()> ademas = {});

    ResultadoConsulta m_activas;
    bool m_escrito = false;  // the last judgement's commit went through
};
