#!/bin/bash
# Runs an installed h265tool as the README's first look does, and compares the lines that the README shows.
#
#   first_look.sh H265TOOL        (one word, or more when something runs it)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

shown=$(sed -n '/^    \$ .*h265tool inspect /,/^    \.\.\.$/s/^    //p' README.md)
sample=$(head -n 1 <<<"$shown" | grep -o 'tests/samples/.*')
expected=$(sed '1d;$d' <<<"$shown")

printed=$("$@" inspect "$sample")
diff <(echo "$expected") <(head -n "$(wc -l <<<"$expected")" <<<"$printed" | sed 's/ *$//')
