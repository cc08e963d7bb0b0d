// SPDX-License-Identifier: MIT
#include "childprogram.h"

#include "validators.h"

#include <CLI/CLI.hpp>
#include <QEventLoop>
#include <QTimer>

ChildProgram::ChildProgram(const std::vector<std::string> &command)
    : m_environment(QProcessEnvironment::systemEnvironment())
{
    for (const std::string &word : command)
        m_command += QString::fromStdString(word);
}

void ChildProgram::addOption(CLI::App &app, std::vector<std::string> &command)
{
    app.add_option("PROGRAM", command, "Program and its arguments, after --")
        ->required()
        ->check(Validators::notEmpty())
        ->expected(-1);
}

ChildProgram::~ChildProgram() = default;

bool ChildProgram::prepare(QString &)
{
    return true;
}

std::optional<int> ChildProgram::run(QString &problem)
{
    if (!prepare(problem))
        return std::nullopt;
    m_process.setProcessEnvironment(m_environment);
    m_process.setProcessChannelMode(QProcess::ForwardedChannels);
    m_process.setInputChannelMode(QProcess::ForwardedInputChannel);
    m_process.start(m_command.first(), m_command.mid(1));
    if (!m_process.waitForStarted(-1)) {
        problem = m_process.errorString();
        return std::nullopt;
    }
    QEventLoop loop;
    QObject::connect(&m_process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), &loop,
                     &QEventLoop::quit);
    if (m_process.state() != QProcess::NotRunning)
        loop.exec();
    return exitCode();
}

#ifdef Q_OS_WIN

int ChildProgram::exitCode() const
{
    return m_process.exitCode();
}

QString ChildProgram::killText() const
{
    return QStringLiteral("crashed with 0x%1")
        .arg(static_cast<uint>(m_process.exitCode()), 8, 16, QLatin1Char('0'));
}

#else

int ChildProgram::exitCode() const
{
    return wasKilled() ? 128 + m_process.exitCode() : m_process.exitCode();
}

QString ChildProgram::killText() const
{
    return QStringLiteral("was killed by signal %1").arg(m_process.exitCode());
}

#endif

void ChildProgram::killAfter(std::chrono::milliseconds delay)
{
    QTimer::singleShot(delay, &m_process, &QProcess::kill);
}
