#pragma once

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

}  // namespace webconfig::apps
