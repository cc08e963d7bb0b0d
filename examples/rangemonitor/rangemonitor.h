// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/SensorReader>

#include <QObject>

/// Raises an alarm when a signal leaves its range, has no measured value, or when the sensor is gone.
class RangeMonitor : public QObject
{
    Q_OBJECT
public:
    enum Alarm { None, OutOfRange, NoValue, SensorGone };
    Q_ENUM(Alarm)

    /// \a reader must live longer than the monitor.
    RangeMonitor(SondixQt::SensorReader &reader, double minimum, double maximum, QObject *parent = nullptr);

    Alarm alarm() const { return m_alarm; }

Q_SIGNALS:
    void alarmChanged(RangeMonitor::Alarm alarm);

private:
    void check(const SondixQt::DataBlock &block);
    void follow(SondixQt::SensorReader::State state);
    void setAlarm(Alarm alarm);

    const double m_minimum;
    const double m_maximum;
    Alarm m_alarm = None;
};
