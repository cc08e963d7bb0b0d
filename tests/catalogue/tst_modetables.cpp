// SPDX-License-Identifier: MIT
#include <SondixQt/SensorFeatures>

#include "catalogue/modetables_p.h"

#include <QtTest>

using namespace SondixQt;

namespace {

/// A set of commands and the codes of the types that use it.
struct Group
{
    QStringList commands;
    QVector<int> codes;
};

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(' ');
}

QVector<Group> triggerGroups()
{
    return {
        {words("Get_Trigger SA_TrgMode Update_Trigger SP_TrgMode"),
         {CP710, CB910, CP730, XA300, GenericKVBus, CB92xx, CP750}},
        {words("Get_Settings SA_OutputMode Set_OutputMode SP_OutputMode"), {TX240, TX250}},
        {words("Get_TriggerMode SA_TriggerMode Update_TriggerMode SP_TriggerMode"),
         {CC430, TX260, CC440, PG110, MC340, QUnit, CC450, TX270, TX280, CC460, Spessa, TX300, RG540}},
        {words("Get_MeasureMode SA_MeasureMode Set_MeasureMode SP_MeasureMode"), {EC810}},
        {words("Get_TriggerSource SA_TriggerSource Update_TriggerSource SP_TriggerSource"),
         {CC470, CC480, TX290, WI610, TX310, WI620, CC490, CC495}},
    };
}

QVector<Group> syncGroups()
{
    return {
        {words("Get_Settings SA_Sync_TrgMode Set_Sync_TrgMode SP_Sync_TrgMode"), {TX220}},
        {words("Get_SyncMode SA_SyncMode Set_SyncMode SP_SyncMode"),
         {CC430, TX260, CC440, PG110, MC340, QUnit, CC450, CC460, CC470, CC480, Spessa, TX290, WI610, TX310, WI620,
          CC490, CC495}},
    };
}

QStringList commandsOf(const QVector<Group> &groups, int code)
{
    for (const Group &group : groups) {
        if (group.codes.contains(code))
            return group.commands;
    }
    return {};
}

template<typename Row>
QStringList commandsOf(const Row *row)
{
    if (!row)
        return {};
    const SettingCommands &commands = row->commands;
    return {QString::fromLatin1(commands.getCommand), QString::fromLatin1(commands.getParameter),
            QString::fromLatin1(commands.setCommand), QString::fromLatin1(commands.setParameter)};
}

/// All types of the catalogue, the unused codes between them and all bus variants.
void everyCode()
{
    QTest::addColumn<int>("code");
    QSet<int> codes;
    const QList<SensorType> types = getSensorFeatures().keys();
    for (const SensorType type : types)
        codes.insert(type);
    for (int code = -1; code <= 70; ++code) {
        codes.insert(code);
        codes.insert(10000 + code);
    }
    QList<int> sorted = codes.values();
    std::sort(sorted.begin(), sorted.end());
    for (const int code : qAsConst(sorted))
        QTest::newRow(QByteArray::number(code).constData()) << code;
}

} // namespace

/// Compares the tables of trigger, synchronisation and measuring modes with independent lists.
class ModeTablesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void triggerOfEveryType_data() { everyCode(); }
    void triggerOfEveryType();
    void syncOfEveryType_data() { everyCode(); }
    void syncOfEveryType();
    void measuringModesOfEveryType_data() { everyCode(); }
    void measuringModesOfEveryType();
    void switchedModesOfEveryModel_data() { everyCode(); }
    void switchedModesOfEveryModel();
};

void ModeTablesTest::triggerOfEveryType()
{
    QFETCH(int, code);
    const TriggerRow *row = triggerRow(SensorType(code));
    QCOMPARE(commandsOf(row), commandsOf(triggerGroups(), code));
    if (row)
        QCOMPARE(row->offValue, code == 28 ? 1 : 0);
}

void ModeTablesTest::syncOfEveryType()
{
    QFETCH(int, code);
    const SyncRow *row = syncRow(SensorType(code));
    QCOMPARE(commandsOf(row), commandsOf(syncGroups(), code));
    if (row) {
        QCOMPARE(row->sharedWithTrigger, code == 2);
        QCOMPARE(row->hasTermination, code == 29);
    }
}

void ModeTablesTest::measuringModesOfEveryType()
{
    QFETCH(int, code);
    QStringList expected;
    if (code == 29)
        expected = QStringList{"Distance diffuse=0", "Distance direct=1", "Thickness=2", "Video=3"};
    else if (code == 26 || code == 30 || code == 39 || code == 44)
        expected = QStringList{"Distance=0", "Thickness=1", "VideoStream=4"};

    QStringList modes;
    if (const MeasuringModesRow *row = measuringModesRow(SensorType(code))) {
        for (const MeasuringMode &mode : row->modes)
            modes.append(QStringLiteral("%1=%2").arg(QLatin1String(mode.name)).arg(mode.number));
    }
    QCOMPARE(modes, expected);
}

void ModeTablesTest::switchedModesOfEveryModel()
{
    QFETCH(int, code);
    const QMap<int, int> videoModes = {{26, 4}, {29, 3}, {30, 4}, {39, 4}, {44, 4}};
    const SwitchedModesRow *row = switchedModesRow(SensorType(code));
    QCOMPARE(row != nullptr, videoModes.contains(code));
    if (row) {
        QCOMPARE(row->measuringMode, 0);
        QCOMPARE(row->videoMode, videoModes.value(code));
    }
}

QTEST_GUILESS_MAIN(ModeTablesTest)
#include "tst_modetables.moc"
