// SPDX-License-Identifier: MIT
#pragma once

#include <QVector>
#include <QWidget>

class QToolButton;

namespace Explorer {

class TimePlot;

/// A button per signal, which shows and hides its curve.
class SignalLegend : public QWidget
{
    Q_OBJECT
public:
    explicit SignalLegend(TimePlot *plot, QWidget *parent = nullptr);

    QToolButton *button(int signal) const { return m_buttons.value(signal); }

protected:
    void changeEvent(QEvent *event) override;

private:
    void rebuild();
    void describe(int signal);
    void describeAll();
    QIcon iconOf(int signal) const;

    TimePlot *m_plot;
    QVector<QToolButton *> m_buttons;
};

} // namespace Explorer
