#!/bin/sh
. /tarvo/sim/action
[ "$status" -eq 0 ] || exit "$status"
shift
for zone; do
    echo "offset of $zone"
done >/tmp/temp_tot_file_web
