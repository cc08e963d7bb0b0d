// SPDX-License-Identifier: MIT
#include "lossaccount.h"

#include <QStringList>

#include <algorithm>

using namespace SondixQt;

namespace SondixApp {

namespace {

LossAccount::Cause causeOf(DataGap::Reason reason)
{
    switch (reason) {
    case DataGap::LibraryOverrun:
    case DataGap::ConsumerOverrun:
        return LossAccount::Overrun;
    case DataGap::Disconnected:
        return LossAccount::Disconnection;
    case DataGap::Restarted:
        return LossAccount::Interruption;
    case DataGap::Unknown:
        break;
    }
    return LossAccount::UnknownCause;
}

QString phrase(LossAccount::Cause cause, bool isOne)
{
    switch (cause) {
    case LossAccount::Overrun:
        return isOne ? QStringLiteral("because it was not read in time or the line was too slow")
                     : QStringLiteral("because they were not read in time or the line was too slow");
    case LossAccount::Disconnection:
        return QStringLiteral("while the sensor was disconnected");
    case LossAccount::Interruption:
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
    const Cause cause = causeOf(gap.reason);
    Loss &sum = m_sums[cause];
    sum.cause = cause;
    sum.frames += gap.frames.value_or(0);
    sum.unknownGaps += gap.frames ? 0 : 1;
}

qint64 LossAccount::frames() const
{
    qint64 total = 0;
    for (const Loss &sum : m_sums)
        total += sum.frames;
    return total;
}

bool LossAccount::isExact() const
{
    return std::none_of(m_sums.cbegin(), m_sums.cend(), [](const Loss &sum) { return sum.unknownGaps > 0; });
}

QVector<LossAccount::Loss> LossAccount::losses() const
{
    QVector<Loss> all;
    for (const Loss &sum : m_sums)
        all += sum;
    return all;
}

QString LossAccount::brief() const
{
    if (!isExact() && frames() == 0)
        return QStringLiteral("some lost");
    return isExact() ? QStringLiteral("%1 lost").arg(frames()) : QStringLiteral("at least %1 lost").arg(frames());
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
