#!/bin/sh
# network_funcs.sh wifi_ap | wifi_client: brings one side of the Wi-Fi module to what the store says. Writes the
# configuration of hostapd or wpa_supplicant, which a board would start with it now.
#
# Exit status: 0 done, 2 wrong usage, 22 (invalid argument) where the store holds what no module takes; the
# interface is down then. What is wrong is in the system log.
. /usr/lib/device/record
. /usr/lib/device/store
. /usr/lib/device/alone
set -u

invalid_argument=22

# The module's radio does not exist: the interfaces are cables, to the hosts that would be in reach.
cable() {
    ip link show "$1" >/dev/null 2>&1 || ip link add "$1" type veth peer name wlan0 netns "$2"
    nsenter --net="/run/netns/$2" ip link set wlan0 up
    ip link set "$1" up
}

# down INTERFACE FILE...
down() {
    ip link delete "$1" 2>/dev/null
    shift
    rm -f "$@"
}

tell() {
    logger -t "WIFI $interface" -p "daemon.$1" -- "$2"
}

refuse() {
    tell err "$1"
    down "$interface" "$configuration"
    exit $invalid_argument
}

check_ssid() {
    [ -n "$1" ] && [ "${#1}" -le 32 ] || refuse "an SSID has 1 to 32 characters"
}

check_key() {
    case $1 in
    *[!0-9a-fA-F]*) ;;
    *) [ "${#1}" -ne 64 ] || return 0 ;;
    esac
    refuse "the key is not of 64 hexadecimal digits"
}

check_country() {
    case $1 in
    [A-Z][A-Z]) ;;
    *) refuse "'$1' is no country code" ;;
    esac
}

# Text as hexadecimal digits: what both programs take for an SSID or an identity of any bytes.
hex() {
    printf '%s' "$1" | od -An -v -tx1 | tr -d ' \n'
}

# Lets the program that is to take a configuration read it: starts it without a radio, and ends it again.
# It notes its process id after its start has been reported, and must be gone before the next one starts.
check_with() {
    pid_file=/run/$interface.pid
    rm -f "$pid_file"
    if ! errors=$("$@" -B -P "$pid_file" 2>&1); then
        refuse "$(echo "$errors" | grep -m 1 .)"
    fi
    tries=100
    until [ -s "$pid_file" ] || [ $((tries -= 1)) -eq 0 ]; do
        sleep 0.05
    done
    pid=$(cat "$pid_file") && kill "$pid" && timeout 5 tail --pid="$pid" -s 0.05 -f /dev/null
}

access_point() {
    interface=ap0
    configuration=/etc/hostapd.conf
    if ! enabled net/wifi/ap/enabled; then
        down ap0 "$configuration"
        : >/tmp/dhcp.leases
        tell info "the access point is off"
        return
    fi

    ssid=$(setting net/wifi/ap/essid)
    key=$(setting net/wifi/ap/wpa_psk)
    country=$(setting net/wifi/country)
    channel=$(setting net/wifi/ap/channel 0:)
    channel=${channel%%:*}
    check_ssid "$ssid"
    check_key "$key"
    check_country "$country"
    case $channel in
    '' | *[!0-9]*) refuse "'$channel' is no channel" ;;
    esac

    mode=g
    [ "$channel" -le 14 ] || mode=a
    (
        umask 077
        cat >"$configuration" <<END
interface=ap0
bridge=br1
driver=nl80211
country_code=$country
hw_mode=$mode
channel=$channel
ssid2=$(hex "$ssid")
wpa=2
wpa_key_mgmt=WPA-PSK
rsn_pairwise=CCMP
wpa_psk=$key
END
    )
    sed 's/^driver=.*/driver=none/; /^bridge=/d; s/^interface=.*/interface=lo/' "$configuration" >"/run/$interface.conf"
    check_with hostapd "/run/$interface.conf"
    cable ap0 lan
    ip link set ap0 master br1
    /usr/lib/device/radio leases >/tmp/dhcp.leases
    tell info "access point '$ssid' on channel $channel"
}

client() {
    interface=client0
    configuration=/etc/wpa_supplicant.conf
    if ! enabled net/wifi/client/enabled; then
        down client0 "$configuration"
        tell info "the client is off"
        return
    fi

    ssid=$(setting net/wifi/client/essid)
    country=$(setting net/wifi/country)
    security=$(setting net/wifi/client/security)
    check_ssid "$ssid"
    check_country "$country"
    case ${security:-none} in
    none) authentication='key_mgmt=NONE' ;;
    wpa)
        key=$(setting net/wifi/client/wpa_psk)
        check_key "$key"
        authentication="key_mgmt=WPA-PSK
    psk=$key"
        ;;
    wpa_eap)
        identity=$(setting net/wifi/client/eap/identity)
        hash=$(setting net/wifi/client/eap/password)
        [ -n "$identity" ] || refuse "there is no user name"
        case $hash in
        hash:*[!0-9a-f]*) refuse "the stored password is no hash" ;;
        hash:*) ;;
        *) refuse "the stored password is no hash" ;;
        esac
        authentication="key_mgmt=WPA-EAP
    eap=PEAP
    phase2=\"auth=MSCHAPV2\"
    identity=$(hex "$identity")
    password=$hash"
        ;;
    *) refuse "'$security' is no kind of security" ;;
    esac

    (
        umask 077
        cat >"$configuration" <<END
ctrl_interface=/run/wpa_supplicant
country=$country
network={
    ssid=$(hex "$ssid")
    $authentication
}
END
    )
    check_with wpa_supplicant -D none -i lo -c "$configuration"
    cable client0 outside
    ip address replace 10.98.0.2/24 dev client0
    nsenter --net=/run/netns/outside ip address replace 10.98.0.1/24 dev wlan0
    if ! /usr/lib/device/radio hears "$ssid"; then
        nsenter --net=/run/netns/outside ip link set wlan0 down
        tell warning "no network '$ssid' is in reach"
        return
    fi
    tell info "client of '$ssid'"
}

case ${1-} in
wifi_ap) access_point ;;
wifi_client) client ;;
*)
    echo "usage: ${0##*/} wifi_ap | wifi_client" >&2
    exit 2
    ;;
esac
