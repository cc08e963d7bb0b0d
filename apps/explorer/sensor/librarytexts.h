// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/datablock.h>
#include <SondixQt/errorcode.h>

#include <QString>

namespace SondixApp {
class LossAccount;
}
namespace SondixQt {
struct SensorAddress;
}

namespace Explorer {

class SignalHistory;

// What the library and the tool say in English, in the language of the explorer.

/// As gapReasonText().
QString shownGapReason(SondixQt::DataGap::Reason reason);
/// A text for the number of lost frames, such as "at least 20 lost".
QString shownLosses(const SondixApp::LossAccount &losses);
/// A line for each cause of losses, such as "20 frames were lost: they were not read in time"; empty if nothing was lost.
QString shownLossCauses(const SondixApp::LossAccount &losses);
/// Gaps of one reason. Frames are those of the gaps of known length.
struct GapSum
{
    SondixQt::DataGap::Reason reason = SondixQt::DataGap::Unknown;
    qint64 gaps = 0;
    qint64 frames = 0;
    qint64 unknownGaps = 0; ///< further gaps, of unknown length
};
/// Such as "missing frames: 20 (values were not read in time)".
QString shownGaps(const GapSum &sum);
/// What is said where the memory was not enough for all frames of \a history; empty if it was.
QString shownCut(const SignalHistory &history);
/// As SensorAddress::place().
QString shownPlace(const SondixQt::SensorAddress &address);
/// The text of an error of SensorReader: its own errors are translated, sentences of sensors are not.
QString shownReaderError(SondixQt::ErrorCode code, const QString &text);

} // namespace Explorer
