// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/errorcode.h>

#include <QByteArray>
#include <QString>

namespace SondixQt {

class SensorInstance;

/// The serial link to the sensor while the tunnel uses it: opens and closes it if needed, keeps the sensor's RS422
/// output off, and transfers pages and commands. Sequences of commands hold the lock of the instance.
class SerialLink
{
public:
    struct Closing
    {
        int closed = 0;      ///< how many calls of close() succeeded
        bool failed = false; ///< the tunnel has opened the sensor and cannot close it
    };

    explicit SerialLink(SensorInstance &sensor);

    bool isOpen() const;
    /// Opens the sensor with its stored parameters if it is closed, and switches the RS422 output off.
    ErrorCode openSerialCommunication();
    /// Switches the RS422 output back on, and closes the sensor if this link has opened it.
    Closing close();

    ErrorCode fetchPage(const QString &path, const QString &entityTag, QByteArray &header, QByteArray &body,
                        QString *errorText);
    /// Sends \a text to the sensor. If the command changes the link, such as its baud rate, adapts to the change.
    ErrorCode sendCommand(const QString &text, bool isImport, QByteArray &answer, QString *errorText);
    /// Whether the sensor was lost since the last call: it could be opened at neither the new nor the old baud
    /// rate.
    bool takeLost();

    /// Switches the sensor-access library's log of this link on or off.
    void enableLogging(bool enable);
    /// Writes to the debug log, and to the sensor's log if it is on. \a function names a function of the worker.
    void log(const char *function, const QString &text);

private:
    ErrorCode changeBaudrate(int baudrate, QString *errorText);
    void disableRS422Output();
    void enableRS422Output();
    ErrorCode switchRS422Output(bool on, QString *errorText);
    void startSensorLog();

    SensorInstance *sensor;
    bool openedByTunnel = false;
    bool rs422SwitchedOff = false;
    bool lost = false;
    bool loggingEnabled = false;
    bool logStarted = false;
};

} // namespace SondixQt
