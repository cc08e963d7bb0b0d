// SPDX-License-Identifier: MIT
#pragma once

#include "historycurve.h"

#include <QCoreApplication>
#include <QPalette>

#include <qwt_plot_item.h>

#include <functional>
#include <vector>

namespace Explorer {

/// Shaded bands where frames are missing, with their number.
class GapItem : public QwtPlotItem
{
    Q_DECLARE_TR_FUNCTIONS(Explorer::GapItem)
public:
    GapItem();

    void setGaps(std::vector<GapMark> gaps) { m_gaps = std::move(gaps); }
    const std::vector<GapMark> &gaps() const { return m_gaps; }
    void setPalette(const QPalette &palette) { m_palette = palette; }
    /// The number of missing frames, for example "20 lost".
    static QString brief(const SondixQt::DataGap &gap);
    /// A sentence with the reason.
    static QString sentence(const SondixQt::DataGap &gap);

    int rtti() const override { return QwtPlotItem::Rtti_PlotUserItem; }
    void draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
              const QRectF &canvasRect) const override;

private:
    std::vector<GapMark> m_gaps;
    QPalette m_palette;
};

/// Triangles on the time axis where there are error values, one row per signal.
class ErrorItem : public QwtPlotItem
{
public:
    ErrorItem();

    /// How far a triangle reaches from its position, in pixels.
    static constexpr int size = 4;

    void setMarks(std::vector<ErrorMark> marks) { m_marks = std::move(marks); }
    const std::vector<ErrorMark> &marks() const { return m_marks; }
    void setColours(std::function<QColor(int signal)> colours) { m_colours = std::move(colours); }

    int rtti() const override { return QwtPlotItem::Rtti_PlotUserItem + 1; }
    void draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
              const QRectF &canvasRect) const override;

private:
    std::vector<ErrorMark> m_marks;
    std::function<QColor(int signal)> m_colours;
};

} // namespace Explorer
