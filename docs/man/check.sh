#!/bin/bash
# Checks the man pages: the formatter has nothing to say against them, and the page of h265tool has, under each verb,
# every option that the verb's --help has.
#
#   check.sh H265TOOL...        a command, behind an emulator where it needs one
#
# Exit status 77 when groff is not there.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

command -v groff >/dev/null || { echo "SKIPPED: groff is not there"; exit 77; }

failed=0
for page in "$here"/*.[1-9]; do
  complaints=$(groff -ww -mdoc -Tutf8 -z "$page" 2>&1)
  [ -z "$complaints" ] || { echo "$complaints"; failed=1; }
done

# As plain text: no bold, no hyphenation, one column.
page=$(groff -mdoc -Tascii -P-c -P-b -P-u -rLL=300n "$here/h265tool.1")

# The options of a help text. What the footer says of them comes behind two empty lines.
options() {
  awk '/^Options:|^\[Option Group/ { on = 1 } on && /^$/ { exit } on' |
    grep -E '^ *-' | grep -oE '^ *-[^ ]+' | tr ',' '\n' | tr -d ' '
}

# expect WHERE TEXT OPTION...: every option stands in the text, as a word of its own
expect() {
  local where=$1 text=$2 option
  shift 2
  [ $# -gt 0 ] || { echo "$where: no options found"; failed=1; }
  for option; do
    grep -qE "(^|[ ,])$option([ ,.=]|$)" <<<"$text" || { echo "$where: $option is missing"; failed=1; }
  done
}

help=$("$@" --help)
mapfile -t global < <(options <<<"$help")
expect "h265tool" "$page" "${global[@]}"

mapfile -t verbs < <(sed '1,/^Subcommands:/d' <<<"$help" | grep -oE '^  [a-z]+')
[ ${#verbs[@]} -gt 0 ] || { echo "no verbs found"; failed=1; }
for verb in "${verbs[@]}"; do
  verb=${verb// /}
  # its subsection, up to the next heading
  text=$(awk -v heading="   $verb" '$0 == heading { on = 1; next } on && /^ ? ? ?[^ ]/ { exit } on' <<<"$page")
  mapfile -t wanted < <("$@" "$verb" --help | options | grep -vE '^(-h|--help)$')
  expect "h265tool $verb" "$text" "${wanted[@]}"
done
exit $failed
