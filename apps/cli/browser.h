// SPDX-License-Identifier: MIT
#pragma once

#include <QUrl>

/// Has the user's browser show \a url. False when nothing here could be asked to.
bool openBrowser(const QUrl &url);
