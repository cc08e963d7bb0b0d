// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>

namespace Explorer {

/// What the icons of actions show.
enum class Drawing {
    Search,
    Open,
    Follow,
    Pause,
    Cursors,
    ShowAll,
    View,
    Video,
    Web,
};

/// An icon that is drawn with the colours of the present palette whenever it is shown: on light and dark, in every size.
QIcon drawnIcon(Drawing drawing);

} // namespace Explorer
