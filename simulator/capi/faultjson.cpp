// SPDX-License-Identifier: MIT
#include "faultjson.h"

#include "model/faults.h"

namespace sondixsim::capi {

Fault readFault(RequestReader &request)
{
    Fault fault;
    request.read("function", fault.function);
    request.read("command", fault.command);
    request.read("parameter", fault.parameter);
    request.read("sensor", fault.sensor);
    request.read("sensorType", fault.sensorType);
    request.read("handle", fault.handle);
    request.read("from", fault.from);
    request.read("times", fault.times);
    request.read("probability", fault.probability);
    request.read("code", fault.code);
    request.read("text", fault.text);
    request.read("silent", fault.silent);
    request.read("delay", fault.delay);
    request.read("hang", fault.hang);
    request.read("answer", fault.answer);
    request.read("count", fault.count);
    request.read("begin", fault.begin);
    request.read("duration", fault.duration);
    std::string damage = model::damageNames[0];
    request.read("damage", damage);
    const auto *const found = std::find(std::begin(model::damageNames), std::end(model::damageNames), damage);
    if (found == std::end(model::damageNames))
        throw RequestError("\"damage\" must be cut, garbled or empty");
    fault.damage = static_cast<Damage>(found - std::begin(model::damageNames));
    fault.sensor = inLibraryText(fault.sensor, "sensor");
    fault.text = inLibraryText(fault.text, "text");
    if (fault.answer)
        fault.answer = inLibraryText(*fault.answer, "answer");
    return fault;
}

json faultMembers(const Fault &fault)
{
    json object{{"times", fault.times}, {"from", fault.from}, {"probability", fault.probability}};
    const auto addText = [&object](const char *key, const std::string &text) {
        if (!text.empty())
            object[key] = model::fromWindows1250(text);
    };
    addText("function", fault.function);
    addText("command", fault.command);
    addText("parameter", fault.parameter);
    addText("sensor", fault.sensor);
    addText("text", fault.text);
    if (fault.sensorType)
        object["sensorType"] = *fault.sensorType;
    if (fault.handle)
        object["handle"] = *fault.handle;
    if (fault.code != 0)
        object["code"] = fault.code;
    if (fault.delay > 0.0)
        object["delay"] = fault.delay;
    for (const auto &[key, isSet] : {std::pair("silent", fault.silent), std::pair("hang", fault.hang)}) {
        if (isSet)
            object[key] = true;
    }
    if (fault.answer) // which may be empty
        object["answer"] = model::fromWindows1250(*fault.answer);
    if (fault.damage != Damage::None)
        object["damage"] = model::damageNames[static_cast<std::size_t>(fault.damage)];
    if (fault.begin > 0.0)
        object["begin"] = fault.begin;
    if (fault.duration)
        object["duration"] = *fault.duration;
    if (fault.count)
        object["count"] = *fault.count;
    return object;
}

} // namespace sondixsim::capi
