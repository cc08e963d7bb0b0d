// SPDX-License-Identifier: MIT
#pragma once

#include "sensorreader.h"
#include "testexport_p.h"

#include <QHash>

#include <deque>
#include <mutex>
#include <variant>

namespace SondixQt {

struct ReaderError
{
    ErrorCode code = NoError;
    QString text;
    bool isEnd = false; ///< reading ends
};

struct CommandAnswer
{
    quint64 number = 0;
    CommandResult result;
};

/// What the sensor has reported about itself.
struct SensorReport
{
    QVector<QMap<QString, QVariant>> parameters;
    QVector<QMap<QString, QMap<QString, QVariant>>> settings;
    QHash<int, QString> errorTexts;
};

/// The last event of a thread.
struct ReadingEnded
{
    bool failed = false;
};

using ReaderEvent = std::variant<DataBlock, DataGap, SensorReader::State, ReaderError, TransmittedDataInfo,
                                 SensorReport, CommandAnswer, ReadingEnded>;

/// Passes events from the thread of a reader to the object, in their order. If the object does not take them, the oldest
/// frames are discarded and become a gap. Every function may be called from any thread.
class SONDIXQT_TEST_EXPORT ReaderQueue
{
public:
    /// Events are announced by a queued call of the slot "deliver" of \a object.
    ReaderQueue(QObject *object, qint64 maxValues);

    void push(ReaderEvent event);
    /// False if there is no event.
    bool take(ReaderEvent &event);
    int size() const;
    /// Announces the events that are left, if there are any.
    void announceRest();
    /// After this the object is no longer called.
    void detach();

private:
    // These expect the mutex to be locked.
    void announce();
    DataGap gapFor(const DataBlock &block) const;
    bool discardOldestBlock();
    void condense();

    mutable std::mutex mutex;
    std::deque<ReaderEvent> events;
    QObject *receiver;
    bool announced = false;
    const qint64 limit;
    qint64 values = 0;         ///< in the blocks
    std::size_t blocks = 0;    ///< among the events
    std::size_t blockless = 0; ///< the first events, among which there is no block
    /// The last frame that was taken and its time.
    struct Frame
    {
        int run = 0;
        qint64 number = -1;
        std::optional<double> time;
    };
    Frame lastTaken;
};

} // namespace SondixQt
