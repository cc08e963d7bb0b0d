// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>
#include <SondixQt/namelookup.h>
#include <SondixQt/sensorfeatures.h>

using namespace SondixQt;

/// The models of the simulator and of the library have the same names, although they share no code.
class TestModelNames : public QObject
{
    Q_OBJECT

private:
    static void load(const QString &model)
    {
        sondixsim::loadBench(R"({ "clock": { "virtual": true }, "sensors": [ { "model": ")" + model.toStdString() +
                             R"(", "serialNumber": "1", "place": )" + placeOf(model.toStdString()) + " } ] }");
    }

    /// The models in the simulator's files.
    static QSet<QString> benchModels()
    {
        QSet<QString> names;
        for (const char *const file : {"tavrin", "controllers", "electrical", "bus"}) {
            QFile models(QStringLiteral(SONDIX_BENCHES "/../models/%1.json").arg(QLatin1String(file)));
            if (!models.open(QIODevice::ReadOnly))
                return {};
            QString text = QString::fromUtf8(models.readAll());
            text.remove(QRegularExpression(QStringLiteral("^\\s*//.*$"), QRegularExpression::MultilineOption));
            const QStringList keys = QJsonDocument::fromJson(text.toUtf8()).object().keys();
            for (const QString &key : keys) {
                if (!key.startsWith(QLatin1Char('@')))
                    names += key;
            }
        }
        return names;
    }

private Q_SLOTS:
    void bothHaveTheSameNames()
    {
        // These two belong to no group, and one has an empty name.
        QSet<QString> wanted{QStringLiteral("MULTI_SENSOR"), QStringLiteral("Unnamed")};
        const QList<SensorType> types = sensorsInGroup(AllGroups, true);
        QVERIFY(types.size() > 70);
        for (const SensorType type : types)
            wanted += sensorName(type, true);
        QCOMPARE(benchModels() - wanted, QSet<QString>());
        QCOMPARE(wanted - benchModels(), QSet<QString>());
    }

    void formerNamesAreAliases_data()
    {
        QTest::addColumn<QString>("alias");
        QTest::addColumn<QString>("name");
        const std::pair<const char *, const char *> names[] = {
            {"XA100PCI", "XA100/PCI"}, {"XA200PCI", "XA200/PCI"},
            {"XA100USB", "XA100/USB"}, {"XA200ETH", "XA200/ETH"},
            {"QUnit", "Q-Unit"},       {"GenericKVBus", "KV-BUS"},
            {"DVxxx", "DV-xxx"},       {"DVxxx_XA300ETH", "DV-xxx_XA300ETH"},
        };
        for (const auto &[alias, name] : names)
            QTest::newRow(alias) << QString::fromLatin1(alias) << QString::fromLatin1(name);
    }
    void formerNamesAreAliases()
    {
        QFETCH(QString, alias);
        QFETCH(QString, name);
        const SensorType type = getSensorTypeFromName(name);
        QVERIFY(type != NoSensor);
        for (const QString &model : {alias, name}) {
            load(model);
            Handle handle(type % 10000);
            QCOMPARE(handle.open(), 0);
            QVERIFY(handle.command("Start_FindSensor") == 0);
            sondixsim::advance(10.0);
            QCOMPARE(handle.command("Get_FindSensorProgress"), 0);
            handle.set("IP_Index", 0);
            QCOMPARE(handle.command("Get_FoundSensor"), 0);
            QCOMPARE(handle.getText("IP_SensorTypeName"), name.toStdString());
        }
    }
};

QTEST_GUILESS_MAIN(TestModelNames)
#include "tst_modelnames.moc"
