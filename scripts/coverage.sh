#!/bin/bash
# Measures which lines and branches of the four libraries the unit tests reach. Prints the places that are left out,
# with their reasons, and the gaps; the last line has the figures. Fails below 100% of either.
#
# What no test can reach is left out by one of gcovr's markers in the source, with the reason behind it:
#
#   return FALSE;  // GCOVR_EXCL_LINE: <reason>
#
# GCOVR_EXCL_BR_LINE leaves out the branches of a line alone; GCOVR_EXCL_START: <reason> begins a block that
# GCOVR_EXCL_STOP ends. Nothing else is left out: the libraries are compiled without exceptions, and here so are the
# tests, which have copies of what is in line: no branch is the compiler's own. The preset makes functions that are
# always in line ordinary ones: their branches count once, and not once for each place that calls them.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

libraries=components/libraries
build=build/coverage
report=$(mktemp -d)
trap 'rm -rf "$report"' EXIT

# in_report ARGUMENT...: gcovr on what has been measured
in_report() {
  gcovr --root . --add-tracefile "$report/measured.json" "$@"
}

scripts/build.sh coverage unit_tests entry_point_tests
find "$build" -name '*.gcda' -delete
for tests in unit_tests entry_point_tests; do
  scripts/quietly.sh "$build/tests/$tests" --gtest_brief=1
done
scripts/quietly.sh gcovr --root . --filter "$libraries/" --json "$report/measured.json" "$build"
in_report --csv "$report/files.csv"

exclusions=0
unexplained=0
while IFS=: read -r file line text; do
  reason=$(sed -nE 's/^.*EXCL_(BR_)?(LINE|START): *([^ ].*)$/\3/p' <<<"$text")
  echo "left out: $file:$line: ${reason:-NO REASON GIVEN}"
  exclusions=$((exclusions + 1))
  [ -n "$reason" ] || unexplained=$((unexplained + 1))
done < <(grep -rnE '(GCOV|GCOVR|LCOV)_EXCL_(BR_)?(LINE|START)' "$libraries" | sort -t: -k1,1 -k2,2n)

with_gaps=()
while read -r file; do
  with_gaps+=(--filter "$file")
done < <(awk -F, 'NR > 1 && ($2 != $3 || $5 != $6) { print $1 }' "$report/files.csv")
if [ ${#with_gaps[@]} -gt 0 ]; then
  in_report "${with_gaps[@]}" --txt
  in_report "${with_gaps[@]}" --txt --branches
fi

# figure NAME TOTAL COVERED: of these columns, rounded down
figure() {
  awk -F, -v name="$1" -v total="$2" -v covered="$3" '
    NR > 1 { all += $total; reached += $covered }
    END { printf "%s %.4g%% (%d of %d)", name, all ? int(10000 * reached / all) / 100 : 0, reached, all }
  ' "$report/files.csv"
}
lines=$(figure lines 2 3)
branches=$(figure branches 5 6)
echo "Coverage of $libraries: $lines, $branches, $exclusions exclusions"
[[ $unexplained -eq 0 && $lines == "lines 100% "* && $branches == "branches 100% "* ]]
