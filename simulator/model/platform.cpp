// SPDX-License-Identifier: MIT
#include "platform.h"

#if defined(_WIN32)
#    include <windows.h>
#else
#    include <cstdlib>
#endif

namespace sondixsim::model {

namespace fs = std::filesystem;

#if defined(_WIN32)

namespace {

std::wstring widened(const std::string &text, unsigned codePage)
{
    const int length = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0'); // at most one UTF-16 unit per byte
    const int written = MultiByteToWideChar(codePage, 0, text.data(), length, wide.data(), length);
    wide.resize(static_cast<std::size_t>(written));
    return wide;
}

std::string narrowed(const std::wstring &text)
{
    const int length = static_cast<int>(text.size());
    const int needed = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, utf8.data(), needed, nullptr, nullptr);
    return utf8;
}

} // namespace

std::optional<std::string> environmentVariable(const char *name)
{
    const std::wstring wideName = widened(name, CP_UTF8);
    std::wstring value(256, L'\0');
    while (true) {
        const DWORD size = static_cast<DWORD>(value.size());
        const DWORD length = GetEnvironmentVariableW(wideName.c_str(), value.data(), size);
        value.resize(length);
        if (length == 0)
            return std::nullopt;
        if (length < size)
            return narrowed(value);
    }
}

fs::path pathFromUtf8(const std::string &name)
{
    return widened(name, CP_UTF8);
}

fs::path pathFromNative(const std::string &name)
{
    return widened(name, CP_ACP);
}

// std::filesystem::last_write_time() has a resolution of one second here.
std::int64_t lastWritten(const fs::path &file, std::error_code &error)
{
    WIN32_FILE_ATTRIBUTE_DATA attributes{};
    if (!GetFileAttributesExW(file.c_str(), GetFileExInfoStandard, &attributes)) {
        error = {static_cast<int>(GetLastError()), std::system_category()};
        return 0;
    }
    error.clear();
    const FILETIME &time = attributes.ftLastWriteTime;
    return (static_cast<std::int64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

std::tm localTime(std::time_t seconds)
{
    std::tm parts{};
    localtime_s(&parts, &seconds);
    return parts;
}

#else

std::optional<std::string> environmentVariable(const char *name)
{
    const char *const value = std::getenv(name);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

fs::path pathFromUtf8(const std::string &name)
{
    return name;
}

fs::path pathFromNative(const std::string &name)
{
    return name;
}

std::int64_t lastWritten(const fs::path &file, std::error_code &error)
{
    return static_cast<std::int64_t>(fs::last_write_time(file, error).time_since_epoch().count());
}

std::tm localTime(std::time_t seconds)
{
    std::tm parts{};
    localtime_r(&seconds, &parts);
    return parts;
}

#endif

std::string absoluteUtf8(const std::string &name)
{
    return fs::absolute(name.empty() ? fs::path(".") : pathFromUtf8(name)).u8string();
}

} // namespace sondixsim::model
