#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# prepare_windows.sh: provides the packages, the Qt and the Qwt that the preset "windows" needs. Qt and Qwt come from
# $SONDIXQT_WINDOWS_QT and $SONDIXQT_WINDOWS_QWT, a folder or a tarball of an installed one each. If they are not set,
# they come from the tarballs below. If those do not exist, Qt is built, and the explorer is left out without Qwt.
set -euo pipefail
source "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/common.sh"

# The only files outside the project that are used although the user has not named them.
fallback_qt=../shared/qt5-win64/qt5-win64.tar.xz
fallback_qwt=../shared/qwt-win64/qwt-win64.tar.xz

# provide <title> <variable> <fallback> <folder> <file that it contains>: makes build/<folder> a link to the folder, or
# unpacks the tarball, that the variable names. Returns 1 if there is neither that nor the fallback. It is called in a
# condition, where set -e has no effect.
provide() {
    local title=$1 variable=$2 fallback=$3 folder=build/$4 file=$5
    local given=${!variable:-$fallback}
    if [[ -e $folder/$file && -e $folder.origin ]]; then
        [[ $given != "$(cat "$folder.origin")" ]] || return 0
        say "$title for Windows comes from $(cat "$folder.origin"); for another one begin with ./run clean"
        [[ -z ${!variable:-} ]] || exit 1
        return 0
    fi
    rm -rf "$folder"
    mkdir -p build
    if [[ -d $given ]]; then
        ln -s "$(realpath "$given")" "$folder"
    elif [[ -f $given ]]; then
        [[ -n ${!variable:-} ]] || say "$variable is not set: taking $title for Windows from $given"
        rm -rf "$folder.new"
        mkdir "$folder.new"
        tar -C "$folder.new" --strip-components=1 -xf "$given" || exit 1
        mv "$folder.new" "$folder" || exit 1
    elif [[ -n ${!variable:-} ]]; then
        say "$variable leads nowhere: $given"
        exit 1
    else
        return 1
    fi
    echo "$given" >"$folder.origin"
}

build_qt() {
    local script=tools/build_windows_qt.sh qt=build/qt5-win64
    ensure_packages windows-qt
    say "building Qt for Windows, which takes half an hour"
    bash "$script" "$qt" >build/qt5-win64.log 2>&1 || {
        tail -n 50 build/qt5-win64.log >&2
        exit 1
    }
    echo "$script" >"$qt.origin"
}

ensure_packages build windows
provide Qt SONDIXQT_WINDOWS_QT "$fallback_qt" qt5-win64 bin/Qt5Core.dll || build_qt
provide Qwt SONDIXQT_WINDOWS_QWT "$fallback_qwt" qwt-win64 bin/libqwt.dll ||
    say "there is no Qwt for Windows: the explorer is left out"
