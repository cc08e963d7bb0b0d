#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# browser_driver.sh: installs Chromium and the npm packages that drive it, in the versions of the tests' lock
# file.
set -euo pipefail
source "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/common.sh"

ensure_packages browser
cd tests/browser
[[ ! node_modules/.package-lock.json -nt package-lock.json ]] || exit 0
say "fetching what drives the browser"
npm ci --ignore-scripts --no-audit --no-fund >&2 || {
    say "it could not be fetched; ./run test runs without it"
    exit 1
}
