// SPDX-License-Identifier: MIT
#pragma once

#include "readerthread_p.h"

#include <QHash>
#include <QPointer>

namespace SondixQt {

class SensorReaderPrivate
{
public:
    SensorReaderPrivate(SensorReader *q, const ReaderTask &task);
    ~SensorReaderPrivate();

    void start();
    void stop();
    void post(ReaderCommand command, QObject *context, const SensorReader::Callback &callback);
    void deliver();

    void handle(const DataBlock &block);
    void handle(const DataGap &gap);
    void handle(SensorReader::State newState);
    void handle(const ReaderError &error);
    void handle(const TransmittedDataInfo &newFrame);
    void handle(const SensorReport &newReport);
    void handle(const CommandAnswer &answer);
    void handle(const ReadingEnded &end);

    struct Waiting
    {
        bool hasContext = false;
        QPointer<QObject> context;
        SensorReader::Callback callback;
        ReaderCommand command;
    };
    void answerNotSent(quint64 number);
    static void answer(const Waiting &waiting, const CommandResult &result);

    SensorReader *const q;
    ReaderTask task;               ///< for the next start
    qint64 queueLimit = 2'000'000; ///< values
    ReaderThread *thread = nullptr;
    std::shared_ptr<ReaderQueue> queue; ///< of the thread
    bool restarts = false;              ///< start() was called after stop(), while the thread was still running
    bool stopRequested = false;
    ReaderCommands heldCommands; ///< for the thread that is started next
    QMap<quint64, Waiting> waiting;
    quint64 lastNumber = 0;

    SensorReader::State state = SensorReader::Stopped;
    ReaderError error;
    TransmittedDataInfo frame;
    SensorReport report;
    qint64 framesDelivered = 0;
    qint64 framesLost = 0;
    bool unknownGaps = false;
};

} // namespace SondixQt
