// SPDX-License-Identifier: MIT
#include "ratetables_p.h"

#include "basetype_p.h"

namespace SondixQt {

namespace {

struct FixedRate
{
    SensorType type;
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

constexpr const char *getSettings = "Get_Settings";
constexpr const char *getStatus = "Get_Status";
constexpr const char *getSRIndex = "Get_SRIndex";
constexpr const char *getSamplerate = "Get_Samplerate";
constexpr const char *getSampleTime = "Get_SampleTime";
constexpr const char *saSpeed = "SA_Speed";
constexpr const char *saSRIndex = "SA_SRIndex";
constexpr const char *saMeasrate = "SA_Measrate";
constexpr const char *saSampleTime = "SA_SampleTime";

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
    {SensorType::EC810,        SampleRateRule::IndexAndAverage,    getSettings,   nullptr,      ratesEC810},
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

static_assert(isAscending(fixedRates, &FixedRate::type));
static_assert(isAscending(rows, &SampleRateRow::model));

} // namespace

std::optional<double> fixedSampleRate(SensorType type)
{
    const FixedRate *fixed = findRow(fixedRates, &FixedRate::type, type);
    return fixed ? std::optional<double>(fixed->kilohertz) : std::nullopt;
}

const SampleRateRow &sampleRateRow(SensorType type)
{
    const SampleRateRow *row = findRow(rows, &SampleRateRow::model, baseType(type));
    return row ? *row : unknownRow;
}

} // namespace SondixQt
