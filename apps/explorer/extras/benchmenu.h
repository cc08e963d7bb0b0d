// SPDX-License-Identifier: MIT
#pragma once

#include "benchcontrol.h"

#include <QMenu>

namespace Explorer {

class FaultDialog;

/// The menu of the simulated bench: another bench file, cables, triggers, faults. Only for an available BenchControl.
class BenchMenu : public QMenu
{
    Q_OBJECT
public:
    /// \a control must outlive the menu.
    explicit BenchMenu(BenchControl &control, QWidget *parent = nullptr);

    /// Asks the bench for its sensors and faults and shows them when the answer has come.
    void refresh();

Q_SIGNALS:
    /// Sensors and faults are those of the bench at present.
    void refreshed();
    /// Another bench was loaded: what was found before may be gone.
    void benchLoaded();
    /// For the log. \a isProblem: it is an error.
    void happened(const QString &text, bool isProblem);

private:
    void askForBench();
    void load(const QString &file);
    void fillSensors(const QVector<BenchSensor> &sensors);
    void fillFaults(const QVector<BenchFault> &faults);
    void injectPrepared(const QString &serialNumber, const QString &title, const QJsonObject &fault);
    void askForFault();
    void report(const QJsonObject &answer, const QString &done);

    BenchControl &m_control;
    QMenu *m_cables;
    QMenu *m_silence;
    QMenu *m_triggers;
    QMenu *m_inject;
    QMenu *m_faults;
    QVector<BenchSensor> m_sensors;
};

} // namespace Explorer
