// SPDX-License-Identifier: MIT
#include "searchtables_p.h"

#include "tablewords_p.h"

namespace SondixQt {

namespace {

constexpr SensorInterface noCard = NoInterface;
constexpr SensorType nothing = NoSensor;
constexpr ConstantList<SensorType> alone = {};

// clang-format off

constexpr SensorType withCP740[]     = {CP740, CP740_XA300ETH};
constexpr SensorType withEC82x_ETH[] = {EC82x_ETH, EC82x};
constexpr SensorType withMV4xx[]     = {MV4xx, MV410, MV420, MV430, MV4xx_XA300ETH, MV410_XA300ETH, MV420_XA300ETH, MV430_XA300ETH};
constexpr SensorType withGY310[]     = {GY310, GY310_XA300ETH};
constexpr SensorType withGY330[]     = {GY330, GY330_XA300ETH};
constexpr SensorType withDVxxx[]     = {DVxxx, DVxxx_XA300ETH};

constexpr SearchRow searchRows[] = {
    //                        quick address
    // type                   scan  list  card       also finds                searched together
    {SensorType::XA100PCI,     no,  no,   XA100,     nothing,                  alone},
    {SensorType::XA200PCI,     no,  no,   XA200,     nothing,                  alone},
    {SensorType::XA100USB,     no,  no,   XA100_USB, nothing,                  alone},
    {SensorType::CP740,        yes, no,   noCard,    nothing,                  withCP740},
    {SensorType::GenericKVBus, yes, no,   noCard,    SensorType::CP740,        alone},
    {SensorType::EC82x_ETH,    yes, no,   noCard,    SensorType::GenericKVBus, withEC82x_ETH},
    {SensorType::XA200ETH,     no,  no,   XA200_ETH, nothing,                  alone},
    {SensorType::HV2,          no,  yes,  noCard,    nothing,                  alone},
    {SensorType::EC830,        yes, no,   noCard,    nothing,                  alone},
    {SensorType::MV4xx,        yes, no,   noCard,    nothing,                  withMV4xx},
    {SensorType::GY310,        yes, no,   noCard,    nothing,                  withGY310},
    {SensorType::GY330,        yes, no,   noCard,    nothing,                  withGY330},
    {SensorType::EC840,        yes, no,   noCard,    nothing,                  alone},
    {SensorType::EC850,        yes, no,   noCard,    nothing,                  alone},
    {SensorType::DVxxx,        yes, no,   noCard,    nothing,                  withDVxxx},
    {SensorType::MV410,        yes, no,   noCard,    nothing,                  alone},
    {SensorType::MV420,        yes, no,   noCard,    nothing,                  alone},
    {SensorType::MV430,        yes, no,   noCard,    nothing,                  alone},
};

// clang-format on

static_assert(isAscending(searchRows, &SearchRow::type));

constexpr SearchRow usualSearch{};

} // namespace

const SearchRow &searchRow(SensorType type)
{
    const SearchRow *row = findRow(searchRows, &SearchRow::type, type);
    return row ? *row : usualSearch;
}

} // namespace SondixQt
