#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# compile_commands.sh [--joined] BUILD FOLDER...: prints the compiler commands of a build tree for the sources in
# these folders. Each source has one line, which ends with its name, even if the build joins it with others; with
# --joined, each group of sources has one line. The commands use no precompiled headers.
set -euo pipefail

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
joined=no
if [[ $1 == --joined ]]; then
    joined=yes
    shift
fi
build=$1
shift
folders=()
for folder in "$@"; do
    folders+=(-e " -c $root/($folder/|$build/$folder/(.*/)?CMakeFiles/)")
done

sed -nE 's/^ *"command": "(.*)",?$/\1/p' "$build/compile_commands.json" | sed 's/\\\(.\)/\1/g' |
    while read -r command; do
        prefix=${command% *}
        source=${command##* }
        if [[ $source == */Unity/unity_* && $joined == no ]]; then
            sed -nE 's/^#include "(.*)"$/\1/p' "$source"
        else
            echo "$source"
        fi | sed "s|^|$(sed -E 's| -o [^ ]+||; s| -Winvalid-pch -include [^ ]+||; s/[&|\\]/\\&/g' <<<"$prefix") |"
    done |
    grep -E "${folders[@]}" | awk '!seen[$NF]++'
