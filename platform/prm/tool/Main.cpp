// The command-line tool of the parameter store.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <optional>
#include <span>

#include "Store.h"
#include "parameters/ParameterFile.h"

namespace {

using prm::Status;
using prm::Store;
using prm::Type;
using prm::Value;

using Arguments = std::span<char *const>;

enum ExitCode : int { Done = 0, Failed = 1, WrongUsage = 2 };

constexpr char Help[] =
    R"(prm - reads and writes the parameter store of the device

Usage:
  prm get KEY                      print the value
  prm set [-t TYPE] KEY VALUE      store a value; TYPE is int, float or string. Without
                                   -t a key keeps its type, a new one is a string
  prm del KEY                      remove the key and all keys below it
  prm list [PREFIX]                print the keys that begin with PREFIX, sorted
  prm addfile KEY FILE [MODE]      store the content of FILE (up to 4 MiB); MODE (octal,
                                   that of FILE when left out) is for writing it back
  prm getfile KEY FILE             write the value to FILE, with the mode of addfile
  prm export [PREFIX]              print keys, values and types, one parameter a line
  prm import [FILE]                store the parameters of such lines, all or none of
                                   them; FILE is standard input when left out

KEY is a path such as net/hostname; a leading slash makes no difference.
PRM_STORE names the store file (/var/lib/prm/prm.db when unset).

Lines of export and import:
  "net/hostname","field-box", s            types: s string, i int, f float
  "net/ca","line 1\nline 2\n", file 0600   a file parameter with its mode
with \" \\ \n \r \t \xHH inside the quotes. Empty lines and lines that begin with # are
skipped.

Exit status: 0 done, 1 no such key or failed, 2 wrong usage.
)";

int Fail(std::string const &message) {
    std::cerr << "prm: " << message << '\n';
    return Failed;
}

int Misused(std::string const &message) {
    std::cerr << "prm: " << message << "\nTry 'prm --help'.\n";
    return WrongUsage;
}

/// The exit code for \a status of an operation on \a key, with a message where it failed.
int Finish(Status status, std::string const &key) {
    switch (status) {
        case Status::Ok:
            return Done;
        case Status::NotFound:
            return Fail(key + ": no such parameter");
        case Status::Invalid:
            return Fail("'" + key + "' is not a key");
        default:
            return Failed;  // the store has told the reason
    }
}

/// Output that could not be written (a full disk, say) is a failure too.
int FinishOutput(int code) {
    std::cout.flush();
    return code == Done && !std::cout ? Fail("cannot write the output") : code;
}

int Get(Store &store, Arguments arguments) {
    Value value;
    int const code = Finish(store.Read(arguments[0], value), arguments[0]);
    if (code == Done)
        std::cout << value.text << '\n';
    return FinishOutput(code);
}

std::optional<Type> TypeNamed(std::string_view name) {
    struct Name {
        std::string_view name;
        Type type;
    };
    constexpr std::array<Name, 3> names{
        {{"int", Type::Integer}, {"float", Type::Float}, {"string", Type::String}}};
    for (auto const &entry : names) {
        if (entry.name == name)
            return entry.type;
    }
    return std::nullopt;
}

int Set(Store &store, Arguments arguments) {
    std::optional<Type> type;
    if (std::string_view(arguments[0]) == "-t") {
        type = arguments.size() > 1 ? TypeNamed(arguments[1]) : std::nullopt;
        if (!type)
            return Misused("the type is int, float or string");
        arguments = arguments.subspan(2);
    }
    if (arguments.size() != 2)
        return Misused("set takes a key and a value");
    std::string const key = arguments[0];
    Value value{arguments[1]};
    Value old;
    if (type)
        value.type = *type;
    else if (store.Read(key, old) == Status::Ok && old.type != Type::File)
        value.type = old.type;
    if (!prm::MakeCanonical(value))
        return Fail(key + ": '" + value.text + "' is not " +
                    (value.type == Type::Integer ? "an int" : "a float") +
                    (type ? "" : ", the type of this parameter (-t changes it)"));
    return Finish(store.Write(key, value), key);
}

int Del(Store &store, Arguments arguments) {
    return Finish(store.RemoveTree(arguments[0]), arguments[0]);
}

std::string PrefixOf(Arguments arguments) {
    return arguments.empty() ? "" : arguments[0];
}

int List(Store &store, Arguments arguments) {
    std::string const prefix = PrefixOf(arguments);
    auto const print = [](std::string const &key) {
        std::cout << key << '\n';
        return Status::Ok;
    };
    return FinishOutput(Finish(store.ForEach(prefix, print), prefix));
}

int AddFile(Store &store, Arguments arguments) {
    std::string const path = arguments[1];
    Value value{{}, Type::File};
    struct stat info {};
    if (prm::ReadFile(path, value.text) != Status::Ok || ::stat(path.c_str(), &info) != 0)
        return Fail(path + ": not a readable file of at most 4 MiB");
    value.mode = info.st_mode & 07777;
    if (arguments.size() == 3) {
        std::string_view const mode = arguments[2];
        auto const [stop, error] = std::from_chars(mode.begin(), mode.end(), value.mode, 8);
        if (error != std::errc() || stop != mode.end() || value.mode > 07777)
            return Misused("the mode is an octal number such as 0644");
    }
    return Finish(store.Write(arguments[0], value), arguments[0]);
}

int GetFile(Store &store, Arguments arguments) {
    std::string const path = arguments[1];
    Value value;
    int const code = Finish(store.Read(arguments[0], value), arguments[0]);
    if (code != Done)
        return code;
    // Nobody else reads the file before it has its mode.
    int const file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    bool const written =
        file >= 0 && (value.type != Type::File || ::fchmod(file, value.mode) == 0) &&
        ::write(file, value.text.data(), value.text.size()) == static_cast<ssize_t>(value.text.size());
    bool const closed = file >= 0 && ::close(file) == 0;
    return written && closed ? Done : Fail(path + ": cannot write the file");
}

int Export(Store &store, Arguments arguments) {
    std::string const prefix = PrefixOf(arguments);
    auto const print = [&store](std::string const &key) {
        prm::Parameter parameter{key, {}};
        Status const status = store.Read(key, parameter.value);
        if (status == Status::Ok)
            std::cout << FormatLine(parameter) << '\n';
        return status == Status::NotFound ? Status::Ok : status;  // removed in the meantime
    };
    return FinishOutput(Finish(store.ForEach(prefix, print), prefix));
}

int Import(Store &store, Arguments arguments) {
    std::string const name = arguments.empty() ? "standard input" : arguments[0];
    std::ifstream file;
    if (!arguments.empty()) {
        file.open(name);
        if (!file)
            return Fail(name + ": cannot read the file");
    }
    try {
        return Finish(store.Write(prm::ReadParameters(arguments.empty() ? std::cin : file)), name);
    } catch (prm::ParameterFileError const &error) {
        return Fail(name + ": " + error.what());
    }
}

struct Command {
    std::string_view name;
    int (*run)(Store &, Arguments);
    std::size_t leastArguments;
    std::size_t mostArguments;
};

constexpr std::array<Command, 8> commands{{{"get", Get, 1, 1},
                                           {"set", Set, 2, 4},
                                           {"del", Del, 1, 1},
                                           {"list", List, 0, 1},
                                           {"addfile", AddFile, 2, 3},
                                           {"getfile", GetFile, 2, 2},
                                           {"export", Export, 0, 1},
                                           {"import", Import, 0, 1}}};

int Run(Arguments arguments) {
    if (arguments.empty())
        return Misused("which command?");
    std::string_view const name = arguments[0];
    arguments = arguments.subspan(1);
    if (name == "--help" || name == "-h" || name == "help") {
        std::cout << Help;
        return Done;
    }
    for (auto const &command : commands) {
        if (command.name != name)
            continue;
        if (arguments.size() < command.leastArguments || arguments.size() > command.mostArguments)
            return Misused("wrong number of arguments for " + std::string(name));
        Store store(Store::DefaultPath(), [](std::string const &reason) { Fail(reason); });
        return command.run(store, arguments);
    }
    return Misused("there is no command '" + std::string(name) + "'");
}

}  // namespace

int main(int argc, char *argv[]) {
    try {
        return Run(Arguments(argv, static_cast<std::size_t>(argc)).subspan(argc > 0 ? 1 : 0));
    } catch (std::exception const &error) {
        return Fail(error.what());
    }
}
