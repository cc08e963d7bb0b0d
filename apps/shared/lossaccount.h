// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/datablock.h>

#include <QMap>
#include <QString>

namespace SondixApp {

/// The sum of the gaps of a run.
class LossAccount
{
public:
    void add(const SondixQt::DataGap &gap);
    bool isEmpty() const { return m_sums.isEmpty(); }
    /// The number of frames that are known to be lost.
    qint64 frames() const;
    /// A short form such as "20 lost", "at least 20 lost".
    QString brief() const;
    /// A sentence with the reasons such as "20 frames were lost because they were not read in time"; empty if nothing
    /// was lost.
    QString sentence() const;

private:
    struct Sum
    {
        qint64 frames = 0;
        int unknownGaps = 0;
    };
    QMap<int, Sum> m_sums; // by cause
};

/// "1 frame", "2 frames".
QString counted(qint64 number, const char *word);

} // namespace SondixApp
