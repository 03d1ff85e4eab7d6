#!/bin/sh
# lighttpd_take_certificate.sh: makes the web server begin anew with the certificate in /etc/lighttpd/server.pem. Where it
# could not begin, it goes on as it is, and this fails. What is under way is answered first, for some seconds.
set -e

lighttpd -tt -f /etc/lighttpd/lighttpd.conf
kill -USR1 "$(cat /run/lighttpd.pid)"
