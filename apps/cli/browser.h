// SPDX-License-Identifier: MIT
#pragma once

#include <QUrl>

/// Opens \a url in the user's browser. Returns false if no browser could be started.
bool openBrowser(const QUrl &url);
