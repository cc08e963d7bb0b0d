// SPDX-License-Identifier: MIT
import { chromium } from 'playwright-core';

/// Starts a browser with a fresh profile that connects to this computer only. All \a foreignHosts resolve to it.
export function launchBrowser(foreignHosts = []) {
    const args = [
        '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--no-proxy-server',
        '--disable-background-networking', '--disable-component-update', '--disable-sync',
        '--disable-features=HttpsUpgrades,HttpsFirstBalancedMode',
    ];
    if (foreignHosts.length > 0)
        args.push(`--host-resolver-rules=${foreignHosts.map(host => `MAP ${host} 127.0.0.1`).join(', ')}`);
    return chromium.launch({ executablePath: process.env.SONDIXQT_CHROMIUM, args });
}
