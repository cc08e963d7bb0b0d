// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/SensorAddress>
#include <SondixSimulator/control.h>

#include <QString>

/// A bench with one sensor, whose values tell which frame they belong to and when it was measured.
namespace soakbench {

constexpr const char *serialNumber = "1";

/// The first value of a frame: its number since the sensor was opened, modulo this.
constexpr qint64 counterModulo = qint64(1) << 30;
/// The second value of a frame: its time since the bench was loaded, in these parts of the span of the bench.
constexpr double timeSteps = double(1 << 30);
/// A measuring mode in which the values have other names.
constexpr int otherMode = 3;

struct Setup
{
    double rate = 1000.0;   ///< Hz, as the sensor reports it
    int ring = 1000;        ///< frames
    double span = 1024.0;   ///< seconds that the bench can run
    double rateError = 0.0; ///< the sensor measures slower than it reports, by this part
};

/// Loads the bench. Its clock is virtual.
inline void load(const Setup &setup)
{
    const auto number = [](double value) { return QString::number(value, 'g', 17).toStdString(); };
    const std::string steps = number(timeSteps);
    const std::string span = number(setup.span);
    const std::string kiloHertz = number(setup.rate / 1000.0);
    const auto signalList = [&](const std::string &prefix) {
        const std::string raw = "\"rawRange\": [0, " + steps + "], \"range\": [0, ";
        return "\"signals\": [ { \"name\": \"" + prefix + "number\", " + raw + steps +
               "], \"generator\": { \"kind\": \"counter\", \"modulo\": " + steps + " } }, { \"name\": \"" +
               prefix + "time\", \"unit\": \"s\", " + raw + span +
               "], \"generator\": { \"kind\": \"ramp\", \"from\": 0, \"to\": " + span + ", \"period\": " + span +
               " } } ]";
    };
    sondixsim::loadBench(
        "{ \"clock\": { \"virtual\": true }, \"sensors\": [ { \"model\": \"CC430\", \"serialNumber\": \"" +
        std::string(serialNumber) + "\", \"place\": { \"interface\": \"TCP/IP\", \"ip\": \"10.0.0.1\" }, " +
        "\"rateRule\": { \"unit\": \"Hz\", \"parameter\": \"SA_Measrate\", \"factor\": " +
        number(0.001 * (1.0 + setup.rateError)) +
        " }, \"settings\": { \"Samplerate\": { \"SA_Measrate\": " + kiloHertz +
        " } }, \"limits\": { \"SA_Measrate\": [0.001, 1000] }, \"ring\": " + std::to_string(setup.ring) + ", " +
        signalList("") + ", \"measureModes\": { \"parameter\": \"SA_MeasureMode\", \"modes\": [ { \"mode\": " +
        std::to_string(otherMode) + ", " + signalList("other ") + " } ] } } ] }");
}

inline SondixQt::SensorAddress address()
{
    return {SondixQt::CC430,
            {{QStringLiteral("IP_Interface"), QStringLiteral("TCP/IP")},
             {QStringLiteral("IP_RemoteAddr"), QStringLiteral("10.0.0.1")}}};
}

} // namespace soakbench
