#include "WebApps/webconfig/util/PasswordHash.h"

#include <array>
#include <string_view>

#include "WebApps/webconfig/util/Command.h"
#include "WebApps/webconfig/util/Commands.h"
#include "WebApps/webconfig/util/CryptoLibrary.h"
#include "WebApps/webconfig/util/Digest.h"
#include "WebApps/webconfig/util/Strings.h"

namespace webconfig::util {

namespace {

constexpr char webAccount[] = "admin:Orvane Configuration Tool:";  // user and realm of the web server
constexpr unsigned maxOutput = 4096;

std::string WebHash(EVP_MD const *algorithm, std::string const &password) {
    std::string const account = webAccount + password;
    std::array<unsigned char, EVP_MAX_MD_SIZE> sum{};
    unsigned size = 0;
    bool const made =
        Crypto().EVP_Digest(account.data(), account.size(), sum.data(), &size, algorithm, nullptr) == 1;
    return made ? Hex(std::string(sum.begin(), sum.begin() + size)) : "";
}

/// What a command has printed; empty where that is no hash but, say, how the program is to be used.
std::string HashIn(std::string const &printed) {
    constexpr std::size_t shortestHash = 13;
    constexpr char alphabet[] = "./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz$=,_-";
    std::string const output = Trim(printed);
    bool const isHash =
        output.size() >= shortestHash && output.find_first_not_of(alphabet) == std::string::npos;
    return isHash ? output : "";
}

}  // namespace

std::string WebPasswordHash(std::string const &password) {
    if (AreSecretsHiddenFromCommands())
        return WebHash(Crypto().EVP_md5(), password);
    return HashIn(ShellCommand(
        Command("echo -n").DoubleQuoted(webAccount + password).Then("| md5sum | cut -d' ' -f1"), maxOutput));
}

std::string WebPasswordSha256(std::string const &hash, std::string const &password) {
    std::string const sha256 = WebHash(Crypto().EVP_sha256(), password);
    return sha256.empty() ? sha256 : hash + ':' + sha256;
}

std::string RootPasswordHash(std::string const &password) {
    if (!AreSecretsHiddenFromCommands()) {
        Command command("cryptpw");
        if (IsShellHardened() && password.starts_with('-'))
            command.Then("--");  // so that it is no option
        return HashIn(ShellCommand(command.Arg(password), maxOutput));
    }
    constexpr std::string_view noLine("\n\0", 2);  // the program reads one
    if (password.find_first_of(noLine) != std::string::npos)
        return {};
    return HashIn(ShellCommand("cryptpw", maxOutput, password + '\n'));
}

bool SetRootPasswordHash(std::string const &hash) {
    std::string const line = "root:" + hash;
    if (AreSecretsHiddenFromCommands())
        return RunCommand(Command("chpasswd --encrypted > /dev/null"), actionLimit, line) == 0;
    return RunCommand(Command("echo -n").SingleQuoted(line).Then("| chpasswd --encrypted > /dev/null")) == 0;
}

}  // namespace webconfig::util
