#include "WebApps/webconfig/forms/OpenVPN.h"

#include <booster/regex.h>

#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

namespace {

constexpr char submitName[] = "submit";  // of all three: the value tells them apart

constexpr int minFileSize = 1024;  // bytes
constexpr int maxFileSize = 102400;

}  // namespace

OpenVPN::OpenVPN() {
    SetUp(enabled, "enabled", "cfg_vpn_enabled", "OpenVPN Enabled");
    add(enabled);

    SetUpSubmit(save, submitName, "cfg_vpn_save", "Save");
    add(save);
}

OpenVPNFileConfiguration::OpenVPNFileConfiguration() {
    SetUp(file, "filename", "cfg_flvpn_file", "Upload configuration file");
    file.non_empty();
    file.limits(minFileSize, maxFileSize);
    file.filename(booster::regex(".*\\.ovpn"));
    file.error_message("Incorrect file type or file size NOT within range of 1KB to 100KB");
    add(file);

    SetUpSubmit(upload, submitName, "cfg_flvpn_submit", "Upload");
    add(upload);
}

void OpenVPNFileConfiguration::Disable() {
    file.disabled(true);
    upload.disabled(true);
}

OpenVPNRemoteConfiguration::OpenVPNRemoteConfiguration(std::string const &defaultServer,
                                                       std::string const &ownId) {
    SetUp(server, "remoteServer", "cfg_rmvpn_server", "Server (http://)");
    server.value(defaultServer);
    util::validation::NonEmpty(server);
    add(server);

    SetUp(oneTimeCode, "oneTimeCode", "cfg_rmvpn_otcode", "One time code");
    util::validation::NonEmpty(oneTimeCode);
    add(oneTimeCode);

    SetUp(deviceId, "deviceId", "cfg_rmvpn_deviceid", "Device ID");
    deviceId.value(ownId);
    util::validation::NonEmpty(deviceId);
    add(deviceId);

    SetUpSubmit(submit, submitName, "cfg_rmvpn_submit", "Submit");
    add(submit);
}

void OpenVPNRemoteConfiguration::Disable() {
    server.disabled(true);
    oneTimeCode.disabled(true);
    deviceId.disabled(true);
    submit.disabled(true);
}

}  // namespace webconfig::forms
