// SPDX-License-Identifier: MIT
#include "report.h"

#include <SondixQt/SensorFeatures>
#include <SondixQt/SensorType>

using namespace SondixQt;

namespace {

const QString longName = QStringLiteral("Sensor without any known model"); // 30 characters

template<typename Lookup>
void add(const char *name, double bound, const char *unit, double nanoseconds, Lookup lookup)
{
    benchmark::RegisterBenchmark(name, [lookup](benchmark::State &state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(lookup());
    });
    report::claim(name, unit, bound, report::time(name, nanoseconds));
}

template<typename Lookup>
void addLookup(const char *name, Lookup lookup)
{
    add(name, 200.0, "ns", 1.0, lookup);
}

const bool lookupBenchesAreRegistered = [] {
    const QString model = QStringLiteral("TX290");
    const QString modelInText = QStringLiteral("Laser triangulation TX310-0250");
    add("getSensorTypeFromName, 30 characters, no model", 5.0, "us", 1e3,
        [] { return getSensorTypeFromName(longName); });
    add("getSensorTypeFromName, 30 characters, a model", 5.0, "us", 1e3,
        [modelInText] { return getSensorTypeFromName(modelInText); });
    add("getSensorTypeFromName, a short name", 5.0, "us", 1e3, [model] { return getSensorTypeFromName(model); });
    addLookup("sensorName", [] { return sensorName(SensorType::TX290); });
    addLookup("sensorName, short", [] { return sensorName(SensorType::MV430_XA300ETH, true); });
    addLookup("getSensorGroupFromSensorType", [] { return getSensorGroupFromSensorType(SensorType::TX290); });
    addLookup("sensorGroupName", [] { return sensorGroupName(SensorGroup::Gyrant); });
    addLookup("sensorGroups", [] { return sensorGroups(); });
    addLookup("sensorsInGroup", [] { return sensorsInGroup(SensorGroup::Tavrin); });
    addLookup("sensorsInGroup, all", [] { return sensorsInGroup(SensorGroup::AllGroups, true); });
    addLookup("interfaceName", [] { return interfaceName(SensorInterface::TCPIP); });
    addLookup("interfaceIndex", [] { return interfaceIndex(SensorInterface::TCPIP); });
    addLookup("getSensorFeatures", [] { return getSensorFeatures().value(SensorType::TX290).order; });
    addLookup("getSensorImage", [] { return getSensorImage(SensorType::TX290); });
    addLookup("getSensorGroupImage", [] { return getSensorGroupImage(SensorGroup::Tavrin); });
    return true;
}();

} // namespace
