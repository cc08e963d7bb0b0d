// SPDX-License-Identifier: MIT
#pragma once

#include <SondixSimulator/control.h>

#include <QString>
#include <QStringList>

/// Records the calls of the C interface while it lives.
class CallRecorder
{
public:
    CallRecorder()
    {
        sondixsim::clearCalls();
        sondixsim::recordCalls(true);
    }
    ~CallRecorder()
    {
        sondixsim::recordCalls(false);
        sondixsim::clearCalls();
    }
    CallRecorder(const CallRecorder &) = delete;
    CallRecorder &operator=(const CallRecorder &) = delete;

    /// The calls since the last look, as text.
    QStringList take()
    {
        QStringList texts;
        for (const sondixsim::Call &call : sondixsim::calls())
            texts.append(QString::fromStdString(call.text()));
        sondixsim::clearCalls();
        return texts;
    }
};

/// The two calls of which every command consists.
inline QStringList commandCalls(const QString &command)
{
    return {QStringLiteral("SetParameterString(\"S_Command\", \"%1\")").arg(command),
            QStringLiteral("SensorCommand()")};
}
