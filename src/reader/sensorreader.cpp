// SPDX-License-Identifier: MIT
#include "sensorreader_p.h"

#include "instance/sensorinstance.h"
#include "sensorinfo/sensorinfo.h"
#include "sondix/errorvalue.h"

#include <QDeadlineTimer>

#include <algorithm>

namespace SondixQt {

namespace {

constexpr unsigned long stopTimeoutMs = 2000;
constexpr std::chrono::milliseconds deliveryTime{20};
constexpr std::chrono::milliseconds minInterval{1};
constexpr std::chrono::milliseconds maxInterval = std::chrono::hours(1);

void registerReaderTypes()
{
    qRegisterMetaType<SensorReader::State>("SondixQt::SensorReader::State");
    qRegisterMetaType<CommandResult>("SondixQt::CommandResult");
}
Q_CONSTRUCTOR_FUNCTION(registerReaderTypes)

CommandResult notSent()
{
    CommandResult result;
    result.code = StoppedError;
    result.errorText = QStringLiteral("the reader has stopped");
    return result;
}

ReaderTask taskFor(const SensorAddress &address, SensorInstance *instance)
{
    ReaderTask task;
    task.address = address;
    task.instance = instance;
    return task;
}

} // namespace

SensorReaderPrivate::SensorReaderPrivate(SensorReader *reader, const ReaderTask &readerTask)
    : q(reader)
    , task(readerTask)
{
}

SensorReaderPrivate::~SensorReaderPrivate()
{
    if (!thread)
        return;
    queue->detach();
    thread->requestStop();
    if (thread->join(stopTimeoutMs)) {
        delete thread;
        return;
    }
    // The thread is still waiting for the sensor. Deleting a running QThread would terminate the program.
    QObject::connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    if (thread->isFinished())
        thread->deleteLater();
}

void SensorReaderPrivate::start()
{
    if (thread) {
        restarts = stopRequested;
        return;
    }
    error = {};
    framesDelivered = framesLost = 0;
    unknownGaps = false;
    stopRequested = restarts = false;
    queue = std::make_shared<ReaderQueue>(q, queueLimit);
    const ReaderCommands held = std::exchange(heldCommands, {});
    // A held setting is sent as a command, which the sensor may refuse, and then belongs to the settings of the thread.
    ReaderTask threadTask = task;
    const auto isHeld = [&held](const ReaderCommand &setting) {
        return std::find(held.begin(), held.end(), setting) != held.end();
    };
    threadTask.settings.erase(std::remove_if(threadTask.settings.begin(), threadTask.settings.end(), isHeld),
                              threadTask.settings.end());
    thread = new ReaderThread(threadTask, queue);
    for (const ReaderCommand &command : held)
        thread->post(command);
    thread->start();
}

void SensorReaderPrivate::stop()
{
    restarts = false;
    for (const ReaderCommand &command : std::exchange(heldCommands, {}))
        answerNotSent(command.number);
    if (!thread)
        return;
    stopRequested = true;
    thread->requestStop();
}

void SensorReaderPrivate::post(ReaderCommand command, QObject *context, const SensorReader::Callback &callback)
{
    command.number = ++lastNumber;
    waiting.insert(command.number, {context != nullptr, context, callback, command});
    if (thread && !stopRequested) {
        thread->post(command);
    } else if (restarts) {
        heldCommands.push_back(command);
    } else {
        answerNotSent(command.number);
    }
}

void SensorReaderPrivate::answerNotSent(quint64 number)
{
    QMetaObject::invokeMethod(
        q,
        [this, number] {
            handle(CommandAnswer{number, notSent()});
        },
        Qt::QueuedConnection);
}

/// Delivers the events that are there now, for deliveryTime at most. The others wait for the next call, so that a slow
/// consumer does not keep the event loop from its other work: the more events arrive meanwhile, the longer the next call
/// would take.
void SensorReaderPrivate::deliver()
{
    const QPointer<SensorReader> guard(q);
    const std::shared_ptr<ReaderQueue> source = queue;
    if (!source)
        return;
    ReaderEvent event;
    const QDeadlineTimer deadline(deliveryTime);
    for (int left = source->size(); left > 0 && source->take(event); --left) {
        std::visit([this](const auto &content) { handle(content); }, event);
        if (!guard || queue != source) // a slot has deleted or restarted the reader
            return;
        if (deadline.hasExpired())
            break;
    }
    source->announceRest();
}

void SensorReaderPrivate::handle(const DataBlock &block)
{
    framesDelivered += block.frameCount();
    Q_EMIT q->blockReady(block);
}

void SensorReaderPrivate::handle(const DataGap &gap)
{
    framesLost += gap.frames.value_or(0);
    unknownGaps = unknownGaps || !gap.frames;
    Q_EMIT q->gapDetected(gap);
}

void SensorReaderPrivate::handle(SensorReader::State newState)
{
    if (state == newState)
        return;
    state = newState;
    Q_EMIT q->stateChanged(newState);
}

void SensorReaderPrivate::handle(const ReaderError &newError)
{
    error = newError;
    stopRequested = stopRequested || newError.isEnd;
    Q_EMIT q->errorOccurred(newError.code, newError.text);
}

void SensorReaderPrivate::handle(const TransmittedDataInfo &newFrame)
{
    frame = newFrame;
    Q_EMIT q->frameChanged(newFrame);
}

void SensorReaderPrivate::handle(const SensorReport &newReport)
{
    report = newReport;
}

void SensorReaderPrivate::handle(const CommandAnswer &commandAnswer)
{
    const auto found = waiting.find(commandAnswer.number);
    if (found == waiting.end())
        return;
    const Waiting receiver = *found;
    waiting.erase(found);
    const ErrorCode code = commandAnswer.result.code;
    if (receiver.command.isSetting && (code == NoError || code == StoppedError))
        replaceEarlier(task.settings, receiver.command);
    else if (receiver.command.isSetting)
        task.settings.erase(std::remove(task.settings.begin(), task.settings.end(), receiver.command),
                            task.settings.end());
    answer(receiver, commandAnswer.result);
}

void SensorReaderPrivate::answer(const Waiting &waiting, const CommandResult &result)
{
    if (waiting.callback && (!waiting.hasContext || waiting.context))
        waiting.callback(result);
}

void SensorReaderPrivate::handle(const ReadingEnded &end)
{
    const QPointer<SensorReader> guard(q);
    thread->join(); // it has nothing more to do
    delete std::exchange(thread, nullptr);
    queue.reset();
    stopRequested = false;
    QMap<quint64, Waiting> notSentCommands = std::exchange(waiting, {});
    for (const ReaderCommand &command : qAsConst(heldCommands))
        waiting.insert(command.number, notSentCommands.take(command.number));
    for (const Waiting &receiver : qAsConst(notSentCommands)) {
        if (receiver.command.isSetting)
            replaceEarlier(task.settings, receiver.command);
    }
    handle(end.failed ? SensorReader::Failed : SensorReader::Stopped);
    for (const Waiting &receiver : qAsConst(notSentCommands)) {
        if (!guard)
            return;
        answer(receiver, notSent());
    }
    if (guard && restarts)
        start();
}

SensorReader::SensorReader(const SensorAddress &address, QObject *parent)
    : QObject(parent)
    , d_ptr(new SensorReaderPrivate(this, taskFor(address, nullptr)))
{
}

SensorReader::SensorReader(const SensorInfo &info, QObject *parent)
    : SensorReader(SensorAddress::of(info), parent)
{
}

SensorReader::SensorReader(SensorInstance &instance, QObject *parent)
    : QObject(parent)
    , d_ptr(new SensorReaderPrivate(this, taskFor({}, &instance)))
{
}

SensorReader::~SensorReader() = default;

void SensorReader::setDeliveryInterval(std::chrono::milliseconds interval)
{
    Q_D(SensorReader);
    d->task.interval = std::clamp(interval, minInterval, maxInterval);
}

std::chrono::milliseconds SensorReader::deliveryInterval() const
{
    Q_D(const SensorReader);
    return d->task.interval;
}

void SensorReader::setReconnect(const std::optional<Reconnect> &reconnect)
{
    Q_D(SensorReader);
    d->task.reconnect = reconnect;
}

std::optional<Reconnect> SensorReader::reconnect() const
{
    Q_D(const SensorReader);
    return d->task.reconnect;
}

void SensorReader::setQueueLimit(qint64 values)
{
    Q_D(SensorReader);
    d->queueLimit = std::max<qint64>(values, 0);
}

qint64 SensorReader::queueLimit() const
{
    Q_D(const SensorReader);
    return d->queueLimit;
}

void SensorReader::post(const QString &command, const QMap<QString, QVariant> &parameters, QObject *context,
                        const Callback &callback)
{
    Q_D(SensorReader);
    d->post({0, command, parameters, false, {}, {}}, context, callback);
}

void SensorReader::call(const Work &work, WorkEffect effect, QObject *context, const Callback &callback)
{
    Q_D(SensorReader);
    ReaderCommand command;
    command.work = work;
    command.workEffect = effect;
    d->post(command, context, callback);
}

void SensorReader::addSetting(const QString &command, const QMap<QString, QVariant> &parameters, QObject *context,
                              const Callback &callback)
{
    Q_D(SensorReader);
    ReaderCommand setting{0, command, parameters, true, {}, {}};
    d->post(setting, context, callback);
    setting.number = d->lastNumber;
    d->task.settings.push_back(setting); // replaces an earlier one unless the sensor refuses it
    if (!d->thread || (d->stopRequested && !d->restarts))
        replaceEarlier(d->task.settings, setting);
}

void SensorReader::clearSettings()
{
    Q_D(SensorReader);
    d->task.settings.clear();
    for (ReaderCommand &command : d->heldCommands)
        command.isSetting = false;
    if (d->thread)
        d->thread->forgetSettings();
}

SensorReader::State SensorReader::state() const
{
    Q_D(const SensorReader);
    return d->state;
}

ErrorCode SensorReader::error() const
{
    Q_D(const SensorReader);
    return d->error.code;
}

QString SensorReader::errorString() const
{
    Q_D(const SensorReader);
    return d->error.text;
}

TransmittedDataInfo SensorReader::frame() const
{
    Q_D(const SensorReader);
    return d->frame;
}

QVector<QMap<QString, QVariant>> SensorReader::sensorInformation() const
{
    Q_D(const SensorReader);
    return d->report.parameters;
}

QVector<QMap<QString, QMap<QString, QVariant>>> SensorReader::sensorSettings() const
{
    Q_D(const SensorReader);
    return d->report.settings;
}

QString SensorReader::errorValueText(double value) const
{
    Q_D(const SensorReader);
    const QHash<int, QString> &texts = d->report.errorTexts;
    return texts.value(errorValueKey(value), texts.value(0));
}

qint64 SensorReader::framesDelivered() const
{
    Q_D(const SensorReader);
    return d->framesDelivered;
}

qint64 SensorReader::framesLost() const
{
    Q_D(const SensorReader);
    return d->framesLost;
}

bool SensorReader::hasUnknownGaps() const
{
    Q_D(const SensorReader);
    return d->unknownGaps;
}

void SensorReader::start()
{
    Q_D(SensorReader);
    d->start();
}

void SensorReader::stop()
{
    Q_D(SensorReader);
    d->stop();
}

} // namespace SondixQt

#include "moc_sensorreader.cpp" // NOLINT(bugprone-suspicious-include)
