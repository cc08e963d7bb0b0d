#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# windows_warnings.sh: the commands of the build for Windows, read by a second compiler, source by source. What it calls
# an extension of GNU is none of Microsoft's. The one it is told to accept is how Qt's logging is written everywhere.
set -euo pipefail
source "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/common.sh"

headers=$(x86_64-w64-mingw32-g++-posix -print-file-name=include/c++)
clang="clang++ --target=x86_64-w64-windows-gnu -fsyntax-only"
clang+=" -stdlib++-isystem $headers -cxx-isystem $headers/x86_64-w64-mingw32"
warnings="-Wgnu -Wmicrosoft -Wno-gnu-zero-variadic-macro-arguments"
commands=build/windows/second_compiler
tools/compile_commands.sh build/windows src simulator apps |
    sed -E "s|^[^ ]+|$clang|; s| -fno-keep-inline-dllexport||; s|$| $warnings|" >"$commands"
[[ -s $commands ]] || { echo "the build has no commands"; exit 1; }
tr '\n' '\0' <"$commands" | xargs -0 -n 1 -P "$(nproc)" bash -c
