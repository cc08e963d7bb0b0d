// SPDX-License-Identifier: MIT
#include "benchsession.h"

#include "exitcode.h"
#include "validators.h"

#include "shared/simulatedbench.h"

#include <CLI/CLI.hpp>

#include <QJsonArray>

namespace {

const QLatin1String sessionPrefix("session:");

} // namespace

QJsonObject requestBench(const QJsonObject &request)
{
    QJsonObject answer = SondixApp::controlBench(request);
    const QString error = answer.value(QLatin1String("error")).toString();
    if (!error.isEmpty())
        throw Failure{ExitCode::Failed, error};
    return answer;
}

QStringList runningSessions()
{
    QStringList names;
    const QJsonArray sessions = requestBench({{QStringLiteral("do"), QStringLiteral("sessions")}})
                                    .value(QLatin1String("sessions"))
                                    .toArray();
    for (const QJsonValue session : sessions)
        names += session[QLatin1String("session")].toString();
    return names;
}

void SessionOption::addTo(CLI::App &app)
{
    app.add_option("-s,--session", m_name, "Name of the session, needed if several are running")
        ->check(Validators::notEmpty());
}

void SessionOption::attachIfAny() const
{
    if (!m_name.empty() || (SondixApp::usedBench().isEmpty() && !runningSessions().isEmpty()))
        attach();
}

void SessionOption::attach() const
{
    QString name = QString::fromStdString(m_name);
    const QString bench = SondixApp::usedBench();
    if (name.isEmpty() && bench.startsWith(sessionPrefix))
        name = bench.mid(sessionPrefix.size());
    if (name.isEmpty() && !bench.isEmpty())
        throw Failure{ExitCode::Usage,
                      QStringLiteral("the bench '%1' is no session: nothing that this command did would "
                                     "be seen by another program; start a session with 'sondixqt bench "
                                     "start'")
                          .arg(bench)};
    if (name.isEmpty()) {
        const QStringList names = runningSessions();
        if (names.isEmpty())
            throw Failure{ExitCode::Usage,
                          QStringLiteral("no bench session is running; start one with 'sondixqt bench "
                                         "start'")};
        if (names.size() > 1)
            throw Failure{ExitCode::Usage,
                          QStringLiteral("several bench sessions are running, choose one with --session: %1")
                              .arg(names.join(QStringLiteral(", ")))};
        name = names.first();
    }
    requestBench({{QStringLiteral("do"), QStringLiteral("load")}, {QStringLiteral("file"), sessionPrefix + name}});
}
