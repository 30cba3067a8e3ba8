#!/usr/bin/env bash
# Holds the names and braces of everything but tests to .clang-tidy, in a build by Clang.
#   tools/tidy.sh build/i386-asan
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:?a build directory of Clang is needed}

# Most sources are compiled together, so this is quicker than looking at one after the other.
sources() {
  sed -n 's/^ *"file": "\(.*\)".*/\1/p' "$build/compile_commands.json" |
    grep -v -e /tests/ -e /standard_headers -e /test_headers | sort -u
}

sources | xargs -P "$(nproc)" -n 1 clang-tidy -p "$build" --quiet \
  --checks='-*,readability-identifier-naming,readability-braces-around-statements'
