#!/bin/sh
# lighttpd_set_passwd.sh: gives the web server the password of the store. The server reads the file at each request.
. /usr/lib/device/record
. /usr/lib/device/store
. /usr/lib/device/alone
set -e

file=/etc/lighttpd/lighttpd.user
account="admin:Orvane Configuration Tool"
hash=$(setting webman/digest/admin | tr 'A-F' 'a-f')
case $hash in
'' | *[!0-9a-f]*)
    echo "The store has no hash of a web password under webman/digest/admin." >&2
    exit 1
    ;;
esac
# The second hash is of the same password while it has the first one before it.
both=$(setting webman/digest256/admin | tr 'A-F' 'a-f')
umask 077
{
    echo "$account:$hash"
    case $both in
    "$hash:"*[!0-9a-f]*) ;;
    "$hash:"?*) echo "$account:${both#*:}" ;;
    esac
} >"$file.new"
sync "$file.new"
mv "$file.new" "$file"
sync "${file%/*}"
