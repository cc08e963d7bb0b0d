// SPDX-License-Identifier: MIT
#include "recordhead.h"

#include <QJsonArray>

using namespace SondixQt;

namespace SondixApp {

namespace {

struct Identity
{
    const char *answer;
    const char *name;
    const char *key;
};

constexpr Identity identities[] = {
    {"SA_Sensor", "sensor", "sensor"},
    {"SA_SerialNumber", "serial number", "serialNumber"},
    {"SA_ArticleNumber", "article number", "articleNumber"},
    {"SA_Softwareversion", "firmware", "firmware"},
};

QString rangeText(double minimum, double maximum)
{
    return QStringLiteral("%1 to %2").arg(QString::number(minimum, 'g', 12), QString::number(maximum, 'g', 12));
}

QJsonObject column(const QString &name, const QString &unit, double minimum, double maximum)
{
    return {{QStringLiteral("name"), name},
            {QStringLiteral("unit"), unit},
            {QStringLiteral("minimum"), minimum},
            {QStringLiteral("maximum"), maximum}};
}

} // namespace

QString zonedTime(const QDateTime &time)
{
    const QDateTime local = time.toLocalTime();
    return local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODateWithMs);
}

QStringList RecordHead::lines(const RecordColumns &columns) const
{
    QStringList lines;
    const auto add = [&lines](const QString &name, const QString &value) {
        lines += QStringLiteral("%1: %2").arg(name, value.simplified());
    };
    for (const QMap<QString, QVariant> &sensor : sensors)
        for (const Identity &identity : identities)
            if (const QString value = sensor.value(QLatin1String(identity.answer)).toString(); !value.isEmpty())
                add(QString::fromLatin1(identity.name), value);
    add(QStringLiteral("address"), address);
    const QStringList names = columns.names();
    int next = columns.number ? 2 : 1;
    for (const SignalInfo &info : columns.frame.signalList()) {
        if (columns.scaled)
            add(QStringLiteral("range of ") + names.value(next++),
                rangeText(info.scaledRangeMin, info.scaledRangeMax));
        if (columns.raw)
            add(QStringLiteral("range of ") + names.value(next++), rangeText(info.rawRangeMin, info.rawRangeMax));
    }
    add(QStringLiteral("rate"),
        rate ? QStringLiteral("%1 Hz").arg(*rate, 0, 'g', 12) : QStringLiteral("not reported"));
    add(QStringLiteral("start"), zonedTime(start));
    QString time = isWallClock ? QStringLiteral("seconds since 1970-01-01T00:00:00Z")
                               : QStringLiteral("seconds on the clock of the sensor-access library");
    if (isWallClock && uncertainty)
        time += QStringLiteral(", uncertain by %1 s").arg(*uncertainty, 0, 'g', 3);
    add(QStringLiteral("time"), time);
    add(QStringLiteral("written by"), program);
    return lines;
}

QJsonObject RecordHead::toJson(const RecordColumns &columns) const
{
    QJsonArray sensorArray;
    for (const QMap<QString, QVariant> &sensor : sensors) {
        QJsonObject object;
        for (const Identity &identity : identities)
            if (const QString value = sensor.value(QLatin1String(identity.answer)).toString(); !value.isEmpty())
                object.insert(QLatin1String(identity.key), value);
        sensorArray.append(object);
    }
    QJsonArray scaled;
    QJsonArray raw;
    for (const SignalInfo &info : columns.frame.signalList()) {
        scaled.append(column(info.scaledName, info.scaledUnit, info.scaledRangeMin, info.scaledRangeMax));
        raw.append(column(info.rawName, info.rawUnit, info.rawRangeMin, info.rawRangeMax));
    }
    QJsonObject object{{QStringLiteral("sensors"), sensorArray},
                       {QStringLiteral("address"), address},
                       {QStringLiteral("rateHz"), rate ? QJsonValue(*rate) : QJsonValue()},
                       {QStringLiteral("start"), zonedTime(start)},
                       {QStringLiteral("time"), isWallClock
                                                    ? QStringLiteral("seconds since 1970-01-01T00:00:00Z")
                                                    : QStringLiteral("seconds of the sensor-access library")},
                       {QStringLiteral("timeUncertainty"), uncertainty ? QJsonValue(*uncertainty) : QJsonValue()},
                       {QStringLiteral("program"), program}};
    if (columns.scaled)
        object.insert(QStringLiteral("values"), scaled);
    if (columns.raw)
        object.insert(QStringLiteral("raw"), raw);
    return object;
}

} // namespace SondixApp
