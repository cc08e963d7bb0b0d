// SPDX-License-Identifier: MIT
#pragma once

#include "constantlist_p.h"

#include <SondixQt/sensortypes.h>

#include <QString>

namespace SondixQt {

/// How a sensor tells that it sends video or measured values.
enum class VideoModeRule {
    Fixed,           ///< both at any time: it is not asked
    TransmittedFlag, ///< it is not asked at all: its one signal is on when video is transmitted
    StreamMode,      ///< mode 4 sends video along with the values, 2 neither, all others values alone
    ExclusiveMode,   ///< mode 3 sends video instead of the values
};

/// One video signal of a model.
struct VideoSignal
{
    const char *outputStem;
    const char *answerParameter;
};

/// The video of one model. A name that is null stays what it was.
struct VideoRow
{
    SensorType type;
    VideoModeRule modeRule;
    int pixels; ///< of one line; 0: they follow from the measuring range
    ConstantList<VideoSignal> videoSignals;
    int resolution;
    const char *outputStem;
    const char *thresholdName;
    const char *roiName;
    bool threshold;
    bool roi;
    bool streamMode;
    bool overAnyInterface;
    bool transmitted;
    bool videoMode;
    int channels; ///< 0: stays what it was
};

/// The row of \a type, or null when it has no video. Bus variants have none of their base type's rows.
const VideoRow *videoRow(SensorType type);

/// The pixels of a line of an MC340 with the measuring range \a millimetres.
int pixelsOfRange(double millimetres);

/// The parameter that switches a video signal ("SP_") or tells its state ("SA_").
QString videoParameterName(const QString &outputStem, bool answer, bool ethernet);

/// The command that reads or writes the video switches of a model.
QString videoOutputCommand(const QString &outputStem, bool get, bool ethernet);

} // namespace SondixQt
