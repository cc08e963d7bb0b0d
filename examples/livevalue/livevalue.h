// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/SensorReader>

#include <QLabel>

/// Shows the latest value of one signal with its unit, disabled (grey) while no values arrive.
class LiveValue : public QLabel
{
public:
    /// \a reader must live longer than the widget. \a signal is the index in TransmittedDataInfo::signals.
    explicit LiveValue(SondixQt::SensorReader &reader, int signal = 0, QWidget *parent = nullptr);

private:
    void showBlock(const SondixQt::DataBlock &block);
    void showFrame(const SondixQt::TransmittedDataInfo &frame);

    const int m_signal;
    QString m_unit;
};
