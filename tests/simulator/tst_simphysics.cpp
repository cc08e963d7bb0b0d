// SPDX-License-Identifier: MIT
#include "handle.h"
#include "SondixSimulator/control.h"

#include <algorithm>
#include <cmath>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>
#include <SondixQt/namelookup.h>
#include <SondixQt/sensorfeatures.h>

/// The values of a simulated sensor, measured by their statistics.
class TestSimPhysics : public QObject
{
    Q_OBJECT

private:
    /// A TX270 at 1000 Hz on a virtual clock; \a signal are the keys of its signal, \a more those of the sensor.
    static void load(const std::string &signal, const std::string &more = "")
    {
        sondixsim::loadBench(
            R"({ "clock": { "virtual": true }, "sensors": [ { "model": "TX270", "serialNumber": "1", "rate": 1000,
                 "place": { "interface": "WinUSB" }, "signals": [ { "name": "a", "rawRange": [-2000000000, 2000000000], )" +
            signal + " } ]" + more + " } ] }");
    }
    static std::vector<double> valuesOf(std::uint32_t handle, int seconds)
    {
        std::vector<double> values;
        for (int i = 0; i < seconds; ++i) {
            sondixsim::advance(1.0);
            const Block block = takeBlock(handle, 1000);
            values.insert(values.end(), block.scaled.begin(), block.scaled.end());
        }
        return values;
    }
    static double meanOf(const std::vector<double> &values)
    {
        double sum = 0.0;
        for (const double value : values)
            sum += value;
        return sum / static_cast<double>(values.size());
    }
    /// The central moment of that order.
    static double momentOf(const std::vector<double> &values, int order)
    {
        const double mean = meanOf(values);
        double sum = 0.0;
        for (const double value : values)
            sum += std::pow(value - mean, order);
        return sum / static_cast<double>(values.size());
    }
    static void setAveraging(Handle &handle, int type, int number)
    {
        handle.set("SP_AveragingType", type);
        handle.set("SP_AveragingNumber", number);
        QCOMPARE(handle.command("Set_Averaging"), 0);
        handle.command("Clear_Buffers");
    }

private Q_SLOTS:
    void noiseIsGaussianToTheTails()
    {
        load(R"("range": [-100, 100], "generator": { "kind": "noise", "sigma": 1.0 })");
        Handle handle(SensorType::TX270);
        handle.open();
        const std::vector<double> values = valuesOf(handle, 300);
        const auto count = static_cast<double>(values.size());
        QCOMPARE(values.size(), std::size_t(300000));
        QVERIFY(std::fabs(meanOf(values)) < 5.0 / std::sqrt(count));
        QVERIFY(std::fabs(momentOf(values, 2) - 1.0) < 0.015);
        QVERIFY(std::fabs(momentOf(values, 3)) < 0.03);
        QVERIFY(std::fabs(momentOf(values, 4) - 3.0) < 0.1);
        // The share of a normal distribution beyond so many standard deviations, within five of the count's own.
        for (const double limit : {0.5, 1.0, 2.0, 3.0, 4.0}) {
            const double expected = count * std::erfc(limit / std::sqrt(2.0));
            const auto found = static_cast<double>(
                std::count_if(values.begin(), values.end(), [limit](double v) { return std::fabs(v) > limit; }));
            QVERIFY2(std::fabs(found - expected) < 5.0 * std::sqrt(expected), qPrintable(QString::number(limit)));
        }
    }

    void noiseIsIndependent()
    {
        sondixsim::loadBench(
            R"({ "clock": { "virtual": true }, "sensors": [ { "model": "TX270", "serialNumber": "1",
            "rate": 1000, "place": { "interface": "WinUSB" }, "signals": [
            { "name": "a", "range": [-10, 10], "generator": { "kind": "noise", "sigma": 1.0 } },
            { "name": "b", "range": [-10, 10], "generator": { "kind": "noise", "sigma": 1.0 } } ] } ] })");
        Handle handle(SensorType::TX270);
        handle.open();
        sondixsim::advance(30.0);
        const std::vector<double> values = takeBlock(handle, 60000).scaled;
        QCOMPARE(values.size(), std::size_t(60000));
        // The distance 1 is that of the signals of a frame, 2 that of two frames of a signal.
        for (const std::size_t distance : {1, 2, 4, 20, 2000}) {
            double sum = 0.0;
            for (std::size_t i = 0; i + distance < values.size(); ++i)
                sum += values[i] * values[i + distance];
            const auto count = static_cast<double>(values.size() - distance);
            QVERIFY2(std::fabs(sum / count) < 5.0 / std::sqrt(count), qPrintable(QString::number(distance)));
        }
    }

    void averagingLowersTheNoiseByItsRoot_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("number");
        QTest::addColumn<double>("divisor");
        QTest::newRow("off") << 0 << 64 << 1.0;
        QTest::newRow("of nothing") << 1 << 0 << 1.0;
        QTest::newRow("4") << 1 << 4 << 2.0;
        QTest::newRow("64") << 1 << 64 << 8.0;
        QTest::newRow("1024") << 2 << 1024 << 32.0;
    }
    void averagingLowersTheNoiseByItsRoot()
    {
        QFETCH(int, type);
        QFETCH(int, number);
        QFETCH(double, divisor);
        load(R"("range": [-100, 100], "generator": [ { "kind": "constant", "value": 5.0 },
                                                     { "kind": "noise", "sigma": 2.0 } ])");
        Handle handle(SensorType::TX270);
        handle.open();
        setAveraging(handle, type, number);
        const std::vector<double> values = valuesOf(handle, 20);
        const double sigma = 2.0 / divisor;
        QVERIFY(std::fabs(std::sqrt(momentOf(values, 2)) / sigma - 1.0) < 0.03);
        QVERIFY(std::fabs(meanOf(values) - 5.0) < 5.0 * sigma / std::sqrt(20000.0));
    }

    void averagingThatDividesTheRateLowersTheNoise_data()
    {
        QTest::addColumn<QString>("model");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("settings");
        QTest::addColumn<int>("hertz");
        QTest::addColumn<double>("divisor");
        const auto row = [](const char *name, const char *model, int type, const char *settings, int hertz,
                            double divisor) {
            QTest::newRow(name) << model << type << settings << hertz << divisor;
        };
        const int rg53x = SensorType::RG53x;
        const int ec810 = SensorType::EC810;
        row("RG53x alone", "RG53x", rg53x, R"("Average": { "SA_Average": 1 })", 2000, 1.0);
        row("RG53x of 16", "RG53x", rg53x, R"("Average": { "SA_Average": 16 })", 125, 4.0);
        row("RG53x of 100", "RG53x", rg53x, R"("Average": { "SA_Average": 100 })", 20, 10.0);
        row("EC810 alone", "EC810", ec810, R"("Settings": { "SA_AvrType": 0 })", 3600, 1.0);
        row("EC810 of 9", "EC810", ec810, R"("Settings": { "SA_AvrType": 3, "SA_AvrNbr": 3 })", 400, 3.0);
    }
    void averagingThatDividesTheRateLowersTheNoise()
    {
        QFETCH(QString, model);
        QFETCH(int, type);
        QFETCH(QString, settings);
        QFETCH(int, hertz);
        QFETCH(double, divisor);
        sondixsim::loadBench(QString(R"({ "clock": { "virtual": true }, "sensors": [ {
            "model": "%1", "serialNumber": "1", "place": { "interface": "WinUSB" }, "settings": { %2 },
            "signals": [
                { "name": "a", "range": [-100, 100], "rawRange": [-2000000000, 2000000000],
                  "generator": [ { "kind": "constant", "value": 5.0 }, { "kind": "noise", "sigma": 2.0 } ] },
                { "name": "b", "range": [-1, 10], "rawRange": [-2000000000, 2000000000],
                  "generator": { "kind": "step", "from": 0.0, "to": 6.0, "period": 1.34 } } ] } ] })")
                                 .arg(model, settings)
                                 .toStdString());
        Handle handle(type);
        QCOMPARE(handle.open(), 0);
        std::vector<double> noise;
        int between = 0; // values of the step that are on neither side
        constexpr int seconds = 100;
        for (int i = 0; i < seconds; ++i) {
            sondixsim::advance(1.0);
            const Block block = takeBlock(handle, 2 * hertz);
            for (std::size_t j = 0; j + 1 < block.scaled.size(); j += 2) {
                noise.push_back(block.scaled[j]);
                const double step = block.scaled[j + 1];
                between += step > 0.001 && step < 5.999 ? 1 : 0;
            }
        }
        QCOMPARE(noise.size(), static_cast<std::size_t>(hertz * seconds));
        const double sigma = 2.0 / divisor;
        const double uncertainty = 5.0 / std::sqrt(2.0 * static_cast<double>(noise.size())); // of the deviation
        QVERIFY(std::fabs(std::sqrt(momentOf(noise, 2)) / sigma - 1.0) < uncertainty);
        QVERIFY(std::fabs(meanOf(noise) - 5.0) < 5.0 * sigma / std::sqrt(static_cast<double>(noise.size())));
        // The measurements of a frame are no others' as well: an edge falls into one frame at most.
        const int edges = static_cast<int>(2 * seconds / 1.34);
        QVERIFY(between <= edges + 1);
        QVERIFY(divisor == 1.0 ? between == 0 : between > edges / 2);
    }

    void averagingMakesEdgesLessSteep_data()
    {
        QTest::addColumn<int>("number");
        for (const int number : {2, 8, 50, 200})
            QTest::addRow("%d", number) << number;
    }
    void averagingMakesEdgesLessSteep()
    {
        QFETCH(int, number);
        load(R"("range": [-1, 10], "generator": { "kind": "step", "from": 0.0, "to": 6.0, "period": 1.0 })");
        Handle handle(SensorType::TX270);
        handle.open();
        setAveraging(handle, 1, number);
        sondixsim::advance(0.2);
        handle.command("Clear_Buffers");
        sondixsim::advance(0.7); // over the edge at 0.5
        const Block block = takeBlock(handle, 1000);
        QCOMPARE(block.scaled.size(), std::size_t(700));
        const auto between = std::count_if(block.scaled.begin(), block.scaled.end(),
                                           [](double value) { return value > 1e-6 && value < 6.0 - 1e-6; });
        QVERIFY(std::abs(int(between) - (number - 1)) <= 1 + number / 64);
        QVERIFY(std::is_sorted(block.scaled.begin(), block.scaled.end()));
        // Half of the step after half of the measurements.
        const double middle = block.scaled[static_cast<std::size_t>(300 + number / 2 - 1)];
        QVERIFY2(std::fabs(middle - 3.0) <= 6.0 / number + 6.0 / 64, qPrintable(QString::number(middle)));
    }

    void valuesOutsideTheRangeAreErrors()
    {
        load(R"("range": [0, 10], "generator": [ { "kind": "constant", "value": 10.0 },
                                                 { "kind": "noise", "sigma": 0.1 } ])");
        Handle handle(SensorType::TX270);
        handle.open();
        const std::vector<double> values = valuesOf(handle, 20);
        constexpr double targetOutOfRange = -1.0e10 - 4.0;
        const auto errors = std::count(values.begin(), values.end(), targetOutOfRange);
        QVERIFY(std::abs(errors - 10000) < 5 * 71); // half of them, with the deviation of 20000 tosses of a coin
        for (const double value : values)
            QVERIFY(value == targetOutOfRange || (value > 9.0 && value <= 10.0));
    }

    void everyModelHasAnErrorValueForValuesOutsideTheRange()
    {
        const QJsonObject schema =
            QJsonDocument::fromJson(QByteArray::fromStdString(sondixsim::benchSchema())).object();
        const QJsonArray models =
            schema[QStringLiteral("definitions")][QStringLiteral("sensor")][QStringLiteral("properties")]
                  [QStringLiteral("model")][QStringLiteral("enum")]
                      .toArray();
        int checked = 0;
        for (const QJsonValue &name : models) {
            const std::string model = name.toString().toStdString();
            const SensorType type = SondixQt::getSensorTypeFromName(name.toString());
            if (type == SondixQt::MultiSensor || type == SondixQt::NoSensor) // no values of their own; an alias
                continue;
            sondixsim::loadBench(
                R"({ "clock": { "virtual": true }, "sensors": [ { "serialNumber": "1", "model": ")" + model +
                R"(", "place": )" + placeOf(model) + R"(, "signals": [ { "name": "a",
                "range": [0, 10], "generator": { "kind": "constant", "value": 20 } } ] } ] })");
            Handle handle(type % 10000);
            QVERIFY2(handle.open() == 0, model.c_str());
            sondixsim::advance(60.0);
            handle.command("Get_Measure"); // only those on a bus know it
            const std::vector<double> values = takeBlock(handle, 1000).scaled;
            if (values.empty()) // it measures only after a command, or not at all
                continue;
            handle.command("Get_SensorErrorValueText");
            const QString texts = QString::fromStdString(handle.getText("SA_SensorErrorValueText", ""));
            const auto match = QRegularExpression(QStringLiteral("(-\\d+): [^\r\n]*out of range"),
                                                  QRegularExpression::CaseInsensitiveOption)
                                   .match(texts);
            QVERIFY2(match.hasMatch(), model.c_str());
            const double expected = -1.0e10 + match.captured(1).toInt();
            ++checked;
            for (const double value : values)
                QVERIFY2(value == expected, qPrintable(name.toString() + QString::number(value, 'f')));
        }
        QVERIFY2(checked >= 60, qPrintable(QString::number(checked)));
    }

    void valuesAreLimitedWithoutAnErrorValue_data()
    {
        QTest::addColumn<QByteArray>("signal");
        QTest::addColumn<QByteArray>("sensor");
        QTest::newRow("sensor without one") << QByteArray() << QByteArray(R"(, "outOfRange": null)");
        QTest::newRow("signal that saturates") << QByteArray(R"("major": false, )") << QByteArray();
    }
    void valuesAreLimitedWithoutAnErrorValue()
    {
        QFETCH(QByteArray, signal);
        QFETCH(QByteArray, sensor);
        load(signal.toStdString() + R"("range": [0, 10], "generator": { "kind": "constant", "value": 11.0 })",
             sensor.toStdString());
        Handle handle(SensorType::TX270);
        handle.open();
        const std::vector<double> values = valuesOf(handle, 1);
        QCOMPARE(values.size(), std::size_t(1000));
        for (const double value : values)
            QCOMPARE(value, 10.0);
    }

    void temperatureDriftsTheValue()
    {
        load(R"("range": [-10, 10], "generator": { "kind": "temperature", "perKelvin": 0.02, "warmUp": 15.0,
                                                   "timeConstant": 600, "swing": 3.0, "day": 86400 })");
        Handle handle(SensorType::TX270);
        handle.open();
        const auto valueAt = [&](double seconds) {
            sondixsim::advance(seconds - sondixsim::now());
            handle.command("Clear_Buffers");
            sondixsim::advance(0.001);
            const Block block = takeBlock(handle, 1);
            return block.scaled.empty() ? -1.0 : block.scaled.front();
        };
        // After its time constant the sensor is 15 K * (1 - 1/e) warmer, and in the end 15 K. The surroundings are
        // 3 K warmer after a quarter of the day, and 3 K colder after three quarters.
        QVERIFY(std::fabs(valueAt(600.0) - 0.02 * (15.0 * (1.0 - std::exp(-1.0)) + 3.0 * 0.0436194)) < 1e-4);
        QVERIFY(std::fabs(valueAt(21600.0) - 0.02 * (15.0 + 3.0)) < 1e-4);
        QVERIFY(std::fabs(valueAt(64800.0) - 0.02 * (15.0 - 3.0)) < 1e-4);
    }

    void temperatureAndNoiseAddUp()
    {
        // Within 600 s the mean of 10 s follows the warming of 15 K, and the noise around it is the sensor's own.
        load(R"("range": [-10, 10], "generator": [ { "kind": "noise", "sigma": 0.01 },
                { "kind": "temperature", "perKelvin": 0.02, "warmUp": 15.0, "timeConstant": 600 } ])");
        Handle handle(SensorType::TX270);
        handle.open();
        for (int i = 0; i < 60; i += 10) {
            sondixsim::advance(i == 0 ? 0.0 : 90.0);
            handle.command("Clear_Buffers");
            const double middle = sondixsim::now() + 5.0;
            const std::vector<double> values = valuesOf(handle, 10);
            const double expected = 0.02 * 15.0 * (1.0 - std::exp(-middle / 600.0));
            QVERIFY(std::fabs(meanOf(values) - expected) < 5.0 * 0.01 / std::sqrt(10000.0) + 1e-4);
            // The drift within 10 s adds the variance of its slope.
            const double slope = 0.02 * 15.0 * std::exp(-middle / 600.0) / 600.0;
            const double variance = 0.01 * 0.01 + slope * slope * 100.0 / 12.0;
            QVERIFY(std::fabs(momentOf(values, 2) / variance - 1.0) < 5.0 * std::sqrt(2.0 / 10000.0));
        }
    }

    void equalSeedsGiveEqualValues()
    {
        std::vector<double> first;
        for (const bool again : {false, true}) {
            load(R"("range": [0, 10], "generator": [ { "kind": "constant", "value": 9.0 },
                     { "kind": "noise", "sigma": 1.0 }, { "kind": "temperature", "perKelvin": 0.1, "warmUp": 5.0 } ])");
            Handle handle(SensorType::TX270);
            handle.open();
            setAveraging(handle, 1, 2);
            const std::vector<double> values = valuesOf(handle, 3);
            if (again)
                QCOMPARE(values, first);
            first = values;
        }
    }
};

QTEST_GUILESS_MAIN(TestSimPhysics)
#include "tst_simphysics.moc"
