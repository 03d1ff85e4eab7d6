#include "WebApps/webconfig/data/Ethernet1.h"

#include "WebApps/webconfig/apps/Network.h"
#include "WebApps/webconfig/apps/ParameterWriter.h"
#include "WebApps/webconfig/forms/Select.h"
#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

/// A wired port: the name of its page, the keys of its settings.
struct EthernetPort {
    char const *name;
    char const *modeKey;
    char const *ipKey;
    char const *netmaskKey;
    char const *gatewayKey;
    char const *speedKey;
};

namespace {

struct Diagnosis {
    char const *title;
    char const *command;
    unsigned maxOutput;  // bytes
};
constexpr Diagnosis diagnoses[] = {
    {util::Translatable("Network Config"), "ifconfig", 4096},
    {util::Translatable("Routing"), "route -n", 4096},
    {util::Translatable("Wireless Config"), "iw dev", 4096},
    {util::Translatable("Network Status"), "netstat -an", 8192},
    {util::Translatable("DNS Settings"), "cat /etc/resolv.conf", 4096},
    // The outer shell already expands $ii, to nothing: pppstats shows the first link, the only one.
    {util::Translatable("PPP Status"),
     R"(/bin/sh -c "for ii in `/sbin/ifconfig|/bin/grep ppp|/usr/bin/awk '{print $1}'`;)"
     R"( do echo $ii; /usr/sbin/pppstats $ii; done")",
     4096},
    {util::Translatable("DHCP Leases"), "cat /tmp/dhcp.leases", 4096},
};

/// With DHCP the fixed address stays as it was.
bool Store(forms::Ethernet1 &form, EthernetPort const &port) {
    ParameterWriter writer;
    if (!form.IsDhcp()) {
        writer.Set(port.ipKey, form.ipAddress.value())
            .Set(port.gatewayKey, form.gateway.value())
            .Set(port.netmaskKey, form.netmask.selected_id());
    }
    writer.Set(port.modeKey, form.addressMode.selected_id())
        .Set(port.speedKey, static_cast<int>(form.SpeedMask()));
    return writer.Ok();
}

}  // namespace

void Network::Ethernet1() {
    data::Ethernet1 content;
    EthernetInternal(content, {"Ethernet 1", settings::Key("net/lan_addr_mode"),
                               settings::Key("net/lan_ipaddr"), settings::Key("net/lan_netmask"),
                               settings::Key("net/lan_gateway"), settings::Key("net/lan_advertise_speed")});
    for (auto const &diagnosis : diagnoses) {
        content.commands.sections.push_back(
            {util::Translate(diagnosis.title), util::ShellCommand(diagnosis.command, diagnosis.maxOutput)});
    }
    render("Ethernet1", content);
}

void Network::EthernetInternal(data::Ethernet1 &content, EthernetPort const &port) {
    Prepare(content);
    content.title = util::Translate("{1} Configuration", port.name);

    forms::Ethernet1 &form = content.form;
    bool const post = HttpPost();
    if (post) {
        form.AddSpeeds(0);
        if (!ValidateForm(form)) {
            content.message = data::Message::ValidationError();
        } else if (!Store(form, port)) {
            content.message = data::Message::SaveError();
        } else {
            content.message =
                data::Message::OK(util::Translate("{1} settings updated, reboot to take effect", port.name));
            RequireReboot(content);
        }
    }
    // With DHCP the fields of the fixed address were not in use: show what is stored.
    if (!post || form.IsDhcp()) {
        forms::SelectByValue(form.addressMode, util::Prm::GetString(port.modeKey));
        form.ipAddress.value(util::Prm::GetString(port.ipKey));
        forms::SelectByValue(form.netmask, util::Prm::GetString(port.netmaskKey));
        form.gateway.value(util::Prm::GetString(port.gatewayKey));
    }
    if (!post)
        form.AddSpeeds(static_cast<unsigned>(util::Prm::GetInt(port.speedKey)));
}

}  // namespace webconfig::apps
