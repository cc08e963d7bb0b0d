// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/errorcode.h>

#include <QByteArray>
#include <QString>

namespace SondixQt {

class SensorInstance;

/// The serial link to the sensor while the tunnel uses it: opens and closes it where needed, keeps the sensor's RS422
/// output off, and carries pages and commands. Sequences of commands hold the instance's lock.
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
    /// Sends \a text to the sensor and follows it where it changes the link, such as a new baud rate.
    ErrorCode sendCommand(const QString &text, bool isImport, QByteArray &answer, QString *errorText);
    /// Whether the sensor was lost since the last call: it answers at neither baud rate.
    bool takeLost();

    /// Switches the sensor-access library's log of this link on or off.
    void enableLogging(bool enable);
    /// Writes to the debug log, and to the sensor's log if it is on. \a function: of the tunnel's worker.
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
