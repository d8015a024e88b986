# Prints the configuration of the headend between two lines that begin with the mark, and what
# proves that it is whole. Anything else on standard output is the login's and is skipped.
# $1 a command that prints the system log, or nothing
logCommand=$1
exec </dev/null

# The log in which this run's own second line stands; nothing where there is none.
readLog() {
    if [ -n "$logCommand" ]; then
        sh -c "$logCommand"
        return
    fi
    for file in /var/log/syslog /var/log/messages; do
        if grep -q "$mark after" "$file" 2>/dev/null; then
            cat "$file"
            return
        fi
    done
    if command -v logread >/dev/null; then
        logread
    elif command -v journalctl >/dev/null; then
        journalctl --no-pager -n 20000
    fi
}

say "clock $(date +%s)"
if tarvo-backup save --help >/dev/null 2>&1; then
    say begins save
    tarvo-backup save --output -
    status=$?
    printf '\n'
    say ends "$status"
    finish
fi
if ! command -v tarvo-config >/dev/null; then
    say missing
    finish
fi
# Between two lines of our own stands what the run logged, whatever the log's clock says, and they
# prove that it is the log that is written to.
logger -t tarvo-fleet "$mark before"
say begins config
tarvo-config
status=$?
printf '\n'
say ends "$status"
logger -t tarvo-fleet "$mark after"
for _ in 1 2 3 4 5; do
    between=$(readLog 2>/dev/null | sed -n "/$mark before/,/$mark after/p")
    case $between in
        *"$mark before"*"$mark after"*)
            say log "$(printf '%s\n' "$between" | grep -c -F '[ERROR_DB]')"
            say complaint "$(printf '%s\n' "$between" | grep -F '[ERROR_DB]' | head -n 1 | cut -c 1-300)"
            finish
            ;;
    esac
    sleep 1
done
say log unknown
finish
