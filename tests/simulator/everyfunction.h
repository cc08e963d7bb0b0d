// SPDX-License-Identifier: MIT
#pragma once

#include "sondix/sondixapi_p.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

/// Arguments for calls of the C interface, drawn from valid and absurd ones. Each buffer has a guard behind it that no
/// call may overwrite. Drawing allocates no memory.
class Arguments
{
public:
    explicit Arguments(std::uint32_t seed)
        : m_random(seed)
    {
        m_bytes.fill(guardByte);
        m_raw.fill(guardNumber);
        m_scaled.fill(guardNumber);
        m_handles.reserve(1000);
    }

    int below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_random); }
    bool rarely() { return below(10) == 0; }
    template<typename T>
    T oneOf(std::initializer_list<T> values)
    {
        return values.begin()[below(static_cast<int>(values.size()))];
    }

    std::uint32_t handle()
    {
        if (m_handles.empty() || rarely())
            return oneOf<std::uint32_t>({0, 999, 4095, 4096, 1u << 31, UINT32_MAX});
        return m_handles[static_cast<std::size_t>(below(static_cast<int>(m_handles.size())))];
    }
    void add(std::uint32_t handle) { m_handles.push_back(handle); }
    std::vector<std::uint32_t> takeHandles() { return std::move(m_handles); }

    std::int32_t number()
    {
        return oneOf<std::int32_t>({0, 1, -1, 2, 41, 115200, 921600, INT32_MAX, INT32_MIN, below(100)});
    }
    double real() { return oneOf<double>({0.0, 1.0, -1.0, 2.5, 1e300, -1e300, 1e-300, HUGE_VAL, std::nan("")}); }
    const char *name()
    {
        if (rarely())
            return oneOf<const char *>({nullptr, "", "=", "SA_\xFF\"\n", longText.c_str()});
        return oneOf<const char *>({"S_Command",
                                    "S_Command",
                                    "S_Command",
                                    "S_Command",
                                    "IP_Interface",
                                    "IP_Port",
                                    "IP_RemoteAddr",
                                    "IP_Baudrate",
                                    "IP_SensorType",
                                    "IP_Index",
                                    "IP_EnableLogging",
                                    "IP_Baudrates",
                                    "IP_FindSimilarSensors",
                                    "IP_SensorIndex",
                                    "SP_Measrate",
                                    "SP_AveragingNumber",
                                    "SP_TriggerMode",
                                    "SP_MeasureMode",
                                    "SP_OutputRS422",
                                    "SP_HTTPPath",
                                    "SP_HTTPMaxLength",
                                    "SP_HTTPeTag",
                                    "SP_CmdStr",
                                    "SP_OutputVideoRaw_ETH",
                                    "CP_InitAfterSensorCommand",
                                    "SA_SerialNumber",
                                    "SA_Sensor",
                                    "SA_VideoRaw",
                                    "SA_HTTPBody",
                                    "IA_Datarate",
                                    "IA_Progress",
                                    "SA_SensorInformation"});
    }
    const char *text()
    {
        if (rarely())
            return oneOf<const char *>({nullptr, "", "\xFF\xFE", "a\r\nb=\"", longText.c_str()});
        return oneOf<const char *>({"Get_Info",
                                    "Get_AllParameters",
                                    "Get_TransmittedDataInfo",
                                    "Get_Samplerate",
                                    "Set_Samplerate",
                                    "Set_Averaging",
                                    "Set_TriggerMode",
                                    "Set_MeasureMode",
                                    "Set_DataOutInterface",
                                    "Set_OutputVideo_ETH",
                                    "Get_Measure",
                                    "Get_Video",
                                    "Get_HTTP",
                                    "Cmd_Generic",
                                    "Clear_Buffers",
                                    "Get_SensorErrorValueText",
                                    "Get_DrvSetting",
                                    "Get_OpenState",
                                    "Start_FindSensor",
                                    "Get_FindSensorProgress",
                                    "Get_FoundSensor",
                                    "Abort_FindSensor",
                                    "Enable_Logging",
                                    "DistanceTracking",
                                    "StopTracking",
                                    "RS232",
                                    "TCP/IP",
                                    "WinUSB",
                                    "COM3",
                                    "COM8",
                                    "192.168.0.31",
                                    "/",
                                    "/settings.html",
                                    "EXPORT",
                                    "SETDEFAULT",
                                    "MEASRATE 4",
                                    "BAUDRATE 9600\nMEASRATE x",
                                    "115200, 921600",
                                    "99999999999999999999"});
    }

    // Buffers, each with the length that a call gets for it.
    static constexpr std::uint32_t bufferSize = 4096;
    char *buffer(std::uint32_t &length)
    {
        const bool none = rarely();
        length = none ? oneOf<std::uint32_t>({0, 1, UINT32_MAX}) : oneOf<std::uint32_t>({0, 1, 100, bufferSize});
        return none ? nullptr : m_bytes.data();
    }
    std::int32_t *raw() { return rarely() ? nullptr : m_raw.data(); }
    double *scaled() { return rarely() ? nullptr : m_scaled.data(); }
    static constexpr std::int32_t transferSize = 512;
    std::int32_t maxCount() { return oneOf<std::int32_t>({INT32_MIN, -1, 0, 1, 7, transferSize}); }
    template<typename T>
    T *result(T &value)
    {
        return rarely() ? nullptr : &value;
    }
    bool guardsAreIntact() const
    {
        return m_bytes.back() == guardByte && m_raw.back() == guardNumber && m_scaled.back() == guardNumber;
    }

    const std::string longText = std::string(20000, 'x');

private:
    static constexpr char guardByte = 0x5A;
    static constexpr int guardNumber = 4711;

    std::mt19937 m_random;
    std::vector<std::uint32_t> m_handles;
    std::array<char, bufferSize + 1> m_bytes;
    std::array<std::int32_t, transferSize + 1> m_raw;
    std::array<double, transferSize + 1> m_scaled;
};

/// One call of a function of the C interface; returns its result.
struct EveryFunction
{
    const char *name;
    std::int32_t (*call)(Arguments &arguments, std::uint32_t handle);
};

inline const std::vector<EveryFunction> &everyFunction()
{
    using A = Arguments;
    using Handle32 = std::uint32_t;
    static const std::vector<EveryFunction> all = {
        {"CreateSensorInstance",
         [](A &a, Handle32) {
             const auto handle = CreateSensorInstance(a.oneOf<std::int32_t>({41, 26, 20, 51, 43, 57, a.number()}));
             if (handle != 0)
                 a.add(handle);
             return handle != 0 ? 0 : GetError(0, nullptr, 0);
         }},
        {"ReleaseSensorInstance", [](A &, Handle32 h) { return ReleaseSensorInstance(h); }},
        {"SetParameterInt", [](A &a, Handle32 h) { return SetParameterInt(h, a.name(), a.number()); }},
        {"SetParameterDouble", [](A &a, Handle32 h) { return SetParameterDouble(h, a.name(), a.real()); }},
        {"SetParameterString", [](A &a, Handle32 h) { return SetParameterString(h, a.name(), a.text()); }},
        {"SetParameterBinary",
         [](A &a, Handle32 h) {
             if (a.rarely())
                 return SetParameterBinary(h, a.name(), nullptr, UINT32_MAX);
             return SetParameterBinary(h, a.name(), "\0\xFF\n", a.oneOf<std::uint32_t>({0, 1, 3}));
         }},
        {"GetParameterInt",
         [](A &a, Handle32 h) {
             std::int32_t value = 0;
             return GetParameterInt(h, a.name(), a.result(value));
         }},
        {"GetParameterDouble",
         [](A &a, Handle32 h) {
             double value = 0.0;
             return GetParameterDouble(h, a.name(), a.result(value));
         }},
        {"GetParameterString",
         [](A &a, Handle32 h) {
             std::uint32_t length = 0;
             char *const buffer = a.buffer(length);
             return GetParameterString(h, a.name(), buffer, a.result(length));
         }},
        {"GetParameterBinary",
         [](A &a, Handle32 h) {
             std::uint32_t length = 0;
             char *const buffer = a.buffer(length);
             return GetParameterBinary(h, a.name(), buffer, a.result(length));
         }},
        {"GetParameters",
         [](A &a, Handle32 h) {
             std::uint32_t length = 0;
             char *const buffer = a.buffer(length);
             return GetParameters(h, buffer, a.result(length));
         }},
        {"ClearAllParameters", [](A &, Handle32 h) { return ClearAllParameters(h); }},
        {"OpenSensor", [](A &, Handle32 h) { return OpenSensor(h); }},
        {"CloseSensor", [](A &, Handle32 h) { return CloseSensor(h); }},
        {"SensorCommand",
         [](A &a, Handle32 h) {
             constexpr std::int32_t outOfMemory = -23;
             if (!a.rarely() && SetParameterString(h, "S_Command", a.text()) == outOfMemory)
                 return outOfMemory;
             return SensorCommand(h);
         }},
        {"DataAvail",
         [](A &a, Handle32 h) {
             std::int32_t count = 0;
             return DataAvail(h, a.result(count));
         }},
        {"TransferData",
         [](A &a, Handle32 h) {
             std::int32_t read = 0;
             return TransferData(h, a.raw(), a.scaled(), a.maxCount(), a.result(read));
         }},
        {"TransferDataTS",
         [](A &a, Handle32 h) {
             std::int32_t read = 0;
             double timestamp = 0.0;
             return TransferDataTS(h, a.raw(), a.scaled(), a.maxCount(), a.result(read), a.result(timestamp));
         }},
        {"GetError",
         [](A &a, Handle32 h) {
             std::uint32_t length = 0;
             char *const buffer = a.buffer(length);
             return GetError(h, buffer, length);
         }},
        {"EnableLogging",
         [](A &a, Handle32 h) {
             const char *const file = a.oneOf<const char *>({nullptr, "", ".", "/absent/log.txt", "/dev/full"});
             return EnableLogging(h, a.below(2), a.number(), a.number(), file, a.below(2), a.below(2), a.number());
         }},
        {"LogToFile", [](A &a, Handle32 h) { return LogToFile(h, a.number(), a.text(), a.text()); }},
    };
    return all;
}
