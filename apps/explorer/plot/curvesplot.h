// SPDX-License-Identifier: MIT
#pragma once

#include "baseplot.h"

#include <QColor>
#include <QVector>
#include <QWidget>

#include <memory>
#include <vector>

class QComboBox;
class QLabel;
class QwtPlotCurve;
class QwtPlotGrid;

namespace Explorer {

/// A small plot of something that was calculated from the visible part of a history, with a choice of the signal.
class CurvesPlot : public QWidget
{
    Q_OBJECT
public:
    enum Shape {
        Classes,    ///< a histogram: each point is the lower end of a class, the last point ends the last class
        Amplitudes, ///< a spectrum: a line over a logarithmic axis
    };
    struct Curve
    {
        QColor colour;
        QVector<QPointF> points;
    };

    CurvesPlot(Shape shape, const QString &name, QWidget *parent = nullptr);
    ~CurvesPlot() override;

    /// The signals to choose from. A spectrum has the choice of all as well.
    void setSignals(const QVector<int> &numbers, const QStringList &names);
    /// The signal that was chosen; -1: all of them.
    int chosen() const;
    void setCurves(const QVector<Curve> &curves);
    void setAxisTitles(const QString &horizontal, const QString &vertical);
    /// A remark under the plot, or the reason why there is no curve.
    void setNote(const QString &note);
    QString note() const;
    BasePlot *plot() const { return m_plot; }

Q_SIGNALS:
    void chosenChanged();

protected:
    void changeEvent(QEvent *event) override;

private:
    void setColours();

    Shape m_shape;
    QComboBox *m_choice;
    BasePlot *m_plot;
    QLabel *m_note;
    std::unique_ptr<QwtPlotGrid> m_grid;
    std::vector<std::unique_ptr<QwtPlotCurve>> m_curves;
    QVector<int> m_numbers;
};

} // namespace Explorer
