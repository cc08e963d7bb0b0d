// SPDX-License-Identifier: MIT
#include "curvesplot.h"

#include "signalcolours.h"

#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_scale_engine.h>

#include <algorithm>

namespace Explorer {

CurvesPlot::CurvesPlot(Shape shape, const QString &name, QWidget *parent)
    : QWidget(parent)
    , m_shape(shape)
    , m_choice(new QComboBox)
    , m_plot(new BasePlot)
    , m_note(new QLabel)
    , m_grid(std::make_unique<QwtPlotGrid>())
{
    setAccessibleName(name);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding); // both plots have the same width
    m_choice->setAccessibleName(tr("Signal of: %1").arg(name));
    constexpr int minCharacters = 6; // longer names are complete in the list
    m_choice->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_choice->setMinimumWidth(minCharacters * fontMetrics().averageCharWidth());
    m_plot->setAccessibleName(name);
    m_plot->setMinimumSize(120, 7 * fontMetrics().height());
    // The axis ends where the curves do, and not at the next label.
    m_plot->axisScaleEngine(QwtPlot::xBottom)->setAttribute(QwtScaleEngine::Floating);
    if (shape == Amplitudes)
        m_plot->setAxisScaleEngine(QwtPlot::yLeft, new QwtLogScaleEngine);
    // Counts and frequencies begin at 0.
    m_plot->axisScaleEngine(shape == Amplitudes ? QwtPlot::xBottom : QwtPlot::yLeft)
        ->setAttribute(QwtScaleEngine::IncludeReference);
    m_grid->attach(m_plot);
    m_note->setWordWrap(true);

    auto *head = new QHBoxLayout;
    head->addWidget(new QLabel(name));
    head->addWidget(m_choice);
    head->addStretch();
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 2, 4, 2);
    layout->addLayout(head);
    layout->addWidget(m_note);
    layout->addWidget(m_plot, 1);
    layout->addStretch();
    connect(m_choice, QOverload<int>::of(&QComboBox::activated), this, &CurvesPlot::chosenChanged);
    setColours();
}

CurvesPlot::~CurvesPlot()
{
    // The items are members and must leave the plot before it goes.
    m_curves.clear();
    m_grid.reset();
}

void CurvesPlot::setSignals(const QVector<int> &numbers, const QStringList &names)
{
    QStringList texts = names;
    QVector<int> all = numbers;
    if (m_shape == Amplitudes && numbers.size() > 1) {
        texts.prepend(tr("All shown signals"));
        all.prepend(-1);
    }
    bool isSame = m_choice->count() == texts.size() && m_numbers == all;
    for (int i = 0; isSame && i < texts.size(); ++i)
        isSame = m_choice->itemText(i) == texts.at(i);
    if (isSame)
        return;
    const int before = chosen();
    m_numbers = all;
    m_choice->clear();
    m_choice->addItems(texts);
    m_choice->setCurrentIndex(std::max(0, all.indexOf(before)));
    m_choice->setVisible(texts.size() > 1);
}

int CurvesPlot::chosen() const
{
    return m_numbers.value(m_choice->currentIndex(), -1);
}

void CurvesPlot::setCurves(const QVector<Curve> &curves)
{
    m_curves.clear();
    for (const Curve &curve : curves) {
        auto item = std::make_unique<QwtPlotCurve>();
        item->setPen(curve.colour, 1.0);
        if (m_shape == Classes) {
            // A step to the left of a point goes on at its height.
            item->setStyle(QwtPlotCurve::Steps);
            item->setCurveAttribute(QwtPlotCurve::Inverted, true);
            QColor fill = curve.colour;
            fill.setAlpha(90);
            item->setBrush(fill);
            item->setBaseline(0.0);
        } else {
            item->setPaintAttribute(QwtPlotCurve::FilterPoints, true);
        }
        item->setRenderHint(QwtPlotItem::RenderAntialiased, false);
        item->setSamples(curve.points);
        item->attach(m_plot);
        m_curves.push_back(std::move(item));
    }
    // Without curves the note has the room to say why.
    m_plot->setVisible(!curves.isEmpty());
    m_plot->replot();
}

void CurvesPlot::setAxisTitles(const QString &horizontal, const QString &vertical)
{
    m_plot->setTitleOf(QwtPlot::xBottom, horizontal);
    m_plot->setTitleOf(QwtPlot::yLeft, vertical);
}

void CurvesPlot::setNote(const QString &note)
{
    m_note->setText(note);
}

QString CurvesPlot::note() const
{
    return m_note->text();
}

void CurvesPlot::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_grid)
        setColours();
}

void CurvesPlot::setColours()
{
    m_plot->setCanvasBackground(palette().brush(QPalette::Base));
    QColor grid = palette().color(QPalette::Text);
    grid.setAlpha(isDark(palette()) ? 40 : 28);
    m_grid->setPen(grid, 1.0);
}

} // namespace Explorer
