// SPDX-License-Identifier: MIT
#include "pages.h"

#include "genericcommand.h"
#include "text.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace sondixsim::model {

namespace {

using Json = nlohmann::ordered_json;

std::string textOf(const Json &json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json jsonOf(const Value &value)
{
    if (const auto *integer = std::get_if<std::int32_t>(&value))
        return *integer;
    if (const auto *real = std::get_if<double>(&value))
        return *real;
    return fromWindows1250(toText(value));
}

/// Enough decimals to show a change of one raw step.
int decimalsOf(const Signal &signal)
{
    const double step = std::fabs((signal.scaledMax - signal.scaledMin) / (signal.rawMax - signal.rawMin));
    if (!(step > 0.0))
        return 0;
    return static_cast<int>(std::clamp(std::ceil(-std::log10(step)), 0.0, 6.0));
}

} // namespace

Pages::Pages(const SensorSpec &spec, const Settings &settings, const SerialLine &line, const Sampler &sampler)
    : m_spec(spec)
    , m_settings(settings)
    , m_line(line)
    , m_sampler(sampler)
{
}

HttpAnswer Pages::answer(const HttpRequest &request, double now) const
{
    const auto set = m_set.find(request.path);
    if (set != m_set.end())
        return set->second;
    const auto own = m_spec.web.pages.find(request.path);
    if (own != m_spec.web.pages.end())
        return answerTo(request, &own->second);
    if (request.path != "/values.json" && request.path != "/settings.json")
        return answerTo(request, ownPage(request.path));
    const Page page{typeOfFile(request.path), request.path == "/values.json" ? values(now) : settings(), true};
    return answerTo(request, &page);
}

std::string Pages::values(double now) const
{
    const Value *const name = m_settings.find("SA_SensorName");
    Json json;
    json["simulated"] = true;
    json["model"] = fromWindows1250(m_spec.name);
    json["serialNumber"] = fromWindows1250(m_spec.serialNumber);
    json["articleNumber"] = fromWindows1250(m_spec.articleNumber);
    json["firmware"] = fromWindows1250(m_spec.firmware + " (simulator)");
    json["name"] = name != nullptr ? jsonOf(*name) : Json("");
    json["time"] = now;
    json["rate"] = m_sampler.frameRate();
    json["baudrate"] = m_line.baudrate();
    json["serialOutput"] = m_sampler.usesSerialLine();
    json["waitsForTrigger"] = m_settings.waitsForTrigger();
    json["signals"] = Json::array();
    const std::vector<double> values = m_sampler.presentValues(now);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Signal &signal = m_sampler.frame()[i];
        Json entry;
        entry["name"] = fromWindows1250(signal.scaledName);
        entry["unit"] = fromWindows1250(signal.scaledUnit);
        entry["range"] = {signal.scaledMin, signal.scaledMax};
        entry["decimals"] = decimalsOf(signal);
        if (values[i] > errorValueBase) {
            entry["value"] = values[i];
        } else {
            const auto text = m_spec.errorTexts.find(static_cast<std::int32_t>(values[i] - errorValueBase));
            entry["value"] = nullptr;
            entry["error"] = text != m_spec.errorTexts.end() ? fromWindows1250(text->second) : "Error";
        }
        json["signals"].push_back(std::move(entry));
    }
    return textOf(json);
}

std::string Pages::settings() const
{
    Json json;
    json["model"] = fromWindows1250(m_spec.name);
    json["baudrate"] = m_line.baudrate();
    json["baudrates"] = m_spec.web.baudrates;
    json["settings"] = Json::array();
    for (const Parameter &setting : m_settings.all()) {
        Json entry;
        entry["name"] = genericName(setting.name);
        entry["value"] = jsonOf(setting.value);
        entry["default"] = jsonOf(*m_settings.defaults().find(setting.name));
        const auto limits = m_spec.limits.find(setting.name);
        if (limits != m_spec.limits.end()) {
            entry["minimum"] = limits->second.first;
            entry["maximum"] = limits->second.second;
        }
        json["settings"].push_back(std::move(entry));
    }
    return textOf(json);
}

} // namespace sondixsim::model
