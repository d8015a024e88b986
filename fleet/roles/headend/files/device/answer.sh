# Stands before each of the scripts: how they answer. Their own arguments follow these:
# $1 the mark, with which each line of the answer begins, $2 seconds between two signs of life
mark=$1
pause=$2
shift 2
umask 077
PATH=$PATH:/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin

say() { printf '%s %s\n' "$mark" "$*"; }

# Signs of life on standard error, so that a program which takes its time is told from a headend that
# has stopped. When this script ends, so do they.
(
    exec </dev/null >/dev/null
    trap 'kill "$!"; exit' TERM
    while kill -0 "$$" 2>/dev/null; do
        printf '%s alive\n' "$mark" >&2
        sleep "$pause" 2>/dev/null &
        wait "$!"
    done
) &
alive=$!

# Without this line the answer was cut off.
finish() {
    say over
    kill "$alive" 2>/dev/null
    exit 0
}

