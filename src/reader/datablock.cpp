// SPDX-License-Identifier: MIT
#include "datablock_p.h"

#include <algorithm>
#include <cmath>

namespace SondixQt {

namespace {

constexpr double maxMicroseconds = 9.0e18;

void registerBlockTypes()
{
    qRegisterMetaType<DataBlock>("SondixQt::DataBlock");
    qRegisterMetaType<DataGap>("SondixQt::DataGap");
}
Q_CONSTRUCTOR_FUNCTION(registerBlockTypes)

} // namespace

DataBlock::DataBlock()
    : d(new DataBlockData)
{
}

DataBlock::DataBlock(int run, qint64 firstFrame, int valuesPerFrame, const QVector<double> &scaled,
                     const QVector<qint32> &raw, std::optional<double> time, std::optional<double> frameInterval)
    : DataBlock()
{
    d->run = run;
    d->firstFrame = firstFrame;
    d->valuesPerFrame = std::max(valuesPerFrame, 0);
    d->scaled = scaled;
    d->raw = raw;
    const int frames = valuesPerFrame > 0 ? std::min(scaled.size(), raw.size()) / valuesPerFrame : 0;
    d->scaled.resize(frames * d->valuesPerFrame);
    d->raw.resize(frames * d->valuesPerFrame);
    if (time && frames > 0)
        d->times.append(*time);
    d->interval = frameInterval;
}

DataBlock DataBlock::withTimes(int run, qint64 firstFrame, int valuesPerFrame, const QVector<double> &scaled,
                               const QVector<qint32> &raw, const QVector<double> &times)
{
    DataBlock block(run, firstFrame, valuesPerFrame, scaled, raw);
    block.d->times = times;
    // Frames beyond the given times have none.
    const int given = times.size();
    block.d->times.resize(block.frameCount());
    for (int frame = given; frame < block.frameCount(); ++frame)
        block.d->times[frame] = std::numeric_limits<double>::quiet_NaN();
    return block;
}

DataBlock::DataBlock(const DataBlock &other) = default;
DataBlock::DataBlock(DataBlock &&other) noexcept = default;
DataBlock::~DataBlock() = default;
DataBlock &DataBlock::operator=(const DataBlock &other) = default;
DataBlock &DataBlock::operator=(DataBlock &&other) noexcept = default;

int DataBlock::frameCount() const
{
    return d ? d->frameCount() : 0;
}

int DataBlock::valuesPerFrame() const
{
    return d ? d->valuesPerFrame : 0;
}

int DataBlock::run() const
{
    return d ? d->run : 0;
}

qint64 DataBlock::firstFrame() const
{
    return d ? d->firstFrame : 0;
}

double DataBlock::scaled(int frame, int signal) const
{
    return d->scaled.at(frame * d->valuesPerFrame + signal);
}

qint32 DataBlock::raw(int frame, int signal) const
{
    return d->raw.at(frame * d->valuesPerFrame + signal);
}

QVector<double> DataBlock::scaledValues(int signal) const
{
    QVector<double> values(frameCount());
    for (int frame = 0; frame < values.size(); ++frame)
        values[frame] = scaled(frame, signal);
    return values;
}

const QVector<double> &DataBlock::scaledData() const
{
    static const QVector<double> none;
    return d ? d->scaled : none;
}

const QVector<qint32> &DataBlock::rawData() const
{
    static const QVector<qint32> none;
    return d ? d->raw : none;
}

std::optional<double> DataBlock::time() const
{
    return frameTime(0);
}

std::optional<double> DataBlock::frameInterval() const
{
    return d ? d->interval : std::nullopt;
}

std::optional<double> DataBlock::frameTime(int frame) const
{
    if (!d || frame < 0 || frame >= frameCount())
        return std::nullopt;
    if (frame < d->times.size())
        return std::isnan(d->times.at(frame)) ? std::nullopt : std::optional<double>(d->times.at(frame));
    if (d->times.size() != 1 || !d->interval)
        return std::nullopt;
    return d->times.first() + frame * *d->interval;
}

std::optional<qint64> DataBlock::wallClockMicroseconds() const
{
    const std::optional<double> time = this->time();
    if (!time || !d->wallClockOffset)
        return std::nullopt;
    const double microseconds = (*time + *d->wallClockOffset) * 1.0e6;
    if (!(std::fabs(microseconds) < maxMicroseconds))
        return std::nullopt;
    return qRound64(microseconds);
}

QDateTime DataBlock::wallClockTime() const
{
    const std::optional<qint64> microseconds = wallClockMicroseconds();
    return microseconds ? QDateTime::fromMSecsSinceEpoch(*microseconds / 1000, Qt::UTC) : QDateTime();
}

double DataBlock::wallClockUncertainty() const
{
    return d ? d->wallClockUncertainty : std::numeric_limits<double>::infinity();
}

DataBlock DataBlock::mid(int first, int count) const
{
    const int frames = frameCount();
    first = std::clamp(first, 0, frames);
    count = count < 0 ? frames - first : std::min(count, frames - first);
    if (first == 0 && count == frames)
        return *this;
    DataBlock part;
    if (!d)
        return part;
    const std::optional<double> time = frameTime(first);
    part.d = new DataBlockData(*d);
    part.d->firstFrame += first;
    part.d->scaled = d->scaled.mid(first * d->valuesPerFrame, count * d->valuesPerFrame);
    part.d->raw = d->raw.mid(first * d->valuesPerFrame, count * d->valuesPerFrame);
    if (d->times.size() > 1)
        part.d->times = d->times.mid(first, count);
    else
        part.d->times = time && count > 0 ? QVector<double>{*time} : QVector<double>{};
    return part;
}

DataBlock DataBlock::inRun(int run) const
{
    if (!d || d->run == run)
        return *this;
    DataBlock other = *this;
    other.d->run = run;
    return other;
}

bool DataGap::operator==(const DataGap &other) const
{
    return run == other.run && firstFrame == other.firstFrame && frames == other.frames &&
           reason == other.reason && beginTime == other.beginTime && endTime == other.endTime;
}

QString gapReasonText(DataGap::Reason reason)
{
    switch (reason) {
    case DataGap::LibraryOverrun:
        return QStringLiteral("values were not read in time, or the line was too slow");
    case DataGap::ConsumerOverrun:
        return QStringLiteral("values were not processed in time");
    case DataGap::Disconnected:
        return QStringLiteral("the sensor was disconnected");
    case DataGap::Restarted:
        return QStringLiteral("a setting has interrupted the measurement");
    case DataGap::Unknown:
        break;
    }
    return QStringLiteral("the times of the values do not fit");
}

} // namespace SondixQt
