// SPDX-License-Identifier: MIT
#include "readerqueue_p.h"

#include <algorithm>

namespace SondixQt {

namespace {

/// Gaps and states are small, but a consumer that never looks must not collect them without a limit.
constexpr std::size_t maxEvents = 1 << 16;

bool adjoins(const DataGap &gap, const DataGap &next)
{
    return gap.frames && gap.run == next.run && gap.firstFrame + *gap.frames == next.firstFrame;
}

} // namespace

ReaderQueue::ReaderQueue(QObject *object, qint64 maxValues)
    : receiver(object)
    , limit(maxValues)
{
}

/// The gap that remains if \a block is discarded.
DataGap ReaderQueue::gapFor(const DataBlock &block) const
{
    DataGap gap;
    gap.run = block.run();
    gap.firstFrame = block.firstFrame();
    gap.frames = block.frameCount();
    gap.reason = DataGap::ConsumerOverrun;
    // The interval may have changed at the block.
    if (lastTaken.run == gap.run && lastTaken.number == gap.firstFrame - 1)
        gap.beginTime = lastTaken.time;
    else if (block.time() && block.frameInterval() && block.firstFrame() > 0)
        gap.beginTime = *block.time() - *block.frameInterval();
    const std::optional<double> last = block.frameTime(block.frameCount() - 1);
    if (last && block.frameInterval())
        gap.endTime = *last + *block.frameInterval();
    return gap;
}

void ReaderQueue::push(ReaderEvent event)
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (const auto *block = std::get_if<DataBlock>(&event)) {
        ++blocks;
        values += block->scaledData().size();
    }
    events.push_back(std::move(event));
    while (values > limit && discardOldestBlock()) {
    }
    if (events.size() > maxEvents)
        condense();
    announce();
}

void ReaderQueue::announce()
{
    if (receiver && !announced) {
        announced = true;
        QMetaObject::invokeMethod(receiver, "deliver", Qt::QueuedConnection);
    }
}

bool ReaderQueue::take(ReaderEvent &event)
{
    const std::lock_guard<std::mutex> lock(mutex);
    announced = false;
    if (events.empty())
        return false;
    event = std::move(events.front());
    events.pop_front();
    if (const auto *block = std::get_if<DataBlock>(&event)) {
        --blocks;
        values -= block->scaledData().size();
        const int last = block->frameCount() - 1;
        lastTaken = {block->run(), block->firstFrame() + last, block->frameTime(last)};
    }
    blockless -= blockless > 0 ? 1 : 0;
    return true;
}

int ReaderQueue::size() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return static_cast<int>(events.size());
}

void ReaderQueue::announceRest()
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (!events.empty())
        announce();
}

void ReaderQueue::detach()
{
    const std::lock_guard<std::mutex> lock(mutex);
    receiver = nullptr;
}

/// False if only the newest block is left.
bool ReaderQueue::discardOldestBlock()
{
    if (blocks < 2)
        return false;
    while (!std::holds_alternative<DataBlock>(events[blockless]))
        ++blockless;
    const auto oldest = events.begin() + static_cast<std::ptrdiff_t>(blockless);
    DataGap gap = gapFor(std::get<DataBlock>(*oldest));
    const auto *next = std::get_if<DataBlock>(&*std::next(oldest));
    if (next && next->run() == gap.run && next->firstFrame() == gap.firstFrame + *gap.frames)
        gap.endTime = next->time();
    values -= std::get<DataBlock>(*oldest).scaledData().size();
    --blocks;
    DataGap *previous = oldest != events.begin() ? std::get_if<DataGap>(&*std::prev(oldest)) : nullptr;
    if (previous && previous->reason == DataGap::ConsumerOverrun && adjoins(*previous, gap)) {
        *previous->frames += *gap.frames;
        previous->endTime = gap.endTime;
        events.erase(oldest);
    } else {
        *oldest = gap;
    }
    return true;
}

/// Replaces the older half of the events by one gap, the answers to commands and the latest of the other events.
void ReaderQueue::condense()
{
    std::optional<DataGap> gap;
    std::deque<ReaderEvent> answers;
    std::optional<ReaderEvent> latest[std::variant_size_v<ReaderEvent>];
    for (std::size_t left = maxEvents / 2; left > 0; --left) {
        ReaderEvent event = std::move(events.front());
        events.pop_front();
        if (auto *block = std::get_if<DataBlock>(&event)) {
            values -= block->scaledData().size();
            --blocks;
            event = gapFor(*block);
        }
        if (const auto *next = std::get_if<DataGap>(&event)) {
            if (!gap) {
                gap = *next;
            } else {
                gap->frames = adjoins(*gap, *next) && next->frames
                                  ? std::optional<qint64>(*gap->frames + *next->frames)
                                  : std::nullopt;
                gap->endTime = next->endTime;
            }
            gap->reason = DataGap::ConsumerOverrun;
        } else if (std::holds_alternative<CommandAnswer>(event)) {
            answers.push_back(std::move(event));
        } else {
            latest[event.index()] = std::move(event);
        }
    }
    for (auto &event : latest) {
        if (event)
            events.push_front(std::move(*event));
    }
    if (gap)
        events.push_front(*gap);
    events.insert(events.begin(), std::make_move_iterator(answers.begin()),
                  std::make_move_iterator(answers.end()));
    blockless = 0;
}

} // namespace SondixQt
