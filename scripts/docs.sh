#!/bin/bash
# Installs what is missing, and makes the API reference with the guide: build/docs/html/index.html. Fails on any
# warning. Shows what went wrong, and nothing else.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
trap '[ $? -eq 0 ] || echo "scripts/docs.sh: FAILED"' EXIT

scripts/dependencies.sh docs

H265_VERSION=$(scripts/version.sh)
export H265_VERSION H265_DOCS_DIR=build/docs

rm -rf "$H265_DOCS_DIR"
mkdir -p "$H265_DOCS_DIR"
scripts/quietly.sh doxygen docs/Doxyfile
