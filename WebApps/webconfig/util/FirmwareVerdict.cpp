#include "WebApps/webconfig/util/FirmwareVerdict.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "WebApps/webconfig/util/FirmwareImage.h"
#include "WebApps/webconfig/util/FirmwareSignature.h"
#include "WebApps/webconfig/util/Utf8.h"

namespace webconfig::util {

namespace {

using State = FirmwareSignature::State;

constexpr std::string_view runningMark = "(running)";  // behind the version of a volume
constexpr char digits[] = "0123456789";

/// A file's bytes, without a copy of them in this process.
class MappedFile {
  public:
    explicit MappedFile(std::string const &path) {
        int const file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
        struct stat info {};
        if (file >= 0 && ::fstat(file, &info) == 0 && S_ISREG(info.st_mode) && info.st_size > 0) {
            size_ = static_cast<std::size_t>(info.st_size);
            address_ = ::mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, file, 0);
        }
        if (file >= 0)
            ::close(file);
    }
    ~MappedFile() {
        if (address_ != MAP_FAILED)
            ::munmap(address_, size_);
    }
    MappedFile(MappedFile const &) = delete;
    MappedFile &operator=(MappedFile const &) = delete;

    std::string_view Bytes() const {
        return address_ == MAP_FAILED ? std::string_view()
                                      : std::string_view(static_cast<char const *>(address_), size_);
    }

  private:
    void *address_ = MAP_FAILED;
    std::size_t size_ = 0;
};

/// The word that begins with the first digit of \a text; nothing where there is none.
std::optional<std::string> VersionIn(std::string const &text) {
    auto const begin = text.find_first_of(digits);
    if (begin == std::string::npos)
        return {};
    return text.substr(begin, text.find_first_of(" \t\r\n,;)", begin) - begin);
}

/// The leading numbers with a point between them, and what follows.
struct Version {
    explicit Version(std::string_view text) {
        unsigned number = 0;
        for (;;) {
            auto const [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
            if (problem == std::errc::invalid_argument)
                break;
            numbers.push_back(problem == std::errc() ? number : std::numeric_limits<unsigned>::max());
            text.remove_prefix(static_cast<std::size_t>(end - text.data()));
            if (!text.starts_with('.'))
                break;
            text.remove_prefix(1);
        }
        rest = text;
        while (!numbers.empty() && numbers.back() == 0)  // 1.2 is 1.2.0
            numbers.pop_back();
    }

    std::vector<unsigned> numbers;
    std::string_view rest;
};

Bilingual Compared(std::string const &version, std::string const &running, Age age) {
    switch (age) {
        case Age::Newer:
            return Bilingual("{1}, newer than the running {2}", version, running);
        case Age::Same:
            return Bilingual("{1}, the same as the running one", version);
        case Age::Older:
            return Bilingual("{1}, older than the running {2}", version, running);
        default:
            return running.empty() ? Bilingual("{1}, the running version is not known", version)
                                   : Bilingual("{1}, not comparable with the running {2}", version, running);
    }
}

/// What an image says, for a page and for a line of the log.
std::string OneLine(std::string const &text) {
    std::string line = CleanText(text);
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return c < ' '; }, ' ');
    return line;
}

std::string List(std::vector<std::string> const &texts) {
    std::string list;
    for (auto const &text : texts)
        list.append(list.empty() ? "" : ", ").append(OneLine(text));
    return list;
}

void RefuseImage(FirmwareVerdict &verdict, char const *reason, Bilingual text) {
    verdict.reason = reason;
    verdict.refusal = std::move(text);
}

void JudgeTree(std::string const &path, FirmwareDemands const &demands, FirmwareVerdict &verdict) {
    MappedFile const file(path);
    auto const tree = ReadImageTree(file.Bytes().substr(0, verdict.imageSize));
    if (!tree) {
        RefuseImage(verdict, "unreadable",
                    Bilingual("The image cannot be read: it is damaged, or only a part of one."));
        verdict.version = verdict.platform = Bilingual("unknown");
        return;
    }
    Age const age = CompareVersions(tree->version, demands.running);
    verdict.isOlder = age == Age::Older;
    verdict.version = tree->version.empty() ? Bilingual("not told")
                                            : Compared(OneLine(tree->version), demands.running, age);
    bool const fits =
        std::find(tree->platforms.begin(), tree->platforms.end(), demands.platform) != tree->platforms.end();
    verdict.platform =
        tree->platforms.empty() ? Bilingual("not told") : Bilingual::Name(List(tree->platforms));
    if (!fits && !tree->platforms.empty())
        RefuseImage(verdict, "platform",
                    Bilingual("The image is for another platform: {1}. This device is a {2}.",
                              List(tree->platforms), demands.platform));
}

Bilingual SignatureText(FirmwareSignature const &signature) {
    std::string const key = OneLine(signature.key);
    switch (signature.state) {
        case State::None:
            return Bilingual("none");
        case State::UnknownKey:
            return Bilingual("by a key that this device does not have, {1}", key);
        case State::Broken:
            return Bilingual("does not match; the key is {1}", key);
        case State::Valid:
            return Bilingual("by {1}", key);
        default:
            return Bilingual("unknown");
    }
}

void JudgeSignature(FirmwareSignature const &signature, bool demanded, FirmwareVerdict &verdict) {
    if (signature.state == State::Unreadable)
        RefuseImage(verdict, "unreadable", Bilingual("The image could not be read again."));
    // Also where no signature is asked for: these are not the bytes that somebody has signed.
    else if (signature.state == State::Broken)
        RefuseImage(
            verdict, "signature",
            Bilingual(
                "The signature does not match the image: it was changed since, or damaged on its way."));
    else if (demanded && signature.state == State::None)
        RefuseImage(
            verdict, "unsigned",
            Bilingual("The image is not signed. This device takes only images that are signed with one of "
                      "its keys."));
    else if (demanded && signature.state == State::UnknownKey)
        RefuseImage(verdict, "unknown-key",
                    Bilingual("The image is signed with a key that this device does not have ({1}).",
                              OneLine(signature.key)));
}

}  // namespace

Age CompareVersions(std::string const &offered, std::string const &running) {
    auto const first = VersionIn(offered);
    auto const second = VersionIn(running);
    if (!first || !second)
        return Age::Unknown;
    Version const a(*first);
    Version const b(*second);
    if (a.numbers != b.numbers)
        return a.numbers < b.numbers ? Age::Older : Age::Newer;
    return a.rest == b.rest ? Age::Same : Age::Unknown;
}

std::string RunningVersion(std::string const &volumeVersions) {
    std::istringstream lines(volumeVersions);
    for (std::string line; std::getline(lines, line);) {
        auto const colon = line.find(": ");
        auto const mark = line.find(runningMark);
        if (colon == std::string::npos || mark == std::string::npos || mark < colon)
            continue;
        return VersionIn(line.substr(colon, mark - colon)).value_or("");
    }
    return {};
}

FirmwareVerdict JudgeFirmware(std::string const &path, FirmwareDemands const &demands) {
    FirmwareSignature const signature = CheckFirmwareSignature(path, demands.keyFolder);
    FirmwareVerdict verdict;
    verdict.imageSize = signature.imageSize;
    verdict.signature = SignatureText(signature);
    if (demands.soundTree)
        JudgeTree(path, demands, verdict);
    if (verdict.refusal.empty())
        JudgeSignature(signature, demands.signature, verdict);
    return verdict;
}

}  // namespace webconfig::util
