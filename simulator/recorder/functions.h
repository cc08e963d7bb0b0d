// SPDX-License-Identifier: MIT
#pragma once

#include "capi/sondix.h"

namespace sondixrec {

/// Calls \a X with the name of each function of the C interface.
#define SONDIX_EACH_FUNCTION(X)                                                                                   \
    X(CreateSensorInstance)                                                                                       \
    X(ReleaseSensorInstance)                                                                                      \
    X(SetParameterInt)                                                                                            \
    X(SetParameterDouble)                                                                                         \
    X(SetParameterString)                                                                                         \
    X(SetParameterBinary)                                                                                         \
    X(GetParameterInt)                                                                                            \
    X(GetParameterDouble)                                                                                         \
    X(GetParameterString)                                                                                         \
    X(GetParameterBinary)                                                                                         \
    X(GetParameters)                                                                                              \
    X(ClearAllParameters)                                                                                         \
    X(OpenSensor)                                                                                                 \
    X(CloseSensor)                                                                                                \
    X(SensorCommand)                                                                                              \
    X(DataAvail)                                                                                                  \
    X(TransferData)                                                                                               \
    X(TransferDataTS)                                                                                             \
    X(GetError)                                                                                                   \
    X(EnableLogging)                                                                                              \
    X(LogToFile)

/// The functions that answer the calls of the program.
struct Functions
{
// NOLINTNEXTLINE(bugprone-macro-parentheses): the name of a member
#define SONDIX_MEMBER(name) decltype(&::name) name = nullptr;
    SONDIX_EACH_FUNCTION(SONDIX_MEMBER)
#undef SONDIX_MEMBER
};

} // namespace sondixrec
