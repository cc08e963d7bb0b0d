// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVector>

#include <functional>

class QThread;

namespace Explorer {

/// A sensor on the simulated bench.
struct BenchSensor
{
    QString serialNumber;
    QString model;
    QString place;
    bool isPlugged = true;
    bool isOpen = false;
    bool isSilent = false;
};

/// A fault that is in effect on the bench.
struct BenchFault
{
    int number = 0;
    QString description; ///< such as "Get_Info of 1018001: -321 Broken"
};

/// The control functions of the bench simulator, if the sensor-access library that is loaded is the simulator. The sensor
/// maker's library has none.
///
/// Requests are carried out in a thread, because the simulator may wait for a command that a sensor is executing.
/// Threads: that of the window.
class BenchControl : public QObject
{
    Q_OBJECT
public:
    explicit BenchControl(QObject *parent = nullptr);
    ~BenchControl() override;

    /// Whether the library is the simulator.
    bool isAvailable() const;

    /// Called with the answer, or with the reason of a failure in "error". Not called if its context was destroyed.
    using Callback = std::function<void(const QJsonObject &answer)>;
    /// Sends a request, see controlcall.h of the simulator.
    void send(const QJsonObject &request, QObject *context, const Callback &callback);

    void load(const QString &file, QObject *context, const Callback &callback);
    void setPlugged(const QString &serialNumber, bool isPlugged, QObject *context, const Callback &callback);
    void setSilent(const QString &serialNumber, bool isSilent, QObject *context, const Callback &callback);
    void trigger(const QString &serialNumber, QObject *context, const Callback &callback);

    static QVector<BenchSensor> sensors(const QJsonObject &answer);
    static QVector<BenchFault> faults(const QJsonObject &answer);
    static QString error(const QJsonObject &answer);

private:
    QThread *m_thread = nullptr;
    QObject *m_worker = nullptr; // lives in the thread
};

} // namespace Explorer
