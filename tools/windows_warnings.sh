#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# windows_warnings.sh: checks the sources with clang, with the commands of the build for Windows. It warns of GNU
# extensions, which Microsoft's compiler does not have, except the one that Qt's logging macros need everywhere. Qt 5
# writes keys with modifiers as sums of different enumerations. Where sources are joined, a name may hide one of another.
set -euo pipefail
source "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/common.sh"

headers=$(x86_64-w64-mingw32-g++-posix -print-file-name=include/c++)
clang="clang++ --target=x86_64-w64-windows-gnu -fsyntax-only"
clang+=" -stdlib++-isystem $headers -cxx-isystem $headers/x86_64-w64-mingw32"
warnings="-Wgnu -Wmicrosoft -Wno-gnu-zero-variadic-macro-arguments -Wno-enum-enum-conversion -Wno-shadow"
commands=build/windows/second_compiler
# Most of the time is spent in headers, so the sources that the build joins are checked together.
tools/compile_commands.sh --joined build/windows src simulator apps |
    sed -E "s|^[^ ]+|$clang|; s| -fno-keep-inline-dllexport||; s|$| $warnings|" >"$commands"
[[ -s $commands ]] || { echo "the build has no commands"; exit 1; }
tr '\n' '\0' <"$commands" | xargs -0 -n 1 -P "$(nproc)" bash -c
