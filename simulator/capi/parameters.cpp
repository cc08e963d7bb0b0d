// SPDX-License-Identifier: MIT
#include "call.h"
#include "sondix.h"

#include <cstring>

using namespace sondixsim::capi;
namespace model = sondixsim::model;

namespace {

std::int32_t failNull(Instance &instance, const char *what)
{
    return instance.fail(model::failure(model::InvalidArgument, std::string(what) + " is null"));
}

std::int32_t stage(std::uint32_t handle, const char *name, model::Value value)
{
    return withInstance(handle, [&](Instance &instance) -> std::int32_t {
        if (name == nullptr)
            return failNull(instance, "The parameter's name");
        instance.staged.set(name, std::move(value));
        return model::Success;
    });
}

/// Describes a call with a parameter name and, unless empty, one further argument.
Observed named(std::uint32_t handle, const char *name, std::string further)
{
    Observed observed;
    observed.handle = handle;
    observed.parameter = name != nullptr ? name : "";
    observed.arguments = {quoted(name)};
    if (!further.empty())
        observed.arguments.push_back(std::move(further));
    return observed;
}

std::string bufferText(const void *buffer, const std::uint32_t *length)
{
    return buffer == nullptr ? "null" : length == nullptr ? "?" : std::to_string(*length);
}

std::function<void(std::int32_t)> lengthSetter(std::uint32_t *length)
{
    if (length == nullptr)
        return {};
    return [length](std::int32_t count) { *length = static_cast<std::uint32_t>(count); };
}

/// The answer \a name; null, with the result code in \a failed, when there is none.
const model::Value *answer(Instance &instance, const char *name, const void *target, std::int32_t &failed)
{
    if (name == nullptr || target == nullptr) {
        failed = failNull(instance, name == nullptr ? "The parameter's name" : "The pointer to the result");
        return nullptr;
    }
    const model::Value *const value = instance.answers.find(name);
    if (value == nullptr) {
        failed = instance.fail(
            model::failure(model::NoSuchAnswer, "The last answer has no parameter \"" + std::string(name) + '"'));
    }
    return value;
}

template<typename Number, typename Convert>
std::int32_t getNumber(std::uint32_t handle, const char *name, Number *target, Convert convert)
{
    return withInstance(handle, [&](Instance &instance) -> std::int32_t {
        std::int32_t failed = model::Success;
        const model::Value *const value = answer(instance, name, target, failed);
        if (value == nullptr)
            return failed;
        const auto number = convert(*value);
        if (!number)
            return instance.fail(model::failure(model::WrongType, '"' + std::string(name) + "\" is no number"));
        *target = *number;
        return model::Success;
    });
}

std::int32_t copyOut(Instance &instance, const void *data, std::size_t size, void *buffer, std::uint32_t *length)
{
    const std::uint32_t room = *length;
    *length = static_cast<std::uint32_t>(size);
    if (buffer == nullptr)
        return model::Success;
    if (room < size) {
        return instance.fail(model::failure(model::BufferTooSmall, "The buffer has " + std::to_string(room) +
                                                                       " bytes, " + std::to_string(size) +
                                                                       " are needed"));
    }
    if (size > 0)
        std::memcpy(buffer, data, size);
    return model::Success;
}

} // namespace

extern "C" {

std::int32_t SetParameterInt(std::uint32_t handle, const char *name, std::int32_t value)
{
    return invoke(
        "SetParameterInt", handle, [&] { return named(handle, name, std::to_string(value)); },
        [&] { return stage(handle, name, value); });
}

std::int32_t SetParameterDouble(std::uint32_t handle, const char *name, double value)
{
    return invoke(
        "SetParameterDouble", handle, [&] { return named(handle, name, model::formatDouble(value)); },
        [&] { return stage(handle, name, value); });
}

std::int32_t SetParameterString(std::uint32_t handle, const char *name, const char *value)
{
    return invoke(
        "SetParameterString", handle, [&] { return named(handle, name, quoted(value)); },
        [&] { return stage(handle, name, std::string(value != nullptr ? value : "")); });
}

std::int32_t SetParameterBinary(std::uint32_t handle, const char *name, const void *data, std::uint32_t length)
{
    return invoke(
        "SetParameterBinary", handle, [&] { return named(handle, name, std::to_string(length)); },
        [&] {
            const auto *const bytes = static_cast<const unsigned char *>(data);
            return stage(handle, name, bytes != nullptr ? model::Bytes(bytes, bytes + length) : model::Bytes());
        });
}

std::int32_t GetParameterInt(std::uint32_t handle, const char *name, std::int32_t *value)
{
    return invoke(
        "GetParameterInt", handle, [&] { return named(handle, name, {}); },
        [&] { return getNumber(handle, name, value, model::toInt); });
}

std::int32_t GetParameterDouble(std::uint32_t handle, const char *name, double *value)
{
    return invoke(
        "GetParameterDouble", handle, [&] { return named(handle, name, {}); },
        [&] { return getNumber(handle, name, value, model::toDouble); });
}

std::int32_t GetParameterString(std::uint32_t handle, const char *name, char *buffer, std::uint32_t *length)
{
    const auto describe = [&] {
        Observed observed = named(handle, name, bufferText(buffer, length));
        observed.setCount = lengthSetter(length);
        return observed;
    };
    return invoke("GetParameterString", handle, describe, [&] {
        return withInstance(handle, [&](Instance &instance) -> std::int32_t {
            std::int32_t failed = model::Success;
            const model::Value *const value = answer(instance, name, length, failed);
            if (value == nullptr)
                return failed;
            const auto *const bytes = std::get_if<model::Bytes>(value);
            const std::string text =
                bytes != nullptr ? std::string(bytes->begin(), bytes->end()) : model::toText(*value);
            return copyOut(instance, text.c_str(), text.size() + 1, buffer, length);
        });
    });
}

std::int32_t GetParameterBinary(std::uint32_t handle, const char *name, void *buffer, std::uint32_t *length)
{
    const auto describe = [&] {
        Observed observed = named(handle, name, bufferText(buffer, length));
        observed.setCount = lengthSetter(length);
        return observed;
    };
    return invoke("GetParameterBinary", handle, describe, [&] {
        return withInstance(handle, [&](Instance &instance) -> std::int32_t {
            std::int32_t failed = model::Success;
            const model::Value *const value = answer(instance, name, length, failed);
            if (value == nullptr)
                return failed;
            if (const auto *bytes = std::get_if<model::Bytes>(value))
                return copyOut(instance, bytes->data(), bytes->size(), buffer, length);
            if (const auto *text = std::get_if<std::string>(value))
                return copyOut(instance, text->data(), text->size(), buffer, length);
            return instance.fail(model::failure(model::WrongType, '"' + std::string(name) + "\" has no bytes"));
        });
    });
}

std::int32_t GetParameters(std::uint32_t handle, char *buffer, std::uint32_t *length)
{
    const auto describe = [&] {
        Observed observed;
        observed.handle = handle;
        observed.arguments = {bufferText(buffer, length)};
        observed.setCount = lengthSetter(length);
        return observed;
    };
    return invoke("GetParameters", handle, describe, [&] {
        return withInstance(handle, [&](Instance &instance) -> std::int32_t {
            if (length == nullptr)
                return failNull(instance, "The pointer to the length");
            const std::string text =
                instance.answerText.empty() ? model::pairsText(instance.answers, "\r\n") : instance.answerText;
            return copyOut(instance, text.c_str(), text.size() + 1, buffer, length);
        });
    });
}

std::int32_t ClearAllParameters(std::uint32_t handle)
{
    const auto describe = [&] {
        Observed observed;
        observed.handle = handle;
        return observed;
    };
    return invoke("ClearAllParameters", handle, describe, [&] {
        return withInstance(handle, [](Instance &instance) -> std::int32_t {
            instance.staged.clear();
            return model::Success;
        });
    });
}
}
