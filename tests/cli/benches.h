// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace Benches {

/// A bench with \a sensors, the elements of a JSON array, on lines that carry everything at once. \a search sets the duration of a search; default: very short.
inline QByteArray of(const QByteArray &sensors, const QByteArray &search = QByteArray())
{
    const QByteArray quick = R"("TCP/IP": 0.01, "WinUSB": 0.01, "RS232": 0.01, "XA100_USB": 0.01, "XA100": 0.01,
                               "XA200": 0.01, "XA200_ETH": 0.01)";
    return R"({ "lineSpeed": false, "search": {)" + (search.isEmpty() ? quick : search) + R"(}, "sensors": [)" +
           sensors + "] }";
}

/// A laser sensor on COM3 that sends \a rate frames of one value per second; \a more contains further JSON members.
inline QByteArray laser(int rate, const QByteArray &more = QByteArray())
{
    return R"({ "model": "TX270", "serialNumber": "1001", "place": { "interface": "RS232", "port": "COM3" },
        "rate": )" +
           QByteArray::number(rate) + R"(,
        "signals": [ { "name": "Distance", "unit": "mm", "range": [0, 100], "rawRange": [0, 100000],
                       "generator": { "kind": "constant", "value": 12.5 },
                       "errors": [ { "key": -3, "every": 4 } ] } ])" +
           (more.isEmpty() ? QByteArray() : ", " + more) + "}";
}

/// Where the laser sensor is.
inline const char *const laserAddress = "TX270@RS232,port=COM3";
/// Where the controller is.
inline const char *const controllerAddress = "CC480@TCP/IP,address=192.168.0.10";

/// A member of a sensor: the cable is pulled after so many transfers. \a more contains further JSON members of the fault.
inline QByteArray breakingAfter(int transfers, const QByteArray &more = QByteArray())
{
    return R"("faults": [ { "function": "TransferDataTS", "from": )" + QByteArray::number(transfers + 1) +
           R"(, "code": -12, "text": "the cable was pulled")" + more + "} ]";
}

/// A controller on the network.
inline const char *const controller =
    R"({ "model": "CC480", "serialNumber": "2002", "place": { "interface": "TCP/IP", "ip": "192.168.0.10" } })";

/// A second laser sensor, on USB.
inline const char *const usbLaser =
    R"({ "model": "TX270", "serialNumber": "1003", "place": { "interface": "WinUSB", "device": 0 } })";

} // namespace Benches
