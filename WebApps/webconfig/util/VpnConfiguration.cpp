#include "WebApps/webconfig/util/VpnConfiguration.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <string_view>
#include <vector>

namespace webconfig::util {

namespace {

/// Directives that are refused whatever follows them.
constexpr std::string_view refused[] = {
    // run programs
    "up", "down", "route-up", "route-pre-down", "ipchange", "learn-address", "auth-user-pass-verify",
    "client-connect", "client-disconnect", "client-crresponse", "tls-verify", "tls-crypt-v2-verify",
    "dns-updown", "iproute", "script-security",
    // load libraries
    "plugin", "engine", "providers", "pkcs11-providers", "show-pkcs11-ids",
    // write files, or open devices
    "log", "log-append", "status", "writepid", "memstats", "replay-persist", "ifconfig-pool-persist",
    "tls-export-cert", "tmp-dir", "port-share", "genkey", "dev-node", "mktun", "rmtun",
    // lead elsewhere
    "config", "client-config-dir", "cd", "chroot"};
constexpr std::string_view control = "management";  // and all that begin so

/// Their argument of this number names a file whose lines are sent to a server, unless it is one of the
/// words.
struct SendsFile {
    std::string_view directive;
    std::size_t argument;
};
constexpr SendsFile sendsFile[] = {
    {"auth-user-pass", 1}, {"http-proxy-user-pass", 1}, {"http-proxy", 3}, {"socks-proxy", 3}};
constexpr std::string_view noFiles[] = {"auto", "auto-nct", "stdin"};

/// The variables that configurations set for OpenVPN itself. Others would be those of the programs that it
/// runs.
constexpr std::string_view variables[] = {"FORWARD_COMPATIBLE",  "CLIENT_CERT",
                                          "PUSH_PEER_INFO",      "GENERIC_CONFIG",
                                          "SERVER_POLL_TIMEOUT", "NO_DYNAMIC_CHALLENGE"};
constexpr std::string_view ownVariables = "UV_";  // so begin those for the server

/// What is longer is read in pieces, in sections of keys at least, and each piece could be a line of its own.
constexpr std::size_t maxLine = 254;  // bytes

template <typename Table>
bool IsIn(Table const &table, std::string_view word) {
    return std::find(std::begin(table), std::end(table), word) != std::end(table);
}

bool IsSpace(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

/// Reads the words of a line as OpenVPN does: in quotes of two kinds or none, with backslashes, up to a
/// comment.
class Words {
  public:
    explicit Words(std::string_view line) : rest_(line) {
        while (Begin())
            words_.push_back(Read());
    }

    std::vector<std::string> Take() { return std::move(words_); }

  private:
    bool Begin() {
        while (!rest_.empty() && IsSpace(rest_.front()))
            rest_.remove_prefix(1);
        return !rest_.empty() && rest_.front() != '#' && rest_.front() != ';';
    }

    std::string Read() {
        char const quote = rest_.front() == '"' || rest_.front() == '\'' ? rest_.front() : '\0';
        if (quote)
            rest_.remove_prefix(1);
        std::string word;
        while (!rest_.empty()) {
            char c = Next();
            if (quote ? c == quote : IsSpace(c))
                break;
            if (c == '\\' && quote != '\'' && !rest_.empty())
                c = Next();
            word += c;
        }
        return word;
    }

    char Next() {
        char const c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    std::string_view rest_;
    std::vector<std::string> words_;
};

/// The directive without what may stand around it: the dashes of a command line, the brackets of a section.
std::string Bare(std::string name) {
    if (name.size() >= 2 && name.front() == '<' && name.back() == '>')
        name = name.substr(1, name.size() - 2);
    return name.starts_with("--") ? name.substr(2) : name;
}

std::vector<std::string> Directive(std::string_view line) {
    std::vector<std::string> words = Words(line).Take();
    while (words.size() > 2 && Bare(words[0]) == "setenv" && words[1] == "opt")
        words.erase(words.begin(), words.begin() + 2);  // says only that OpenVPN need not know what follows
    if (!words.empty())
        words[0] = Bare(words[0]);
    return words;
}

/// The directive of \a words as it stands in the tables where it is harmful; empty where not.
std::string_view Harmful(std::vector<std::string> const &words) {
    if (words.empty())
        return {};
    std::string const &name = words[0];
    if (name.starts_with(control))
        return control;
    if (auto const *const found = std::find(std::begin(refused), std::end(refused), name);
        found != std::end(refused))
        return *found;
    if (name == "setenv" && words.size() > 1 && !IsIn(variables, words[1]) &&
        !words[1].starts_with(ownVariables) && words[1] != "opt")
        return "setenv";
    for (auto const &[directive, argument] : sendsFile) {
        if (name == directive && words.size() > argument && !IsIn(noFiles, words[argument]))
            return directive;
    }
    return {};
}

bool IsOneWord(std::string_view line) {
    return line.find_first_of(" \t\v\f\r\"'\\<") == std::string_view::npos;
}

}  // namespace

Bilingual HarmInVpnConfiguration(std::string const &configuration) {
    constexpr std::string_view lineEnds("\n\0", 2);
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    std::string_view rest = configuration;
    if (rest.starts_with(byteOrderMark))
        rest.remove_prefix(byteOrderMark.size());
    for (std::size_t number = 1; !rest.empty(); ++number) {
        std::string_view const line = rest.substr(0, rest.find_first_of(lineEnds));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        if (line.size() > maxLine && !IsOneWord(line))
            return Bilingual("The configuration is refused: line {1} is too long", number);
        std::string const directive(Harmful(Directive(line.substr(0, maxLine))));
        if (!directive.empty())
            return Bilingual(
                "The configuration is refused: line {1} has \"{2}\", which could run programs or reach files",
                number, directive);
    }
    return {};
}

}  // namespace webconfig::util
