// SPDX-License-Identifier: MIT
#pragma once

class QwtPlot;

namespace Explorer {

/// Lets the canvas of \a plot end at its scales, without space between them.
void alignCanvas(QwtPlot &plot);

} // namespace Explorer
