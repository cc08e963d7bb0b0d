// SPDX-License-Identifier: MIT
#pragma once

#include "json.h"
#include "value.h"

#include <string>
#include <vector>

namespace sondixsim::model {

/// What a search scans on its own, with a switch of its own.
enum class ScanHardware { Tcpip, WinUsb, DriverXUsb, UsbIo, Rs232, Xa100Usb, Xa100, Xa200, Xa200Eth };

struct PlaceKey
{
    const char *fileKey;
    const char *parameter;
    int standard;    ///< -1: a text, which must be given
    bool identifies; ///< two sensors that agree in these are at the same place
};

struct InterfaceRow
{
    ScanHardware hardware;
    const char *name; ///< in "IP_Interface" and in bench files
    int index;        ///< in "IP_InterfaceIdx"
    bool network;     ///< found under one or several addresses
    std::vector<PlaceKey> keys;
};

const std::vector<InterfaceRow> &interfaceRows();

/// Where a sensor hangs.
struct Place
{
    const InterfaceRow *interface = nullptr;
    ParameterList parameters;           ///< the "IP_" parameters that describe it, without the address
    std::vector<std::string> addresses; ///< network only; a prefix length may follow after "/"
    bool onBus = false;                 ///< shares its line with others
    bool inUse = false;                 ///< another program holds it

    /// "COM3 at 115200 baud", "192.168.0.5", for error texts.
    std::string text() const;
    /// All parameters as a search reports them.
    ParameterList foundParameters() const;
    /// Whether staged interface parameters lead here, at whatever baud rate. What they do not say does not matter.
    bool agreesWith(const ParameterList &staged) const;
    bool isSameAs(const Place &other) const;
};

Place readPlace(const Node &node, bool busSensor);

} // namespace sondixsim::model
