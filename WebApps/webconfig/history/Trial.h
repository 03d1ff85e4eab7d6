#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

/// Settings on trial: what decides how the device is reached works at once, and goes back by itself when
/// nobody keeps it. This process only says what is on trial. The clock is webconfig-guard's, which takes
/// back, too.
namespace webconfig::history {

enum class TrialState {
    Saving,     ///< a request is writing; if its process ends within, all goes back
    Running,    ///< until the time is over or somebody keeps it
    Returning,  ///< values go back: nothing else is saved meanwhile
    Returned,   ///< all is as it was before; told until somebody dismisses it
};

/// All that the guard has to know, also after a power cut.
struct Trial {
    TrialState state = TrialState::Saving;
    std::int64_t set = 0;  ///< it and all later ones of the history are on trial
    std::string boot;      ///< the start of the device in which the time below counts
    /// In seconds of CLOCK_BOOTTIME, which nobody sets. 0 while the settings only wait for a restart: they
    /// cannot lock anybody out before.
    std::int64_t until = 0;
    int boots = 0;         ///< how often the device has been started since
    bool restart = false;  ///< some take effect with a restart, so that going back takes another one
    bool asked = false;    ///< somebody wants them back

    bool operator==(Trial const &) const = default;
};

/// Where trials are kept: a file that is replaced as a whole and is on the disk when a call returns. The
/// functions throw std::system_error.
class TrialFile {
  public:
    explicit TrialFile(std::string path) : _path(std::move(path)) {}

    /// Nothing where nothing is on trial, or where the file is none of ours.
    std::optional<Trial> Read() const;
    void Write(Trial const &trial) const;
    void Remove() const;

    std::string const &Path() const { return _path; }

  private:
    std::string _path;
};

/// Saves and takings back exclude each other, between processes. The end of a process ends its turn.
class TrialTurn {
  public:
    /// Waits for at most \a limit. Without a file there is nobody to wait for.
    TrialTurn(TrialFile const &file, std::chrono::milliseconds limit);
    ~TrialTurn();
    TrialTurn(TrialTurn const &) = delete;
    TrialTurn &operator=(TrialTurn const &) = delete;

    bool IsMine() const { return _isMine; }

    /// Ends the turn of the calling thread, if it has it, before its object ends.
    static void End();

  private:
    void _Close();

    int _file;
    bool _isMine = false;
};

/// The start of the device that it runs since: the kernel's name for it.
std::string CurrentBoot();
/// Seconds since then, the time in which the device slept included.
std::int64_t SecondsSinceBoot();

// What the service needs. Nothing is on trial before Try(), and where the seconds are 0.

/// From now on, puts on trial what decides how the device is reached, for \a seconds.
void Try(std::string const &file, int seconds);
/// The file; null where nothing is ever on trial.
TrialFile const *TheTrialFile();
/// How long a trial is, in seconds.
int TrialSeconds();
/// What is on trial now. Nothing, logged, where that cannot be told.
std::optional<Trial> CurrentTrial();

/// A write to \a set is about to change how the device is reached.
void BeginTrial(std::int64_t set);
/// The request that was writing has written \a set, which has changed something with an effect at once, or
/// with a restart only; neither where nothing has changed after all.
void GoOnWithTrial(std::int64_t set, bool atOnce, bool restart);

/// What the buttons and the status methods do; false where nothing is there to be kept, taken back or
/// dismissed.
bool KeepTrial();
bool EndTrial();
bool DismissTrial();

}  // namespace webconfig::history
