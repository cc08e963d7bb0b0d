#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# wine.sh PREFIX PROGRAM [ARGUMENT ...]: runs a Windows program under Wine without a display and returns its exit
# code. PREFIX is the Wine prefix; it is created if it does not exist.
set -euo pipefail

mkdir -p "$1"
prefix=$(cd "$1" && pwd)
shift

# first_of <program>...: prints the first one that is installed. Debian does not put all of Wine's into PATH.
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

# File names are UTF-8. Without the overrides Wine would ask to install missing components.
export WINEPREFIX=$prefix WINEDEBUG=${WINEDEBUG:--all} LC_ALL=C.UTF-8
export WINEDLLOVERRIDES="winemenubuilder.exe,mscoree,mshtml=d"

# Wine passes QT_... variables on to its programs only with the prefix WINE. Without QT_FORCE_STDERR_LOGGING Qt sends
# the messages of a redirected program, including the report of Qt Test, to the debugger only.
export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} QT_FORCE_STDERR_LOGGING=1
# Qt's offscreen platform finds no fonts by itself.
fonts=/usr/share/fonts/truetype/dejavu
[[ ! -d $fonts ]] || export QT_QPA_FONTDIR=${QT_QPA_FONTDIR:-Z:$fonts}
for name in "${!QT_@}"; do
    export "WINE$name=${!name}"
done

# Keep one Wine server for a whole run of tests, because its start takes seconds. The first caller starts it.
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

# Wine services that the program starts inherit its output and keep it open long after its end. A pipe would block its
# reader until then, so the output goes to a file.
output=$(mktemp)
trap 'rm -f "$output"' EXIT
run() {
    "$wine" "$@" </dev/null >"$output" 2>&1 &
    local program=$!
    tail -n +1 -s 0.1 -f --pid="$program" "$output"
    wait "$program"
}

# A Windows program that crashes returns an exit code. A signal means that Wine itself has crashed, which sometimes
# happens when a program ends just after one of its threads. An error without any output means in most cases that Wine
# has not started the program; a program that fails in silence fails in the next tries as well.
died=$((128 + $(kill -l SEGV)))
for tries in 1 2 3; do
    status=0
    run "$@" || status=$?
    if [[ $status -eq $died ]]; then
        echo "wine.sh: Wine died of a signal, try $tries of 3" >&2
    elif [[ $status -ne 0 && ! -s $output ]]; then
        echo "wine.sh: exit code $status without any output, try $tries of 3" >&2
    else
        break
    fi
done
exit "$status"
