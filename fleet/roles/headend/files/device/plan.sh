# Prints what restoring the document on standard input would do; nothing on the headend changes.
# $1 the document's size in bytes
size=$1

if ! tarvo-backup plan --help >/dev/null 2>&1 </dev/null; then
    say cannot
    finish
fi
folder=$(mktemp -d /tmp/tarvo-fleet.XXXXXX) || exit
trap 'rm -rf "$folder"' EXIT
trap 'exit 1' HUP INT TERM PIPE
cat >"$folder/document.xml"
if [ "$(wc -c <"$folder/document.xml")" -ne "$size" ]; then
    say cut
    finish
fi
say begins plan
tarvo-backup plan "$folder/document.xml" 2>&1 </dev/null
status=$?
printf '\n'
say ends "$status"
finish
