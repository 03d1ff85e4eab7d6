#pragma once

namespace webconfig {

/// A program with a configuration, for its command line.
struct Program {
    char const *version;  ///< with the name
    char const *usage;    ///< for people
};

/// That of the device.
extern Program const deviceProgram;

/// How the process is called, on standard error.
void ShowUsage(Program const &program);

/// Answers "--help" and "--version" on standard error; false where the command line asks for neither.
bool AnswersForItself(int argc, char *argv[], Program const &program);

/// Whether the command line has the switch "--check", which is taken out of it.
bool TakeCheck(int &argc, char *argv[]);

}  // namespace webconfig
