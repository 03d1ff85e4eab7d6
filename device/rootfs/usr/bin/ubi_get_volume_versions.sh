#!/bin/sh
# Prints the versions in the two firmware volumes.
. /usr/lib/device/record

echo "rootfs0: $(cat /var/lib/firmware/running) (running)"
echo "rootfs1: $(cat /var/lib/firmware/next 2>/dev/null || cat /var/lib/firmware/previous 2>/dev/null || echo empty)"
