# Restores the document on standard input, or looks after a restore that was begun before. The
# restore is a process of its own, in a session of its own: it goes on when the connection ends, and
# what it printed and how it ended stays in a private folder until it has been fetched.
# $1 the folder, $2 start, wait, forget or undo, $3 the restore's id, $4 the document's size in bytes,
# $5 how many seconds to wait
folder=$1
verb=$2
id=$3
size=$4
seconds=$5
job=$folder/restore

[ -d "$folder" ] || mkdir "$folder"
if [ -L "$folder" ] || [ ! -d "$folder" ] || [ ! -O "$folder" ]; then
    say foreign
    finish
fi
chmod 700 "$folder"

# Who renames `ready` first decides: this process begins, or nobody will.
# The beats tell that it is alive, without a clock and without the numbers of processes.
runner='
job=$1
mv "$job/ready" "$job/running" 2>/dev/null || exit
(
    beats=0
    while kill -0 "$$" 2>/dev/null && [ ! -e "$job/status" ]; do
        beats=$((beats + 1))
        echo "$beats" >"$job/beats"
        sleep 1
    done
) &
if tarvo-backup restore --help >/dev/null 2>&1; then
    echo tarvo-backup >"$job/program"
    tarvo-backup restore --yes "$job/document.xml"
else
    echo tarvo-config >"$job/program"
    tarvo-config "$job/document.xml"
fi >"$job/output" 2>&1
echo "$?" >"$job/status.new"
sync
mv "$job/status.new" "$job/status"
'

case $verb in
    start)
        if ! mkdir "$job"; then
            if [ -d "$job" ]; then say busy; else say cut; fi
            finish
        fi
        echo "$id" >"$job/id"
        cat >"$job/document.xml"
        if [ "$(wc -c <"$job/document.xml")" -ne "$size" ] || [ "$(cat "$job/id")" != "$id" ]; then
            rm -rf "$job"
            say cut
            finish
        fi
        : >"$job/ready"
        if command -v setsid >/dev/null; then
            setsid sh -c "$runner" tarvo-fleet "$job" </dev/null >/dev/null 2>&1 &
        else
            (trap '' HUP INT PIPE && exec sh -c "$runner" tarvo-fleet "$job") </dev/null >/dev/null 2>&1 &
        fi
        ;;
    wait)
        if [ ! -d "$job" ]; then
            say none
            finish
        fi
        ;;
    forget)
        [ "$(cat "$job/id" 2>/dev/null)" != "$id" ] || rm -rf "$job"
        say forgotten
        finish
        ;;
    undo)
        say begins undo
        tarvo-backup undo --abandoned 2>&1 </dev/null
        status=$?
        printf '\n'
        say ends "$status"
        finish
        ;;
esac

say id "$(head -c 64 "$job/id" 2>/dev/null)"
waited=0
still=0
last=
while [ ! -e "$job/status" ] && [ "$waited" -lt "$seconds" ] && [ "$still" -lt 15 ]; do
    beats=$(cat "$job/beats" 2>/dev/null)
    if [ "$beats" = "$last" ]; then still=$((still + 1)); else still=0; fi
    last=$beats
    waited=$((waited + 1))
    sleep 1
done
if [ -e "$job/status" ]; then
    say program "$(cat "$job/program")"
    say begins "$(cat "$job/id")"
    tail -c 100000 "$job/output"
    printf '\n'
    say ends "$(cat "$job/status")"
elif [ ! -e "$job/running" ] && [ ! -e "$job/ready" ]; then
    say cut
elif mv "$job/ready" "$job/given-up" 2>/dev/null; then
    say unbegun
elif [ "$still" -ge 15 ]; then
    say died
else
    say running
fi
finish
