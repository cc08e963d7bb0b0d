// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QStringList>

#include <string>

namespace CLI {
class App;
}

/// The bench session that a command works on: that of --session, else that of --bench or SONDIX_BENCH, else the only one
/// that is running.
class SessionOption
{
public:
    void addTo(CLI::App &app);

    /// Attaches this process to the session. Throws Failure if there is none or more than one.
    void attach() const;
    /// The same, but nothing happens if no session is named or running, or another bench is given.
    void attachIfAny() const;

private:
    std::string m_name;
};

/// The names of the bench sessions that are running.
QStringList runningSessions();

/// The answer to a request to the simulator. Throws Failure if it was refused.
QJsonObject requestBench(const QJsonObject &request);
