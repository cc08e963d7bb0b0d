// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensoraddress.h>
#include <SondixQt/sensorinfo.h>

#include <QAbstractListModel>
#include <QHash>
#include <QPixmap>
#include <QVector>

class QSettings;

namespace Explorer {

/// A sensor in the list: how to reach it and what it is.
struct ListedSensor
{
    SondixQt::SensorAddress address;
    QString serialNumber;
    QString firmware;
    bool isFound =
        false; ///< the last search has found it, or it has been opened since; otherwise it is only remembered

    /// Model and serial number, such as "TX270 1018001".
    QString title() const;
    /// Interface and place, such as "RS232, COM3".
    QString place() const;
};

/// The sensors that searches have found and that were opened by address. Kept from one start to the next.
///
/// One row a sensor: model, serial number and place as Qt::DisplayRole, the picture as Qt::DecorationRole.
class SensorListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    enum Role {
        TitleRole = Qt::UserRole, ///< QString
        PlaceRole,                ///< QString
        FoundRole,                ///< bool, see ListedSensor::isFound
        OpenRole,                 ///< bool, see setOpen()
    };

    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;

    const ListedSensor &at(int row) const { return m_sensors.at(row); }
    /// The row of the sensor at \a address; -1 if the list has no such sensor.
    int rowOf(const SondixQt::SensorAddress &address) const;

    /// A search has found a sensor. It replaces the one at the same address.
    void addFound(const SondixQt::SensorInfo &info);
    /// A sensor was opened by its address. It may have reported its serial number.
    void addOpened(const SondixQt::SensorAddress &address, const QString &serialNumber, const QString &firmware);
    /// Marks the sensor at \a address as opened or closed.
    void setOpen(const SondixQt::SensorAddress &address, bool open);
    /// From now on all sensors are only remembered, until they are found again.
    void beginSearch();
    void remove(int row);
    void removeAll();
    int foundCount() const;

    void save(QSettings &settings) const;
    /// Replaces the list by the saved one. Entries that are no addresses are left out.
    void restore(QSettings &settings);

private:
    void add(const ListedSensor &sensor);
    const QPixmap &picture(SondixQt::SensorType type) const;
    void announce(int row, const QVector<int> &roles);

    QVector<ListedSensor> m_sensors;
    QStringList m_open; // text forms of addresses
    mutable QHash<int, QPixmap> m_pictures;
};

} // namespace Explorer
