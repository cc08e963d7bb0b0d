// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/datablock.h>

#include <QMap>
#include <QString>
#include <QVector>

namespace SondixApp {

/// The sum of the gaps of a run.
class LossAccount
{
public:
    enum Cause { Overrun, Disconnection, Interruption, UnknownCause };
    /// The gaps of one cause.
    struct Loss
    {
        Cause cause = UnknownCause;
        qint64 frames = 0;   ///< that are known to be lost
        int unknownGaps = 0; ///< gaps without a known number of frames
    };

    void add(const SondixQt::DataGap &gap);
    bool isEmpty() const { return m_sums.isEmpty(); }
    /// The number of frames that are known to be lost.
    qint64 frames() const;
    /// Whether the length of every gap is known.
    bool isExact() const;
    /// The sums of the causes that have occurred.
    QVector<Loss> losses() const;
    /// A short form such as "20 lost", "at least 20 lost", "some lost".
    QString brief() const;
    /// A sentence with the reasons such as "20 frames were lost because they were not read in time"; empty if nothing
    /// was lost.
    QString sentence() const;

private:
    QMap<Cause, Loss> m_sums;
};

/// "1 frame", "2 frames".
QString counted(qint64 number, const char *word);

} // namespace SondixApp
