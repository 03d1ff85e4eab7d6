#pragma once

#include <string>

namespace webconfig::util {

/// Hardens the commands of the whole process, or not, from now on. The setting
/// "webconfig.hardening.shell" decides; on at first, and where it is absent.
void HardenShell(bool on);
bool IsShellHardened();

/// Whether hardened commands get secrets at all. Where the setting is absent they do, because somebody may
/// rely on the programs that are given them; where it is true, hashes and keys are made in this process.
void HideSecretsFromCommands(bool on);
bool AreSecretsHiddenFromCommands();

/// Text of the source itself; what is put together at run time does not compile.
class ConstantText {
  public:
    // NOLINTNEXTLINE(google-explicit-constructor): literals are to be taken as they stand
    consteval ConstantText(char const *text) : text_(text) {}

    char const *Get() const { return text_; }

  private:
    char const *text_;
};

/// A command line for the shell, made of constant text and of values: `Command("lmu").Arg("-r").Arg(domain)`.
///
/// Unhardened, values stand in it as they are. Hardened, the shell reads each as the value's very characters:
/// it cannot end its quotes, start an expansion or begin another command. NUL characters, which no command
/// can hold, are left out then.
class Command {
  public:
    /// A command whose name is a value begins with nothing.
    Command() = default;
    explicit Command(ConstantText text) : text_(text.Get()) {}

    // Each appends a blank and then
    Command &Arg(std::string const &value);           ///< the value; hardened, in quotes where it needs some
    Command &SingleQuoted(std::string const &value);  ///< the value between single quotes
    Command &DoubleQuoted(std::string const &value);  ///< the value between double quotes
    Command &Then(ConstantText text);                 ///< the text as it stands: a pipe, a redirection

    // NOLINTNEXTLINE(google-explicit-constructor): for all that runs command lines
    operator std::string const &() const { return text_; }

  private:
    Command &Append(std::string const &word);

    std::string text_;
};

}  // namespace webconfig::util
