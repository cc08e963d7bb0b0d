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
/// Helpers of the tests of the tunnel: scripted pages and outputs of the test bench's serial sensor.

constexpr char pageHeader[] = "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nContent-Length: 5\r\n\r\n";
constexpr char pageBody[] = "hello";

inline QByteArray quoted(const QByteArray &text)
{
    return '"' + text + '"';
}

/// From now on every page of the sensor has this \a header and \a body and is sent without delay.
inline int scriptPage(const QByteArray &header = pageHeader, const QByteArray &body = pageBody)
{
    return scriptAnswer("Get_HTTP", "SA_HTTPHeader=" + quoted(header) + " SA_HTTPBody=" + quoted(body));
}

/// From now on every generic command is answered with \a answer.
inline int scriptGenericAnswer(const QByteArray &answer = "done")
{
    return scriptAnswer("Cmd_Generic", "SA_CompleteAnswer=" + quoted(answer));
}

/// From now on the sensor reports these outputs and accepts changes of them.
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

/// The parameters staged for each \a command since the last take() of the recorder. One text per command: its
/// staging calls in order, joined by blanks.
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

/// The number of recorded calls that send \a command.
inline int timesSent(const std::string &command)
{
    const std::vector<sondixsim::Call> calls = sondixsim::calls();
    return int(std::count_if(calls.begin(), calls.end(), [&](const sondixsim::Call &call) {
        return call.text() == "SetParameterString(\"S_Command\", \"" + command + "\")";
    }));
}
