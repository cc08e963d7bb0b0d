// SPDX-License-Identifier: MIT
#include "librarytexts.h"

#include "englishtexts.h"

#include "explorer/history/signalhistory.h"
#include "shared/lossaccount.h"

#include <SondixQt/sensoraddress.h>

#include <QCoreApplication>
#include <QLocale>
#include <QRegularExpression>
#include <QStringList>

using namespace SondixQt;
using SondixApp::LossAccount;

namespace Explorer {

namespace {

struct LibraryTexts
{
    Q_DECLARE_TR_FUNCTIONS(Explorer::LibraryTexts)
};

QString causeText(LossAccount::Cause cause)
{
    switch (cause) {
    case LossAccount::Overrun:
        return LibraryTexts::tr("values were not read or processed in time");
    case LossAccount::Disconnection:
        return shownGapReason(DataGap::Disconnected);
    case LossAccount::Interruption:
        return shownGapReason(DataGap::Restarted);
    case LossAccount::UnknownCause:
        break;
    }
    return shownGapReason(DataGap::Unknown);
}

} // namespace

QString shownGapReason(DataGap::Reason reason)
{
    switch (reason) {
    case DataGap::LibraryOverrun:
        return LibraryTexts::tr("values were not read in time, or the line was too slow");
    case DataGap::ConsumerOverrun:
        return LibraryTexts::tr("values were not processed in time");
    case DataGap::Disconnected:
        return LibraryTexts::tr("the sensor was disconnected");
    case DataGap::Restarted:
        return LibraryTexts::tr("a setting has interrupted the measurement");
    case DataGap::Unknown:
        break;
    }
    return LibraryTexts::tr("the times of the values do not fit");
}

QString shownLosses(const LossAccount &losses)
{
    if (!losses.isExact() && losses.frames() == 0)
        return LibraryTexts::tr("some lost");
    const QString frames = QLocale().toString(losses.frames());
    return losses.isExact() ? LibraryTexts::tr("%1 lost").arg(frames)
                            : LibraryTexts::tr("at least %1 lost").arg(frames);
}

QString shownLossCauses(const LossAccount &losses)
{
    QStringList lines;
    const QLocale locale;
    for (const LossAccount::Loss &loss : losses.losses()) {
        const QString cause = causeText(loss.cause);
        if (loss.frames == 1)
            lines += LibraryTexts::tr("1 frame was lost: %1").arg(cause);
        else if (loss.frames > 1)
            lines += LibraryTexts::tr("%1 frames were lost: %2").arg(locale.toString(loss.frames), cause);
        if (loss.unknownGaps == 1)
            lines += LibraryTexts::tr("an unknown number of frames was lost in 1 gap: %1").arg(cause);
        else if (loss.unknownGaps > 1)
            lines += LibraryTexts::tr("an unknown number of frames was lost in %1 gaps: %2")
                         .arg(locale.toString(loss.unknownGaps), cause);
    }
    return lines.join(QLatin1Char('\n'));
}

QString shownGaps(const GapSum &sum)
{
    const QLocale locale;
    const QString reason = shownGapReason(sum.reason);
    const QString frames = locale.toString(sum.frames);
    const QString gaps = locale.toString(sum.gaps);
    const QString unknownGaps = locale.toString(sum.unknownGaps);
    if (sum.gaps > 0 && sum.unknownGaps > 0)
        return LibraryTexts::tr("missing frames: %1 (gaps: %2), and an unknown number (gaps: %3): %4")
            .arg(frames, gaps, unknownGaps, reason);
    if (sum.unknownGaps > 1)
        return LibraryTexts::tr("an unknown number of frames is missing in %1 gaps (%2)").arg(unknownGaps, reason);
    if (sum.unknownGaps == 1)
        return LibraryTexts::tr("an unknown number of frames is missing (%1)").arg(reason);
    if (sum.gaps > 1)
        return LibraryTexts::tr("missing frames: %1 in %2 gaps (%3)").arg(frames, gaps, reason);
    return LibraryTexts::tr("missing frames: %1 (%2)").arg(frames, reason);
}

QString shownCut(const SignalHistory &history)
{
    if (history.cutFrames() == 0)
        return {};
    return LibraryTexts::tr("memory full: only the last %1 frames kept")
        .arg(QLocale().toString(history.endFrame() - history.firstFrame()));
}

QString shownPlace(const SensorAddress &address)
{
    const auto has = [&address](QLatin1String parameter) { return address.parameters.contains(parameter); };
    const auto value = [&address](QLatin1String parameter) {
        return address.parameters.value(parameter).toString();
    };
    QStringList place;
    if (has(InterfaceParameter::Port))
        place += value(InterfaceParameter::Port);
    else if (has(InterfaceParameter::RemoteAddr))
        place += value(InterfaceParameter::RemoteAddr);
    else if (has(InterfaceParameter::CardInstance))
        place += LibraryTexts::tr("card %1").arg(value(InterfaceParameter::CardInstance));
    else if (has(InterfaceParameter::DeviceInstance))
        place += LibraryTexts::tr("device %1").arg(value(InterfaceParameter::DeviceInstance));
    if (has(InterfaceParameter::ChannelNumber))
        place += LibraryTexts::tr("channel %1").arg(value(InterfaceParameter::ChannelNumber));
    if (address.parameters.value(InterfaceParameter::SensorAddress).toInt() != 0)
        place += LibraryTexts::tr("bus address %1").arg(value(InterfaceParameter::SensorAddress));
    return place.join(QStringLiteral(", "));
}

QString shownReaderError(ErrorCode code, const QString &text)
{
    // The reader says these in one sentence with numbers in it; a sentence of another form is shown as it is.
    const auto numbersIn = [&text](const char *pattern) {
        return QRegularExpression(QLatin1String(pattern)).match(text).capturedTexts().mid(1);
    };
    if (code == SilenceError) {
        const QStringList numbers = numbersIn("^the sensor has sent no values for ([0-9.]+) s$");
        if (numbers.size() == 1)
            return LibraryTexts::tr("the sensor has sent no values for %1 s")
                .arg(QLocale().toString(numbers.first().toDouble(), 'g', 6));
    } else if (code == FrameError) {
        const QStringList numbers = numbersIn("^the sensor reports (-?[0-9]+) values per frame$");
        if (numbers.size() == 1)
            return LibraryTexts::tr("the sensor reports %1 values per frame").arg(numbers.first());
    } else if (code == OtherSensorError) {
        const QStringList numbers = numbersIn("^another sensor answers: serial number (.*) instead of (.*)$");
        if (numbers.size() == 2)
            return LibraryTexts::tr("another sensor answers: serial number %1 instead of %2")
                .arg(numbers.first(), numbers.last());
    }
    return shownText(text);
}

} // namespace Explorer
