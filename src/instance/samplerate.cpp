// SPDX-License-Identifier: MIT
#include "samplerate_p.h"

#include "../latin1literal_p.h"

#include <algorithm>
#include <iterator>

namespace SondixQt {

namespace {

struct FixedRate
{
    qint32 type;
    double kilohertz;
};

constexpr FixedRate fixedRates[] = {
    // clang-format off
    {SensorType::TX210,   1.0},
    {SensorType::MC310,   2.3},
    {SensorType::MC320,   2.3},
    {SensorType::RG4xx,   0.0},
    {SensorType::MC330,   0.0},
    {SensorType::MC340,   2.5},
    {SensorType::HV2,     0.02},
    {SensorType::RG540,   0.02},
    {SensorType::HV210,   0.02},
    {SensorType::MV4xx,   0.0},
    {SensorType::HV220,   0.02},
    {SensorType::DVxxx,   0.0},
    {SensorType::MV410,   0.0},
    {SensorType::MV420,   0.0},
    {SensorType::MV430,   0.0},
    // clang-format on
};

constexpr double ratesTX220[] = {2.5, 1.25, 0.625, 0.3125};
constexpr double ratesTX230[] = {10.0, 5.0, 2.5, 20.0};
constexpr double ratesCC410[] = {0.0, 0.1, 0.2, 0.4, 1.0, 2.0};
constexpr double ratesCC420[] = {0.0, 0.5, 1.0, 2.0, 5.0, 10.0, 15.625, 20.0, 25.0, 31.25};
constexpr double ratesCP7x0[] = {0.0026, 0.00521, 0.01042, 0.01563, 0.02604, 0.03125, 0.05208,
                                 0.0625, 0.10417, 0.52083, 1.04167, 2.08333, 3.90625, 7.8125};
constexpr double ratesCB910[] = {0.0026, 0.104, 0.52, 1.04};
constexpr double ratesTX2x0[] = {1.5, 1.0, 0.75, 0.375, 0.05};
constexpr double ratesEC810[] = {3.6, 7.2, 14.4};

constexpr QLatin1String getSettings = "Get_Settings"_latin1;
constexpr QLatin1String getStatus = "Get_Status"_latin1;
constexpr QLatin1String getSRIndex = "Get_SRIndex"_latin1;
constexpr QLatin1String getSamplerate = "Get_Samplerate"_latin1;
constexpr QLatin1String getSampleTime = "Get_SampleTime"_latin1;
constexpr QLatin1String saSpeed = "SA_Speed"_latin1;
constexpr QLatin1String saSRIndex = "SA_SRIndex"_latin1;
constexpr QLatin1String saMeasrate = "SA_Measrate"_latin1;
constexpr QLatin1String saSampleTime = "SA_SampleTime"_latin1;

constexpr SampleRateRow rows[] = {
    // clang-format off
    {SensorType::TX220,        SampleRateRule::IndexTable,         getSettings,   saSpeed,      ratesTX220},
    {SensorType::TX230,        SampleRateRule::IndexTable,         getSettings,   saSpeed,      ratesTX230},
    {SensorType::CC410,        SampleRateRule::IndexTable,         getStatus,     saSRIndex,    ratesCC410},
    {SensorType::CC420,        SampleRateRule::IndexTable,         getStatus,     saSRIndex,    ratesCC420},
    {SensorType::CP710,        SampleRateRule::IndexTable,         getSRIndex,    saSRIndex,    ratesCP7x0},
    {SensorType::CP720,        SampleRateRule::IndexTable,         getSRIndex,    saSRIndex,    ratesCP7x0},
    {SensorType::CB910,        SampleRateRule::IndexTable,         getSRIndex,    saSRIndex,    ratesCB910},
    {SensorType::RG52x,        SampleRateRule::DistanceTracking},
    {SensorType::RG53x,        SampleRateRule::FrequencyAverage},
    {SensorType::TX240,        SampleRateRule::IndexTable,         getSettings,   saSpeed,      ratesTX2x0},
    {SensorType::TX250,        SampleRateRule::IndexTable,         getSettings,   saSpeed,      ratesTX2x0},
    {SensorType::CC430,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::EC810,        SampleRateRule::IndexAndAverage,    getSettings},
    {SensorType::TX260,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::CC440,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::CP730,        SampleRateRule::MicrosecondsAnswer, getSampleTime, saSampleTime},
    {SensorType::XA300,        SampleRateRule::MicrosecondsAnswer, getSampleTime, saSampleTime},
    {SensorType::PG110,        SampleRateRule::HertzAnswer,        getSamplerate, saMeasrate},
    {SensorType::QUnit,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::CC450,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::CP740,        SampleRateRule::HertzAnswer,        getSamplerate, saMeasrate},
    {SensorType::TX270,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::TX280,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::GenericKVBus, SampleRateRule::HertzAnswer,        getSamplerate, saMeasrate},
    {SensorType::CC460,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::CB92xx,       SampleRateRule::MicrosecondsAnswer, getSampleTime, saSampleTime},
    {SensorType::CC470,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::CC480,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::EC82x_ETH,    SampleRateRule::MicrosecondsAnswer, getSampleTime, saSampleTime},
    {SensorType::TX290,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::CP750,        SampleRateRule::MicrosecondsAnswer, getSampleTime, saSampleTime},
    {SensorType::WI610,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::TX300,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::TX310,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::WI620,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::PG120,        SampleRateRule::HertzAnswer,        getSamplerate, saMeasrate},
    {SensorType::CC490,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    {SensorType::CC495,        SampleRateRule::KilohertzAnswer,    getSamplerate, saMeasrate},
    // clang-format on
};

constexpr SampleRateRow unknownRow{};

constexpr qint32 busVariantStep = 10000;
constexpr int movingAverage = 3;

} // namespace

std::optional<double> fixedSampleRate(SensorType type)
{
    const auto fixed = std::find_if(std::begin(fixedRates), std::end(fixedRates),
                                    [type](const FixedRate &rate) { return rate.type == type; });
    if (fixed == std::end(fixedRates))
        return std::nullopt;
    return fixed->kilohertz;
}

const SampleRateRow &sampleRateRow(SensorType type)
{
    const qint32 model = type == SensorType::File ? type : type % busVariantStep;
    const auto row = std::find_if(std::begin(rows), std::end(rows),
                                  [model](const SampleRateRow &candidate) { return candidate.model == model; });
    return row == std::end(rows) ? unknownRow : *row;
}

double rateOfSampleTime(double microseconds)
{
    return 1.0 / (microseconds * 0.001);
}

double rateOfDistanceTracking(const QString &trackingCommand, int measureTime)
{
    if (trackingCommand == QLatin1String("DistanceTracking10Hz"))
        return 0.01;
    if (trackingCommand == QLatin1String("DistanceTracking50Hz"))
        return 0.05;
    if (measureTime <= 0)
        return 0.0;
    if (trackingCommand == QLatin1String("DistanceTracking"))
        return 1.0 / (measureTime * 240.0);
    if (trackingCommand == QLatin1String("DistanceTracking7m"))
        return 1.0 / (measureTime * 150.0);
    return 0.0;
}

double rateOfFrequencyAverage(int frequency, int average, bool speedTracking)
{
    double hertz = static_cast<double>(frequency) / static_cast<double>(average);
    if (speedTracking)
        hertz /= 25.0;
    return hertz / 1000.0;
}

double rateOfIndexAndAverage(int rateIndex, int averageType, int averageNumber)
{
    if (averageNumber < 0)
        return 0.0;
    const double rate = SampleRates(ratesEC810).at(rateIndex);
    if (averageType != movingAverage)
        return rate;
    return rate / (2.0 * (averageNumber + 1.0) + 1.0);
}

} // namespace SondixQt
