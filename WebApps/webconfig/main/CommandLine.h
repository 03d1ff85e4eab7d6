#pragma once

namespace webconfig {

/// How the process is called, on standard error.
void ShowUsage();

/// Answers "--help" and "--version" on standard error; false where the command line asks for neither.
bool AnswersForItself(int argc, char *argv[]);

/// Whether the command line has the switch "--check", which is taken out of it.
bool TakeCheck(int &argc, char *argv[]);

}  // namespace webconfig
