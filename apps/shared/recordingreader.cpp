// SPDX-License-Identifier: MIT
#include "recordingreader.h"

#include "recordingreader_p.h"

#include <SondixQt/errorvalue.h>

#include <QFile>

#include <cmath>
#include <deque>
#include <utility>

using namespace SondixQt;

namespace SondixApp {

namespace {

constexpr int blockValues = 1 << 16;
constexpr double timeStep = 1.0e-6; // of the times in text formats, in seconds

/// The distance of \a times if they are regular.
std::optional<double> regularInterval(const QVector<double> &times)
{
    if (times.size() < 2 || std::isnan(times.first()) || std::isnan(times.last()))
        return std::nullopt;
    const double interval = (times.last() - times.first()) / (times.size() - 1);
    if (!(interval > 0.0))
        return std::nullopt;
    for (int i = 0; i < times.size(); ++i)
        if (!(std::fabs(times[i] - times.first() - i * interval) <= 1.5 * timeStep))
            return std::nullopt;
    return interval;
}

std::unique_ptr<RecordingParser> parserFor(QIODevice &device, QIODevice *notes, QString &problem)
{
    constexpr int enough = 64;
    QByteArray begin = device.peek(enough);
    if (begin.isEmpty()) {
        problem = device.atEnd() ? QStringLiteral("the file is empty") : device.errorString();
        return nullptr;
    }
    if (begin.startsWith("\x93NUMPY"))
        return makeNpyParser(device, notes);
    return begin.trimmed().startsWith('{') ? makeJsonParser(device) : makeCsvParser(device);
}

} // namespace

struct RecordingReader::State
{
    QString path;
    std::unique_ptr<QIODevice> data;
    std::unique_ptr<QIODevice> notes;
    std::unique_ptr<RecordingParser> parser;
    std::deque<Item> items;
    bool ended = true;
    QString problem;

    // The block that grows.
    QVector<double> scaled;
    QVector<qint32> raw;
    QVector<double> times;
    qint64 blockBegin = 0;

    int run = 0;
    qint64 nextNumber = 0;
    bool isFirst = true;
    double lastTime = std::numeric_limits<double>::quiet_NaN();
    RecordedFrame frame;
    DataGap gap;

    bool openFiles();
    void step();
    void add(const RecordedFrame &newFrame);
    void place(const RecordedFrame &newFrame);
    void add(DataGap newGap);
    void addMissing(std::optional<qint64> frames);
    void flush();
};

bool RecordingReader::State::openFiles()
{
    if (data)
        return true;
    data = std::make_unique<QFile>(path);
    if (!data->open(QIODevice::ReadOnly)) {
        problem = data->errorString();
        return false;
    }
    if (auto beside = std::make_unique<QFile>(path + QStringLiteral(".jsonl")); beside->open(QIODevice::ReadOnly))
        notes = std::move(beside);
    return true;
}

void RecordingReader::State::step()
{
    switch (parser->next(frame, gap)) {
    case RecordingParser::Step::Frame:
        add(frame);
        return;
    case RecordingParser::Step::Gap:
        add(gap);
        return;
    case RecordingParser::Step::Failed:
        problem = parser->problem;
        break;
    case RecordingParser::Step::End:
        break;
    }
    flush();
    ended = true;
}

void RecordingReader::State::add(const RecordedFrame &newFrame)
{
    place(newFrame);
    const bool isTimeChange = !times.isEmpty() && std::isnan(times.last()) != std::isnan(newFrame.time);
    if (isTimeChange || scaled.size() + newFrame.scaled.size() > blockValues)
        flush();
    if (times.isEmpty())
        blockBegin = nextNumber;
    scaled += newFrame.scaled;
    raw += newFrame.raw;
    times += newFrame.time;
    lastTime = newFrame.time;
    ++nextNumber;
}

/// Sets run and nextNumber to those of \a newFrame and reports what is missing before it.
void RecordingReader::State::place(const RecordedFrame &newFrame)
{
    const qint64 number = newFrame.number.value_or(nextNumber);
    if (isFirst) {
        // A file of a series begins with any number.
        run = newFrame.run.value_or(run);
        nextNumber = std::max(number, nextNumber);
    }
    isFirst = false;
    if (newFrame.run && *newFrame.run != run) {
        if (!scaled.isEmpty() || nextNumber > 0)
            addMissing(std::nullopt);
        run = *newFrame.run;
        nextNumber = number;
    } else if (number < nextNumber) {
        addMissing(std::nullopt);
        nextNumber = number;
    } else if (number > nextNumber) {
        addMissing(number - nextNumber);
    }
}

void RecordingReader::State::add(DataGap newGap)
{
    flush();
    if (isFirst) {
        run = newGap.run;
        nextNumber = newGap.firstFrame;
    }
    isFirst = false;
    newGap.run = run;
    if (!newGap.beginTime && !std::isnan(lastTime))
        newGap.beginTime = lastTime;
    items.emplace_back(newGap);
    if (newGap.frames) {
        nextNumber = newGap.firstFrame + *newGap.frames;
    } else {
        ++run;
        nextNumber = 0;
    }
}

void RecordingReader::State::addMissing(std::optional<qint64> frames)
{
    DataGap missing;
    missing.firstFrame = nextNumber;
    missing.frames = frames;
    add(missing);
}

void RecordingReader::State::flush()
{
    if (times.isEmpty())
        return;
    const int values = parser->columns.frame.valuesPerFrame;
    if (const auto interval = regularInterval(times))
        items.emplace_back(DataBlock(run, blockBegin, values, scaled, raw, times.first(), interval));
    else if (std::isnan(times.first()))
        items.emplace_back(DataBlock(run, blockBegin, values, scaled, raw));
    else
        items.emplace_back(DataBlock::withTimes(run, blockBegin, values, scaled, raw, times));
    scaled.clear();
    raw.clear();
    times.clear();
}

RecordingReader::RecordingReader(const QString &path)
    : d(new State)
{
    d->path = path;
}

RecordingReader::RecordingReader(std::unique_ptr<QIODevice> data, std::unique_ptr<QIODevice> notes)
    : d(new State)
{
    d->data = std::move(data);
    d->notes = std::move(notes);
}

RecordingReader::~RecordingReader() = default;

bool RecordingReader::open()
{
    if (!d->openFiles())
        return false;
    d->parser = parserFor(*d->data, d->notes.get(), d->problem);
    if (!d->parser)
        return false;
    if (!d->parser->open()) {
        d->problem = d->parser->problem;
        return false;
    }
    d->ended = false;
    return true;
}

const TransmittedDataInfo &RecordingReader::frame() const
{
    static const TransmittedDataInfo none;
    return d->parser ? d->parser->columns.frame : none;
}

const RecordHead &RecordingReader::head() const
{
    static const RecordHead none;
    return d->parser ? d->parser->head : none;
}

std::optional<RecordingReader::Item> RecordingReader::next()
{
    while (d->items.empty() && !d->ended)
        d->step();
    if (d->items.empty())
        return std::nullopt;
    Item item = std::move(d->items.front());
    d->items.pop_front();
    return item;
}

QString RecordingReader::problem() const
{
    return d->problem;
}

QString RecordingReader::warning() const
{
    return d->parser ? d->parser->warning : QString();
}

QString RecordingReader::errorText(double value) const
{
    return d->parser && isErrorValue(value) && !std::isnan(value)
               ? d->parser->errorTexts.value(errorValueKey(value))
               : QString();
}

double RecordingReader::progress() const
{
    const qint64 size = d->data ? d->data->size() : 0;
    return size > 0 ? std::min(1.0, static_cast<double>(d->data->pos()) / static_cast<double>(size)) : 0.0;
}

} // namespace SondixApp
