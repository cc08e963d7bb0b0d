#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# static_analysis.sh BUILD: runs clang-tidy on the sources of the library, the simulator and the applications, with
# the commands of a build tree. Most of the time is spent in headers, so sources with the same flags are joined and
# analysed together. A group that does not compile without warnings, because names clash, is divided.
set -euo pipefail

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
build=$1
work=$root/build/static_analysis
rm -rf "$work"
mkdir -p "$work"

# analyse <name> <compiler flags> <source>...
analyse() {
    local name=$1 flags=$2
    shift 2
    local joined=$work/$name.cpp
    # This check warns of the inclusion of .cpp files, which is intended here.
    printf '#include "%s" // NOLINT(bugprone-suspicious-include)\n' "$@" >"$joined"
    local check="clang++ $flags -Wno-gnu-zero-variadic-macro-arguments -fsyntax-only '$joined'"
    if [[ $# -gt 1 ]] && ! bash -c "$check" 2>/dev/null; then
        analyse "${name}a" "$flags" "${@:1:$#/2}"
        analyse "${name}b" "$flags" "${@:$#/2+1}"
        return
    fi
    printf '%s\n' "${@#"$root"/}" >>"$work/analysed"
    bash -c "clang-tidy --quiet --config-file='$root/.clang-tidy' --header-filter='^$root/(src|simulator|apps)/' '$joined' -- $flags"
}
export -f analyse
export root work

number=0
"$root/tools/compile_commands.sh" "$build" src simulator apps | sort >"$work/commands"
sed -E 's/ -c [^ ]+$//; s/^[^ ]+ //' "$work/commands" | sort -u | while read -r flags; do
    number=$((number + 1)) part=0
    # Groups of a size that gives all cores work.
    grep -F -- " $flags -c " "$work/commands" | sed 's/.* //' | xargs -n 24 | while read -r sources; do
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
