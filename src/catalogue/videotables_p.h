// SPDX-License-Identifier: MIT
#pragma once

#include "constantlist_p.h"

#include <SondixQt/sensortypes.h>

#include <QString>

namespace SondixQt {

/// How to find out whether a sensor sends video or measured values.
enum class VideoModeRule {
    Fixed,           ///< no query: it can always send both
    TransmittedFlag, ///< no query: its only signal is on if VideoState::transmitted is set
    StreamMode,      ///< "SA_MeasureMode" is 4 for video and values, 2 for neither, else values only
    ExclusiveMode,   ///< "SA_MeasureMode" is 3 for video only, else values only
};

/// One video signal of a model.
struct VideoSignal
{
    const char *outputStem;
    const char *answerParameter;
};

/// The video properties of one model. A null name leaves the name of the instance unchanged.
struct VideoRow
{
    SensorType type;
    VideoModeRule modeRule;
    int pixels; ///< of one line; 0: they depend on the measuring range
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
    int channels; ///< 0: unchanged
};

/// The row of exactly \a type, or null if it has no video. A bus variant does not inherit the row of its base
/// type.
const VideoRow *videoRow(SensorType type);

/// The number of pixels in a line of an MC340 with the measuring range \a millimetres.
int pixelsOfRange(double millimetres);

/// The parameter that switches a video signal ("SP_") or, with \a answer, reports its state ("SA_").
QString videoParameterName(const QString &outputStem, bool answer, bool ethernet);

/// The command that reads (\a get) or writes the video switches of a model.
QString videoOutputCommand(const QString &outputStem, bool get, bool ethernet);

} // namespace SondixQt
