#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_left_out.sh: after a run of the tests for Windows, checks that what skipped itself stands in the list of what is
# left out, and says how often Wine died under a program, which was then run again.
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
