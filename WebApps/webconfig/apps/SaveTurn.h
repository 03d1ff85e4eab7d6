#pragma once

#include <cppcms/service.h>

#include <optional>

#include "WebApps/webconfig/history/Trial.h"

namespace webconfig::apps {

/// To store settings and to put them into effect is one step for the whole process, so the requests that may
/// do so take turns. A turn is over when its answer begins, however slowly the client takes that.
class SaveTurn {
  public:
    /// Waits for the calling thread's turn; only a few seconds where \a most others wait or have it already.
    explicit SaveTurn(int most);
    ~SaveTurn() { End(); }
    SaveTurn(SaveTurn const &) = delete;
    SaveTurn &operator=(SaveTurn const &) = delete;

    bool IsMine() const { return _isMine; }

    /// Ends the turn of the calling thread, if it has it.
    static void End();

  private:
    bool _isMine = false;
};

/// What whoever stores settings has to have, as long as the object lives: its turn in this process, and the
/// one with the guard of settings on trial.
class Saving {
  public:
    explicit Saving(cppcms::service &service);

    /// Why nothing may be stored now, for the log and for people; null where it may be.
    struct Refusal {
        char const *reason;
        char const *text;
    };
    Refusal const *Refused() const { return _refusal; }

  private:
    SaveTurn _turn;
    std::optional<history::TrialTurn> _trialTurn;
    Refusal const *_refusal = nullptr;
};

}  // namespace webconfig::apps
