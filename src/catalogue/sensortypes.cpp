// SPDX-License-Identifier: MIT
#include "sensortypes.h"

#include "namematching_p.h"
#include "sensorfeatures.h"
#include "sensortypes_p.h"

#include <QGuiApplication>
#include <QPixmapCache>

#include <algorithm>
#include <vector>

namespace SondixQt {

namespace {

QString &applicationName()
{
    static QString name;
    return name;
}

/// An entry of the display order.
struct ListedType
{
    SensorType type;
    SensorGroups group;
    bool hidden;
};

std::vector<ListedType> typesInDisplayOrder()
{
    const QMap<SensorType, SensorFeatures> &features = getSensorFeatures();
    std::vector<ListedType> types;
    for (auto it = features.cbegin(); it != features.cend(); ++it)
        types.push_back({it.key(), it->group, it->hidden});
    std::sort(types.begin(), types.end(), [&features](const ListedType &a, const ListedType &b) {
        const qint32 orderA = features.find(a.type)->order;
        const qint32 orderB = features.find(b.type)->order;
        return orderA != orderB ? orderA < orderB : a.type > b.type;
    });
    return types;
}

NameMatcher catalogueMatcher()
{
    const QMap<SensorType, SensorFeatures> &features = getSensorFeatures();
    QVector<NameCandidate> candidates;
    for (auto it = features.cbegin(); it != features.cend(); ++it)
        candidates.append({it.key(), it->name, it->shortName});
    return NameMatcher(candidates);
}

bool wantsHighResolution()
{
    return QCoreApplication::testAttribute(Qt::AA_UseHighDpiPixmaps) && qGuiApp &&
           qGuiApp->devicePixelRatio() > 1.0;
}

/// Loads \a image through QPixmapCache. Unlike a static table, the cache frees its pixmaps before the application
/// object is destroyed. Our keys have a prefix because an application may cache other pixmaps by their paths.
QPixmap loadImage(const QString &image)
{
    QString path = image.isEmpty() ? QStringLiteral(":/images/genericSensor.png") : image;
    if (wantsHighResolution())
        path.insert(path.lastIndexOf(QLatin1Char('.')), QLatin1String("@2x"));
    const QString key = QLatin1String("SondixQt") + path;
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap) && pixmap.load(path))
        QPixmapCache::insert(key, pixmap);
    return pixmap;
}

/// Registers the names with and without namespace: callers use either in queued calls.
void registerSensorTypes()
{
    qRegisterMetaType<SensorType>();
    qRegisterMetaType<SensorType>("SensorType");
    qRegisterMetaType<SensorGroup>();
    qRegisterMetaType<SensorGroup>("SensorGroup");
    qRegisterMetaType<SensorGroups>();
    qRegisterMetaType<SensorGroups>("SensorGroups");
    qRegisterMetaType<SensorInterface>();
    qRegisterMetaType<SensorInterface>("SensorInterface");
    qRegisterMetaType<SensorInterfaces>();
    qRegisterMetaType<SensorInterfaces>("SensorInterfaces");
    qRegisterMetaType<WebInterface>();
    qRegisterMetaType<WebInterface>("WebInterface");
    qRegisterMetaType<QList<SensorType>>();
    qRegisterMetaType<QList<SensorType>>("QList<SensorType>");
}

Q_CONSTRUCTOR_FUNCTION(registerSensorTypes)

} // namespace

QString usedByApplicationName()
{
    return applicationName();
}

void setUsedByApplicationName(const QString &name)
{
    applicationName() = name;
}

QString sensorName(SensorType type, bool shortName)
{
    const auto features = getSensorFeatures().find(type);
    if (features == getSensorFeatures().end())
        return {};
    return shortName ? features->shortName : features->name;
}

SensorType getSensorTypeFromName(const QString &name)
{
    static const NameMatcher matcher = catalogueMatcher();
    return matcher.match(name);
}

SensorGroup getSensorGroupFromSensorType(SensorType type)
{
    const auto features = getSensorFeatures().find(type);
    if (features == getSensorFeatures().end())
        return NoGroup;
    return static_cast<SensorGroup>(static_cast<SensorGroups::Int>(features->group));
}

QPixmap getSensorImage(SensorType type)
{
    const auto features = getSensorFeatures().find(type);
    return loadImage(features == getSensorFeatures().end() ? QString() : features->image);
}

QPixmap getSensorGroupImage(SensorGroup group)
{
    const auto record = groupTable().find(group);
    return loadImage(record == groupTable().end() ? QString() : record->image);
}

QString sensorGroupName(SensorGroup group, bool shortName)
{
    const auto record = groupTable().find(group);
    if (record == groupTable().end())
        return {};
    return shortName ? record->shortName : record->name;
}

QList<SensorGroup> sensorGroups()
{
    static const QList<SensorGroup> groups = groupTable().keys();
    return groups;
}

QList<SensorType> sensorsInGroup(SensorGroups groups, bool includeHidden)
{
    static const std::vector<ListedType> listed = typesInDisplayOrder();
    static const QList<SensorType> everything = [] {
        QList<SensorType> all;
        for (const ListedType &entry : listed)
            all.append(entry.type);
        return all;
    }();

    // Overwriting a copy is several times faster than appending to an empty list.
    QList<SensorType> types = everything;
    auto end = types.begin();
    for (const ListedType &entry : listed) {
        if ((entry.group & groups) && (includeHidden || !entry.hidden))
            *end++ = entry.type;
    }
    types.erase(end, types.end());
    return types;
}

QString interfaceName(SensorInterface iface, bool libraryName)
{
    const auto record = interfaceTable().find(iface);
    if (record == interfaceTable().end())
        return {};
    return libraryName ? record->libraryName : record->name;
}

int interfaceIndex(SensorInterface iface)
{
    const auto record = interfaceTable().find(iface);
    return record == interfaceTable().end() ? 0 : record->index;
}

} // namespace SondixQt
