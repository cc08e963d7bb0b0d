// SPDX-License-Identifier: MIT
#include "cheapsensor.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#define SONDIX_EXPORT extern "C" CHEAPSENSOR_EXPORT

namespace {

using Clock = std::chrono::steady_clock;

// Each transfer continues in the ring where the last one ended. The ring is larger than the caches.
constexpr std::size_t ringSize = 1 << 20;
std::int32_t block = 0;
std::size_t position = 0;
std::vector<std::int32_t> rawValues;
std::vector<double> scaledValues;

char command[64] = "";
std::int32_t staged = 0;
int foundSensors = 0;
std::string pageHeader;
std::string pageBody;

bool measuring = false;
Clock::duration inside{};

struct Inside
{
    Inside()
    {
        if (measuring)
            begin = Clock::now();
    }
    ~Inside()
    {
        if (measuring)
            inside += Clock::now() - begin;
    }
    Clock::time_point begin;
};

void describeFoundSensor(char *text, std::size_t size)
{
    std::snprintf(
        text, size,
        "IP_SensorType=51 IP_SensorTypeName=\"TX290\" SA_Sensor=\"TX290-25\" SA_SerialNumber=\"%07d\" "
        "SA_ArticleNumber=\"41200%03d\" SA_Softwareversion=\"1.2.3\" SA_Range=25.0 SA_UnitRange=\"mm\" "
        "IP_Interface=\"TCP/IP\" IP_RemoteAddr=\"10.1.%d.%d\" IP_RemotePort=23 SA_IPAddress=\"10.1.%d.%d\" "
        "SA_MACAddress=\"00-0c-12-01-%02x-%02x\" SA_UUID=\"%08x-0000\" SA_CompleteAnswer=\"!OK\" ",
        staged, staged % 1000, staged / 250, staged % 250, staged / 250, staged % 250, staged / 256 % 256,
        staged % 256, static_cast<unsigned>(staged));
}

std::int32_t transfer(std::int32_t *raw, double *scaled, std::int32_t maxCount, std::int32_t *read)
{
    const std::int32_t count = maxCount < block ? maxCount : block;
    const auto size = static_cast<std::size_t>(count);
    if (raw)
        std::memcpy(raw, rawValues.data() + position, size * sizeof *raw);
    if (scaled)
        std::memcpy(scaled, scaledValues.data() + position, size * sizeof *scaled);
    position += size;
    if (position + size > ringSize)
        position = 0;
    *read = count;
    return 0;
}

} // namespace

namespace cheapsensor {

void setBlock(std::int32_t values)
{
    block = values;
    position = 0;
    rawValues.assign(ringSize, 4711);
    scaledValues.assign(ringSize, 12.5);
}

void setFoundSensors(int count)
{
    foundSensors = count;
}

void setPage(std::size_t size)
{
    pageHeader =
        "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nContent-Length: " + std::to_string(size) + "\r\n\r\n";
    pageBody.assign(size, 'x');
}

void measureTime(bool on)
{
    measuring = on;
    inside = {};
}

double secondsInside()
{
    return std::chrono::duration<double>(inside).count();
}

} // namespace cheapsensor

SONDIX_EXPORT std::uint32_t CreateSensorInstance(std::int32_t)
{
    return 1;
}

SONDIX_EXPORT std::int32_t ReleaseSensorInstance(std::uint32_t)
{
    return 0;
}

SONDIX_EXPORT std::int32_t SetParameterInt(std::uint32_t, const char *, std::int32_t value)
{
    const Inside time;
    staged = value;
    return 0;
}

SONDIX_EXPORT std::int32_t SetParameterDouble(std::uint32_t, const char *, double)
{
    return 0;
}

SONDIX_EXPORT std::int32_t SetParameterString(std::uint32_t, const char *, const char *value)
{
    const Inside time;
    std::strncpy(command, value, sizeof command - 1);
    return 0;
}

SONDIX_EXPORT std::int32_t SetParameterBinary(std::uint32_t, const char *, const void *, std::uint32_t)
{
    return 0;
}

SONDIX_EXPORT std::int32_t GetParameterInt(std::uint32_t, const char *name, std::int32_t *value)
{
    const Inside time;
    *value = std::strcmp(name, "IA_Found") == 0 ? foundSensors : 0;
    return 0;
}

SONDIX_EXPORT std::int32_t GetParameterDouble(std::uint32_t, const char *, double *value)
{
    const Inside time;
    *value = 100.0;
    return 0;
}

SONDIX_EXPORT std::int32_t GetParameterString(std::uint32_t, const char *, char *buffer, std::uint32_t *length)
{
    if (buffer && *length > 0)
        buffer[0] = '\0';
    *length = 1;
    return 0;
}

SONDIX_EXPORT std::int32_t GetParameterBinary(std::uint32_t, const char *name, void *buffer, std::uint32_t *length)
{
    const std::string &answer = std::strcmp(name, "SA_HTTPBody") == 0 ? pageBody : pageHeader;
    if (buffer)
        std::memcpy(buffer, answer.data(), *length < answer.size() ? *length : answer.size());
    *length = static_cast<std::uint32_t>(answer.size());
    return 0;
}

SONDIX_EXPORT std::int32_t GetParameters(std::uint32_t, char *buffer, std::uint32_t *length)
{
    const Inside time;
    char text[1024] = "";
    if (std::strcmp(command, "Get_FoundSensor") == 0)
        describeFoundSensor(text, sizeof text);
    const auto size = static_cast<std::uint32_t>(std::strlen(text)) + 1;
    if (buffer)
        std::memcpy(buffer, text, *length < size ? *length : size);
    *length = size;
    return 0;
}

SONDIX_EXPORT std::int32_t ClearAllParameters(std::uint32_t)
{
    return 0;
}

SONDIX_EXPORT std::int32_t OpenSensor(std::uint32_t)
{
    return 0;
}

SONDIX_EXPORT std::int32_t CloseSensor(std::uint32_t)
{
    return 0;
}

SONDIX_EXPORT std::int32_t SensorCommand(std::uint32_t)
{
    const Inside time;
    return 0;
}

SONDIX_EXPORT std::int32_t DataAvail(std::uint32_t, std::int32_t *available)
{
    *available = block;
    return 0;
}

SONDIX_EXPORT std::int32_t TransferData(std::uint32_t, std::int32_t *raw, double *scaled, std::int32_t maxCount,
                                        std::int32_t *read)
{
    return transfer(raw, scaled, maxCount, read);
}

SONDIX_EXPORT std::int32_t TransferDataTS(std::uint32_t, std::int32_t *raw, double *scaled, std::int32_t maxCount,
                                          std::int32_t *read, double *timestamp)
{
    *timestamp = 0.5;
    return transfer(raw, scaled, maxCount, read);
}

SONDIX_EXPORT std::int32_t GetError(std::uint32_t, char *text, std::uint32_t size)
{
    if (size > 0)
        text[0] = '\0';
    return 0;
}

SONDIX_EXPORT std::int32_t EnableLogging(std::uint32_t, std::int32_t, std::int32_t, std::int32_t, const char *,
                                         std::int32_t, std::int32_t, std::int32_t)
{
    return 0;
}

SONDIX_EXPORT std::int32_t LogToFile(std::uint32_t, std::int32_t, const char *, const char *)
{
    return 0;
}
