// SPDX-License-Identifier: MIT
#include "instance/sampleratereference.h"
#include "support/callrecorder.h"
#include "support/scripting.h"
#include "support/testbench.h"

#include <SondixQt/SpecialSensorInstance>

#include <cmath>
#include <memory>

using namespace SondixQt;
using Parameters = QMap<QString, QVariant>;

class TestReadSampleRate : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void rateOfEveryModel_data();
    void rateOfEveryModel();
    void failingCommandGivesItsError_data();
    void failingCommandGivesItsError();
    void failureWithoutAnErrorLeavesTheText_data();
    void failureWithoutAnErrorLeavesTheText();
    void missingAnswerGivesItsError();
    void callersTextIsClearedOnSuccess_data();
    void callersTextIsClearedOnSuccess();
    void unwantedRateMayBeNull_data();
    void unwantedRateMayBeNull();
    void questionsPassTheVirtualCommandLayer();

    void distanceTracking_data();
    void distanceTracking();
    void distanceTrackingNeedsItsOwnClass();
    void distanceTrackingReadsTheFirstSensorsInformation();
    void frequencyAverage_data();
    void frequencyAverage();
    void frequencyWithoutAverageIsNotGuarded();
    void averaged_data();
    void averaged();
    void averagedIgnoresTheCommandsResult();
    void averagedReadsUpToTheFirstMissingAnswer();
};

namespace {

constexpr double stale = 99.0;

/// The call that reads the answer.
QByteArray callOfRead(const reference::Model &model)
{
    const QByteArray getter = model.kind == reference::Index ? "GetParameterInt" : "GetParameterDouble";
    return getter + "(\"" + model.answer.toLatin1() + "\")";
}

void addRow(const reference::Model &model, const char *answer, double rate)
{
    QTest::newRow((QByteArray::number(model.code) + " answers " + answer).constData())
        << model.code << model.command << callOfRead(model) << model.answer.toLatin1() + "=" + answer << rate;
}

void addRowsOf(const reference::Model &model)
{
    switch (model.kind) {
    case reference::Constant:
        QTest::newRow(QByteArray::number(model.code).constData())
            << model.code << QString() << QByteArray() << QByteArray() << model.rates.first();
        break;
    case reference::Index:
        for (int index = 0; index < model.rates.size(); ++index)
            addRow(model, QByteArray::number(index).constData(), model.rates.at(index));
        addRow(model, QByteArray::number(model.rates.size()).constData(), 0.0);
        addRow(model, "-1", 0.0);
        addRow(model, "2147483647", 0.0);
        addRow(model, "-2147483648", 0.0);
        break;
    case reference::Kilohertz:
        addRow(model, "2.5", 2.5);
        break;
    case reference::Hertz:
        addRow(model, "2500.0", 2500.0 / 1000.0);
        break;
    case reference::Microseconds:
        addRow(model, "80.0", 1.0 / (80.0 * 0.001));
        break;
    case reference::Distance:
    case reference::Frequency:
    case reference::Averaged:
        break; // has tests of its own
    }
}

} // namespace

void TestReadSampleRate::init()
{
    loadTestBench();
}

void TestReadSampleRate::cleanup()
{
    sondixsim::clearFaults();
}

void TestReadSampleRate::rateOfEveryModel_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QByteArray>("read");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<double>("rate");
    const QVector<reference::Model> models = reference::models();
    for (const reference::Model &model : models)
        addRowsOf(model);
}

void TestReadSampleRate::rateOfEveryModel()
{
    QFETCH(int, code);
    QFETCH(QString, command);
    QFETCH(QByteArray, read);
    QFETCH(QByteArray, answer);
    QFETCH(double, rate);
    SensorInstance instance{SensorType(code)};
    QStringList expectedCalls;
    if (!command.isEmpty()) {
        scriptAnswer(command.toStdString(), answer);
        expectedCalls = commandCalls(command) + QStringList(QString::fromLatin1(read));
    }
    CallRecorder recorder;
    double measured = stale;
    QCOMPARE(instance.getSampleRateInKhz(&measured), NoError);
    QVERIFY2(measured == rate, qPrintable(QString::number(measured, 'g', 17)));
    QCOMPARE(recorder.take(), expectedCalls);
}

void TestReadSampleRate::failingCommandGivesItsError_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("command");
    const QVector<reference::Model> models = reference::models();
    for (const reference::Model &model : models) {
        if (!model.command.isEmpty() && model.kind != reference::Averaged)
            QTest::newRow(QByteArray::number(model.code).constData()) << model.code << model.command;
    }
}

void TestReadSampleRate::failingCommandGivesItsError()
{
    QFETCH(int, code);
    QFETCH(QString, command);
    SensorInstance instance{SensorType(code)};
    scriptCommandFailure(command.toStdString(), -815);
    QSignalSpy messages(&instance, &SensorInstance::errorMessage);
    CallRecorder recorder;
    double rate = stale;
    QString errorText;
    QCOMPARE(instance.getSampleRateInKhz(&rate, &errorText), ErrorCode(-815));
    QVERIFY(rate == 0.0);
    QCOMPARE(errorText, QString::fromLatin1(scriptedFailure));
    QCOMPARE(messages.size(), 1);
    QCOMPARE(recorder.take(), commandCalls(command) + QStringList("GetError(4096)"));
}

void TestReadSampleRate::failureWithoutAnErrorLeavesTheText_data()
{
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<bool>("silent");
    QTest::addColumn<QString>("text");
    QTest::newRow("staging the command") << QByteArray("SetParameterString") << true << "old";
    QTest::newRow("the command") << QByteArray("SensorCommand") << true << "old";
    QTest::newRow("reading the answer") << QByteArray("GetParameterDouble") << true << "old";
    QTest::newRow("an error with an empty text") << QByteArray("SensorCommand") << false << QString();
}

void TestReadSampleRate::failureWithoutAnErrorLeavesTheText()
{
    QFETCH(QByteArray, function);
    QFETCH(bool, silent);
    SensorInstance instance(SensorType::TX270);
    scriptAnswer("Get_Samplerate", "SA_Measrate=2.0");
    scriptFailure(function.toStdString(), -815, std::string(), silent);
    double rate = stale;
    QString errorText = "old";
    QCOMPARE(instance.getSampleRateInKhz(&rate, &errorText), ErrorCode(-815));
    QVERIFY(rate == 0.0);
    QTEST(errorText, "text");
}

void TestReadSampleRate::missingAnswerGivesItsError()
{
    SensorInstance instance(SensorType::TX220);
    scriptAnswer("Get_Settings", "SA_Other=1");
    double rate = stale;
    QString errorText;
    QVERIFY(instance.getSampleRateInKhz(&rate, &errorText) != NoError);
    QVERIFY(rate == 0.0);
    QVERIFY(!errorText.isEmpty());
}

void TestReadSampleRate::callersTextIsClearedOnSuccess_data()
{
    QTest::addColumn<int>("code");
    QTest::newRow("answer") << int(SensorType::TX220);
    QTest::newRow("constant") << int(SensorType::TX210);
    QTest::newRow("averaging, without an answer") << int(SensorType::EC810);
    QTest::newRow("unknown") << int(SensorType::XA100PCI);
}

void TestReadSampleRate::callersTextIsClearedOnSuccess()
{
    QFETCH(int, code);
    SensorInstance instance{SensorType(code)};
    scriptAnswer("Get_Settings", "SA_Speed=1");
    double rate = stale;
    QString errorText = "old";
    QCOMPARE(instance.getSampleRateInKhz(&rate, &errorText), NoError);
    QVERIFY(rate != stale);
    QCOMPARE(errorText, QString());
}

void TestReadSampleRate::unwantedRateMayBeNull_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("command");
    QTest::newRow("constant") << 1 << QString();
    QTest::newRow("index") << 2 << "Get_Settings";
    QTest::newRow("answer") << int(TX270) << "Get_Samplerate";
    QTest::newRow("time") << int(CP730) << "Get_SampleTime";
    QTest::newRow("unknown") << int(XA100PCI) << QString();
}

void TestReadSampleRate::unwantedRateMayBeNull()
{
    QFETCH(int, code);
    QFETCH(QString, command);
    SensorInstance instance{SensorType(code)};
    if (!command.isEmpty())
        scriptAnswer(command.toStdString(), "SA_Speed=1 SA_Measrate=2.0 SA_SampleTime=3.0");
    CallRecorder recorder;
    QCOMPARE(instance.getSampleRateInKhz(nullptr), NoError);
    QCOMPARE(recorder.take().isEmpty(), command.isEmpty());
}

namespace {

/// Records the commands that pass through the virtual function.
class QuestionNotingInstance : public SpecialSensorInstance
{
public:
    using SpecialSensorInstance::SpecialSensorInstance;
    ErrorCode actionBeforeSendCommand(const QString &command, QString *) override
    {
        noted.append(command);
        return NoError;
    }
    QStringList noted;
};

} // namespace

void TestReadSampleRate::questionsPassTheVirtualCommandLayer()
{
    const QVector<QPair<SensorType, QString>> questions = {
        {SensorType::TX220, "Get_Settings"},   {SensorType::TX270, "Get_Samplerate"},
        {SensorType::CP740, "Get_Samplerate"}, {SensorType::CP730, "Get_SampleTime"},
        {SensorType::EC810, "Get_Settings"},
    };
    for (const auto &question : questions) {
        QuestionNotingInstance instance(question.first);
        scriptAnswer(question.second.toStdString(),
                     "SA_Speed=1 SA_Measrate=2.0 SA_SampleTime=3.0 SA_SRIndex=0 SA_AvrType=0 SA_AvrNbr=0");
        double rate = 0.0;
        QCOMPARE(instance.getSampleRateInKhz(&rate), NoError);
        QCOMPARE(instance.noted, QStringList(question.second));
        sondixsim::clearFaults();
    }
}

void TestReadSampleRate::distanceTracking_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QVariant>("measureTime");
    QTest::addColumn<double>("rate");
    QTest::newRow("distance") << 0 << QVariant(25) << 1.0 / (25 * 240.0);
    QTest::newRow("distance, no time") << 0 << QVariant(0) << 0.0;
    QTest::newRow("distance, negative time") << 0 << QVariant(-25) << 0.0;
    QTest::newRow("distance, no time reported") << 0 << QVariant() << 0.0;
    QTest::newRow("distance, absurd time") << 0 << QVariant(1e300) << 0.0;
    QTest::newRow("distance to 7 m") << 1 << QVariant(25) << 1.0 / (25 * 150.0);
    QTest::newRow("distance to 7 m, no time") << 1 << QVariant(0) << 0.0;
    QTest::newRow("10 Hz") << 2 << QVariant(25) << 0.01;
    QTest::newRow("10 Hz, no time") << 2 << QVariant() << 0.01;
    QTest::newRow("50 Hz") << 3 << QVariant(25) << 0.05;
    QTest::newRow("triggered") << 4 << QVariant(25) << 0.0;
    QTest::newRow("10 Hz by another name") << 8 << QVariant(25) << 0.01;
    QTest::newRow("no such mode") << 9 << QVariant(25) << 0.0;
    QTest::newRow("not read yet") << -1 << QVariant(25) << 0.0;
}

void TestReadSampleRate::distanceTracking()
{
    QFETCH(int, mode);
    QFETCH(QVariant, measureTime);
    QFETCH(double, rate);
    SpecialSensorInstanceRG52x instance;
    instance.setTrackingMode(mode);
    if (measureTime.isValid())
        instance.addInfoParameters(Parameters{{"SA_MeasureTime", measureTime}}, 1);
    CallRecorder recorder;
    double measured = stale;
    QCOMPARE(instance.getSampleRateInKhz(&measured), NoError);
    QVERIFY(measured == rate);
    QCOMPARE(recorder.take(), QStringList());
}

void TestReadSampleRate::distanceTrackingNeedsItsOwnClass()
{
    SensorInstance plain(SensorType::RG52x);
    SpecialSensorInstance special(SensorType::RG52x);
    for (SensorInstance *instance : {&plain, static_cast<SensorInstance *>(&special)}) {
        instance->addInfoParameters(Parameters{{"SA_MeasureTime", 25}}, 1);
        double rate = stale;
        QCOMPARE(instance->getSampleRateInKhz(&rate), NoError);
        QVERIFY(rate == 0.0);
    }
}

void TestReadSampleRate::distanceTrackingReadsTheFirstSensorsInformation()
{
    SpecialSensorInstanceRG52x instance;
    instance.setTrackingMode(0);
    instance.addInfoParameters(Parameters{{"SA_MeasureTime", 25}}, 1);
    instance.addInfoParameters(Parameters{{"SA_MeasureTime", 50}}, 2);
    double rate = stale;
    QCOMPARE(instance.getSampleRateInKhz(&rate), NoError);
    QVERIFY(rate == 1.0 / (25 * 240.0));
}

void TestReadSampleRate::frequencyAverage_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("mode");
    QTest::addColumn<double>("rate");
    QTest::newRow("plain instance") << "plain" << 5 << 0.1;
    QTest::newRow("other special instance") << "special" << 5 << 0.1;
    QTest::newRow("speed") << "RG531" << 5 << 2000.0 / 20.0 / 25.0 / 1000.0;
    QTest::newRow("distance") << "RG531" << 2 << 0.1;
    QTest::newRow("not read yet") << "RG531" << -1 << 0.1;
}

void TestReadSampleRate::frequencyAverage()
{
    QFETCH(QString, kind);
    QFETCH(int, mode);
    QFETCH(double, rate);
    std::unique_ptr<SensorInstance> instance;
    if (kind == "RG531") {
        auto tracking = std::make_unique<SpecialSensorInstanceRG531>();
        tracking->setTrackingMode(mode);
        instance = std::move(tracking);
    } else if (kind == "special") {
        instance = std::make_unique<SpecialSensorInstance>(SensorType::RG53x);
    } else {
        instance = std::make_unique<SensorInstance>(SensorType::RG53x);
    }
    instance->addInfoParameters(Parameters{{"SA_MeasFrequency", 2000}, {"SA_Average", 20}}, 1);
    instance->addInfoParameters(Parameters{{"SA_MeasFrequency", 1}, {"SA_Average", 1}}, 2);
    CallRecorder recorder;
    double measured = stale;
    QCOMPARE(instance->getSampleRateInKhz(&measured), NoError);
    QVERIFY(measured == rate);
    QCOMPARE(recorder.take(), QStringList());
}

void TestReadSampleRate::frequencyWithoutAverageIsNotGuarded()
{
    SensorInstance instance(SensorType::RG53x);
    double rate = stale;
    QCOMPARE(instance.getSampleRateInKhz(&rate), NoError);
    QVERIFY(std::isnan(rate));
    instance.addInfoParameters(Parameters{{"SA_MeasFrequency", 2000}}, 1);
    QCOMPARE(instance.getSampleRateInKhz(&rate), NoError);
    QVERIFY(std::isinf(rate));
}

void TestReadSampleRate::averaged_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<double>("rate");
    const auto add = [](const char *answer, double rate) { QTest::newRow(answer) << QByteArray(answer) << rate; };
    add("SA_SRIndex=0 SA_AvrType=0 SA_AvrNbr=0", 3.6);
    add("SA_SRIndex=1 SA_AvrType=0 SA_AvrNbr=9", 7.2);
    add("SA_SRIndex=2 SA_AvrType=2 SA_AvrNbr=0", 14.4);
    add("SA_SRIndex=1 SA_AvrType=3 SA_AvrNbr=2", 7.2 / 7);
    add("SA_SRIndex=3 SA_AvrType=3 SA_AvrNbr=2", 0.0);
    add("SA_SRIndex=-1 SA_AvrType=3 SA_AvrNbr=2", 0.0);
    add("SA_SRIndex=1 SA_AvrType=3 SA_AvrNbr=-1", 0.0);
}

void TestReadSampleRate::averaged()
{
    QFETCH(QByteArray, answer);
    QFETCH(double, rate);
    SensorInstance instance(SensorType::EC810);
    scriptAnswer("Get_Settings", answer);
    CallRecorder recorder;
    double measured = stale;
    QCOMPARE(instance.getSampleRateInKhz(&measured), NoError);
    QVERIFY(measured == rate);
    QCOMPARE(recorder.take(), commandCalls("Get_Settings") +
                                  QStringList({"GetParameterInt(\"SA_AvrNbr\")", "GetParameterInt(\"SA_AvrType\")",
                                               "GetParameterInt(\"SA_SRIndex\")"}));
}

void TestReadSampleRate::averagedIgnoresTheCommandsResult()
{
    SensorInstance instance(SensorType::EC810);
    scriptCommandFailure("Get_Settings", -815);
    double rate = stale;
    QCOMPARE(instance.getSampleRateInKhz(&rate), NoError);
    QVERIFY(rate == 0.0);
}

void TestReadSampleRate::averagedReadsUpToTheFirstMissingAnswer()
{
    // Answers are read in the order of their names: SA_SRIndex is the last one and is not read.
    SensorInstance instance(SensorType::EC810);
    scriptAnswer("Get_Settings", "SA_AvrNbr=2 SA_SRIndex=1");
    double rate = stale;
    QCOMPARE(instance.getSampleRateInKhz(&rate), NoError);
    QVERIFY(rate == 0.0);
}

QTEST_GUILESS_MAIN(TestReadSampleRate)
#include "tst_readsamplerate.moc"
