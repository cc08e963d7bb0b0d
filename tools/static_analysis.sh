#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# static_analysis.sh BUILD: runs clang-tidy on the sources of the library, the simulator and the applications, with
# the commands of a build tree. Most of the time is spent in headers, so sources with the same flags are joined and
# analysed together. Those whose names clash with others are joined in a group of their own.
set -euo pipefail

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
build=$1
work=$root/build/static_analysis
rm -rf "$work"
mkdir -p "$work"

# What joined sources may do: Qt 5 writes keys with modifiers as sums, and a name hides one of a source before it.
tolerated='-Wno-gnu-zero-variadic-macro-arguments -Wno-enum-enum-conversion -Wno-shadow'

# analyse <name> <compiler flags> <source>...
analyse() {
    local name=$1 given=$2 flags="$2 $tolerated"
    shift 2
    local joined=$work/$name.cpp sources=("$@") clashing=() count line
    while true; do
        # This check warns of the inclusion of .cpp files, which is intended here.
        printf '#include "%s" // NOLINT(bugprone-suspicious-include)\n' "${sources[@]}" >"$joined"
        [[ ${#sources[@]} -gt 1 ]] || break
        bash -c "clang++ $flags -ferror-limit=0 -fsyntax-only '$joined'" 2>"$joined.log" && break
        count=${#sources[@]}
        for line in $(sed -nE "s|^In file included from $joined:([0-9]+):$|\1|p" "$joined.log" | sort -urn); do
            [[ $line -gt 1 ]] || continue
            clashing+=("${sources[line - 1]}")
            unset "sources[line - 1]"
        done
        sources=("${sources[@]}") # numbered anew
        [[ ${#sources[@]} -lt $count ]] || { clashing+=("${sources[@]:1}") && sources=("${sources[0]}"); }
    done
    printf '%s\n' "${sources[@]#"$root"/}" >>"$work/analysed"
    bash -c "clang-tidy --quiet --config-file='$root/.clang-tidy' --header-filter='^$root/(src|simulator|apps)/' '$joined' -- $flags"
    [[ ${#clashing[@]} -eq 0 ]] || analyse "${name}_clashing" "$given" "${clashing[@]}"
}
export -f analyse
export root work tolerated

number=0
"$root/tools/compile_commands.sh" "$build" src simulator apps | sort >"$work/commands"
sed -E 's/ -c [^ ]+$//; s/^[^ ]+ //' "$work/commands" | sort -u | while read -r flags; do
    number=$((number + 1)) part=0
    # Groups of a size that gives all cores work, and whose sources take longer than their headers.
    # The flags of one target can be the end of those of another.
    FLAGS=" $flags -c " awk 'index(substr($0, index($0, " ")), ENVIRON["FLAGS"]) == 1 { print $NF }' "$work/commands" |
        xargs -n 60 | while read -r sources; do
        part=$((part + 1))
        printf '%s_%s\t%s\t%s\n' "$number" "$part" "$flags" "$sources"
    done
done >"$work/groups"
[[ -s $work/groups ]] || { echo "the build has no commands"; exit 1; }

tr '\n' '\0' <"$work/groups" | xargs -0 -n 1 -P "$(nproc)" bash -c '
    set -euo pipefail
    IFS=$'"'\t'"' read -r name flags sources <<<"$0"
    analyse "$name" "$flags" $sources'

analysed=$(sort -u "$work/analysed" | wc -l)
echo "$analysed files analysed"
[[ $analysed -eq $(wc -l <"$work/commands") ]] || { echo "some were left out"; exit 1; }
