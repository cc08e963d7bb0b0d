// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sondixqtnamespace.h>

#include <QStringList>
#include <QVector>

/// \file
/// The expected video properties of every model, independent of the library's table.

namespace reference {

enum Flag {
    Threshold = 1,
    Roi = 2,
    Stream = 4,
    AnyInterface = 8,
    Transmitted = 16,
    VideoMode = 32,
};

struct Video
{
    QVector<int> codes;
    int pixels; ///< 0: 768 or 1536
    int resolution;
    QStringList stems;   ///< without "OutputVideo"
    QStringList answers; ///< without "SA_Video"
    const char *outputStem;
    const char *threshold; ///< null: unchanged
    const char *roi;       ///< null: unchanged
    int flags;
    int channels; ///< 0: unchanged
};

inline QStringList list(const char *text)
{
    return QString::fromLatin1(text).split(' ');
}

inline QVector<Video> videos()
{
    using namespace SondixQt;
    const QStringList oneChannel = list("Raw_Ch1 Dark_Ch1 Light_Ch1");
    const QStringList twoChannels = oneChannel + list("Raw_Ch2 Dark_Ch2 Light_Ch2");
    const QStringList five = list("Raw Dark Light DarkTable LightTable");
    const QStringList two = list("Raw Corr");
    const QStringList three = list("Raw Light LightTable");
    const QStringList raw = list("Raw");
    const QStringList abs = list("Abs_Ch1");
    constexpr int everything = Threshold | Roi | Stream | AnyInterface | Transmitted | VideoMode;
    return {
        {{TX240}, 128, 1024, raw, list("Signal"), "", "Threshold", nullptr, AnyInterface | VideoMode, 0},
        {{CC430, CC440, CC450, CC460},
         512,
         16384,
         five,
         five,
         "OutputVideo",
         "Threshold",
         "ROI",
         Threshold | Roi | Stream | Transmitted,
         0},
        {{TX260}, 512, 1024, two, two, "OutputVideo", "Threshold", "ROI", Roi | Transmitted | VideoMode, 0},
        {{MC340},
         0,
         4096,
         three,
         three,
         "OutputVideo",
         "Threshold",
         "ROI",
         Threshold | Roi | Stream | Transmitted | VideoMode,
         0},
        {{TX280}, 512, 65536, raw, raw, "Output", "", "ROI", everything & ~Threshold, 0},
        {{CC470}, 512, 4096, oneChannel, oneChannel, "Output", "MinimumThreshold", "ROI", everything, 0},
        {{CC480, CC490, CC495},
         512,
         4096,
         twoChannels,
         twoChannels,
         "Output",
         "MinimumThreshold",
         "ROI",
         everything,
         2},
        {{TX290, TX310}, 512, 1024, raw, raw, "Output", nullptr, "ROI", everything & ~Threshold, 0},
        {{WI610, WI620}, 512, 4096, abs, abs, "Output", "MinimumThreshold", "ROI", everything, 1},
    };
}

/// Returns null for a type without video.
inline const Video *video(int code)
{
    static const QVector<Video> all = videos();
    for (const Video &candidate : all) {
        if (candidate.codes.contains(code))
            return &candidate;
    }
    return nullptr;
}

inline QStringList prefixed(const char *prefix, const QStringList &names)
{
    QStringList full;
    for (const QString &name : names)
        full.append(QLatin1String(prefix) + name);
    return full;
}

} // namespace reference
