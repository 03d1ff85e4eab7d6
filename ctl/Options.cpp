#include "ctl/Options.h"

#include <getopt.h>

#include <charconv>
#include <cstdlib>
#include <iostream>
#include <variant>

#include "ctl/Status.h"

namespace ctl {

namespace {

constexpr char usage[] = R"(Usage: webconfigctl [OPTION]... COMMAND

  get [KEY]...          shows settings: those keys, what is below them, or all; * is any text without a slash
  set KEY=VALUE...      changes settings; of a KEY alone, such as a password, the value is read from standard input
  unset KEY...          removes settings
  diff FILE             shows what "apply" would change; status 6 where it would
  apply FILE            changes settings to those of a JSON object of keys and values; null removes one
  history               shows change sets, newest first: --count N, --before N
  undo NUMBER           takes a change set back; --confirmed: later changes of the same settings, too
  keep                  keeps the settings that are on trial
  take-back             takes them back
  status                shows what is on trial
  reload                builds the service again, out of its configuration; what is under way is answered before

On the device, for root:
  --socket PATH         the service's socket (/run/webconfig/webconfig.sock)
From elsewhere:
  --url https://HOST    the device
  --user NAME           (admin)
  --password-file FILE  else the variable WEBCONFIG_PASSWORD, else it is asked for
  --cacert FILE         certificates that are trusted in the place of the system's
  --pin sha256//HASH    the one public key that is trusted, whoever has signed it
Both:
  --json                shows results as the device sends them
  --timeout SECONDS     limit of a call (90)
  --path PATH           where the status calls are (/status/rpc)

FILE "-" is standard input. Exit status: 0 done or nothing to do, 1 refused, 2 wrong command line or file,
3 unreachable, 4 not authorised, 5 conflict, 6 differs, 7 failed on the device, 8 busy: try again.
)";

/// An option, and where its argument goes; one without an argument is set, or prints a text and ends.
struct Known {
    char const *name;
    std::variant<std::string Options::*, long Options::*, bool Options::*, char const *> place;
};
constexpr char version[] = "webconfigctl " WEBCONFIG_VERSION "\n";
constexpr Known known[] = {
    {"help", usage},
    {"version", version},
    {"json", &Options::json},
    {"confirmed", &Options::confirmed},
    {"socket", &Options::socket},
    {"path", &Options::path},
    {"url", &Options::url},
    {"user", &Options::user},
    {"password-file", &Options::passwordFile},
    {"cacert", &Options::authorities},
    {"pin", &Options::pin},
    {"timeout", &Options::seconds},
    {"before", &Options::before},
    {"count", &Options::count},
};

long Number(std::string const &text) {
    long number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < 0)
        throw Problem(Usage, "No number: " + text);
    return number;
}

struct Taker {
    Options &options;

    void operator()(std::string Options::*place) const { options.*place = optarg; }
    void operator()(long Options::*place) const { options.*place = Number(optarg); }
    void operator()(bool Options::*place) const { options.*place = true; }
    void operator()(char const *text) const {
        std::cout << text;
        std::exit(Done);
    }
};

std::vector<option> ForGetopt() {
    std::vector<option> options;
    for (auto const &[name, place] : known) {
        bool const takes = std::holds_alternative<std::string Options::*>(place) ||
                           std::holds_alternative<long Options::*>(place);
        options.push_back(
            {name, takes ? required_argument : no_argument, nullptr, static_cast<int>(options.size())});
    }
    options.emplace_back();
    return options;
}

}  // namespace

Options ReadOptions(int argc, char *argv[]) {
    Options options;
    auto const all = ForGetopt();
    for (int row; (row = getopt_long(argc, argv, "", all.data(), nullptr)) != -1;) {
        if (row == '?')
            throw Problem(Usage, "See webconfigctl --help.");  // getopt has told what is wrong
        std::visit(Taker{options}, known[row].place);
    }
    options.words.assign(argv + optind, argv + argc);
    return options;
}

}  // namespace ctl
