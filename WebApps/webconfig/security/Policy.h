#pragma once

#include <cppcms/json.h>

#include <optional>
#include <string>
#include <vector>

namespace webconfig::security {

/// What a configuration asks for beyond the pages themselves: the members of "webconfig.security", each true
/// or false. One that is absent is off.
struct Policy {
    bool same_origin = false;             ///< what changes something is refused to pages of another origin
    bool headers = false;                 ///< every answer carries headers that bind the browser
    bool default_password_alert = false;  ///< pages say so while the log-in is the one of the delivery
    bool digest_sha256 = false;           ///< a web password is stored for log-ins by SHA-256, too
    bool certificate_upload = false;      ///< the Advanced page takes a certificate for HTTPS
    bool refuse_vpn_scripts = false;      ///< OpenVPN configurations that run programs are refused
    bool hide_secrets = false;  ///< a stored secret is never sent to a page: an empty field keeps it
    bool refuse_control_characters = false;  ///< in fields of a single line
    bool audit = false;                      ///< what happened is written to the audit log, and shown
    bool firmware_verdict = false;           ///< an image is looked into before its upgrade is flagged
    bool signed_firmware = false;            ///< an image that nobody known has signed is refused

    /// Names that the device is asked by beside its own, "hosts", an array of texts; any where it is absent.
    std::optional<std::vector<std::string>> hosts;

    std::vector<std::string> unknown;  ///< members that are none of these
};

/// The policy of a service's settings. Throws cppcms::json::bad_value_cast where a member has the wrong type:
/// a slip of the pen must not open the device.
Policy ReadPolicy(cppcms::json::value const &settings);

/// The policy of the running service. main sets it before the first request; what is unknown in it is logged.
Policy const &ThePolicy();
void SetPolicy(Policy policy);

}  // namespace webconfig::security
