// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

// The C interface of the sensor-access library Sondix, a shared library.

#if defined(_WIN32)
#    define SONDIX_IMPORT __declspec(dllimport)
#else
#    define SONDIX_IMPORT
#endif

extern "C" {

SONDIX_IMPORT uint32_t CreateSensorInstance(int32_t sensorType);
SONDIX_IMPORT int32_t ReleaseSensorInstance(uint32_t handle);

SONDIX_IMPORT int32_t SetParameterInt(uint32_t handle, const char *name, int32_t value);
SONDIX_IMPORT int32_t SetParameterDouble(uint32_t handle, const char *name, double value);
SONDIX_IMPORT int32_t SetParameterString(uint32_t handle, const char *name, const char *value);
SONDIX_IMPORT int32_t SetParameterBinary(uint32_t handle, const char *name, const void *data, uint32_t length);
SONDIX_IMPORT int32_t GetParameterInt(uint32_t handle, const char *name, int32_t *value);
SONDIX_IMPORT int32_t GetParameterDouble(uint32_t handle, const char *name, double *value);
SONDIX_IMPORT int32_t GetParameterString(uint32_t handle, const char *name, char *buffer, uint32_t *length);
SONDIX_IMPORT int32_t GetParameterBinary(uint32_t handle, const char *name, void *buffer, uint32_t *length);
SONDIX_IMPORT int32_t GetParameters(uint32_t handle, char *buffer, uint32_t *length);
SONDIX_IMPORT int32_t ClearAllParameters(uint32_t handle);

SONDIX_IMPORT int32_t OpenSensor(uint32_t handle);
SONDIX_IMPORT int32_t CloseSensor(uint32_t handle);
SONDIX_IMPORT int32_t SensorCommand(uint32_t handle);

SONDIX_IMPORT int32_t DataAvail(uint32_t handle, int32_t *available);
SONDIX_IMPORT int32_t TransferData(uint32_t handle, int32_t *raw, double *scaled, int32_t maxCount, int32_t *read);
SONDIX_IMPORT int32_t TransferDataTS(uint32_t handle, int32_t *raw, double *scaled, int32_t maxCount,
                                     int32_t *read, double *timestamp);

SONDIX_IMPORT int32_t GetError(uint32_t handle, char *text, uint32_t size);
SONDIX_IMPORT int32_t EnableLogging(uint32_t handle, int32_t enable, int32_t type, int32_t level,
                                    const char *fileName, int32_t flag1, int32_t flag2, int32_t count);
SONDIX_IMPORT int32_t LogToFile(uint32_t handle, int32_t level, const char *source, const char *message);
}
