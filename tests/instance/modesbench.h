// SPDX-License-Identifier: MIT
#pragma once

#include "catalogue/videoreference.h"
#include "support/callrecorder.h"

#include <SondixQt/SensorInstance>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

/// \file
/// A bench with sensors of the models that have modes, a trigger, synchronisation or video, and of some
/// that have none; each once at a serial line and once in the network.

namespace modesbench {

enum Interface { Serial, Ethernet };

inline QString name(const char *text)
{
    return QString::fromLatin1(text);
}

inline const QMap<int, const char *> &models()
{
    static const QMap<int, const char *> all = {
        {1, "TX210"},   {2, "TX220"},         {15, "CP710"}, {16, "CP720"},  {18, "CB910"}, {23, "TX240"},
        {24, "TX250"},  {26, "CC430"},        {28, "EC810"}, {29, "TX260"},  {30, "CC440"}, {33, "CP730"},
        {34, "XA300"},  {35, "PG110"},        {37, "MC340"}, {38, "QUnit"},  {39, "CC450"}, {41, "TX270"},
        {42, "TX280"},  {43, "GenericKVBus"}, {44, "CC460"}, {45, "CB92xx"}, {46, "CC470"}, {47, "CC480"},
        {48, "Spessa"}, {51, "TX290"},        {54, "CP750"}, {55, "WI610"},  {56, "TX300"}, {58, "TX310"},
        {59, "WI620"},  {60, "RG540"},        {62, "CC490"}, {63, "CC495"},
    };
    return all;
}

inline QJsonObject settings(int code)
{
    QJsonObject groups{
        {name("Trigger"), QJsonObject{{name("SA_TrgMode"), 0}}},
        {name("Settings"), QJsonObject{{name("SA_OutputMode"), 0}, {name("SA_Sync_TrgMode"), 0}}},
        {name("TriggerMode"), QJsonObject{{name("SA_TriggerMode"), 0}}},
        {name("TriggerSource"), QJsonObject{{name("SA_TriggerSource"), 0}}},
        {name("MeasureMode"), QJsonObject{{name("SA_MeasureMode"), 0}}},
        {name("SyncMode"), QJsonObject{{name("SA_SyncMode"), 0}, {name("SA_SyncTermination"), 1}}},
    };
    const reference::Video *video = reference::video(code);
    if (!video)
        return groups;
    for (const char *suffix : {"_ETH", "_RS422"}) {
        QJsonObject switches;
        for (const QString &stem : video->stems)
            switches.insert(name("SA_OutputVideo") + stem + name(suffix), 0);
        // A model whose switches no command reads has them all the same.
        const QString group = *video->outputStem != '\0' ? name(video->outputStem) : name("NoCommand");
        groups.insert(group + name(suffix), switches);
    }
    return groups;
}

inline QJsonObject place(int code, Interface interface)
{
    if (interface == Serial)
        return {{name("interface"), name("RS232")}, {name("port"), QString::number(code)}};
    return {{name("interface"), name("TCP/IP")}, {name("ip"), name("192.168.7.%1").arg(code)}};
}

/// Loads the bench with the sensors of the types \a codes, also of bus variants; nothing is scripted or
/// recorded afterwards.
inline void load(const QVector<int> &codes)
{
    QJsonArray sensors;
    for (const int variant : codes) {
        const int code = variant % 10000;
        for (const Interface interface : {Serial, Ethernet}) {
            sensors.append(QJsonObject{
                {name("model"), name(models().value(code))},
                {name("serialNumber"), QString::number(1000 + 1000 * interface + code)},
                {name("place"), place(code, interface)},
                {name("info"), QJsonObject{{name("SA_Range"), 46.0}}},
                {name("settings"), settings(code)},
            });
        }
    }
    const QJsonObject bench{{name("name"), name("modes")}, {name("sensors"), sensors}};
    sondixsim::loadBench(QJsonDocument(bench).toJson().toStdString());
    sondixsim::useVirtualClock();
}

/// How the sensor of the type \a code, also of a bus variant, is reached.
inline QMap<QString, QVariant> parameters(int code, Interface interface)
{
    if (interface == Serial)
        return {{name("IP_Interface"), name("RS232")}, {name("IP_Port"), code % 10000}};
    return {{name("IP_Interface"), name("TCP/IP")},
            {name("IP_RemoteAddr"), name("192.168.7.%1").arg(code % 10000)}};
}

/// The sensor answers \a command with \a pairs from now on.
inline int answer(const char *command, const char *pairs)
{
    sondixsim::Fault fault;
    fault.command = command;
    fault.answer = pairs;
    return sondixsim::inject(fault);
}

/// \a command fails from now on.
inline int failCommand(const char *command, int code, const char *text = "told to fail")
{
    sondixsim::Fault fault;
    fault.command = command;
    fault.code = code;
    fault.text = text;
    return sondixsim::inject(fault);
}

/// Staging or reading \a parameter fails from now on.
inline int failParameter(const char *parameter, int code, const char *text = "told to fail")
{
    sondixsim::Fault fault;
    fault.parameter = parameter;
    fault.code = code;
    fault.text = text;
    return sondixsim::inject(fault);
}

/// A sensor of the bench, opened.
class Sensor
{
public:
    explicit Sensor(int code, Interface interface = Ethernet)
        : instance(SondixQt::SensorType(code))
    {
        QString errorText;
        if (instance.open(parameters(code, interface), &errorText) != SondixQt::NoError)
            QTest::qFail(qPrintable(name("cannot open: ") + errorText), __FILE__, __LINE__);
    }

    /// The same object for another sensor, which is opened.
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
    return name("GetParameterInt(\"%1\")").arg(parameter);
}

inline QString setInt(const QString &parameter, int value)
{
    return name("SetParameterInt(\"%1\", %2)").arg(parameter).arg(value);
}

/// A command and the one integer that is read from its answer.
inline QStringList askInt(const char *command, const char *parameter)
{
    return commandCalls(name(command)) + QStringList(getInt(name(parameter)));
}

/// One integer and the command that is sent with it.
inline QStringList tellInt(const char *command, const char *parameter, int value)
{
    return QStringList(setInt(name(parameter), value)) + commandCalls(name(command));
}

inline QStringList withoutErrorTexts(QStringList calls)
{
    calls.removeAll(name("GetError(4096)"));
    return calls;
}

} // namespace modesbench
