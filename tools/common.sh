# SPDX-License-Identifier: MIT
# Sourced by run and the scripts in this folder: changes to the project's folder; messages and packages.

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
cd "$root"

say() { printf '%s\n' "run: $*" >&2; }

ensure_packages() { "$root/tools/packages.sh" "$@"; }
