// SPDX-License-Identifier: MIT
#pragma once

#include "datablock.h"

#include <optional>

namespace SondixQt {

/// Estimates the distance of frames from the times of blocks that follow each other without a gap, starting with the
/// rounded rate that a sensor reports.
class FramePeriod
{
public:
    /// \a seconds is the reported distance; 0 if it is not known.
    void reset(double seconds);
    /// A block whose first frame has the number \a frame, at \a time.
    void observe(qint64 frame, double time);
    /// The following times have an unknown offset to those before.
    void restart();
    /// The clock has been set by \a seconds.
    void shift(double seconds);

    bool isKnown() const { return value > 0.0; }
    /// Whether the reported distance has been compared with the times of two blocks.
    bool isMeasured() const { return measuredOnce; }
    double seconds() const { return value; }
    /// The relative error that the estimate may have.
    double uncertainty() const { return relativeError; }
    /// By how much times have recently deviated from the prediction, in frames.
    double recentJitter() const { return jitter; }

private:
    struct Point
    {
        qint64 frame = 0;
        double time = 0.0;
    };

    double reported = 0.0;
    double value = 0.0;
    double relativeError = 0.0;
    double jitter = 0.0;
    bool measuredOnce = false;
    std::optional<Point> origin;
    Point checkpoint; ///< becomes the origin, so that a drift of the sensor's clock is followed
};

/// Divides transferred values into whole frames, numbers the frames, and notices by the times of the transfers what is
/// missing between them. Has no clock, no sensor and no thread.
class FrameAccount
{
public:
    struct Timing
    {
        int valuesPerFrame = 1;
        double rateHz = 0.0; ///< 0: not known
        bool regular = true; ///< false for a sensor that measures when it is triggered or polled
    };

    /// The whole frames that a transfer has completed.
    struct Frames
    {
        /// What is missing before the first frame.
        std::optional<DataGap> gap;
        /// The values to discard before the frames: first those of an incomplete frame that were transferred
        /// earlier, then those at the begin of this transfer.
        int discardedEarlier = 0;
        int discardedNow = 0;
        int run = 0;
        qint64 first = 0;
        int count = 0;
        std::optional<double> time;     ///< of the first frame
        std::optional<double> interval; ///< seconds from frame to frame
        bool continues =
            true; ///< the time of the first frame follows from those of the frames before and their interval
    };

    /// Begins to count at frame 0 of run 0.
    void start(const Timing &timing);
    /// The stream of frames breaks off. An incomplete frame is lost.
    /// \return the gap, whose length is not known
    DataGap breakOff(DataGap::Reason reason);
    /// The stream goes on after breakOff().
    void resume(const Timing &timing);
    /// The stream goes on with \a values values that were measured before. A command may have changed the rate or restarted
    /// the measurement since then; \a isRestarted: it has restarted it. Between these values and up to the first one after
    /// them, only whole periods that are missing in the present rhythm are a gap.
    void resumeWith(int values, bool isRestarted, const Timing &timing);
    /// A command has been sent that may have changed the rate or interrupted the measurement. Values that were
    /// measured before it may still arrive.
    void commandSent(const Timing &timing);

    /// All values that were measured before the last command have been transferred.
    void settle();

    /// Whether a transfer of values at \a time follows the previous one without a gap. If it does not, the rate should
    /// be queried again before add().
    bool fits(double time) const;
    /// The rate that the sensor reports now, which it may have changed on its own.
    void setRate(double rateHz);

    /// Values have been transferred; \a time is that of the frame that contains the first of them.
    Frames add(int values, double time);

    /// The number of frames to transfer at a time so that a lost frame can be noticed.
    int maxFrames() const;
    /// Values of an incomplete frame.
    int remainder() const { return incomplete; }
    /// The gap that begins at the next frame, for which nothing but \a reason is known.
    DataGap gapHere(DataGap::Reason reason) const;

private:
    enum class Fit { Continues, NewPeriod, Ahead, Early, Behind, Standing };
    static constexpr int maxProbes = 8;

    Fit fit(double time) const;
    double frameExcess(double time, double seconds) const;
    double toleratedExcess() const;
    double imprecision() const;
    void followImprecision(double excess);
    void followStretch(double periods);
    void beginPeriod();
    DataGap missing(std::optional<qint64> frames, DataGap::Reason reason, std::optional<double> endTime);
    void forgetTimes();
    bool followEarlier(int values, double time);

    Timing timing;
    FramePeriod period;
    bool pending = false;     ///< a command may have begun another period or restarted the measurement
    double nextPeriod = 0.0;  ///< the period that it may have set; 0: none
    bool unconfirmed = false; ///< the last transfer has begun a new period: the next one must confirm it
    double slack = 0.0;       ///< frames by which times have recently been too early: they are that imprecise
    double stretch = 1.0;     ///< periods per frame that have recently passed: more than 1 if frames are missing
    bool hasEarlier = false;  ///< resumeWith(): until the first transfer after them
    int earlier = 0;          ///< values of them that have not been transferred
    bool isRestarted = false; ///< another measurement has begun after them
    bool hasRhythm = false;   ///< the last of them had the present period
    int probes = maxProbes;   ///< transfers of single frames that are still wanted to measure the period
    int incomplete = 0;       ///< values of an incomplete frame
    int toSkip = 0;           ///< values of a frame whose beginning is lost
    int run = 0;
    qint64 next = 0; ///< number of the next frame, which may be incomplete
    /// The last transfer whose time is known.
    bool hasLast = false;
    qint64 lastFrame = 0;
    double lastTime = 0.0;
};

} // namespace SondixQt
