#!/bin/sh
# lighttpd_set_passwd.sh: gives the web server the password of the store. The server reads the file at each request.
set -e

file=/etc/lighttpd/lighttpd.user
account="admin:Orvane Configuration Tool"
hash=$(prm get webman/digest/admin 2>/dev/null | tr 'A-F' 'a-f')
case $hash in
'' | *[!0-9a-f]*)
    echo "The store has no hash of a web password under webman/digest/admin." >&2
    exit 1
    ;;
esac
# The second hash is of the same password while it has the first one before it.
both=$(prm get webman/digest256/admin 2>/dev/null | tr 'A-F' 'a-f')
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
