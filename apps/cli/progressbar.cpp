// SPDX-License-Identifier: MIT
#include "progressbar.h"

#include <algorithm>

void ProgressBar::setPercent(int percent)
{
    m_percent = std::clamp(percent, 0, 100);
    show();
}

void ProgressBar::setText(const QString &text)
{
    m_text = text.simplified();
    show();
}

void ProgressBar::show()
{
    constexpr int maxWidth = 24;
    constexpr int otherCharacters = 8; // brackets, space, percentage
    const int width = std::clamp(m_console.statusWidth() - otherCharacters, 0, maxWidth);
    const int filled = m_percent * width / 100;
    m_console.status(QStringLiteral("[%1%2] %3 %  %4")
                         .arg(QString(filled, QLatin1Char('#')), QString(width - filled, QLatin1Char('.')))
                         .arg(m_percent, 3)
                         .arg(m_text));
}
