# Stands before each of the scripts: how they answer.
# $1 the mark, with which each line of the answer begins
mark=$1
umask 077
PATH=$PATH:/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin

say() { printf '%s %s\n' "$mark" "$*"; }

# Without this line the answer was cut off.
finish() {
    say over
    exit 0
}

