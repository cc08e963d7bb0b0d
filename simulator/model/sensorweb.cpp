// SPDX-License-Identifier: MIT
#include "sensor.h"
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

/// Decimals that show what the raw values can tell apart.
int decimalsOf(const Signal &signal)
{
    const double step = std::fabs((signal.scaledMax - signal.scaledMin) / (signal.rawMax - signal.rawMin));
    if (!(step > 0.0))
        return 0;
    return static_cast<int>(std::clamp(std::ceil(-std::log10(step)), 0.0, 6.0));
}

} // namespace

Outcome noAnswerAt(const SensorSpec &spec, std::int32_t baudrate)
{
    constexpr double patience = 0.5;
    return {TimedOut,
            "The " + spec.model + " at " + spec.place.text() + " does not answer at " + std::to_string(baudrate) +
                " baud: the time has run out",
            patience};
}

double Sensor::secondsPerByte() const
{
    if (m_baudrate <= 0)
        return 0.0;
    constexpr double bits = 10.0; // with start and stop bit
    // Measured values that are sent at the same time take every other byte.
    const double share = outputOnSerialLine() ? 0.5 : 1.0;
    return bits / (m_baudrate * share);
}

double Sensor::reserveLine(double now, double seconds)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_lineFree = std::max(now, m_lineFree) + seconds;
    return m_lineFree;
}

double Sensor::lineTime() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lineTime;
}

bool Sensor::setPage(const std::string &path, HttpAnswer answer)
{
    if (!m_spec.web.present)
        return false;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_setPages[path] = std::move(answer);
    return true;
}

Outcome Sensor::http(const ParameterList &staged, double now, ParameterList &answers)
{
    const Value *const path = staged.find("SP_HTTPPath");
    const Value *const most = staged.find("SP_HTTPMaxLength");
    const Value *const tag = staged.find("SP_HTTPeTag");
    if (path == nullptr || most == nullptr)
        return failure(ParameterMissing, "\"Get_HTTP\" needs SP_HTTPPath and SP_HTTPMaxLength");
    const std::int32_t length = toInt(*most).value_or(-1);
    if (length < 0)
        return failure(OutOfRange, "\"SP_HTTPMaxLength\" must be a number from 0");
    const HttpRequest request{barePath(toText(*path)), tag != nullptr ? toText(*tag) : std::string(),
                              static_cast<std::size_t>(length)};
    const HttpAnswer answer = servePage(request, now);
    answers.set("SA_HTTPHeader", answer.header);
    const auto *const body = reinterpret_cast<const unsigned char *>(answer.body.data());
    answers.set("SA_HTTPBody", Bytes(body, body + answer.body.size()));
    const std::size_t bytes = request.size() + answer.header.size() + answer.body.size();
    const double seconds = static_cast<double>(bytes) * secondsPerByte();
    m_lineTime += seconds;
    return {Success, {}, seconds};
}

HttpAnswer Sensor::servePage(const HttpRequest &request, double now) const
{
    const auto set = m_setPages.find(request.path);
    if (set != m_setPages.end())
        return set->second;
    const auto own = m_spec.web.pages.find(request.path);
    if (own != m_spec.web.pages.end())
        return answerTo(request, &own->second);
    const std::string json = typeOfFile(".json");
    if (request.path == "/values.json") {
        const Page page{json, liveValues(now), true};
        return answerTo(request, &page);
    }
    if (request.path == "/settings.json") {
        const Page page{json, liveSettings(), true};
        return answerTo(request, &page);
    }
    return answerTo(request, ownPage(request.path));
}

std::vector<double> Sensor::presentValues(double now) const
{
    std::uint64_t number = m_nextFrame > 0 ? m_nextFrame - 1 : 0;
    double time = m_anchorTime;
    const double nominal = frameRate();
    if (m_rate > 0.0) {
        const double arisen = std::max(1.0, std::floor((now - m_anchorTime) * m_rate + 1.0e-6));
        number = m_anchorFrame + static_cast<std::uint64_t>(arisen) - 1;
        time = m_anchorTime + arisen / m_rate;
    } else if (!waitsForTrigger() && nominal > 0.0) { // it measures without sending
        number = static_cast<std::uint64_t>(std::max(0.0, now * nominal));
        time = now;
    }
    std::vector<double> values(frame().size());
    std::int32_t raw = 0;
    for (std::size_t i = 0; i < values.size(); ++i)
        valueAt(i, number, time, raw, values[i]);
    return values;
}

std::string Sensor::liveValues(double now) const
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
    json["rate"] = frameRate();
    json["baudrate"] = baudrate();
    json["serialOutput"] = outputOnSerialLine();
    json["waitsForTrigger"] = waitsForTrigger();
    json["signals"] = Json::array();
    const std::vector<double> values = presentValues(now);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Signal &signal = frame()[i];
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

std::string Sensor::liveSettings() const
{
    Json json;
    json["model"] = fromWindows1250(m_spec.name);
    json["baudrate"] = baudrate();
    json["baudrates"] = m_spec.web.baudrates;
    json["settings"] = Json::array();
    for (const Parameter &setting : m_settings) {
        Json entry;
        entry["name"] = genericName(setting.name);
        entry["value"] = jsonOf(setting.value);
        entry["default"] = jsonOf(*m_spec.settings.find(setting.name));
        const auto limits = m_spec.limits.find(setting.name);
        if (limits != m_spec.limits.end()) {
            entry["least"] = limits->second.first;
            entry["greatest"] = limits->second.second;
        }
        json["settings"].push_back(std::move(entry));
    }
    return textOf(json);
}

} // namespace sondixsim::model
