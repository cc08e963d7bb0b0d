// SPDX-License-Identifier: MIT
#pragma once

#include <QLatin1String>

/// \file
/// Names of the parameters that describe the connection to a sensor, as the sensor-access library knows them.

namespace SondixQt {

/// The names of the parameters that a search reports about the connection to a sensor and that open it again: keys of
/// SensorInfo::getInterfaceParameters(), SensorAddress::parameters and SensorInstance::open().
///
/// Names convert to QString without a loss: <tt>parameters.insert(InterfaceParameter::Port, "COM3")</tt>.
namespace InterfaceParameter {

/// \cond
template<int size>
constexpr QLatin1String named(const char (&text)[size]) // QLatin1String(text) is not constant for every compiler
{
    return QLatin1String(text, size - 1);
}
/// \endcond

// clang-format off

/// \name Kind of connection
/// \{
inline constexpr QLatin1String Interface             = named("IP_Interface");      ///< its name, see interfaceName()
inline constexpr QLatin1String InterfaceIndex        = named("IP_InterfaceIdx");   ///< its number, see interfaceIndex()
/// \}

/// \name Serial line
/// \{
inline constexpr QLatin1String Port                  = named("IP_Port");           ///< such as "COM3"
inline constexpr QLatin1String Baudrate              = named("IP_Baudrate");       ///< bits a second
inline constexpr QLatin1String Stopbits              = named("IP_Stopbits");
inline constexpr QLatin1String ByteSize              = named("IP_ByteSize");       ///< data bits
inline constexpr QLatin1String Parity                = named("IP_Parity");         ///< a number
inline constexpr QLatin1String SensorAddress         = named("IP_SensorAddress");  ///< address of the sensor on a bus
/// \}

/// \name Network
/// \{
inline constexpr QLatin1String RemoteAddr            = named("IP_RemoteAddr");     ///< IP address
inline constexpr QLatin1String RemotePort            = named("IP_RemotePort");     ///< TCP port for commands
inline constexpr QLatin1String DataPort              = named("IP_DataPort");       ///< TCP port for measured values
inline constexpr QLatin1String AddressFamily         = named("IP_AddressFamily");  ///< IP version, a number
inline constexpr QLatin1String MacAddress            = named("SA_MacAddress");
/// \}

/// \name Cards, converters and USB
/// \{
inline constexpr QLatin1String CardInstance          = named("IP_CardInstance");   ///< number of the interface card
inline constexpr QLatin1String DeviceInstance        = named("IP_DeviceInstance"); ///< number of the USB device
inline constexpr QLatin1String ChannelNumber         = named("IP_ChannelNumber");  ///< channel of a card or converter
inline constexpr QLatin1String InterfaceSerialNumber = named("IP_SerialNumber");   ///< of the card or converter
/// \}

/// \name Sensor
/// \{
inline constexpr QLatin1String SensorType            = named("IP_SensorType");     ///< a SensorType
inline constexpr QLatin1String SensorTypeName        = named("IP_SensorTypeName");
inline constexpr QLatin1String SensorCount           = named("IP_SensorCount");    ///< sensors of a multi-sensor
inline constexpr QLatin1String SerialNumber          = named("SA_SerialNumber");   ///< of the sensor
inline constexpr QLatin1String SoftwareVersion       = named("SA_Softwareversion"); ///< version of the firmware
/// \}

// clang-format on

} // namespace InterfaceParameter

} // namespace SondixQt
