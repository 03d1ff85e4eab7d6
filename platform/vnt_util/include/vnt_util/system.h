#pragma once

#include <string>

namespace vnt_util::system {

/// The assembly serial number of the device: the first line of /etc/barcode-asn (the environment
/// variable BARCODE_ASN_FILE names another file), without blanks around it. Empty where there is none.
/// \a status, which may be null, receives 0, or -1 where the file cannot be read.
std::string GetBarcodeASN(int *status);

/// Stores the assembly serial number so that it survives a power cut at any moment. Returns false, and
/// leaves the old number, where \a asn holds control characters or the file cannot be written.
bool SetBarcodeASN(std::string const &asn);

/// Runs \a command through the shell and replaces \a output with what it printed on its standard output,
/// at most 1 MiB; a command that prints more is cut off. Returns the exit status of the command: 0 on
/// success, 128 + N when signal N ended it, -1 when it could not be started or, after shell::usualLimit, had
/// to be ended. The maker's library may know no such limit.
int exec(std::string const &command, std::string &output);

}  // namespace vnt_util::system
