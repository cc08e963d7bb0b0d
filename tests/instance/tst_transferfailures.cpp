// SPDX-License-Identifier: MIT
#include "instance/transferbench.h"

using namespace SondixQt;

class TestTransferFailures : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void availableValues();
    void availableValuesOfScaledVector();
    void availableValuesOfRawVector();
    void availableValuesOfScaledVectorWithTimestamp();
    void transferOfScaledVector();
    void transferOfBuffers();
    void transferOfRawVector();
    void transferOfScaledVectorWithTimestamp();
    void textIsNotNeeded();
    void closedSensor();

    void negativeCountIsNone_data();
    void negativeCountIsNone();
    void absurdCountTakesABlock_data();
    void absurdCountTakesABlock();
    void absurdBlockEndsWithAFrame();
    void negativeCapacityIsNone();
};

namespace {

const QString getError = "GetError(4096)";
const QString old = "old";

} // namespace

void TestTransferFailures::availableValues()
{
    TransferSensor sensor;
    scriptFailure("DataAvail", -40);
    QSignalSpy messages(&sensor.instance, &SensorInstance::errorMessage);
    int available = 0;
    QString errorText;
    QCOMPARE(sensor->dataAvail(available, &errorText), ErrorCode(-40));
    QCOMPARE(errorText, QString(scriptedFailure));
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.first().at(0).value<ErrorCode>(), ErrorCode(-40));
    QCOMPARE(messages.first().at(1).toString(), QString(scriptedFailure));
}

void TestTransferFailures::availableValuesOfScaledVector()
{
    TransferSensor sensor;
    sensor.put(6);
    scriptFailure("DataAvail", -40);
    QSignalSpy messages(&sensor.instance, &SensorInstance::errorMessage);
    CallRecorder recorder;
    QVector<double> values = {1.5, 2.5};
    QString errorText;
    QCOMPARE(sensor->transferData(values, &errorText), ErrorCode(-40));
    QCOMPARE(values, QVector<double>({1.5, 2.5}));
    QCOMPARE(errorText, QString(scriptedFailure));
    QCOMPARE(messages.size(), 2);
    QCOMPARE(recorder.take(), QStringList({"DataAvail()", getError, getError}));
}

void TestTransferFailures::availableValuesOfRawVector()
{
    TransferSensor sensor;
    sensor.put(6);
    scriptFailure("DataAvail", -40);
    QSignalSpy messages(&sensor.instance, &SensorInstance::errorMessage);
    CallRecorder recorder;
    QVector<int> values = {1, 2};
    double timestamp = -1.0;
    QString errorText = old;
    QCOMPARE(sensor->transferDataRaw(values, timestamp, &errorText), ErrorCode(-40));
    QCOMPARE(values, QVector<int>({1, 2}));
    QCOMPARE(timestamp, -1.0);
    QCOMPARE(errorText, old);
    QCOMPARE(messages.size(), 1);
    QCOMPARE(recorder.take(), QStringList({"DataAvail()", getError}));
}

void TestTransferFailures::availableValuesOfScaledVectorWithTimestamp()
{
    TransferSensor sensor;
    sensor.put(6);
    scriptFailure("DataAvail", -40);
    QSignalSpy messages(&sensor.instance, &SensorInstance::errorMessage);
    CallRecorder recorder;
    QVector<double> values = {1.5, 2.5};
    double timestamp = -1.0;
    QString errorText;
    QCOMPARE(sensor->transferDataScaled(values, timestamp, &errorText), ErrorCode(-40));
    QCOMPARE(values, QVector<double>({1.5, 2.5}));
    QCOMPARE(timestamp, -1.0);
    QCOMPARE(errorText, QString(scriptedFailure));
    QCOMPARE(messages.size(), 1);
    QCOMPARE(recorder.take(), QStringList({"DataAvail()", getError}));
}

void TestTransferFailures::transferOfScaledVector()
{
    TransferSensor sensor;
    sensor.put(6);
    scriptFailure("TransferData", -41);
    QSignalSpy messages(&sensor.instance, &SensorInstance::errorMessage);
    CallRecorder recorder;
    QVector<double> values(6, 1.5); // the previous block, which must not be taken for a new one
    QString errorText;
    QCOMPARE(sensor->transferData(values, &errorText), ErrorCode(-41));
    QCOMPARE(values, QVector<double>());
    QCOMPARE(errorText, QString(scriptedFailure));
    QCOMPARE(messages.size(), 2);
    QCOMPARE(recorder.take(), QStringList({"DataAvail()", "TransferData(null, scaled, 6)", getError, getError}));
}

void TestTransferFailures::transferOfBuffers()
{
    TransferSensor sensor;
    sensor.put(6);
    scriptFailure("TransferDataTS", -41);
    QSignalSpy messages(&sensor.instance, &SensorInstance::errorMessage);
    CallRecorder recorder;
    double scaled[3] = {};
    double timestamp = 0.0;
    int count = 3;
    QString errorText;
    QCOMPARE(sensor->transferData(scaled, nullptr, &timestamp, count, &errorText), ErrorCode(-41));
    QCOMPARE(count, 0);
    QCOMPARE(errorText, QString(scriptedFailure));
    QCOMPARE(messages.size(), 1);
    QCOMPARE(recorder.take(), QStringList({"TransferDataTS(null, scaled, 3)", getError}));
}

void TestTransferFailures::transferOfRawVector()
{
    TransferSensor sensor;
    sensor.put(6);
    scriptFailure("TransferDataTS", -41);
    QSignalSpy messages(&sensor.instance, &SensorInstance::errorMessage);
    CallRecorder recorder;
    QVector<int> values(6, 15);
    double timestamp = 0.0;
    QString errorText = old;
    QCOMPARE(sensor->transferDataRaw(values, timestamp, &errorText), ErrorCode(-41));
    QCOMPARE(values, QVector<int>());
    QCOMPARE(errorText, QString(scriptedFailure));
    QCOMPARE(messages.size(), 1);
    QCOMPARE(recorder.take(), QStringList({"DataAvail()", "TransferDataTS(raw, null, 6)", getError}));
}

void TestTransferFailures::transferOfScaledVectorWithTimestamp()
{
    TransferSensor sensor;
    sensor.put(6);
    scriptFailure("TransferDataTS", -41);
    scriptCount("TransferDataTS", 2);
    QSignalSpy messages(&sensor.instance, &SensorInstance::errorMessage);
    CallRecorder recorder;
    QVector<double> values;
    double timestamp = 0.0;
    QString errorText;
    QCOMPARE(sensor->transferDataScaled(values, timestamp, &errorText), ErrorCode(-41));
    QCOMPARE(errorText, QString(scriptedFailure));
    QCOMPARE(messages.size(), 1);
    QCOMPARE(values.size(), 2);
    QCOMPARE(recorder.take(), QStringList({"DataAvail()", "TransferDataTS(null, scaled, 6)", getError}));
}

void TestTransferFailures::textIsNotNeeded()
{
    TransferSensor sensor;
    scriptFailure("DataAvail", -40);
    scriptFailure("TransferDataTS", -41);
    QSignalSpy messages(&sensor.instance, &SensorInstance::errorMessage);
    QVector<double> scaled;
    QVector<int> raw;
    double timestamp = 0.0;
    int count = 0;
    QCOMPARE(sensor->dataAvail(count), ErrorCode(-40));
    QCOMPARE(sensor->transferData(scaled), ErrorCode(-40));
    QCOMPARE(sensor->transferDataRaw(raw, timestamp), ErrorCode(-40));
    QCOMPARE(sensor->transferDataScaled(scaled, timestamp), ErrorCode(-40));
    QCOMPARE(sensor->transferData(nullptr, nullptr, &timestamp, count), ErrorCode(-41));
    QCOMPARE(messages.size(), 1 + 2 + 1 + 1 + 1);
}

void TestTransferFailures::closedSensor()
{
    SensorInstance instance(SensorType::TX270);
    QVector<double> scaled = {1.5};
    QVector<int> raw = {1};
    double timestamp = -1.0;
    int count = 1;
    QString errorText;
    const ErrorCode notOpen = instance.transferDataScaled(scaled, timestamp, &errorText);
    QVERIFY(notOpen != NoError);
    QVERIFY(!errorText.isEmpty());
    QCOMPARE(instance.transferData(scaled), notOpen);
    QCOMPARE(instance.transferDataRaw(raw, timestamp), notOpen);
    QCOMPARE(instance.dataAvail(count), notOpen);
    QCOMPARE(instance.transferData(scaled.data(), raw.data(), &timestamp, count), notOpen);
    QCOMPARE(scaled, QVector<double>{1.5});
    QCOMPARE(raw, QVector<int>{1});
}

void TestTransferFailures::negativeCountIsNone_data()
{
    QTest::addColumn<int>("announced");
    QTest::newRow("-1") << -1;
    QTest::newRow("most negative") << std::numeric_limits<int>::min();
}

void TestTransferFailures::negativeCountIsNone()
{
    QFETCH(int, announced);
    TransferSensor sensor;
    scriptCount("DataAvail", announced);
    CallRecorder recorder;
    int available = 5;
    QCOMPARE(sensor->dataAvail(available), NoError);
    QCOMPARE(available, 0);
    QVector<double> scaled = {1.5};
    QVector<int> raw = {1};
    double timestamp = -1.0;
    recorder.take();
    QCOMPARE(sensor->transferData(scaled), NoError);
    QVERIFY(scaled.isEmpty());
    QCOMPARE(sensor->transferDataRaw(raw, timestamp), NoError);
    QVERIFY(raw.isEmpty());
    scaled = {1.5};
    QCOMPARE(sensor->transferDataScaled(scaled, timestamp), NoError);
    QVERIFY(scaled.isEmpty());
    QCOMPARE(recorder.take(),
             QStringList({"DataAvail()", "TransferData(null, scaled, 0)", "DataAvail()", "DataAvail()"}));
}

void TestTransferFailures::absurdCountTakesABlock_data()
{
    QTest::addColumn<int>("announced");
    QTest::newRow("one too many") << 16777217;
    QTest::newRow("largest") << std::numeric_limits<int>::max();
}

void TestTransferFailures::absurdCountTakesABlock()
{
    QFETCH(int, announced);
    TransferSensor sensor;
    scriptCount("DataAvail", announced);
    CallRecorder recorder;
    QVector<double> scaled;
    QVector<int> raw;
    double timestamp = 0.0;
    sensor.put(6);
    QCOMPARE(sensor->transferData(scaled), NoError);
    QCOMPARE(scaled, TransferSensor::scaledValues(6));
    sensor.put(6);
    QCOMPARE(sensor->transferDataRaw(raw, timestamp), NoError);
    QCOMPARE(raw, TransferSensor::rawValues(6));
    sensor.put(6);
    QCOMPARE(sensor->transferDataScaled(scaled, timestamp), NoError);
    QCOMPARE(scaled, TransferSensor::scaledValues(6));
    QCOMPARE(recorder.take(), QStringList({"DataAvail()", "TransferData(null, scaled, 16777216)", "DataAvail()",
                                           "TransferDataTS(raw, null, 16777216)", "DataAvail()",
                                           "TransferDataTS(null, scaled, 16777216)"}));
}

void TestTransferFailures::absurdBlockEndsWithAFrame()
{
    TransferSensor sensor;
    TransmittedDataInfo info;
    QCOMPARE(sensor->transmittedDataInfo(info), NoError);
    QCOMPARE(info.valuesPerFrame, 3);
    scriptCount("DataAvail", std::numeric_limits<int>::max());
    CallRecorder recorder;
    QVector<int> raw;
    double timestamp = 0.0;
    QCOMPARE(sensor->transferDataRaw(raw, timestamp), NoError);
    QCOMPARE(recorder.take(), QStringList({"DataAvail()", "TransferDataTS(raw, null, 16777215)"}));
}

void TestTransferFailures::negativeCapacityIsNone()
{
    TransferSensor sensor;
    sensor.put(3);
    CallRecorder recorder;
    double scaled = 1.5;
    double timestamp = 0.0;
    int count = -4;
    QCOMPARE(sensor->transferData(&scaled, nullptr, &timestamp, count), NoError);
    QCOMPARE(count, 0);
    QCOMPARE(scaled, 1.5);
    QCOMPARE(recorder.take(), QStringList("TransferDataTS(null, scaled, 0)"));
}

QTEST_GUILESS_MAIN(TestTransferFailures)
#include "tst_transferfailures.moc"
