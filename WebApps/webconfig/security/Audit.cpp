#include "WebApps/webconfig/security/Audit.h"

#include <cppcms/http_file.h>
#include <cppcms/http_request.h>
#include <cppcms/http_response.h>
#include <syslog.h>

#include <algorithm>
#include <array>
#include <exception>
#include <iterator>

namespace webconfig::security {

namespace {

constexpr char const *results[] = {"ok", "failed", "refused"};  // by util::Outcome

constexpr char unknown[] = "-";
constexpr char more[] = "%..";
constexpr std::size_t maxWord = 96;   // bytes of a value's word
constexpr std::size_t maxLine = 900;  // bytes; some system logs cut at 1024

/// What is stored below these is the hash of a password.
constexpr std::string_view passwordFolders[] = {"webman/digest/", "webman/digest256/", "system/digest/"};

/// The request that this thread serves; null where none is, or nothing is recorded.
thread_local AuditedRequest *current = nullptr;
/// Who asks for what happens on this thread; null where nobody does.
thread_local util::Requester const *asking = nullptr;

bool StandsForItself(unsigned char c) {
    constexpr std::string_view others = "._-/:,+@";
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           others.find(static_cast<char>(c)) != std::string_view::npos;
}

std::string UtcText(std::time_t time) {
    std::tm parts{};
    gmtime_r(&time, &parts);
    std::array<char, 32> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

bool IsOfPassword(util::Details details) {
    return std::any_of(details.begin(), details.end(), [](util::Detail const &detail) {
        return std::any_of(std::begin(passwordFolders), std::end(passwordFolders),
                           [&](auto folder) { return detail.value.starts_with(folder); });
    });
}

void Record(char const *event, util::Outcome outcome, util::Details details) {
    std::string_view const kind = event;
    if (kind == "upload" && current)
        current->NoteUpload();
    bool const password = kind == "setting" && IsOfPassword(details);
    std::string const line = AuditLine(password ? "password" : event, outcome,
                                       asking ? *asking : util::Requester{}, std::time(nullptr), details);
    syslog(LOG_AUTHPRIV | (outcome == util::Outcome::Ok ? LOG_NOTICE : LOG_WARNING), "%s", line.c_str());
}

/// The name that the browser is to give the file of a download.
std::string FileNameIn(std::string const &disposition) {
    constexpr std::string_view mark = "filename=\"";
    auto const begin = disposition.find(mark);
    if (begin == std::string::npos)
        return {};
    std::string const name = disposition.substr(begin + mark.size());
    return name.substr(0, name.find('"'));
}

}  // namespace

std::string AuditWord(std::string_view value) {
    constexpr char digits[] = "0123456789ABCDEF";
    if (value.empty())
        return unknown;
    std::string word;
    for (unsigned char const c : value) {
        std::string const sign = StandsForItself(c) && value != unknown
                                     ? std::string(1, static_cast<char>(c))
                                     : std::string{'%', digits[c >> 4U], digits[c & 0xFU]};
        if (word.size() + sign.size() > maxWord - (sizeof(more) - 1))
            return word + more;
        word += sign;
    }
    return word;
}

std::string AuditLine(char const *event, util::Outcome outcome, util::Requester const &requester,
                      std::time_t time, util::Details details) {
    std::string line = std::string("audit event=") + event;
    auto const add = [&line](char const *name, std::string_view value) {
        std::string const word = ' ' + (std::string(name) + '=' + AuditWord(value));
        if (line.size() + word.size() <= maxLine)
            line += word;
    };
    add("result", results[static_cast<int>(outcome)]);
    add("user", requester.user);
    add("address", requester.address);
    add("page", requester.page);
    add("time", UtcText(time));
    for (auto const &[name, value] : details)
        add(name, value);
    return line;
}

void SetAudit(bool on) {
    util::RecordWith(on ? Record : nullptr);
}

Asking::Asking(util::Requester const &requester) {
    asking = &requester;
}

Asking::~Asking() {
    asking = nullptr;
}

AuditedRequest::AuditedRequest(cppcms::application &application)
    : application_(application),
      requester_{application.request().remote_user(), application.request().remote_addr(),
                 application.request().path_info()},
      asking_(requester_),
      exceptions_(std::uncaught_exceptions()) {
    if (util::IsRecorded())
        current = this;
}

AuditedRequest::~AuditedRequest() {
    if (current != this)
        return;
    TellDownload(util::OutcomeOf(std::uncaught_exceptions() == exceptions_));
    if (!uploadsTold_)
        TellUnusedUploads();
    current = nullptr;
}

void AuditedRequest::TellDownload(util::Outcome outcome) {
    std::string const disposition = application_.response().get_header("Content-Disposition");
    if (!disposition.empty())
        util::Happened("download", outcome, {{"name", FileNameIn(disposition)}});
}

void AuditedRequest::TellUnusedUploads() {
    for (auto const &file : application_.request().files()) {
        std::string const size = std::to_string(file->size());
        if (!file->filename().empty())
            util::Happened("upload", util::Outcome::Refused, {{"size", size}, {"name", file->filename()}});
    }
}

}  // namespace webconfig::security
