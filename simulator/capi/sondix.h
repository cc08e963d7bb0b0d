// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

// The C interface that the simulator offers in place of the sensor-access library.

#if defined(_WIN32)
#    define SONDIX_EXPORT __declspec(dllexport)
#else
#    define SONDIX_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

SONDIX_EXPORT std::uint32_t CreateSensorInstance(std::int32_t sensorType);
SONDIX_EXPORT std::int32_t ReleaseSensorInstance(std::uint32_t handle);

SONDIX_EXPORT std::int32_t SetParameterInt(std::uint32_t handle, const char *name, std::int32_t value);
SONDIX_EXPORT std::int32_t SetParameterDouble(std::uint32_t handle, const char *name, double value);
SONDIX_EXPORT std::int32_t SetParameterString(std::uint32_t handle, const char *name, const char *value);
SONDIX_EXPORT std::int32_t SetParameterBinary(std::uint32_t handle, const char *name, const void *data,
                                              std::uint32_t length);
SONDIX_EXPORT std::int32_t GetParameterInt(std::uint32_t handle, const char *name, std::int32_t *value);
SONDIX_EXPORT std::int32_t GetParameterDouble(std::uint32_t handle, const char *name, double *value);
SONDIX_EXPORT std::int32_t GetParameterString(std::uint32_t handle, const char *name, char *buffer,
                                              std::uint32_t *length);
SONDIX_EXPORT std::int32_t GetParameterBinary(std::uint32_t handle, const char *name, void *buffer,
                                              std::uint32_t *length);
SONDIX_EXPORT std::int32_t GetParameters(std::uint32_t handle, char *buffer, std::uint32_t *length);
SONDIX_EXPORT std::int32_t ClearAllParameters(std::uint32_t handle);

SONDIX_EXPORT std::int32_t OpenSensor(std::uint32_t handle);
SONDIX_EXPORT std::int32_t CloseSensor(std::uint32_t handle);
SONDIX_EXPORT std::int32_t SensorCommand(std::uint32_t handle);

SONDIX_EXPORT std::int32_t DataAvail(std::uint32_t handle, std::int32_t *available);
SONDIX_EXPORT std::int32_t TransferData(std::uint32_t handle, std::int32_t *raw, double *scaled,
                                        std::int32_t maxCount, std::int32_t *read);
SONDIX_EXPORT std::int32_t TransferDataTS(std::uint32_t handle, std::int32_t *raw, double *scaled,
                                          std::int32_t maxCount, std::int32_t *read, double *timestamp);

SONDIX_EXPORT std::int32_t GetError(std::uint32_t handle, char *text, std::uint32_t size);
SONDIX_EXPORT std::int32_t EnableLogging(std::uint32_t handle, std::int32_t enable, std::int32_t type,
                                         std::int32_t level, const char *fileName, std::int32_t flag1,
                                         std::int32_t flag2, std::int32_t count);
SONDIX_EXPORT std::int32_t LogToFile(std::uint32_t handle, std::int32_t level, const char *source,
                                     const char *message);
}
