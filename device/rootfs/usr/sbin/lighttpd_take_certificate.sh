#!/bin/sh
. /usr/lib/device/record
. /usr/lib/device/alone
exec /usr/libexec/webconfig/lighttpd_take_certificate.sh
