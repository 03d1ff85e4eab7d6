#!/bin/sh
# notice.sh: lets log-in shells show the notice of the store, or none.
. /usr/lib/device/record
. /usr/lib/device/store
. /usr/lib/device/alone
set -eu

if enabled system/notice/enabled; then
    setting system/notice/text >/etc/motd
else
    : >/etc/motd
fi
