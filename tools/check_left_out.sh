#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_left_out.sh: call it after the tests for Windows. Checks that every skipped test function is in the list of
# tests that are left out, and reports how often Wine itself crashed and the program was run again.
set -euo pipefail
source "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/common.sh"

log=build/windows/Testing/Temporary/LastTest.log
! grep -cF "Wine died of a signal" "$log" >build/windows/died || say "Wine died $(cat build/windows/died) times"
awk '/^[0-9]+\/[0-9]+ Test: / { unit = $3 }
     /^SKIP +:/ { sub(/\(.*/, ""); parts = split($3, part, "::"); print unit "/" part[parts] }' "$log" | sort -u |
    while read -r name; do
        grep -qF "  $name: " build/windows/not-run.txt || {
            say "left out, but not in the list: $name"
            exit 1
        }
    done
