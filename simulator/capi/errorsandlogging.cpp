// SPDX-License-Identifier: MIT
#include "call.h"
#include "model/text.h"
#include "sondix.h"

#include <algorithm>
#include <cstring>

using namespace sondixsim::capi;
namespace model = sondixsim::model;

namespace {

std::int32_t report(std::int32_t code, const std::string &message, char *text, std::uint32_t size)
{
    if (text != nullptr && size > 0) {
        const std::size_t length = std::min<std::size_t>(message.size(), size - 1);
        std::memcpy(text, message.data(), length);
        text[length] = '\0';
    }
    return code;
}

std::int32_t lastError(std::uint32_t handle, char *text, std::uint32_t size)
{
    Simulator &simulator = Simulator::get();
    if (handle == 0) {
        const model::Outcome outcome = simulator.lastFailure();
        return report(outcome.code, model::toWindows1250Lossy(outcome.text), text, size);
    }
    const LockedInstance instance = simulator.instances.lock(handle);
    if (!instance)
        return report(model::UnknownHandle, "There is no instance with this handle", text, size);
    return report(instance->errorCode, instance->errorText, text, size);
}

} // namespace

extern "C" {

std::int32_t GetError(std::uint32_t handle, char *text, std::uint32_t size)
{
    if (text != nullptr && size > 0)
        text[0] = '\0';
    const auto describe = [&] {
        Observed observed;
        observed.handle = handle;
        observed.arguments = {std::to_string(size)};
        return observed;
    };
    return invoke("GetError", handle, describe, [&] { return lastError(handle, text, size); });
}

std::int32_t EnableLogging(std::uint32_t handle, std::int32_t enable, std::int32_t type, std::int32_t level,
                           const char *fileName, std::int32_t flag1, std::int32_t flag2, std::int32_t count)
{
    const auto describe = [&] {
        Observed observed;
        observed.handle = handle;
        observed.arguments = {std::to_string(enable), std::to_string(type),  std::to_string(level),
                              quoted(fileName),       std::to_string(flag1), std::to_string(flag2),
                              std::to_string(count)};
        return observed;
    };
    return invoke("EnableLogging", handle, describe, [&] {
        return withInstance(handle, [&](Instance &instance) -> std::int32_t {
            instance.session.log.reset();
            if (enable == 0)
                return model::Success;
            if (fileName != nullptr && *fileName != '\0')
                instance.session.log = model::LogFile::open(fileName, type, level, flag1 != 0, flag2 != 0, count);
            if (!instance.session.log) {
                return instance.fail(model::failure(model::LogFileUnusable,
                                                    "The log file " + quoted(fileName) + " cannot be written"));
            }
            instance.session.logName = fileName;
            return model::Success;
        });
    });
}

std::int32_t LogToFile(std::uint32_t handle, std::int32_t level, const char *source, const char *message)
{
    const auto describe = [&] {
        Observed observed;
        observed.handle = handle;
        observed.arguments = {std::to_string(level), quoted(source), quoted(message)};
        return observed;
    };
    return invoke("LogToFile", handle, describe, [&] {
        return withInstance(handle, [&](Instance &instance) -> std::int32_t {
            if (instance.session.log)
                instance.session.log->writeLevel(level, source != nullptr ? source : "",
                                                 message != nullptr ? message : "");
            return model::Success;
        });
    });
}
}
