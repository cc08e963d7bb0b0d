// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

/// Reads what is added to a log that is renamed when it has become long, while a new one begins.
///
/// The file is opened only for a moment each time: on Windows an open file cannot be renamed. The log is known again by
/// its beginning.
class LogFollower
{
public:
    enum class Begin {
        AtEnd,   ///< of the present log
        AtStart, ///< of the log before, if there is one
    };
    /// \a oldFile is the name that a long log gets.
    LogFollower(QString file, QString oldFile, Begin begin);

    using Write = std::function<bool(const QByteArray &bytes)>;
    /// Passes on what was added since the last call. False if \a write has failed.
    bool readNew(const Write &write);

    /// Whether more than one log has begun between two calls, so that lines were not seen. Asking takes it back.
    bool takeMissed();

private:
    /// A log of which something was read.
    struct Place
    {
        QByteArray head; ///< the beginning of the log, as far as it was there
        qint64 position = 0;
    };
    enum class Found { Nothing, ThisLog, OtherLog };
    static Found readFrom(const QString &file, Place &place, const Write &write, bool &isWritten);

    QString m_file;
    QString m_oldFile;
    Place m_place;
    Place m_before; ///< of the renamed log: a program may still add a line to it
    bool m_missed = false;
};
