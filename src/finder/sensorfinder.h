// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorinfo.h>
#include <SondixQt/sensortypes.h>

#include <QList>
#include <QObject>
#include <QScopedPointer>

namespace SondixQt {

class SensorFinderPrivate;

/// Searches the selected connection interfaces for sensors and announces each one as it is found.
///
/// Everything runs on the thread that owns the finder, driven by a 250 ms timer: that thread needs
/// a running event loop. The slots may be queued from other threads with QMetaObject::invokeMethod.
class SONDIXQT_EXPORT SensorFinder : public QObject
{
    Q_OBJECT
public:
    enum Status : qint32 {
        Ready = 0,
        Searching = 1,
        Error = 2,
    };
    Q_ENUM(Status)

    explicit SensorFinder(QObject *parent = nullptr);
    ~SensorFinder() override;

    void setSearchInterface(SondixQt::SensorInterfaces interfaces, bool enable);
    void setSearchBaudrates(const QString &baudrates);
    void setQuickScanRS485(bool enable);
    bool quickScanRS485() const;
    bool quickScanRS485Supported(SondixQt::SensorType type) const;
    void setSearchSimilarSensors(bool enable);
    bool searchSimilarSensors() const;
    void setForceScanXA200ETH(bool enable);
    void setSensorType(SondixQt::SensorType type);
    void setOutputFoundSensorBlacklist(const QList<SondixQt::SensorInfo> &blacklist);
    void enableLogging();
    void enableLogging(const QString &file);
    void disableLogging();
    Status status() const;

    void startSearch(SondixQt::SensorGroups groups);

    static bool isParamEqual(const SensorInfo &a, const SensorInfo &b, const QString &name);

public Q_SLOTS:
    void startSearch(SondixQt::SensorType sensorType);
    void startSearch(QList<SondixQt::SensorType> sensorTypeList, bool showSondixQtType);
    void stopSearch();
    void stopSensorFinderScan();

Q_SIGNALS:
    void searchStarted();
    void searchFinished();
    void sensorFound(const SondixQt::SensorInfo &resultInfo);
    void progressChanged(int progress);
    void statusChanged(SondixQt::SensorFinder::Status status);
    void showNothingFoundMsg();
    void updateSensorFinderStatus(QString sensorFinderStatus);

private:
    Q_DECLARE_PRIVATE(SensorFinder)
    QScopedPointer<SensorFinderPrivate> d_ptr;
};

} // namespace SondixQt
