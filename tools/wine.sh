#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# wine.sh PREFIX PROGRAM [ARGUMENT ...]: runs a program for Windows under Wine without a display and ends
# with its exit code. PREFIX is the folder that Wine lives in; it is made when it is not there.
set -euo pipefail

mkdir -p "$1"
prefix=$(cd "$1" && pwd)
shift

# first_of <program>...: the first of them that there is. Debian keeps Wine's out of the path.
first_of() {
    local program
    for program in "$@"; do
        command -v "$program" && return 0
    done
    echo "wine.sh: Wine is not installed" >&2
    exit 127
}
wine=$(first_of wine64 /usr/lib/wine/wine64 wine)
server=$(first_of wineserver /usr/lib/wine/wineserver64 /usr/lib/wine/wineserver)

# File names are UTF-8; nothing asks for components that are not there.
export WINEPREFIX=$prefix WINEDEBUG=${WINEDEBUG:--all} LC_ALL=C.UTF-8
export WINEDLLOVERRIDES="winemenubuilder.exe,mscoree,mshtml=d"

# Wine hides variables of the building machine's Qt from its programs, unless their name begins so. Without
# the second one Qt tells a redirected program's messages, Qt Test's report among them, to a debugger only.
export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} QT_FORCE_STDERR_LOGGING=1
for name in "${!QT_@}"; do
    export "WINE$name=${!name}"
done

# One server over a run of tests, started by whoever comes first: starting costs seconds.
exec 9>"$prefix.lock"
flock 9
if [[ ! -e $prefix/ready ]]; then
    "$wine" wineboot --init >"$prefix.log" 2>&1 9>&- || {
        echo "wine.sh: Wine cannot set up $prefix, see $prefix.log" >&2
        exit 1
    }
    touch "$prefix/ready"
fi
"$server" -p120 >/dev/null 2>&1 9>&- || true
exec 9>&-

# Wine's own services, which a program may start, keep what it writes to open long after its end; so that is
# a file and no pipe that somebody reads to its end.
output=$(mktemp)
trap 'rm -f "$output"' EXIT
run() {
    "$wine" "$@" </dev/null >"$output" 2>&1 &
    local program=$!
    tail -n +1 -s 0.1 -f --pid="$program" "$output"
    wait "$program"
}

# A program for Windows that crashes ends with a code of its own. Only Wine dies of a signal: now and then, while it
# ends a program whose thread has just ended.
died=$((128 + $(kill -l SEGV)))
for tries in 1 2 3; do
    status=0
    run "$@" || status=$?
    [[ $status -eq $died ]] || break
    echo "wine.sh: Wine died of a signal, try $tries of 3" >&2
done
exit "$status"
