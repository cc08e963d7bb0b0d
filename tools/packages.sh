#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# packages.sh PURPOSE...: installs the Debian packages for these purposes that are missing, which needs root or sudo.
# packages.sh --list: prints all of them.
set -euo pipefail
source "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/common.sh"

# Every Debian package that the project uses: purpose, package, reason. Nothing else is installed.
packages() {
    cat <<'LIST'
build       g++                         C++17 compiler
build       cmake                       build system, 3.25 or later
build       ninja-build                 the generator that the presets use
build       qtbase5-dev                 Qt 5.15: Core, Gui, Widgets, Network, Test
build       qtbase5-dev-tools           Qt's moc and rcc
build       libcli11-dev                command-line parser of the tool
build       nlohmann-json3-dev          bench files of the simulator
build       zlib1g-dev                  long pages of the simulated web interface
build       libqwt-qt5-dev              plots of the explorer: Qwt 6.1
build       libqt5svg5-dev              the explorer exports plots as SVG
build       qttools5-dev-tools          Qt's lrelease: translations of the explorer
test        python3-numpy               reads the recordings in .npy that the tests write
test        python3-jsonschema          checks bench files by their schema
bench       libbenchmark-dev            Google Benchmark
browser     chromium                    browser of the tunnel's tests
browser     nodejs                      runs these tests
browser     npm                         fetches what drives the browser
fuzz        clang                       compiler with a fuzzer
fuzz        libclang-rt-14-dev          the fuzzer's and the sanitizers' runtime
windows     xz-utils                    unpacks Qt for Windows
windows     g++-mingw-w64-x86-64-posix  compiler for 64-bit Windows
windows     libz-mingw-w64-dev          zlib for it
windows     llvm                        import libraries for Microsoft's linker
windows     wine64                      runs the programs for Windows
windows     fonts-dejavu-core           texts in the windows of these programs
windows-qt  make                        builds Qt where none for Windows is at hand
windows-qt  perl                        used by its build
windows-qt  python3                     used by its build
ci          clang-format                formatting check
ci          clang-tidy                  static analysis
ci          clang                       second opinion on the code for Windows
LIST
}

# missing <purpose>...: the packages for these purposes that are not installed.
missing() {
    local purpose package _
    packages | while read -r purpose package _; do
        [[ " $* " == *" $purpose "* ]] || continue
        [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) != installed ]] || continue
        # A nodejs package from another source contains both and conflicts with Debian's packages.
        [[ $package =~ ^(nodejs|npm)$ ]] && command -v "$package" >/dev/null && continue
        echo "$package"
    done
}

# as_root <command>...: asks for a password only on a terminal; otherwise it fails if sudo needs one.
as_root() {
    if [[ $EUID -eq 0 ]]; then
        "$@"
    elif command -v sudo >/dev/null && { [[ -t 0 ]] || sudo -n true 2>/dev/null; }; then
        sudo "$@"
    else
        return 77
    fi
}

if [[ ${1:-} == --list ]]; then
    packages
    exit
fi
if ! command -v dpkg-query >/dev/null; then
    say "this is no Debian system; install the counterparts of these packages yourself:" \
        "$(packages | awk '{ printf "%s ", $2 }')"
    exit
fi
mapfile -t names < <(missing "$@")
[[ ${#names[@]} -gt 0 ]] || exit 0
say "installing ${names[*]}"
if ! as_root apt-get update -q >&2 || ! as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -q -y --no-install-recommends "${names[@]}" >&2; then
    say "these packages are missing and could not be installed here: ${names[*]}"
    say "install them with: sudo apt-get update && sudo apt-get install ${names[*]}"
    exit 1
fi
