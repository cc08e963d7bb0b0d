// SPDX-License-Identifier: MIT
#pragma once

#include "handle.h"
#include "SondixSimulator/control.h"

#include <QJsonDocument>
#include <QJsonObject>

/// The default of "SP_HTTPMaxLength".
constexpr std::int32_t defaultMaxLength = 16383;

struct Fetched
{
    std::int32_t result = 0;
    std::string header;
    std::string body;

    std::string statusLine() const { return header.substr(0, header.find("\r\n")); }
    /// The value of a header field; "(missing)" without it.
    std::string line(const std::string &name) const
    {
        const std::size_t start = header.find("\r\n" + name + ": ");
        if (start == std::string::npos)
            return "(missing)";
        const std::size_t first = start + name.size() + 4;
        return header.substr(first, header.find("\r\n", first) - first);
    }
    /// The entity tag without quotation marks.
    std::string tag() const
    {
        const std::string quoted = line("ETag");
        return quoted.size() > 2 && quoted.front() == '"' ? quoted.substr(1, quoted.size() - 2) : std::string();
    }
    QJsonObject json() const { return QJsonDocument::fromJson(QByteArray::fromStdString(body)).object(); }
};

inline std::string binaryAnswer(std::uint32_t handle, const char *name)
{
    std::uint32_t length = 0;
    if (GetParameterBinary(handle, name, nullptr, &length) != 0)
        return "(missing)";
    std::string bytes(length, '\0');
    return GetParameterBinary(handle, name, bytes.data(), &length) == 0 ? bytes : std::string("(failed)");
}

inline Fetched fetch(Handle &handle, const std::string &path, const std::string &tag = "",
                     std::int32_t maxCount = defaultMaxLength)
{
    handle.set("SP_HTTPMaxLength", maxCount);
    handle.set("SP_HTTPPath", path.c_str());
    handle.set("SP_HTTPeTag", tag.c_str());
    Fetched fetched;
    fetched.result = handle.command("Get_HTTP");
    if (fetched.result == 0) {
        fetched.header = binaryAnswer(handle, "SA_HTTPHeader");
        fetched.body = binaryAnswer(handle, "SA_HTTPBody");
    }
    return fetched;
}

inline std::int32_t sendGeneric(Handle &handle, const std::string &text, std::int32_t initialise = 0)
{
    handle.set("SP_CmdStr", text.c_str());
    handle.set("CP_InitAfterSensorCommand", initialise);
    return handle.command("Cmd_Generic");
}

/// The answer to a generic command, or "(failed)" and the error text.
inline std::string askGeneric(Handle &handle, const std::string &text)
{
    if (sendGeneric(handle, text) == 0)
        return handle.getText("SA_CompleteAnswer");
    std::string why;
    handle.error(&why);
    return "(failed) " + why;
}

/// Loads a bench with one TX270 at COM1 with 115200 baud. \a more are further keys of the sensor, \a benchKeys of the
/// bench.
inline void loadWebSensor(const std::string &more = "",
                          const std::string &benchKeys = R"("clock": { "virtual": true },)",
                          const std::string &model = "TX270")
{
    sondixsim::loadBench("{ " + benchKeys + R"( "sensors": [ { "model": ")" + model +
                         R"(", "serialNumber": "1", "place": { "interface": "RS232", "port": "COM1" } )" + more +
                         " } ] }");
}
