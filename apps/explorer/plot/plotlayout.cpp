// SPDX-License-Identifier: MIT
// The header of Qwt's layout initialises flags with 0, which Qt calls deprecated: it needs a source of its own, in which
// what is deprecated is available.
#undef QT_DISABLE_DEPRECATED_BEFORE
#include "plotlayout.h"

#include <qwt_plot.h>
#include <qwt_plot_layout.h>

namespace Explorer {

void alignCanvas(QwtPlot &plot)
{
    plot.plotLayout()->setAlignCanvasToScales(true);
    plot.plotLayout()->setSpacing(2);
}

} // namespace Explorer
