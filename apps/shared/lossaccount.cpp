// SPDX-License-Identifier: MIT
#include "lossaccount.h"

#include <QStringList>

using namespace SondixQt;

namespace SondixApp {

namespace {

enum Cause { Overrun, Disconnection, Interruption, UnknownCause, CauseCount };

Cause causeOf(DataGap::Reason reason)
{
    switch (reason) {
    case DataGap::LibraryOverrun:
    case DataGap::ConsumerOverrun:
        return Overrun;
    case DataGap::Disconnected:
        return Disconnection;
    case DataGap::Restarted:
        return Interruption;
    case DataGap::Unknown:
        break;
    }
    return UnknownCause;
}

QString phrase(int cause, bool isOne)
{
    switch (cause) {
    case Overrun:
        return isOne ? QStringLiteral("because it was not read in time")
                     : QStringLiteral("because they were not read in time");
    case Disconnection:
        return QStringLiteral("while the sensor was disconnected");
    case Interruption:
        return QStringLiteral("because a command interrupted the measurement");
    default:
        return QStringLiteral("for an unknown reason");
    }
}

} // namespace

QString counted(qint64 number, const char *word)
{
    return QStringLiteral("%1 %2%3").arg(number).arg(QLatin1String(word),
                                                     number == 1 ? QString() : QStringLiteral("s"));
}

void LossAccount::add(const DataGap &gap)
{
    Sum &sum = m_sums[causeOf(gap.reason)];
    sum.frames += gap.frames.value_or(0);
    sum.unknownGaps += gap.frames ? 0 : 1;
}

qint64 LossAccount::frames() const
{
    qint64 total = 0;
    for (const Sum &sum : m_sums)
        total += sum.frames;
    return total;
}

QString LossAccount::brief() const
{
    bool isExact = true;
    for (const Sum &sum : m_sums)
        isExact = isExact && sum.unknownGaps == 0;
    return isExact ? QStringLiteral("%1 lost").arg(frames()) : QStringLiteral("at least %1 lost").arg(frames());
}

QString LossAccount::sentence() const
{
    const qint64 total = frames();
    QStringList known;
    QStringList unknown;
    QString singlePhrase;
    for (auto it = m_sums.cbegin(); it != m_sums.cend(); ++it) {
        if (it->frames > 0) {
            singlePhrase = phrase(it.key(), total == 1);
            known += QStringLiteral("%1 %2").arg(it->frames).arg(phrase(it.key(), it->frames == 1));
        }
        if (it->unknownGaps > 0)
            unknown += QStringLiteral("an unknown number of frames was lost in %1, %2")
                           .arg(counted(it->unknownGaps, "gap"), phrase(it.key(), false));
    }
    if (!known.isEmpty())
        unknown.prepend(QStringLiteral("%1 %2 lost%3")
                            .arg(counted(total, "frame"),
                                 total == 1 ? QStringLiteral("was") : QStringLiteral("were"),
                                 known.size() == 1 ? QLatin1Char(' ') + singlePhrase
                                                   : QStringLiteral(": ") + known.join(QStringLiteral(", "))));
    return unknown.join(QStringLiteral("; "));
}

} // namespace SondixApp
