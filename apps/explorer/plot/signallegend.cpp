// SPDX-License-Identifier: MIT
#include "signallegend.h"

#include "flowlayout.h"
#include "timeplot.h"

#include <QEvent>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QToolButton>

namespace Explorer {

SignalLegend::SignalLegend(TimePlot *plot, QWidget *parent)
    : QWidget(parent)
    , m_plot(plot)
{
    setObjectName(QStringLiteral("signalLegend"));
    setAccessibleName(tr("Signals"));
    auto *layout = new FlowLayout(this);
    layout->setContentsMargins(4, 2, 4, 2);
    layout->setSpacing(2);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    connect(plot, &TimePlot::signalsChanged, this, &SignalLegend::rebuild);
    connect(plot, &TimePlot::shownChanged, this, [this](int signal) { describe(signal); });
    connect(plot, &TimePlot::axesChanged, this, &SignalLegend::describeAll);
    rebuild();
}

void SignalLegend::rebuild()
{
    qDeleteAll(m_buttons);
    m_buttons.clear();
    for (int signal = 0; signal < m_plot->signalCount(); ++signal) {
        auto *button = new QToolButton(this);
        button->setObjectName(QStringLiteral("signal%1").arg(signal));
        button->setCheckable(true);
        button->setAutoRaise(true);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setFocusPolicy(Qt::StrongFocus);
        connect(button, &QToolButton::toggled, this,
                [this, signal](bool checked) { m_plot->setShown(signal, checked); });
        m_buttons.append(button);
        describe(signal);
        layout()->addWidget(button);
        button->show();
    }
    setVisible(!m_buttons.isEmpty());
    updateGeometry();
}

void SignalLegend::describe(int signal)
{
    QToolButton *button = m_buttons.value(signal);
    if (!button)
        return;
    const bool shown = m_plot->isShown(signal);
    const QString unit = m_plot->unitOf(signal);
    const bool isRight = m_plot->axisOf(signal) == QwtPlot::yRight;
    QString name = m_plot->nameOf(signal);
    const QString text = unit.isEmpty() ? name : tr("%1 [%2]").arg(name, unit);
    // In narrow pages there is no room for words. An ampersand would become a mnemonic.
    button->setText(QString(text).replace(QLatin1Char('&'), QLatin1String("&&")) +
                    (isRight ? QStringLiteral(" \u2192") : QString()));
    button->setIcon(iconOf(signal));
    button->setChecked(shown);
    button->setAccessibleName(isRight ? tr("%1, right axis").arg(text) : text);
    if (isRight)
        name = tr("%1, right axis").arg(name);
    button->setToolTip(shown ? tr("Hide %1").arg(name) : tr("Show %1").arg(name));
}

// Shown and hidden differ in more than the colour.
QIcon SignalLegend::iconOf(int signal) const
{
    constexpr int size = 14;
    const qreal ratio = devicePixelRatioF();
    QPixmap pixmap(QSize(size, size) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    const QColor colour = m_plot->colourOf(signal);
    painter.setPen(QPen(colour, 1.0));
    if (m_plot->isShown(signal))
        painter.setBrush(colour);
    painter.drawRect(QRectF(1.5, 1.5, size - 4, size - 4));
    return pixmap;
}

void SignalLegend::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        describeAll();
}

void SignalLegend::describeAll()
{
    for (int signal = 0; signal < m_buttons.size(); ++signal)
        describe(signal);
}

} // namespace Explorer
