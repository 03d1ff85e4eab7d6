#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace webconfig::security {

/// Where the system log keeps the facility authpriv; behind a rotation, the lines before are in PATH.0.
inline constexpr char auditFile[] = "/var/log/audit";

/// An audit line (see Audit.h), its values as text that any page may show.
struct AuditEntry {
    std::string time;
    std::string event;
    std::string result;
    std::string user;
    std::string address;
    std::string page;
    std::string details;  ///< "name=value" each, with two blanks between them
};

/// A line of the log as an entry. Nothing where it is something else that the facility is used for.
std::optional<AuditEntry> ReadAuditLine(std::string_view line);

/// The newest entries first, at most \a most: those whose event is \a event and that contain \a text
/// somewhere, in whatever case; empty ones do not restrict. Looks at no more than the last 256 KiB of each of
/// the two files. Nothing where the log cannot be read.
std::optional<std::vector<AuditEntry>> ReadAudit(std::string const &path, std::string const &event,
                                                 std::string const &text, std::size_t most);

}  // namespace webconfig::security
