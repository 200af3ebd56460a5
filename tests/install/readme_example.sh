#!/bin/bash
# Prints the example of the README, the program behind its first "```c".
set -euo pipefail

# shellcheck disable=SC2016 # not a substitution
sed -n '/^```c$/,/^```$/{/^```/!p}' "$(dirname "${BASH_SOURCE[0]}")/../../README.md"
