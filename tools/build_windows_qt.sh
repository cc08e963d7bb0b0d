#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# build_windows_qt.sh PREFIX [WORKFOLDER]: cross-builds Qt 5.15 for 64-bit Windows (Core, Gui, Widgets, Network,
# Test) from Debian's source package into PREFIX. Takes half an hour on two cores and 4 GB of disk. Intermediate files
# stay in WORKFOLDER (default: PREFIX-build), so that an interrupted run can continue.
set -euo pipefail

prefix=$(realpath -m "${1:?usage: build_windows_qt.sh PREFIX [WORKFOLDER]}")
work=$(realpath -m "${2:-$prefix-build}")
jobs=$(nproc)
mkdir -p "$work"
cd "$work"

# Debian's mirrors have the source packages, but apt only looks for them if deb-src entries are configured. Use a copy
# of the list with such entries, in the work folder.
fetch_source() {
    local lists=$work/apt
    mkdir -p "$lists/state/partial"
    cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null |
        sed -nE 's/^deb(-src)?( |\t)/deb-src /p' | sort -u >"$lists/one-line"
    local file
    for file in /etc/apt/sources.list.d/*.sources; do
        [[ ! -f $file ]] || sed -E 's/^Types:.*/Types: deb-src/' "$file" >"$lists/${file##*/}"
    done
    local options=(-o Dir::Etc::sourcelist="$lists/one-line" -o Dir::Etc::sourceparts="$lists"
        -o Dir::State::lists="$lists/state")
    apt-get "${options[@]}" update || true
    apt-get "${options[@]}" source --download-only qtbase-opensource-src
}

# The names without a thread model are alternatives that can be configured; make them mean the posix model.
mkdir -p "$work/compiler"
for tool in gcc g++; do
    ln -sf "$(command -v "x86_64-w64-mingw32-$tool-posix")" "$work/compiler/x86_64-w64-mingw32-$tool"
done
export PATH=$work/compiler:$PATH

if [[ ! -f configured ]]; then
    fetch_source || {
        echo "build_windows_qt.sh: the source package qtbase-opensource-src could not be fetched" >&2
        exit 1
    }
    rm -rf source build
    mkdir source build
    tar -C source --strip-components=1 -xf qtbase-opensource-src_*.orig.tar.xz
    # No tablet events: the source package lacks the headers that the platform plug-in needs for them.
    options=(-opensource -confirm-license -release -shared -prefix "$prefix"
        -xplatform win32-g++ -device-option CROSS_COMPILE=x86_64-w64-mingw32-
        -nomake examples -nomake tests -nomake tools -no-pch
        -no-opengl -no-openssl -no-dbus -no-icu -no-sql-sqlite -no-sql-odbc -no-libjpeg
        -no-feature-sql -no-feature-concurrent -no-feature-tabletevent
        -qt-zlib -qt-pcre -qt-libpng -qt-freetype -qt-harfbuzz)
    (cd build && ../source/configure "${options[@]}")
    touch configured
fi

make -C build -j"$jobs"
# With -j, because the installation compiles files as well.
make -C build -j"$jobs" install

# Remove files that are not needed, and a plug-in that is incomplete.
rm -rf "$prefix/doc" "$prefix"/lib/libQt5Bootstrap* "$prefix/plugins/platforms/qdirect2d.dll" \
    "$prefix/lib/cmake/Qt5Gui/Qt5Gui_QWindowsDirect2DIntegrationPlugin.cmake"
x86_64-w64-mingw32-strip "$prefix"/bin/*.dll "$prefix"/plugins/*/*.dll
mkdir -p "$prefix/licenses"
cp source/LICENSE.* "$prefix/licenses/"
