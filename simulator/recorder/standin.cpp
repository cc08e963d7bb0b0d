// SPDX-License-Identifier: MIT
// The C interface: every call is forwarded unchanged to the library behind this one and then recorded.
#include "library.h"
#include "recorder.h"

#include <algorithm>
#include <cstring>

namespace sondixrec {

namespace {

template<typename Forward, typename Describe>
auto recorded(const char *function, const Forward &forward, const Describe &describe)
{
    const Functions &behind = libraryBehind();
    Recorder &recorder = Recorder::get();
    if (!recorder.isOn())
        return forward(behind);
    const Recorder::Begin begin = recorder.begin();
    const auto result = forward(behind);
    recorder.end(begin, function, result, describe);
    return result;
}

/// A call with a handle and no other argument.
template<typename Forward>
std::int32_t recordedHandle(const char *function, std::uint32_t handle, const Forward &forward)
{
    return recorded(function, forward, [&](Line &line) { line.handle(handle); });
}

/// A call that reads a number into \a value, which \a add adds to the line.
template<typename Number, typename Forward, typename Add>
std::int32_t recordedNumber(const char *function, std::uint32_t handle, const char *name, const Number *value,
                            const Forward &forward, const Add &add)
{
    std::int32_t result = 0;
    return recorded(
        function, [&](const Functions &behind) { return result = forward(behind); },
        [&](Line &line) {
            line.handle(handle);
            line.name(name);
            if (value == nullptr) {
                line.null("value");
            } else if (result == 0) {
                line.answers();
                add(line);
            }
        });
}

std::string_view bytes(const void *data, std::uint32_t length)
{
    return data != nullptr ? std::string_view(static_cast<const char *>(data), length) : std::string_view();
}

/// A buffer and its length, which a call reads and writes.
class Buffer
{
public:
    Buffer(const void *data, const std::uint32_t *length)
        : m_data(static_cast<const char *>(data))
        , m_length(length)
        , m_room(data != nullptr && length != nullptr ? *length : 0)
    {
    }
    void describeArguments(Line &line) const
    {
        line.flag("buffer", m_data != nullptr);
        if (m_length == nullptr)
            line.null("length");
        else if (m_data != nullptr)
            line.integer("length", m_room);
    }
    /// Adds the length, and the contents by \a add if the call has written them.
    template<typename Add>
    void describeAnswers(Line &line, std::int32_t result, const Add &add) const
    {
        if (m_length == nullptr)
            return;
        line.answers();
        line.integer("length", *m_length);
        if (result == 0 && m_data != nullptr)
            add(std::string_view(m_data, std::min(*m_length, m_room)));
    }
    /// The contents without the terminating zero. The length shows whether the zero was counted.
    static std::string_view text(std::string_view contents)
    {
        if (!contents.empty() && contents.back() == '\0')
            contents.remove_suffix(1);
        return contents;
    }

private:
    const char *m_data;
    const std::uint32_t *m_length;
    std::uint32_t m_room;
};

struct Transfer
{
    const std::int32_t *raw;
    const double *scaled;
    std::int32_t maxCount;
    const std::int32_t *read;
};

void describeTransfer(Line &line, const Transfer &transfer, std::int32_t result)
{
    line.flag("raw", transfer.raw != nullptr);
    line.flag("scaled", transfer.scaled != nullptr);
    line.integer("maxCount", transfer.maxCount);
    if (transfer.read == nullptr) {
        line.null("read");
        return;
    }
    line.answers();
    line.integer("read", *transfer.read);
    if (result != 0)
        return;
    const auto count = static_cast<std::size_t>(std::max(0, std::min(*transfer.read, transfer.maxCount)));
    if (transfer.raw != nullptr)
        line.array("raw", transfer.raw, count);
    if (transfer.scaled != nullptr)
        line.array("scaled", transfer.scaled, count);
}

#if !defined(_WIN32)
/// Symbols of the library behind that are not in the C interface are looked up by the program from its start on.
/// Windows does not allow a library to be loaded this early.
[[gnu::constructor]] void loadEarly()
{
    libraryBehind();
    Recorder::get();
}
#endif

} // namespace

} // namespace sondixrec

using namespace sondixrec;

extern "C" {

std::uint32_t CreateSensorInstance(std::int32_t sensorType)
{
    return recorded(
        "CreateSensorInstance", [&](const Functions &behind) { return behind.CreateSensorInstance(sensorType); },
        [&](Line &line) {
            line.arguments();
            line.integer("sensorType", sensorType);
        });
}

std::int32_t ReleaseSensorInstance(std::uint32_t handle)
{
    return recordedHandle("ReleaseSensorInstance", handle,
                          [&](const Functions &behind) { return behind.ReleaseSensorInstance(handle); });
}

std::int32_t SetParameterInt(std::uint32_t handle, const char *name, std::int32_t value)
{
    return recorded(
        "SetParameterInt", [&](const Functions &behind) { return behind.SetParameterInt(handle, name, value); },
        [&](Line &line) {
            line.handle(handle);
            line.name(name);
            line.parameter("value", value);
        });
}

std::int32_t SetParameterDouble(std::uint32_t handle, const char *name, double value)
{
    return recorded(
        "SetParameterDouble",
        [&](const Functions &behind) { return behind.SetParameterDouble(handle, name, value); },
        [&](Line &line) {
            line.handle(handle);
            line.name(name);
            line.real("value", value);
        });
}

std::int32_t SetParameterString(std::uint32_t handle, const char *name, const char *value)
{
    return recorded(
        "SetParameterString",
        [&](const Functions &behind) { return behind.SetParameterString(handle, name, value); },
        [&](Line &line) {
            line.handle(handle);
            line.name(name);
            line.parameter("value", value);
        });
}

std::int32_t SetParameterBinary(std::uint32_t handle, const char *name, const void *data, std::uint32_t length)
{
    return recorded(
        "SetParameterBinary",
        [&](const Functions &behind) { return behind.SetParameterBinary(handle, name, data, length); },
        [&](Line &line) {
            line.handle(handle);
            line.name(name);
            if (data != nullptr)
                line.binary("data", bytes(data, length));
            else
                line.null("data");
            line.integer("length", length);
        });
}

std::int32_t GetParameterInt(std::uint32_t handle, const char *name, std::int32_t *value)
{
    return recordedNumber(
        "GetParameterInt", handle, name, value,
        [&](const Functions &behind) { return behind.GetParameterInt(handle, name, value); },
        [&](Line &line) { line.parameter("value", *value); });
}

std::int32_t GetParameterDouble(std::uint32_t handle, const char *name, double *value)
{
    return recordedNumber(
        "GetParameterDouble", handle, name, value,
        [&](const Functions &behind) { return behind.GetParameterDouble(handle, name, value); },
        [&](Line &line) { line.real("value", *value); });
}

std::int32_t GetParameterString(std::uint32_t handle, const char *name, char *buffer, std::uint32_t *length)
{
    const Buffer contents(buffer, length);
    std::int32_t result = 0;
    return recorded(
        "GetParameterString",
        [&](const Functions &behind) { return result = behind.GetParameterString(handle, name, buffer, length); },
        [&](Line &line) {
            line.handle(handle);
            line.name(name);
            contents.describeArguments(line);
            contents.describeAnswers(line, result,
                                     [&](std::string_view text) { line.parameter("text", Buffer::text(text)); });
        });
}

std::int32_t GetParameterBinary(std::uint32_t handle, const char *name, void *buffer, std::uint32_t *length)
{
    const Buffer contents(buffer, length);
    std::int32_t result = 0;
    return recorded(
        "GetParameterBinary",
        [&](const Functions &behind) { return result = behind.GetParameterBinary(handle, name, buffer, length); },
        [&](Line &line) {
            line.handle(handle);
            line.name(name);
            contents.describeArguments(line);
            contents.describeAnswers(line, result, [&](std::string_view data) { line.binary("data", data); });
        });
}

std::int32_t GetParameters(std::uint32_t handle, char *buffer, std::uint32_t *length)
{
    const Buffer contents(buffer, length);
    std::int32_t result = 0;
    return recorded(
        "GetParameters",
        [&](const Functions &behind) { return result = behind.GetParameters(handle, buffer, length); },
        [&](Line &line) {
            line.handle(handle);
            contents.describeArguments(line);
            contents.describeAnswers(line, result,
                                     [&](std::string_view text) { line.text("text", Buffer::text(text)); });
        });
}

std::int32_t ClearAllParameters(std::uint32_t handle)
{
    return recordedHandle("ClearAllParameters", handle,
                          [&](const Functions &behind) { return behind.ClearAllParameters(handle); });
}

std::int32_t OpenSensor(std::uint32_t handle)
{
    return recordedHandle("OpenSensor", handle,
                          [&](const Functions &behind) { return behind.OpenSensor(handle); });
}

std::int32_t CloseSensor(std::uint32_t handle)
{
    return recordedHandle("CloseSensor", handle,
                          [&](const Functions &behind) { return behind.CloseSensor(handle); });
}

std::int32_t SensorCommand(std::uint32_t handle)
{
    return recordedHandle("SensorCommand", handle,
                          [&](const Functions &behind) { return behind.SensorCommand(handle); });
}

std::int32_t DataAvail(std::uint32_t handle, std::int32_t *available)
{
    return recorded(
        "DataAvail", [&](const Functions &behind) { return behind.DataAvail(handle, available); },
        [&](Line &line) {
            line.handle(handle);
            if (available == nullptr) {
                line.null("available");
            } else {
                line.answers();
                line.integer("available", *available);
            }
        });
}

std::int32_t TransferData(std::uint32_t handle, std::int32_t *raw, double *scaled, std::int32_t maxCount,
                          std::int32_t *read)
{
    std::int32_t result = 0;
    return recorded(
        "TransferData",
        [&](const Functions &behind) { return result = behind.TransferData(handle, raw, scaled, maxCount, read); },
        [&](Line &line) {
            line.handle(handle);
            describeTransfer(line, {raw, scaled, maxCount, read}, result);
        });
}

std::int32_t TransferDataTS(std::uint32_t handle, std::int32_t *raw, double *scaled, std::int32_t maxCount,
                            std::int32_t *read, double *timestamp)
{
    std::int32_t result = 0;
    return recorded(
        "TransferDataTS",
        [&](const Functions &behind) {
            return result = behind.TransferDataTS(handle, raw, scaled, maxCount, read, timestamp);
        },
        [&](Line &line) {
            line.handle(handle);
            if (timestamp == nullptr)
                line.null("timestamp");
            describeTransfer(line, {raw, scaled, maxCount, read}, result);
            if (result == 0 && read != nullptr && timestamp != nullptr)
                line.real("timestamp", *timestamp);
        });
}

std::int32_t GetError(std::uint32_t handle, char *text, std::uint32_t size)
{
    std::int32_t result = 0;
    return recorded(
        "GetError", [&](const Functions &behind) { return result = behind.GetError(handle, text, size); },
        [&](Line &line) {
            line.handle(handle);
            line.integer("size", size);
            if (text == nullptr) {
                line.null("text");
            } else if (result != 0 && size > 0) {
                const void *const end = std::memchr(text, 0, size);
                const auto length = end != nullptr ? static_cast<const char *>(end) - text : size;
                line.answers();
                line.text("text", std::string_view(text, static_cast<std::size_t>(length)));
            }
        });
}

std::int32_t EnableLogging(std::uint32_t handle, std::int32_t enable, std::int32_t type, std::int32_t level,
                           const char *fileName, std::int32_t flag1, std::int32_t flag2, std::int32_t count)
{
    return recorded(
        "EnableLogging",
        [&](const Functions &behind) {
            return behind.EnableLogging(handle, enable, type, level, fileName, flag1, flag2, count);
        },
        [&](Line &line) {
            line.handle(handle);
            line.integer("enable", enable);
            line.integer("type", type);
            line.integer("level", level);
            line.privateText("fileName", fileName);
            line.integer("flag1", flag1);
            line.integer("flag2", flag2);
            line.integer("count", count);
        });
}

std::int32_t LogToFile(std::uint32_t handle, std::int32_t level, const char *source, const char *message)
{
    return recorded(
        "LogToFile", [&](const Functions &behind) { return behind.LogToFile(handle, level, source, message); },
        [&](Line &line) {
            line.handle(handle);
            line.integer("level", level);
            line.privateText("source", source);
            line.privateText("message", message);
        });
}

/// Only recorders export this function: a recorder recognises by it that the library to record is one as well.
SONDIX_EXPORT std::int32_t SondixRecorderFormat()
{
    return 1;
}

uint32_t SondixSimControl(const char *request, char *answer, uint32_t size)
{
    Recorder::get(); // a program that uses nothing else has a record without calls
    if (const SondixSimControlFunction control = controlBehind())
        return control(request, answer, size);
    constexpr std::string_view none =
        R"({"error":"The sensor-access library is not the simulator.","simulator":false})";
    if (answer != nullptr && size > 0) {
        const std::size_t length = std::min<std::size_t>(none.size(), size - 1);
        std::memcpy(answer, none.data(), length);
        answer[length] = '\0';
    }
    return static_cast<uint32_t>(none.size() + 1);
}
}
