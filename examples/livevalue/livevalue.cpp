// SPDX-License-Identifier: MIT
#include "livevalue.h"

#include <SondixQt/SondixQt>

#include <QLocale>

using namespace SondixQt;

LiveValue::LiveValue(SensorReader &reader, int signal, QWidget *parent)
    : QLabel(QStringLiteral("\u2013"), parent)
    , m_signal(signal)
{
    setAlignment(Qt::AlignCenter);
    QFont large = font();
    large.setPointSize(3 * large.pointSize());
    setFont(large);
    setEnabled(false);
    connect(&reader, &SensorReader::frameChanged, this, &LiveValue::showFrame);
    connect(&reader, &SensorReader::blockReady, this, &LiveValue::showBlock);
    connect(&reader, &SensorReader::stateChanged, this,
            [this](SensorReader::State state) { setEnabled(state == SensorReader::Reading); });
}

void LiveValue::showFrame(const TransmittedDataInfo &frame)
{
    m_unit = frame.signalList().value(m_signal).scaledUnit;
    setText(QStringLiteral("\u2013 ") + m_unit);
}

void LiveValue::showBlock(const DataBlock &block)
{
    if (m_signal >= block.valuesPerFrame())
        return;
    // The eye cannot follow more than the last value of a block.
    const double value = block.scaled(block.frameCount() - 1, m_signal);
    if (isErrorValue(value))
        setText(QStringLiteral("error %1").arg(errorValueKey(value)));
    else
        setText(locale().toString(value, 'f', 3) + QLatin1Char(' ') + m_unit);
}
