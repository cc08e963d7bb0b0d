// SPDX-License-Identifier: MIT
#pragma once

#include <SondixSimulator/control.h>

#include <QString>
#include <QStringList>

/// Records the calls of the C interface during its lifetime.
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

    /// Returns the calls since the last take(), as text.
    QStringList take()
    {
        QStringList texts;
        for (const sondixsim::Call &call : sondixsim::calls())
            texts.append(QString::fromStdString(call.text()));
        sondixsim::clearCalls();
        return texts;
    }
};

/// The functions of the calls that were recorded, each once.
inline QStringList recordedFunctions()
{
    QStringList functions;
    for (const sondixsim::Call &call : sondixsim::calls())
        functions += QString::fromStdString(call.function);
    functions.removeDuplicates();
    return functions;
}

/// The calls that send a command without parameters.
inline QStringList commandCalls(const QString &command)
{
    return {QStringLiteral("SetParameterString(\"S_Command\", \"%1\")").arg(command), "SensorCommand()"};
}

inline QStringList withoutErrorTexts(QStringList calls)
{
    calls.removeAll("GetError(4096)");
    return calls;
}
