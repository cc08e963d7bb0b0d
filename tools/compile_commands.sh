#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# compile_commands.sh BUILD FOLDER...: prints the command that compiles each source of these folders in a build tree,
# a line each, with the source at its end. Each source appears once, without precompiled headers, although the build may
# join it with others.
set -euo pipefail

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
build=$1
shift
folders=()
for folder in "$@"; do
    folders+=(-e " -c $root/$folder/")
done

sed -nE 's/^ *"command": "(.*)",?$/\1/p' "$build/compile_commands.json" | sed 's/\\\(.\)/\1/g' |
    while read -r command; do
        prefix=${command% *}
        source=${command##* }
        if [[ $source == */Unity/unity_* ]]; then
            sed -nE 's/^#include "(.*)"$/\1/p' "$source"
        else
            echo "$source"
        fi | sed "s|^|$(sed -E 's| -o [^ ]+||; s| -Winvalid-pch -include [^ ]+||; s/[&|\\]/\\&/g' <<<"$prefix") |"
    done |
    grep -F "${folders[@]}" | awk '!seen[$NF]++'
