// SPDX-License-Identifier: MIT
#include "rangemonitor.h"

#include <SondixQt/SondixQt>

using namespace SondixQt;

RangeMonitor::RangeMonitor(SensorReader &reader, double minimum, double maximum, QObject *parent)
    : QObject(parent)
    , m_minimum(minimum)
    , m_maximum(maximum)
{
    connect(&reader, &SensorReader::blockReady, this, &RangeMonitor::check);
    connect(&reader, &SensorReader::stateChanged, this, &RangeMonitor::follow);
}

void RangeMonitor::check(const DataBlock &block)
{
    for (int frame = 0; frame < block.frameCount(); ++frame) {
        const double value = block.scaled(frame, 0);
        if (isErrorValue(value))
            setAlarm(NoValue);
        else
            setAlarm(value < m_minimum || value > m_maximum ? OutOfRange : None);
    }
}

void RangeMonitor::follow(SensorReader::State state)
{
    if (state == SensorReader::Reconnecting || state == SensorReader::Failed)
        setAlarm(SensorGone);
}

void RangeMonitor::setAlarm(Alarm alarm)
{
    if (m_alarm == alarm)
        return;
    m_alarm = alarm;
    Q_EMIT alarmChanged(alarm);
}
