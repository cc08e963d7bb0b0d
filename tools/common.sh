# SPDX-License-Identifier: MIT
# Read by run and the scripts in this folder: where the project is, messages, packages.

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
cd "$root"

say() { printf '%s\n' "run: $*" >&2; }

ensure_packages() { "$root/tools/packages.sh" "$@"; }
