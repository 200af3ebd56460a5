#!/bin/bash
# Asks the completion for bash what it offers, as the shell does: verbs, options, values, files; and holds its options
# and their values against every --help, so that none is forgotten.
#
#   completion.sh FILE H265TOOL...        (the tool: one word, or more when something runs it)
set -euo pipefail

# shellcheck source=/dev/null
source "$1"
shift
tool=("$@")
failed=0

# Lines as words of one line, sorted.
in_a_line() {
  LC_ALL=C sort | paste -sd ' '
}

# expect WORDS WORD...: what is offered for the last word, once they are sorted
expect() {
  local expected=$1 offered
  shift
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
  _h265tool || true
  offered=$(printf '%s\n' "${COMPREPLY[@]}" | in_a_line)
  if [ "$offered" != "$expected" ]; then
    echo "$*: offers \"$offered\", not \"$expected\""
    failed=1
  fi
}

# help [VERB]: what its help has in front of the descriptions of the options: "--fps N[/D]"
help() {
  "${tool[@]}" "$@" --help | awk '/^Options:|^\[Option Group/ { on = 1 } on && /^$/ { exit } on' |
    sed -nE '/^ *-/{s/^ +//;s/  .*//;s/ ?Excludes:.*//;p}'
}

# values TEXT: those that an option takes, in a line, given what its help has behind its name
values() {
  local set=${1#*[\{[]}
  set=${set%[\}\]]*}
  case $1 in
    *"{"*"}"*) tr ',' '\n' <<<"$set" | in_a_line ;;
    *" in ["*"]"*) seq "${set% - *}" "${set#* - }" | in_a_line ;;
    "" | FILE* | OUT*) echo "$files" ;; # behind an option that takes nothing comes the stream
    *) ;;
  esac
}

[ "$(complete -p h265tool)" = "complete -F _h265tool h265tool" ] || { echo "bash does not know of it"; failed=1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
mkdir streams
touch in.hevc streams/a.hevc 'two words.hevc' words.scc
files="in.hevc streams two words.hevc words.scc"

mapfile -t verbs < <("${tool[@]}" --help | sed '1,/^Subcommands:/d' | grep -oE '^  [a-z]+' | tr -d ' ')
expect "$(printf '%s\n' "${verbs[@]}" | in_a_line)" h265tool ""
expect "insert inspect" h265tool in
expect "inspect" h265tool --version insp
expect "" h265tool x
expect "--help --version -h" h265tool -
expect "--help --version" h265tool --

count=0
for verb in "${verbs[@]}"; do
  expect "$files" h265tool "$verb" ""
  expect "in.hevc" h265tool "$verb" i
  expect "streams/a.hevc" h265tool "$verb" streams/
  expect "$(help "$verb" | grep -oE '^[^ ]+' | tr ',' '\n' | in_a_line)" h265tool "$verb" -
  while read -r names takes; do
    for name in ${names//,/ }; do
      expect "$(values "$takes")" h265tool "$verb" "$name" ""
      count=$((count + 1))
    done
  done < <(help "$verb")
done
[ "$count" -ge 45 ] || { echo "only $count options found"; failed=1; }

expect "always auto" h265tool inspect --color a
expect "always auto" h265tool inspect --color = a
expect "always auto never" h265tool inspect --color =
expect "limited" h265tool edit in.hevc -o out.hevc --range l
expect "1 10 11 12 13 14 15" h265tool insert --afd 1
expect "words.scc" h265tool insert in.hevc --captions w
expect "words.scc" h265tool insert --captions = w
expect "--captions --captions-start" h265tool insert in.hevc --cap
expect "" h265tool edit in.hevc --sar -

exit $failed
