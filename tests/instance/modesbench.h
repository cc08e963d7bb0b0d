// SPDX-License-Identifier: MIT
#pragma once

#include "catalogue/videoreference.h"
#include "support/callrecorder.h"
#include "support/scripting.h"

#include <SondixQt/SensorInstance>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

/// \file
/// A bench with sensors of the models that have modes, a trigger, synchronisation or video, and of some that have
/// none. Each sensor exists twice: on a serial line and on Ethernet.

namespace modesbench {

enum Interface { Serial, Ethernet };

inline const QMap<int, const char *> &models()
{
    static const QMap<int, const char *> all = {
        {SondixQt::TX210, "TX210"},   {SondixQt::TX220, "TX220"},
        {SondixQt::CP710, "CP710"},   {SondixQt::CP720, "CP720"},
        {SondixQt::CB910, "CB910"},   {SondixQt::TX240, "TX240"},
        {SondixQt::TX250, "TX250"},   {SondixQt::CC430, "CC430"},
        {SondixQt::EC810, "EC810"},   {SondixQt::TX260, "TX260"},
        {SondixQt::CC440, "CC440"},   {SondixQt::CP730, "CP730"},
        {SondixQt::XA300, "XA300"},   {SondixQt::PG110, "PG110"},
        {SondixQt::MC340, "MC340"},   {SondixQt::QUnit, "QUnit"},
        {SondixQt::CC450, "CC450"},   {SondixQt::TX270, "TX270"},
        {SondixQt::TX280, "TX280"},   {SondixQt::GenericKVBus, "GenericKVBus"},
        {SondixQt::CC460, "CC460"},   {SondixQt::CB92xx, "CB92xx"},
        {SondixQt::CC470, "CC470"},   {SondixQt::CC480, "CC480"},
        {SondixQt::Spessa, "Spessa"}, {SondixQt::TX290, "TX290"},
        {SondixQt::CP750, "CP750"},   {SondixQt::WI610, "WI610"},
        {SondixQt::TX300, "TX300"},   {SondixQt::TX310, "TX310"},
        {SondixQt::WI620, "WI620"},   {SondixQt::RG540, "RG540"},
        {SondixQt::CC490, "CC490"},   {SondixQt::CC495, "CC495"},
    };
    return all;
}

inline QJsonObject settings(int code)
{
    QJsonObject groups{
        {"Trigger", QJsonObject{{"SA_TrgMode", 0}}},
        {"Settings", QJsonObject{{"SA_OutputMode", 0}, {"SA_Sync_TrgMode", 0}}},
        {"TriggerMode", QJsonObject{{"SA_TriggerMode", 0}}},
        {"TriggerSource", QJsonObject{{"SA_TriggerSource", 0}}},
        {"MeasureMode", QJsonObject{{"SA_MeasureMode", 0}}},
        {"SyncMode", QJsonObject{{"SA_SyncMode", 0}, {"SA_SyncTermination", 1}}},
    };
    const reference::Video *video = reference::video(code);
    if (!video)
        return groups;
    for (const char *suffix : {"_ETH", "_RS422"}) {
        QJsonObject switches;
        for (const QString &stem : video->stems)
            switches.insert("SA_OutputVideo" + stem + QString(suffix), 0);
        // Some models have switches, but no command that reads them.
        const QString group = *video->outputStem != '\0' ? QString(video->outputStem) : "NoCommand";
        groups.insert(group + QString(suffix), switches);
    }
    return groups;
}

inline QJsonObject place(int code, Interface interface)
{
    if (interface == Serial)
        return {{"interface", "RS232"}, {"port", QString::number(code)}};
    return {{"interface", "TCP/IP"}, {"ip", QString("192.168.7.%1").arg(code)}};
}

/// Loads the bench with sensors of the types \a codes, which may be bus variants. Clears all scripts and
/// recordings.
inline void load(const QVector<int> &codes)
{
    QJsonArray sensors;
    for (const int variant : codes) {
        const int code = variant % 10000;
        for (const Interface interface : {Serial, Ethernet}) {
            sensors.append(QJsonObject{
                {"model", QString(models().value(code))},
                {"serialNumber", QString::number(1000 + 1000 * interface + code)},
                {"place", place(code, interface)},
                {"info", QJsonObject{{"SA_Range", 46.0}}},
                {"settings", settings(code)},
            });
        }
    }
    const QJsonObject bench{{"name", "modes"}, {"sensors", sensors}};
    sondixsim::loadBench(QJsonDocument(bench).toJson().toStdString());
    sondixsim::useVirtualClock();
}

/// The interface parameters of the sensor of the type \a code, which may be a bus variant.
inline QMap<QString, QVariant> parameters(int code, Interface interface)
{
    if (interface == Serial)
        return {{"IP_Interface", "RS232"}, {"IP_Port", code % 10000}};
    return {{"IP_Interface", "TCP/IP"}, {"IP_RemoteAddr", QString("192.168.7.%1").arg(code % 10000)}};
}

/// An open sensor of the bench.
class Sensor
{
public:
    explicit Sensor(int code, Interface interface = Ethernet)
        : instance(SondixQt::SensorType(code))
    {
        QString errorText;
        if (instance.open(parameters(code, interface), &errorText) != SondixQt::NoError)
            QTest::qFail(qPrintable(QString("cannot open: ") + errorText), __FILE__, __LINE__);
    }

    /// Uses the same object for another sensor and opens it.
    void become(int code, Interface interface = Ethernet)
    {
        instance = SondixQt::SensorInstance(SondixQt::SensorType(code));
        if (instance.open(parameters(code, interface)) != SondixQt::NoError)
            QTest::qFail("cannot open the other sensor", __FILE__, __LINE__);
    }

    SondixQt::SensorInstance *operator->() { return &instance; }
    SondixQt::SensorInstance &operator*() { return instance; }

private:
    SondixQt::SensorInstance instance;
};

inline QString getInt(const QString &parameter)
{
    return QString("GetParameterInt(\"%1\")").arg(parameter);
}

inline QString setInt(const QString &parameter, int value)
{
    return QString("SetParameterInt(\"%1\", %2)").arg(parameter).arg(value);
}

/// The calls that send a command and read one integer from its answer.
inline QStringList readInt(const char *command, const char *parameter)
{
    return commandCalls(command) + QStringList(getInt(parameter));
}

/// The calls that send a command with one integer parameter.
inline QStringList writeInt(const char *command, const char *parameter, int value)
{
    return QStringList(setInt(parameter, value)) + commandCalls(command);
}

} // namespace modesbench
