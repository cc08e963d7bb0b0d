// SPDX-License-Identifier: MIT
#include "sensorlistmodel.h"

#include "librarytexts.h"

#include <QSettings>

#include <algorithm>

using namespace SondixQt;

namespace Explorer {

namespace {

/// More are not remembered: the oldest are dropped.
constexpr int maxListed = 500;

const QLatin1String sensorsKey("sensors");
const QLatin1String addressKey("address");
const QLatin1String serialKey("serialNumber");
const QLatin1String firmwareKey("firmware");

} // namespace

QString ListedSensor::title() const
{
    return QStringLiteral("%1 %2").arg(sensorName(address.type, true), serialNumber).trimmed();
}

QString ListedSensor::place() const
{
    QStringList parts{interfaceName(address.interfaceType()), shownPlace(address)};
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

int SensorListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_sensors.size();
}

QVariant SensorListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const ListedSensor &sensor = m_sensors.at(index.row());
    const bool isOpen = m_open.contains(sensor.address.toString());
    switch (role) {
    case Qt::DisplayRole:
        return QStringLiteral("%1\n%2").arg(sensor.title(), sensor.place());
    case Qt::DecorationRole:
        return picture(sensor.address.type);
    case Qt::ToolTipRole:
        return QStringLiteral("%1\n%2\n%3")
            .arg(sensorName(sensor.address.type), sensor.place(), sensor.address.toString());
    case Qt::AccessibleTextRole:
        return tr("%1 at %2, %3")
            .arg(sensor.title(), sensor.place(),
                 isOpen ? tr("open") : (sensor.isFound ? tr("found") : tr("remembered, not searched yet")));
    case TitleRole:
        return sensor.title();
    case PlaceRole:
        return sensor.place();
    case FoundRole:
        return sensor.isFound;
    case OpenRole:
        return isOpen;
    default:
        return {};
    }
}

const QPixmap &SensorListModel::picture(SensorType type) const
{
    const auto known = m_pictures.constFind(type);
    return known != m_pictures.constEnd() ? *known : *m_pictures.insert(type, getSensorImage(type));
}

int SensorListModel::rowOf(const SensorAddress &address) const
{
    const auto isThere = [&address](const ListedSensor &sensor) { return sensor.address == address; };
    const auto found = std::find_if(m_sensors.begin(), m_sensors.end(), isThere);
    return found != m_sensors.end() ? static_cast<int>(found - m_sensors.begin()) : -1;
}

void SensorListModel::addFound(const SensorInfo &info)
{
    ListedSensor sensor;
    sensor.address = SensorAddress::of(info);
    sensor.serialNumber = info.getParameter(InterfaceParameter::SerialNumber).toString();
    sensor.firmware = info.getParameter(InterfaceParameter::SoftwareVersion).toString();
    sensor.isFound = true;
    add(sensor);
}

void SensorListModel::addOpened(const SensorAddress &address, const QString &serialNumber, const QString &firmware)
{
    ListedSensor sensor{address, serialNumber, firmware, true};
    if (const int row = rowOf(address); row >= 0 && serialNumber.isEmpty()) {
        sensor.serialNumber = m_sensors.at(row).serialNumber;
        sensor.firmware = m_sensors.at(row).firmware;
    }
    add(sensor);
}

void SensorListModel::add(const ListedSensor &sensor)
{
    if (const int row = rowOf(sensor.address); row >= 0) {
        m_sensors[row] = sensor;
        announce(row, {});
        return;
    }
    if (m_sensors.size() >= maxListed)
        remove(0);
    beginInsertRows({}, m_sensors.size(), m_sensors.size());
    m_sensors.append(sensor);
    endInsertRows();
}

void SensorListModel::announce(int row, const QVector<int> &roles)
{
    Q_EMIT dataChanged(index(row), index(row), roles);
}

void SensorListModel::setOpen(const SensorAddress &address, bool open)
{
    const QString text = address.toString();
    m_open.removeAll(text);
    if (open)
        m_open.append(text);
    if (const int row = rowOf(address); row >= 0)
        announce(row, {OpenRole, Qt::AccessibleTextRole});
}

void SensorListModel::beginSearch()
{
    if (m_sensors.isEmpty())
        return;
    for (ListedSensor &sensor : m_sensors)
        sensor.isFound = false;
    Q_EMIT dataChanged(index(0), index(m_sensors.size() - 1), {FoundRole, Qt::AccessibleTextRole});
}

void SensorListModel::remove(int row)
{
    beginRemoveRows({}, row, row);
    m_sensors.removeAt(row);
    endRemoveRows();
}

void SensorListModel::removeAll()
{
    beginResetModel();
    m_sensors.clear();
    endResetModel();
}

int SensorListModel::foundCount() const
{
    return static_cast<int>(std::count_if(m_sensors.begin(), m_sensors.end(),
                                          [](const ListedSensor &sensor) { return sensor.isFound; }));
}

void SensorListModel::save(QSettings &settings) const
{
    settings.remove(sensorsKey);
    settings.beginWriteArray(sensorsKey, m_sensors.size());
    for (int i = 0; i < m_sensors.size(); ++i) {
        settings.setArrayIndex(i);
        settings.setValue(addressKey, m_sensors.at(i).address.toString());
        settings.setValue(serialKey, m_sensors.at(i).serialNumber);
        settings.setValue(firmwareKey, m_sensors.at(i).firmware);
    }
    settings.endArray();
}

void SensorListModel::restore(QSettings &settings)
{
    beginResetModel();
    m_sensors.clear();
    const int count = std::min(settings.beginReadArray(sensorsKey), maxListed);
    for (int i = 0; i < count; ++i) {
        settings.setArrayIndex(i);
        const auto address = SensorAddress::parse(settings.value(addressKey).toString());
        if (address && rowOf(*address) < 0)
            m_sensors.append(
                {*address, settings.value(serialKey).toString(), settings.value(firmwareKey).toString(), false});
    }
    settings.endArray();
    endResetModel();
}

} // namespace Explorer
