// SPDX-License-Identifier: MIT
#pragma once

#include "support/callrecorder.h"
#include "support/scripting.h"
#include "support/testbench.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <string>
#include <vector>

/// \file
/// The test bench's serial sensor, with scripted pages: what the tests of the tunnel need.

constexpr char pageHeader[] = "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nContent-Length: 5\r\n\r\n";
constexpr char pageBody[] = "hello";

inline QByteArray quoted(const QByteArray &text)
{
    return '"' + text + '"';
}

/// Every page of the sensor is from now on \a header and \a body, and comes at once.
inline int scriptPage(const QByteArray &header = pageHeader, const QByteArray &body = pageBody)
{
    return scriptAnswer("Get_HTTP", "SA_HTTPHeader=" + quoted(header) + " SA_HTTPBody=" + quoted(body));
}

/// Every command from a page is from now on answered with \a answer.
inline int scriptGenericAnswer(const QByteArray &answer = "done")
{
    return scriptAnswer("Cmd_Generic", "SA_CompleteAnswer=" + quoted(answer));
}

/// The sensor's outputs are from now on read as these, and can be written.
inline void scriptOutputs(int rs422, int analog, int error1, int error2)
{
    scriptAnswer("Get_DataOutInterface",
                 QStringLiteral("SA_OutputRS422=%1 SA_OutputAnalog=%2 SA_OutputErrorOut1=%3 SA_OutputErrorOut2=%4")
                     .arg(rs422)
                     .arg(analog)
                     .arg(error1)
                     .arg(error2)
                     .toLatin1());
    scriptAnswer("Set_DataOutInterface", "SA_Done=1");
}

/// What was staged for each command of the name \a command that the recorder saw since the last look, a text a
/// command: the staging calls in their order, joined by blanks.
inline QStringList commandsSent(CallRecorder &recorder, const QString &command)
{
    const QString sent = QStringLiteral("SetParameterString(\"S_Command\", \"%1\")").arg(command);
    QStringList commands;
    QStringList staged;
    const QStringList calls = recorder.take();
    for (const QString &call : calls) {
        if (call == sent)
            commands.append(staged.join(QLatin1Char(' ')));
        if (call.startsWith(QLatin1String("SetParameter")) && !call.contains(QLatin1String("\"S_Command\"")))
            staged.append(call);
        else if (call == QLatin1String("SensorCommand()"))
            staged.clear();
    }
    return commands;
}

/// How many times the recorded calls sent the command \a command.
inline int timesSent(const std::string &command)
{
    const std::vector<sondixsim::Call> calls = sondixsim::calls();
    return int(std::count_if(calls.begin(), calls.end(), [&](const sondixsim::Call &call) {
        return call.text() == "SetParameterString(\"S_Command\", \"" + command + "\")";
    }));
}
