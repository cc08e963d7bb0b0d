// SPDX-License-Identifier: MIT
#pragma once

#include <qwt_plot.h>

namespace Explorer {

/// What all plots of the explorer have in common: the font of the application, no frame, numbers as the locale writes
/// them, and as many labels on each axis as fit beside each other.
class BasePlot : public QwtPlot
{
    Q_OBJECT
public:
    explicit BasePlot(QWidget *parent = nullptr);

    /// Sets the title of an axis in the font of the plot.
    void setTitleOf(int axis, const QString &text);

    void replot() override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void fitLabels(int axis);
    bool haveLabelsRoom(int axis) const;
};

} // namespace Explorer
