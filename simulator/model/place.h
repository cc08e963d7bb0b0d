// SPDX-License-Identifier: MIT
#pragma once

#include "json.h"
#include "rules.h"
#include "value.h"

#include <string>
#include <vector>

namespace sondixsim::model {

/// The interfaces that a search scans; each has a parameter "IP_ScanHW..." that switches it.
enum class ScanHardware { Tcpip, WinUsb, DriverXUsb, UsbIo, Rs232, Xa100Usb, Xa100, Xa200, Xa200Eth };

struct PlaceKey
{
    const char *fileKey;
    const char *parameter;
    int defaultValue; ///< -1: a text, which is required
    bool identifies;  ///< two sensors that have all of these in common are at the same place
    int minimum;
    int maximum;
    const char *description; ///< for the schema of bench files
};

struct InterfaceRow
{
    ScanHardware hardware;
    const char *name; ///< in "IP_Interface" and in bench files
    int index;        ///< in "IP_InterfaceIdx"
    bool network;     ///< has one or several IP addresses
    std::vector<PlaceKey> keys;
};

const std::vector<InterfaceRow> &interfaceRows();

/// Where a sensor is connected.
struct Place
{
    const InterfaceRow *interface = nullptr;
    ParameterList parameters;           ///< the "IP_" parameters that describe it, without the address
    std::vector<std::string> addresses; ///< network only; a prefix length may follow after "/"
    bool onBus = false;                 ///< one of several sensors on a line
    bool inUse = false;                 ///< by another program

    /// "COM3 at 115200 baud", "192.168.0.5", for error texts.
    std::string text() const;
    /// The parameters that a search reports.
    ParameterList foundParameters() const;
    /// Whether staged interface parameters fit this place. The baud rate and parameters that are not staged are ignored.
    bool agreesWith(const ParameterList &staged) const;
    /// Two sensors are at the same place if they have one of these texts in common.
    std::vector<std::string> identities() const;
};

const ObjectRules &placeRules();
Place readPlace(const Node &node, bool busSensor);

} // namespace sondixsim::model
