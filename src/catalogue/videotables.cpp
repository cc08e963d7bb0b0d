// SPDX-License-Identifier: MIT
#include "videotables_p.h"

#include "tablewords_p.h"

namespace SondixQt {

namespace {

// clang-format off

constexpr VideoSignal signalsTX240[] = {
    {"OutputVideoRaw",        "SA_VideoSignal"},
};
constexpr VideoSignal signalsCC430[] = {
    {"OutputVideoRaw",        "SA_VideoRaw"},
    {"OutputVideoDark",       "SA_VideoDark"},
    {"OutputVideoLight",      "SA_VideoLight"},
    {"OutputVideoDarkTable",  "SA_VideoDarkTable"},
    {"OutputVideoLightTable", "SA_VideoLightTable"},
};
constexpr VideoSignal signalsTX260[] = {
    {"OutputVideoRaw",        "SA_VideoRaw"},
    {"OutputVideoCorr",       "SA_VideoCorr"},
};
constexpr VideoSignal signalsMC340[] = {
    {"OutputVideoRaw",        "SA_VideoRaw"},
    {"OutputVideoLight",      "SA_VideoLight"},
    {"OutputVideoLightTable", "SA_VideoLightTable"},
};
constexpr VideoSignal signalRaw[] = {
    {"OutputVideoRaw",        "SA_VideoRaw"},
};
constexpr VideoSignal signalsCC470[] = {
    {"OutputVideoRaw_Ch1",    "SA_VideoRaw_Ch1"},
    {"OutputVideoDark_Ch1",   "SA_VideoDark_Ch1"},
    {"OutputVideoLight_Ch1",  "SA_VideoLight_Ch1"},
};
constexpr VideoSignal signalsCC480[] = {
    {"OutputVideoRaw_Ch1",    "SA_VideoRaw_Ch1"},
    {"OutputVideoDark_Ch1",   "SA_VideoDark_Ch1"},
    {"OutputVideoLight_Ch1",  "SA_VideoLight_Ch1"},
    {"OutputVideoRaw_Ch2",    "SA_VideoRaw_Ch2"},
    {"OutputVideoDark_Ch2",   "SA_VideoDark_Ch2"},
    {"OutputVideoLight_Ch2",  "SA_VideoLight_Ch2"},
};
constexpr VideoSignal signalsWI610[] = {
    {"OutputVideoAbs_Ch1",    "SA_VideoAbs_Ch1"},
};

constexpr auto fixed       = VideoModeRule::Fixed;
constexpr auto transmitted = VideoModeRule::TransmittedFlag;
constexpr auto stream      = VideoModeRule::StreamMode;
constexpr auto exclusive   = VideoModeRule::ExclusiveMode;

constexpr int byRange = 0;
constexpr int kept = 0;

constexpr VideoRow videoRows[] = {
    //                                                                                                           threshold
    //                                                                                                           |    ROI
    //                                                                                                           |    |    stream mode
    //                                                                                                           |    |    |    any interface
    //                                                                                                           |    |    |    |    transmitted
    //                                                                                                           |    |    |    |    |    video mode
    // type              rule         pixels   signals       resol. output stem    threshold name      ROI name  |    |    |    |    |    |    channels
    {SensorType::TX240,  transmitted, 128,     signalsTX240, 1024,  "",            "Threshold",        unchanged, no,  no,  no,  yes, no,  yes, kept},
    {SensorType::CC430,  stream,      512,     signalsCC430, 16384, "OutputVideo", "Threshold",        "ROI",     yes, yes, yes, no,  yes, no,  kept},
    {SensorType::TX260,  exclusive,   512,     signalsTX260, 1024,  "OutputVideo", "Threshold",        "ROI",     no,  yes, no,  no,  yes, yes, kept},
    {SensorType::CC440,  stream,      512,     signalsCC430, 16384, "OutputVideo", "Threshold",        "ROI",     yes, yes, yes, no,  yes, no,  kept},
    {SensorType::MC340,  fixed,       byRange, signalsMC340, 4096,  "OutputVideo", "Threshold",        "ROI",     yes, yes, yes, no,  yes, yes, kept},
    {SensorType::CC450,  stream,      512,     signalsCC430, 16384, "OutputVideo", "Threshold",        "ROI",     yes, yes, yes, no,  yes, no,  kept},
    {SensorType::TX280,  fixed,       512,     signalRaw,    65536, "Output",      "",                 "ROI",     no,  yes, yes, yes, yes, yes, kept},
    {SensorType::CC460,  stream,      512,     signalsCC430, 16384, "OutputVideo", "Threshold",        "ROI",     yes, yes, yes, no,  yes, no,  kept},
    {SensorType::CC470,  fixed,       512,     signalsCC470, 4096,  "Output",      "MinimumThreshold", "ROI",     yes, yes, yes, yes, yes, yes, kept},
    {SensorType::CC480,  fixed,       512,     signalsCC480, 4096,  "Output",      "MinimumThreshold", "ROI",     yes, yes, yes, yes, yes, yes, 2},
    {SensorType::TX290,  fixed,       512,     signalRaw,    1024,  "Output",      unchanged,          "ROI",     no,  yes, yes, yes, yes, yes, kept},
    {SensorType::WI610,  fixed,       512,     signalsWI610, 4096,  "Output",      "MinimumThreshold", "ROI",     yes, yes, yes, yes, yes, yes, 1},
    {SensorType::TX310,  fixed,       512,     signalRaw,    1024,  "Output",      unchanged,          "ROI",     no,  yes, yes, yes, yes, yes, kept},
    {SensorType::WI620,  fixed,       512,     signalsWI610, 4096,  "Output",      "MinimumThreshold", "ROI",     yes, yes, yes, yes, yes, yes, 1},
    {SensorType::CC490,  fixed,       512,     signalsCC480, 4096,  "Output",      "MinimumThreshold", "ROI",     yes, yes, yes, yes, yes, yes, 2},
    {SensorType::CC495,  fixed,       512,     signalsCC480, 4096,  "Output",      "MinimumThreshold", "ROI",     yes, yes, yes, yes, yes, yes, 2},
};

// clang-format on

static_assert(isAscending(videoRows, &VideoRow::type));

constexpr double shortRange = 46.0;
constexpr int shortRangePixels = 768;
constexpr int longRangePixels = 1536;

QLatin1String interfaceSuffix(bool ethernet)
{
    return ethernet ? QLatin1String("_ETH") : QLatin1String("_RS422");
}

} // namespace

const VideoRow *videoRow(SensorType type)
{
    return findRow(videoRows, &VideoRow::type, type);
}

int pixelsOfRange(double millimetres)
{
    return millimetres == shortRange ? shortRangePixels : longRangePixels;
}

QString videoParameterName(const QString &outputStem, bool answer, bool ethernet)
{
    return (answer ? QLatin1String("SA_") : QLatin1String("SP_")) + outputStem + interfaceSuffix(ethernet);
}

QString videoOutputCommand(const QString &outputStem, bool get, bool ethernet)
{
    return (get ? QLatin1String("Get_") : QLatin1String("Update_")) + outputStem + interfaceSuffix(ethernet);
}

} // namespace SondixQt
