#pragma once

#include <cppcms/application.h>

#include <ctime>
#include <string>
#include <string_view>

#include "WebApps/webconfig/util/Happened.h"
#include "WebApps/webconfig/util/Requester.h"

/// The audit: who did what to the device, in the system log, facility authpriv, a line an event:
///
///     audit event=E result=R user=U address=A page=P time=T [name=value]...
///
///     audit event=setting result=ok user=admin address=192.168.0.20 page=/config/
///         time=2026-11-22T08:15:00Z key=net/hostname operation=setPar              (in one line)
///     audit event=login result=refused user=admin address=192.168.0.66 page=/config/
///     time=2026-11-22T08:15:00Z
///
/// Words are separated by one blank, a name ends at the first "=". A value is one word: of its bytes the
/// letters and digits of ASCII and . _ - / : , + @ stand for themselves, each other one is "%" and two
/// upper-case hexadecimal digits. So no value, whatever its bytes are, can end its word, its line or begin
/// another one. A value that is not known is "-", and one that is "-" is "%2D". A long value is cut, and
/// "%.." in the end of its word says so. The time is UTC.
///
/// Events: login, setting, password, upload, download, firmware, erase, reboot. Results: ok, failed (the
/// device could not), refused (it was not allowed to), locked (a log-in from an address that may not try
/// now).
///
/// The web server writes "login" (the process behind it never sees who is turned away); the others are ours.
namespace webconfig::security {

/// A value as a word of an audit line.
std::string AuditWord(std::string_view value);

/// The whole line.
std::string AuditLine(char const *event, util::Outcome outcome, util::Requester const &requester,
                      std::time_t time, util::Details details);

/// Makes the audit, from now on, the record of what happens; or nothing.
void SetAudit(bool on);

/// Names who asks for what happens on this thread while the object lives.
class Asking {
  public:
    explicit Asking(util::Requester const &requester);
    ~Asking();
    Asking(Asking const &) = delete;
    Asking &operator=(Asking const &) = delete;
};

/// Names who asks, from the request at hand, for what happens on this thread while the object lives. In the
/// end it tells what only the request as a whole shows: the download that it was answered with, and files
/// that nobody took.
class AuditedRequest {
  public:
    explicit AuditedRequest(cppcms::application &application);
    ~AuditedRequest();
    AuditedRequest(AuditedRequest const &) = delete;
    AuditedRequest &operator=(AuditedRequest const &) = delete;

    void NoteUpload() { uploadsTold_ = true; }

  private:
    void TellDownload(util::Outcome outcome);
    void TellUnusedUploads();

    cppcms::application &application_;
    util::Requester const requester_;
    Asking const asking_;
    bool uploadsTold_ = false;
    int const exceptions_;
};

}  // namespace webconfig::security
