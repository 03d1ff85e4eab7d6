#!/bin/sh
# lighttpd_set_passwd.sh: gives the web server the password of the store. The server reads the file at each request.
. /usr/lib/device/record
. /usr/lib/device/store
. /usr/lib/device/alone
set -e

file=/etc/lighttpd/lighttpd.user
hash=$(setting webman/digest/admin | tr 'A-F' 'a-f')
case $hash in
'' | *[!0-9a-f]*)
    echo "The store has no hash of a web password under webman/digest/admin." >&2
    exit 1
    ;;
esac
umask 077
echo "admin:Orvane Configuration Tool:$hash" >"$file.new"
mv "$file.new" "$file"
