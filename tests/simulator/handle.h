// SPDX-License-Identifier: MIT
#pragma once

#include "sondix/sondixapi_p.h"

#include <SondixQt/sensortypes.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

using SondixQt::SensorType;

/// Creates a handle of the C interface and releases it at the end; wraps common sequences of calls.
class Handle
{
public:
    explicit Handle(std::int32_t sensorType)
        : m_handle(CreateSensorInstance(sensorType))
    {
    }
    ~Handle()
    {
        if (m_handle != 0)
            ReleaseSensorInstance(m_handle);
    }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;

    operator std::uint32_t() const { return m_handle; }

    void set(const char *name, std::int32_t value) { SetParameterInt(m_handle, name, value); }
    void set(const char *name, double value) { SetParameterDouble(m_handle, name, value); }
    void set(const char *name, const char *value) { SetParameterString(m_handle, name, value); }

    std::int32_t open() { return OpenSensor(m_handle); }
    std::int32_t openAt(const char *port)
    {
        set("IP_Interface", "RS232");
        set("IP_Port", port);
        return open();
    }
    std::int32_t command(const char *name)
    {
        set("S_Command", name);
        return SensorCommand(m_handle);
    }

    std::int32_t getInt(const char *name, std::int32_t missing = -4711) const
    {
        std::int32_t value = 0;
        return GetParameterInt(m_handle, name, &value) == 0 ? value : missing;
    }
    double getDouble(const char *name, double missing = -4711.0) const
    {
        double value = 0.0;
        return GetParameterDouble(m_handle, name, &value) == 0 ? value : missing;
    }
    std::string getText(const char *name, const std::string &missing = "(missing)") const
    {
        std::uint32_t length = 0;
        if (GetParameterString(m_handle, name, nullptr, &length) != 0)
            return missing;
        std::string text(length, '?');
        if (GetParameterString(m_handle, name, &text[0], &length) != 0)
            return missing;
        return text.c_str();
    }
    std::string allParameters() const
    {
        std::uint32_t length = 0;
        GetParameters(m_handle, nullptr, &length);
        std::string text(length, '?');
        return GetParameters(m_handle, &text[0], &length) == 0 ? std::string(text.c_str()) : std::string();
    }
    std::int32_t error(std::string *text = nullptr) const
    {
        char buffer[4096];
        const std::int32_t code = GetError(m_handle, buffer, sizeof buffer);
        if (text != nullptr)
            *text = buffer;
        return code;
    }
    std::int32_t available() const
    {
        std::int32_t count = 0;
        return DataAvail(m_handle, &count) == 0 ? count : -4711;
    }

private:
    std::uint32_t m_handle;
};

/// A place, in JSON, at which a model can be.
inline std::string placeOf(const std::string &model)
{
    for (const char *const card : {"XA100", "XA200"}) {
        if (model.rfind(card, 0) != 0)
            continue;
        if (model.find("PCI") != std::string::npos)
            return R"({ "interface": ")" + std::string(card) + "\" }";
        return model.find("USB") != std::string::npos ? R"({ "interface": "XA100_USB", "port": "COM1" })"
                                                      : R"({ "interface": "XA200_ETH", "ip": "192.168.0.2" })";
    }
    if (model.find("XA300") != std::string::npos)
        return R"({ "interface": "TCP/IP", "ip": "192.168.0.2" })";
    for (const char *const onBus : {"CP740", "EC8", "GenericKVBus", "GY3", "MV4", "DV"}) {
        if (model.rfind(onBus, 0) == 0 && model != "EC810" && model != "EC82x_ETH")
            return R"({ "interface": "RS232", "port": "COM1" })";
    }
    return R"({ "interface": "WinUSB" })";
}

struct Block
{
    std::vector<std::int32_t> raw;
    std::vector<double> scaled;
    double timestamp = -1.0;
};

/// Transfers up to \a maxCount values.
inline Block takeBlock(std::uint32_t handle, std::int32_t maxCount)
{
    Block block;
    block.raw.resize(static_cast<std::size_t>(maxCount));
    block.scaled.resize(block.raw.size());
    std::int32_t read = 0;
    if (TransferDataTS(handle, block.raw.data(), block.scaled.data(), maxCount, &read, &block.timestamp) != 0)
        read = 0;
    block.raw.resize(static_cast<std::size_t>(read));
    block.scaled.resize(block.raw.size());
    return block;
}
