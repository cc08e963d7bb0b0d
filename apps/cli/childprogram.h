// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

/// A program that runs with the terminal of this one. Threads: one, with an event loop.
class ChildProgram
{
public:
    /// \a command is the program and its arguments, in UTF-8.
    explicit ChildProgram(const std::vector<std::string> &command);
    virtual ~ChildProgram();
    ChildProgram(const ChildProgram &) = delete;
    ChildProgram &operator=(const ChildProgram &) = delete;

    /// Adds the option for a program and its arguments, which follow "--".
    static void addOption(CLI::App &app, std::vector<std::string> &command);

    /// Sets an environment variable of the program.
    void setVariable(const QString &name, const QString &value) { m_environment.insert(name, value); }

    /// Runs the program. Returns its exit code, 128 plus the number of the signal that killed it, or nothing, with the
    /// reason in \a problem, if it cannot be started.
    std::optional<int> run(QString &problem);
    /// Whether it did not end by itself: it was killed by a signal, or crashed.
    bool wasKilled() const { return m_process.exitStatus() == QProcess::CrashExit; }

    /// How, such as "was killed by signal 9".
    QString killText() const;

    /// Asks the running program to end.
    void terminate() { m_process.terminate(); }
    /// Kills it if it is still running after \a delay.
    void killAfter(std::chrono::milliseconds delay);

protected:
    /// Called before the start. Returns false, with the reason in \a problem, if there must be none.
    virtual bool prepare(QString &problem);

    QStringList m_command;
    QProcessEnvironment m_environment;
    QProcess m_process;

private:
    int exitCode() const; ///< as run() returns it
};
