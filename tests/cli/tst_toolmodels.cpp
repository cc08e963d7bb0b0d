// SPDX-License-Identifier: MIT
#include "toolrunner.h"

#include <QJsonArray>

class TestToolModels : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void listsTheModelsOfAGroupInDisplayOrder();
    void leavesOutHiddenModelsUnlessAsked();
    void listsEveryModelOfEveryGroup();
    void describesModelsAsJson();
    void reportsAFullDisk();
    void styleNeedsATerminal();

private:
    static QStringList firstWords(const QByteArray &out)
    {
        QStringList result;
        for (const QByteArray &line : linesOf(out))
            result += QString::fromUtf8(line.left(line.indexOf("  ")));
        return result;
    }
    static QStringList models(const char *line)
    {
        const ToolResult result = ToolRunner().run(words(line));
        if (result.code != 0 || !result.err.isEmpty())
            return {QString::fromUtf8(result.err)};
        return firstWords(result.out);
    }
};

void TestToolModels::listsTheModelsOfAGroupInDisplayOrder()
{
    const QString expected = "MODEL CP720 CP740 CP730 CP710 CP750 CB910 CB92xx";
    QCOMPARE(models("models --group Delmar").join(QLatin1Char(' ')), expected);
    QCOMPARE(models("models --group delmar").join(QLatin1Char(' ')), expected);
    QCOMPARE(models("models -g 64").join(QLatin1Char(' ')), expected);
}

void TestToolModels::leavesOutHiddenModelsUnlessAsked()
{
    const QStringList plain = models("models --group KV-BUS");
    QVERIFY(plain.contains("MV4xx"));
    QVERIFY(!plain.contains("MV410"));
    QVERIFY(!plain.contains("CP740_XA300ETH"));
    const QStringList all = models("models --group KV-BUS --all");
    QVERIFY(all.contains("MV410"));
    QVERIFY(all.contains("CP740_XA300ETH"));
    QCOMPARE(all.size(), plain.size() + 12);
}

void TestToolModels::listsEveryModelOfEveryGroup()
{
    // 79 models without No Sensor, Unnamed, MULTI_SENSOR and File, which belong to no group.
    QCOMPARE(models("models --all").size(), 1 + 75);
    QCOMPARE(models("models").size(), 1 + 63);
}

void TestToolModels::describesModelsAsJson()
{
    const ToolResult result = ToolRunner().run(words("models --group Color --json"));
    QCOMPARE(result.code, 0);
    const QJsonArray array = QJsonDocument::fromJson(result.out).array();
    QCOMPARE(array.size(), 5);
    const QJsonObject first = array.first().toObject();
    QCOMPARE(first.value("model").toString(), QStringLiteral("PG110"));
    QCOMPARE(first.value("name").toString(), QStringLiteral("Pigmar PG"));
    QCOMPARE(first.value("number").toInt(), 35);
    QCOMPARE(first.value("groups").toArray(), QJsonArray{"Color"});
    QCOMPARE(first.value("asciiProtocol").toBool(), true);
    QCOMPARE(first.value("hidden").toBool(true), false);
}

void TestToolModels::reportsAFullDisk()
{
    if (!QFile::exists("/dev/full"))
        QSKIP("there is no /dev/full here");
    for (const char *line : {"models", "models --json"}) {
        QProcess process;
        process.setStandardOutputFile("/dev/full");
        const ToolRunner runner;
        runner.start(process, words(line));
        const ToolResult result = ToolRunner::finish(process);
        QCOMPARE(result.code, 1);
        QVERIFY2(result.err.startsWith("sondixqt: cannot write to standard output: "), result.err.constData());
        QCOMPARE(linesOf(result.err).size(), 1);
    }
}

void TestToolModels::styleNeedsATerminal()
{
    const ToolResult result = ToolRunner().run(words("models --group Color"));
    QVERIFY(!result.out.contains('\x1b'));
}

QTEST_GUILESS_MAIN(TestToolModels)
#include "tst_toolmodels.moc"
