#!/bin/sh
# nat_setup.sh [web_forwarding | wlan | web_advanced]: makes the packet filter what the store says: forwarded ports,
# masquerading, and what of the device is open to its uplinks. Whichever page asks, all of it is set, in one step.
. /usr/lib/device/record
. /usr/lib/device/store
. /usr/lib/device/alone
set -u

wanted=/run/nat_setup.rules
installed=/run/nat_setup.installed

case ${1-web_forwarding} in
web_forwarding | wlan | web_advanced) ;;
*)
    echo "usage: ${0##*/} [web_forwarding | wlan | web_advanced]" >&2
    exit 2
    ;;
esac

# The forwarded ports, one a line: protocol, port, address, port there. First what every device forwards.
forwards() {
    vnc=$(setting net/vnc/port)
    [ -z "$vnc" ] || echo "tcp $vnc $(setting net/vnc/ipaddr -) $vnc"
    echo tcp 8002 192.168.0.100 8002
    echo tcp 8003 192.168.0.101 8003
    echo tcp 8800 192.168.0.20 80
    prm export net/portfwd/ | awk -F '"' '
        { split($2, part, "/"); rule = part[3] " " part[4]; rules[rule]; value[rule, part[5]] = $4 }
        function field(rule, name) { return (rule, name) in value ? value[rule, name] : "-" }
        END { for (rule in rules) print rule, field(rule, "d_ip"), field(rule, "d_port") }' | sort
}

# Rules for the lines of `forwards`. Bad lines are skipped and told on standard error.
forward_rules() {
    awk '
        function is_number(text, low, high) { return text ~ /^[0-9]+$/ && text + 0 >= low && text + 0 <= high }
        function is_address(text,    part, i) {
            if (split(text, part, ".") != 4) return 0
            for (i = 1; i <= 4; i++) if (!is_number(part[i], 0, 255)) return 0
            return 1
        }
        NF == 4 && $1 ~ /^(tcp|udp)$/ && is_number($2, 1, 65535) && is_address($3) && is_number($4, 1, 65535) {
            printf "-A PREROUTING ! -i br1 -p %s -m addrtype --dst-type LOCAL -m %s --dport %d", $1, $1, $2
            printf " -j DNAT --to-destination %s:%d\n", $3, $4
            next
        }
        { print "Skipped a bad port forward: " $0 >"/dev/stderr" }'
}

# Connections to the web server that an address may have at once, and all addresses of the uplinks together: who opens
# many and says nothing has no more than these, and the LAN always finds room. (A browser opens six.)
per_address=32
uplinks=256

# A rule that turns new connections to the web server away; arguments: where from, how many and whose are too many.
limit_rule() {
    echo "-A INPUT $1 -p tcp -m multiport --dports 80,443 -m tcp --syn -m connlimit $2 -j REJECT --reject-with tcp-reset"
}

rules() {
    echo '*nat'
    echo ':PREROUTING ACCEPT [0:0]'
    echo ':POSTROUTING ACCEPT [0:0]'
    forwards | forward_rules
    for uplink in eth0 ppp0 $(enabled net/wifi/client/enabled && echo client0); do
        echo "-A POSTROUTING -o $uplink -j MASQUERADE"
    done
    echo COMMIT

    echo '*filter'
    echo ':INPUT DROP [0:0]'
    echo ':FORWARD DROP [0:0]'
    echo '-A INPUT -i lo -j ACCEPT'
    limit_rule '' "--connlimit-above $per_address"
    limit_rule '! -i br1' "--connlimit-above $uplinks --connlimit-mask 0"
    echo '-A INPUT -i br1 -j ACCEPT'
    echo '-A INPUT -m conntrack --ctstate RELATED,ESTABLISHED -j ACCEPT'
    ! enabled system/remote/ssh_enabled || echo '-A INPUT -p tcp -m tcp --dport 22 -j ACCEPT'
    ! enabled system/remote/web_enabled || echo '-A INPUT -p tcp -m multiport --dports 80,443 -j ACCEPT'
    ! enabled system/remote/icmp_enabled || echo '-A INPUT -p icmp -m icmp --icmp-type 8 -j ACCEPT'
    echo '-A FORWARD -i br1 -j ACCEPT'
    echo '-A FORWARD -m conntrack --ctstate RELATED,ESTABLISHED,DNAT -j ACCEPT'
    echo COMMIT
}

# What the kernel has now, without counters.
current() {
    iptables-save | sed '/^#/d; s/\[.*\]//'
}

rules >"$wanted.new" 2>"$wanted.errors"
[ ! -s "$wanted.errors" ] || logger -t nat_setup -p daemon.warning -f "$wanted.errors"
# Where nothing would change nothing is done, so that the counters go on.
if cmp -s "$wanted.new" "$wanted" && [ "$(current)" = "$(cat "$installed")" ]; then
    exit 0
fi

echo 1 >/proc/sys/net/ipv4/ip_forward
if ! iptables-restore "$wanted.new" 2>"$wanted.errors"; then
    logger -t nat_setup -p daemon.err -f "$wanted.errors"
    exit 1
fi
mv "$wanted.new" "$wanted"
current >"$installed"
