// SPDX-License-Identifier: MIT
#pragma once

#include "interruptible.h"

#include <QByteArray>

#include <cstdlib>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

/// A pseudo-terminal.
class Terminal
{
public:
    Terminal()
        : m_master(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
        if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0)
            qFatal("cannot create a terminal");
        m_name = ::ptsname(m_master);
        // Kept open, so that the output can still be read after the process has ended.
        m_slave = ::open(m_name.constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    }
    ~Terminal()
    {
        ::close(m_slave);
        ::close(m_master);
    }
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    int descriptor() const { return m_slave; }

    void setColumns(unsigned short columns) const
    {
        winsize size = {};
        size.ws_row = 24;
        size.ws_col = columns;
        if (::ioctl(m_slave, TIOCSWINSZ, &size) != 0)
            qFatal("cannot set the size of the terminal");
    }

    /// All output so far.
    QByteArray text()
    {
        char buffer[4096];
        for (ssize_t n = 0; (n = ::read(m_master, buffer, sizeof buffer)) > 0;)
            m_text.append(buffer, static_cast<int>(n));
        return m_text;
    }

private:
    int m_master;
    int m_slave = -1;
    QByteArray m_name;
    QByteArray m_text;
};

/// A process whose stderr, and optionally stdout, is a terminal.
class ProcessOnTerminal : public InterruptibleProcess
{
public:
    ProcessOnTerminal(const Terminal &terminal, bool withStdout)
        : m_descriptor(terminal.descriptor())
        , m_withStdout(withStdout)
    {
    }

protected:
    void setupChildProcess() override
    {
        ::dup2(m_descriptor, STDERR_FILENO);
        if (m_withStdout)
            ::dup2(m_descriptor, STDOUT_FILENO);
    }

private:
    int m_descriptor;
    bool m_withStdout;
};
