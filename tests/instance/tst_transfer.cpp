// SPDX-License-Identifier: MIT
#include "instance/transferbench.h"

using namespace SondixQt;

class TestTransfer : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void availableValues();
    void scaledVector();
    void callersBuffers();
    void eitherBufferMayBeAbsent_data();
    void eitherBufferMayBeAbsent();
    void fewerValuesThanTheBuffersHold();
    void rawVector();
    void scaledVectorWithTimestamp();
    void rawValuesAreAskedForWhileLogging();

    void noValuesScaledVector();
    void noValuesBuffers();
    void noValuesRawVector();
    void noValuesScaledVectorWithTimestamp();

    void vectorsShrinkToWhatArrived_data();
    void vectorsShrinkToWhatArrived();
    void storageIsKeptBetweenCalls();
    void sharedVectorsAreLeftToTheirOtherOwners();
    void successClearsTheText();
};

void TestTransfer::availableValues()
{
    TransferSensor sensor;
    sensor.put(7);
    CallRecorder recorder;
    int available = -1;
    QCOMPARE(sensor->dataAvail(available), NoError);
    QCOMPARE(available, 7);
    QCOMPARE(recorder.take(), QStringList("DataAvail()"));
}

void TestTransfer::scaledVector()
{
    TransferSensor sensor;
    sensor.put(6);
    CallRecorder recorder;
    QVector<double> values;
    QCOMPARE(sensor->transferData(values), NoError);
    QCOMPARE(values, TransferSensor::scaledValues(6));
    QCOMPARE(recorder.take(), QStringList({"DataAvail()", "TransferData(null, scaled, 6)"}));
}

void TestTransfer::callersBuffers()
{
    TransferSensor sensor;
    sensor.put(9);
    CallRecorder recorder;
    QVector<double> scaled(6);
    QVector<int> raw(6);
    double timestamp = 0.0;
    int count = 6;
    QCOMPARE(sensor->transferData(scaled.data(), raw.data(), &timestamp, count), NoError);
    QCOMPARE(count, 6);
    QCOMPARE(scaled, TransferSensor::scaledValues(6));
    QCOMPARE(raw, TransferSensor::rawValues(6));
    QCOMPARE(timestamp, 12.5);
    QCOMPARE(recorder.take(), QStringList("TransferDataTS(raw, scaled, 6)"));
}

void TestTransfer::eitherBufferMayBeAbsent_data()
{
    QTest::addColumn<bool>("withRaw");
    QTest::addColumn<bool>("withScaled");
    QTest::addColumn<bool>("withTimestamp");
    QTest::addColumn<QString>("call");
    QTest::newRow("scaled alone") << false << true << true << "TransferDataTS(null, scaled, 3)";
    QTest::newRow("raw alone") << true << false << true << "TransferDataTS(raw, null, 3)";
    QTest::newRow("no timestamp") << true << true << false << "TransferDataTS(raw, scaled, 3)";
}

void TestTransfer::eitherBufferMayBeAbsent()
{
    QFETCH(bool, withRaw);
    QFETCH(bool, withScaled);
    QFETCH(bool, withTimestamp);
    QFETCH(QString, call);
    TransferSensor sensor;
    sensor.put(3);
    CallRecorder recorder;
    QVector<double> scaled(3, 0.0);
    QVector<int> raw(3, 0);
    double timestamp = -1.0;
    int count = 3;
    QCOMPARE(sensor->transferData(withScaled ? scaled.data() : nullptr, withRaw ? raw.data() : nullptr,
                                  withTimestamp ? &timestamp : nullptr, count),
             NoError);
    QCOMPARE(count, 3);
    QCOMPARE(scaled, withScaled ? TransferSensor::scaledValues(3) : QVector<double>(3, 0.0));
    QCOMPARE(raw, withRaw ? TransferSensor::rawValues(3) : QVector<int>(3, 0));
    QCOMPARE(timestamp, withTimestamp ? 12.5 : -1.0);
    QCOMPARE(recorder.take(), QStringList(call));
}

void TestTransfer::fewerValuesThanTheBuffersHold()
{
    TransferSensor sensor;
    sensor.put(3);
    QVector<double> scaled(5, 0.5);
    double timestamp = 0.0;
    int count = 5;
    QCOMPARE(sensor->transferData(scaled.data(), nullptr, &timestamp, count), NoError);
    QCOMPARE(count, 3);
    QCOMPARE(scaled, TransferSensor::scaledValues(3) + QVector<double>(2, 0.5));
}

void TestTransfer::rawVector()
{
    TransferSensor sensor;
    sensor.put(6);
    CallRecorder recorder;
    QVector<int> values;
    double timestamp = 0.0;
    QCOMPARE(sensor->transferDataRaw(values, timestamp), NoError);
    QCOMPARE(values, TransferSensor::rawValues(6));
    QCOMPARE(timestamp, 12.5);
    QCOMPARE(recorder.take(), QStringList({"DataAvail()", "TransferDataTS(raw, null, 6)"}));
}

void TestTransfer::scaledVectorWithTimestamp()
{
    TransferSensor sensor;
    sensor.put(6);
    CallRecorder recorder;
    QVector<double> values;
    double timestamp = 0.0;
    QCOMPARE(sensor->transferDataScaled(values, timestamp), NoError);
    QCOMPARE(values, TransferSensor::scaledValues(6));
    QCOMPARE(timestamp, 12.5);
    QCOMPARE(recorder.take(), QStringList({"DataAvail()", "TransferDataTS(null, scaled, 6)"}));
}

void TestTransfer::rawValuesAreAskedForWhileLogging()
{
    QTemporaryDir directory;
    TransferSensor sensor;
    QCOMPARE(sensor->enableLogging(directory.filePath("sensor.log")), NoError);
    QVector<double> values;
    double timestamp = 0.0;
    // The buffer for raw values grows with the largest block and is reused for smaller ones.
    for (const int count : {3, 300, 6, 900}) {
        sensor.put(count);
        CallRecorder recorder;
        QCOMPARE(sensor->transferDataScaled(values, timestamp), NoError);
        QCOMPARE(values, TransferSensor::scaledValues(count));
        QCOMPARE(recorder.take(),
                 QStringList({"DataAvail()", QString("TransferDataTS(raw, scaled, %1)").arg(count)}));
    }

    sensor.put(3);
    CallRecorder recorder;
    QCOMPARE(sensor->transferData(values), NoError);
    QCOMPARE(recorder.take(), QStringList({"DataAvail()", "TransferData(null, scaled, 3)"}));

    QCOMPARE(sensor->disableLogging(), NoError);
    sensor.put(3);
    recorder.take();
    QCOMPARE(sensor->transferDataScaled(values, timestamp), NoError);
    QCOMPARE(recorder.take(), QStringList({"DataAvail()", "TransferDataTS(null, scaled, 3)"}));
}

void TestTransfer::noValuesScaledVector()
{
    TransferSensor sensor;
    CallRecorder recorder;
    QVector<double> values = {1.0, 2.0};
    QCOMPARE(sensor->transferData(values), NoError);
    QVERIFY(values.isEmpty());
    QCOMPARE(recorder.take(), QStringList({"DataAvail()", "TransferData(null, scaled, 0)"}));

    QVector<double> neverUsed;
    QCOMPARE(sensor->transferData(neverUsed), NoError);
    QVERIFY(neverUsed.isEmpty());
}

void TestTransfer::noValuesBuffers()
{
    TransferSensor sensor;
    CallRecorder recorder;
    double scaled = 1.0;
    double timestamp = 0.0;
    int count = 1;
    QCOMPARE(sensor->transferData(&scaled, nullptr, &timestamp, count), NoError);
    QCOMPARE(count, 0);
    QCOMPARE(scaled, 1.0);
    QCOMPARE(recorder.take(), QStringList("TransferDataTS(null, scaled, 1)"));
}

void TestTransfer::noValuesRawVector()
{
    TransferSensor sensor;
    CallRecorder recorder;
    QVector<int> values = {1, 2};
    double timestamp = -1.0;
    QCOMPARE(sensor->transferDataRaw(values, timestamp), NoError);
    QVERIFY(values.isEmpty());
    QCOMPARE(timestamp, -1.0);
    QCOMPARE(recorder.take(), QStringList("DataAvail()"));
}

void TestTransfer::noValuesScaledVectorWithTimestamp()
{
    TransferSensor sensor;
    CallRecorder recorder;
    QVector<double> values = {1.0, 2.0};
    double timestamp = -1.0;
    QCOMPARE(sensor->transferDataScaled(values, timestamp), NoError);
    QVERIFY(values.isEmpty());
    QCOMPARE(timestamp, -1.0);
    QCOMPARE(recorder.take(), QStringList("DataAvail()"));
}

void TestTransfer::vectorsShrinkToWhatArrived_data()
{
    QTest::addColumn<int>("written");
    QTest::addColumn<int>("size");
    QTest::newRow("fewer") << 4 << 4;
    QTest::newRow("none") << 0 << 0;
    QTest::newRow("negative") << -6 << 0;
    QTest::newRow("more than asked for") << 7 << 6;
    QTest::newRow("absurd") << std::numeric_limits<int>::max() << 6;
}

void TestTransfer::vectorsShrinkToWhatArrived()
{
    QFETCH(int, written);
    QFETCH(int, size);
    TransferSensor sensor;
    scriptCount("TransferData", written);
    scriptCount("TransferDataTS", written);
    double timestamp = 0.0;

    sensor.put(6);
    QVector<double> scaled;
    QCOMPARE(sensor->transferData(scaled), NoError);
    QCOMPARE(scaled, TransferSensor::scaledValues(size));

    sensor.put(6);
    QCOMPARE(sensor->transferDataScaled(scaled, timestamp), NoError);
    QCOMPARE(scaled, TransferSensor::scaledValues(size));

    sensor.put(6);
    QVector<int> raw;
    QCOMPARE(sensor->transferDataRaw(raw, timestamp), NoError);
    QCOMPARE(raw, TransferSensor::rawValues(size));

    sensor.put(6);
    raw.resize(6);
    int count = 6;
    QCOMPARE(sensor->transferData(nullptr, raw.data(), &timestamp, count), NoError);
    QCOMPARE(count, size);
}

void TestTransfer::storageIsKeptBetweenCalls()
{
    TransferSensor sensor;
    QVector<double> scaled;
    QVector<int> raw;
    double timestamp = 0.0;
    sensor.put(600);
    QCOMPARE(sensor->transferData(scaled), NoError);
    sensor.put(600);
    QCOMPARE(sensor->transferDataRaw(raw, timestamp), NoError);
    const double *scaledStorage = scaled.constData();
    const int *rawStorage = raw.constData();
    for (const int count : {600, 3, 0, 300, 600}) {
        sensor.put(count);
        QCOMPARE(sensor->transferData(scaled), NoError);
        QCOMPARE(scaled.size(), count);
        sensor.put(count);
        QCOMPARE(sensor->transferDataScaled(scaled, timestamp), NoError);
        QCOMPARE(scaled.size(), count);
        sensor.put(count);
        QCOMPARE(sensor->transferDataRaw(raw, timestamp), NoError);
        QCOMPARE(raw.size(), count);
    }
    QCOMPARE(scaled.constData(), scaledStorage);
    QCOMPARE(raw.constData(), rawStorage);
}

void TestTransfer::sharedVectorsAreLeftToTheirOtherOwners()
{
    TransferSensor sensor;
    double timestamp = 0.0;
    QVector<double> scaled(6, 1.5);
    const QVector<double> scaledCopy = scaled;
    sensor.put(6);
    QCOMPARE(sensor->transferData(scaled), NoError);
    QCOMPARE(scaled, TransferSensor::scaledValues(6));
    QCOMPARE(scaledCopy, QVector<double>(6, 1.5));

    QVector<int> raw(6, 4);
    const QVector<int> rawCopy = raw;
    sensor.put(6);
    QCOMPARE(sensor->transferDataRaw(raw, timestamp), NoError);
    QCOMPARE(raw, TransferSensor::rawValues(6));
    QCOMPARE(rawCopy, QVector<int>(6, 4));
}

void TestTransfer::successClearsTheText()
{
    TransferSensor sensor;
    QVector<double> scaled(3);
    QVector<int> raw;
    double timestamp = 0.0;
    int count = 0;
    const auto clears = [&](auto call) {
        sensor.put(3);
        QString errorText = "old";
        return call(&errorText) == NoError && errorText.isEmpty();
    };
    QVERIFY(clears([&](QString *text) { return sensor->dataAvail(count, text); }));
    QVERIFY(clears([&](QString *text) { return sensor->transferData(scaled, text); }));
    QVERIFY(clears([&](QString *text) { return sensor->transferDataRaw(raw, timestamp, text); }));
    QVERIFY(clears([&](QString *text) { return sensor->transferDataScaled(scaled, timestamp, text); }));
    count = 3;
    QVERIFY(clears(
        [&](QString *text) { return sensor->transferData(scaled.data(), nullptr, &timestamp, count, text); }));

    // Cleared even if there was nothing to transfer.
    sensor->transferData(scaled);
    QString errorText = "old";
    QCOMPARE(sensor->transferDataRaw(raw, timestamp, &errorText), NoError);
    QCOMPARE(errorText, QString());
}

QTEST_GUILESS_MAIN(TestTransfer)
#include "tst_transfer.moc"
