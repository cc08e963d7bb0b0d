// SPDX-License-Identifier: MIT
#pragma once

#include "console.h"

/// A progress bar on stderr; not shown if stderr is not a terminal.
class ProgressBar
{
public:
    explicit ProgressBar(Console &console)
        : m_console(console)
    {
    }
    ~ProgressBar() { clear(); }

    void clear() { m_console.status(QString()); }
    void setPercent(int percent);
    void setText(const QString &text);

private:
    void show();

    Console &m_console;
    int m_percent = 0;
    QString m_text;
};
