#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# prepare_windows.sh: provides the packages and the Qt that the preset "windows" needs. Qt comes from
# $SONDIXQT_WINDOWS_QT, a folder or a tarball of an installed Qt. If that is not set, it comes from the tarball
# below; if that does not exist, Qt is built.
set -euo pipefail
source "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/common.sh"

# The only file outside the project that is used although the user has not named it.
fallback=../shared/qt5-win64/qt5-win64.tar.xz

given=${SONDIXQT_WINDOWS_QT:-$fallback}
qt=build/qt5-win64
ensure_packages build windows

if [[ -e $qt/bin/Qt5Core.dll && -e $qt.origin ]]; then
    [[ $given != "$(cat "$qt.origin")" ]] || exit 0
    say "Qt for Windows comes from $(cat "$qt.origin"); for another one begin with ./run clean"
    [[ -z ${SONDIXQT_WINDOWS_QT:-} ]] || exit 1
    exit 0
fi

rm -rf "$qt"
mkdir -p build
if [[ -d $given ]]; then
    ln -s "$(realpath "$given")" "$qt"
elif [[ -f $given ]]; then
    [[ -n ${SONDIXQT_WINDOWS_QT:-} ]] || say "SONDIXQT_WINDOWS_QT is not set: taking Qt for Windows from $given"
    rm -rf "$qt.new"
    mkdir "$qt.new"
    tar -C "$qt.new" --strip-components=1 -xf "$given"
    mv "$qt.new" "$qt"
elif [[ -n ${SONDIXQT_WINDOWS_QT:-} ]]; then
    say "SONDIXQT_WINDOWS_QT leads nowhere: $given"
    exit 1
else
    ensure_packages windows-qt
    given=tools/build_windows_qt.sh
    say "building Qt for Windows, which takes half an hour"
    bash "$given" "$qt" >build/qt5-win64.log 2>&1 || {
        tail -n 50 build/qt5-win64.log >&2
        exit 1
    }
fi
echo "$given" >"$qt.origin"
