// SPDX-License-Identifier: MIT
#include "readerthread_p.h"

#include "instance/instanceaccess_p.h"
#include "instance/sensorinstance.h"
#include "instance/specialsensorinstance.h"
#include "readerlog_p.h"
#include "reconnectplan_p.h"
#include "threadfences_p.h"

#include <algorithm>
#include <cmath>

namespace SondixQt {

Q_LOGGING_CATEGORY(readerLog, "SondixQt.Reader")

namespace {

constexpr std::chrono::milliseconds maxPollInterval{40};
constexpr std::chrono::milliseconds minMeasureInterval{5};
constexpr std::chrono::seconds maxMeasureInterval{10};
/// A triggered sensor that has sent no frame for this long is waiting.
constexpr std::chrono::seconds triggerPause{1};
/// How often a sensor is asked again for the description that it has failed to give.
constexpr std::chrono::milliseconds descriptionInterval{100};

/// The serial numbers of the sensors of \a instance.
QStringList serialNumbers(const SensorInstance &instance)
{
    QStringList numbers;
    for (const QMap<QString, QVariant> &parameters : instance.getInfoParameters()) {
        QString number = parameters.value(QStringLiteral("SA_SerialNumber")).toString();
        if (number.isEmpty())
            number = parameters.value(QStringLiteral("SA_ControllerSerialNumber")).toString();
        numbers.append(number);
    }
    return numbers;
}

bool isInterfaceParameter(const QString &name)
{
    return name.startsWith(QLatin1String("IP_"));
}

bool isSameKind(const ReaderCommand &a, const ReaderCommand &b)
{
    if (a.command != b.command || a.parameters.keys() != b.parameters.keys())
        return false;
    for (auto it = a.parameters.cbegin(); it != a.parameters.cend(); ++it) {
        if (isInterfaceParameter(it.key()) && it.value() != b.parameters.value(it.key()))
            return false;
    }
    return true;
}

/// Whether the values of the frames mean the same; their rates may differ.
bool hasSameValues(const TransmittedDataInfo &a, const TransmittedDataInfo &b)
{
    const auto isSame = [](SignalInfo x, const SignalInfo &y) {
        x.rawDatarate = y.rawDatarate;
        x.scaledDatarate = y.scaledDatarate;
        return x == y;
    };
    return a.valuesPerFrame == b.valuesPerFrame &&
           std::equal(a.signals.begin(), a.signals.end(), b.signals.begin(), b.signals.end(), isSame);
}

/// Unlike operator==, which compares nothing but the signals.
bool isSameDescription(const TransmittedDataInfo &a, const TransmittedDataInfo &b)
{
    return a == b && a.datarate == b.datarate && a.maxValuesPerFrame == b.maxValuesPerFrame &&
           a.videoSignals == b.videoSignals;
}

/// Commands with this prefix change nothing.
bool isQuery(const QString &command)
{
    return command.startsWith(QLatin1String("Get_"));
}

} // namespace

void replaceEarlier(ReaderCommands &settings, const ReaderCommand &setting)
{
    const auto end = std::find(settings.begin(), settings.end(), setting);
    if (end == settings.end())
        return;
    const auto isReplaced = [&setting](const ReaderCommand &earlier) { return isSameKind(earlier, setting); };
    settings.erase(std::remove_if(settings.begin(), end, isReplaced), end);
}

ReaderThread::ReaderThread(const ReaderTask &readerTask, std::shared_ptr<ReaderQueue> readerQueue)
    : task(readerTask)
    , queue(std::move(readerQueue))
{
    setObjectName(QStringLiteral("SensorReader"));
}

ReaderThread::~ReaderThread() = default;

void ReaderThread::requestStop()
{
    const std::lock_guard<std::mutex> lock(mutex);
    stopping = true;
    woken.notify_all();
}

bool ReaderThread::join(unsigned long milliseconds)
{
    if (!wait(milliseconds))
        return false;
    const CallerFence ended(this);
    return true;
}

void ReaderThread::post(const ReaderCommand &command)
{
    const std::lock_guard<std::mutex> lock(mutex);
    commands.push_back(command);
    woken.notify_all();
}

void ReaderThread::forgetSettings()
{
    const std::lock_guard<std::mutex> lock(mutex);
    settingsForgotten = true;
    for (ReaderCommand &command : commands)
        command.isSetting = false;
}

void ReaderThread::forgetSettingsIfRequested()
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (std::exchange(settingsForgotten, false))
        task.settings.clear();
}

bool ReaderThread::hasCommand()
{
    const std::lock_guard<std::mutex> lock(mutex);
    return !commands.empty();
}

ReaderCommand ReaderThread::takeCommand()
{
    const std::lock_guard<std::mutex> lock(mutex);
    ReaderCommand command = std::move(commands.front());
    commands.pop_front();
    return command;
}

/// Returns earlier when the thread is stopped, or when there is a command and the sensor is being read.
void ReaderThread::waitUntil(Time time)
{
    std::unique_lock<std::mutex> lock(mutex);
    woken.wait_until(lock, time,
                     [this] { return stopping || (state != SensorReader::Reconnecting && !commands.empty()); });
}

void ReaderThread::run()
{
    const CalleeFence fence(this);
    const bool failed = !read();
    closeSensor();
    owned.reset();
    queue->push(ReadingEnded{failed});
}

/// False if reading has ended by an error.
bool ReaderThread::read()
{
    setState(SensorReader::Opening);
    ReaderError error;
    if (openSensor(error) != Result::Done) {
        if (isStopping())
            return true;
        fail(error);
        return false;
    }
    Time next = Clock::now();
    nextDelivery = next + task.interval;
    while (!isStopping()) {
        // What was measured before a command belongs to the settings before it.
        const Result result = poll(error);
        const bool sendsCommand = result == Result::Done && !isStopping() && hasCommand();
        if (sendsCommand)
            runCommand();
        if (result == Result::Failed || (result == Result::Lost && !reopen(error))) {
            if (isStopping())
                break;
            deliver();
            if (result == Result::Failed) // reopen() reports the gap of a loss
                queue->push(account.breakOff(DataGap::Disconnected));
            fail(error);
            return false;
        }
        const Time now = Clock::now();
        if (now >= nextDelivery) {
            deliver();
            nextDelivery = std::max(nextDelivery + task.interval, now);
        }
        // A command wakes the thread earlier. After one, the values that were measured before it are fetched at once.
        if (sendsCommand)
            next = now;
        else if (now >= next)
            next = std::max(next + std::chrono::duration_cast<Clock::duration>(pollInterval()), now);
        waitUntil(next);
    }
    if (state == SensorReader::Reconnecting)
        return true;
    const Result last = poll(error); // what has been measured until now
    deliver();
    if (last != Result::Done || isUndescribed)
        queue->push(account.breakOff(isUndescribed ? DataGap::Unknown : DataGap::Disconnected));
    return true;
}

std::chrono::nanoseconds ReaderThread::pollInterval() const
{
    using std::chrono::nanoseconds;
    if (polled && rateHz > 0.0) {
        // Such a sensor measures only when it is polled: poll it at its sample rate.
        const double seconds = std::clamp(1.0 / rateHz, std::chrono::duration<double>(minMeasureInterval).count(),
                                          std::chrono::duration<double>(maxMeasureInterval).count());
        return nanoseconds(qRound64(seconds * 1.0e9));
    }
    // A whole number of polls in each delivery interval.
    const auto interval = std::chrono::duration_cast<nanoseconds>(task.interval);
    const auto polls = (interval + maxPollInterval - nanoseconds(1)) / nanoseconds(maxPollInterval);
    return interval / std::max<qint64>(polls, 1);
}

FrameAccount::Timing ReaderThread::timing() const
{
    return {std::max(frame.valuesPerFrame, 1), rateHz, !triggered && !polled};
}

/// A rate that is usable, or 0.
double ReaderThread::usable(double hertz)
{
    return hertz > 0.0 && std::isfinite(hertz) ? hertz : 0.0;
}

bool ReaderThread::isSpecial() const
{
    return qobject_cast<SpecialSensorInstance *>(instance) != nullptr;
}

ReaderThread::Result ReaderThread::openSensor(ReaderError &error)
{
    QMap<QString, QVariant> parameters = task.address.parameters;
    if (task.instance) {
        instance = task.instance;
        parameters = instance->storedInterfaceParameters();
    } else {
        // A new object each time: it does not keep the information of a sensor that was there before.
        owned = SensorInstance::create(task.address.type);
        instance = owned.get();
    }
    if (!instance->isValid()) {
        instance->checkError(CreationError, &error.text, false);
        error.code = CreationError;
        if (error.text.isEmpty())
            error.text = QStringLiteral("the sensor-access library does not support this model");
        return Result::Failed;
    }
    const bool wasOpen = instance->isOpen();
    if (!wasOpen) {
        error.text.clear();
        if (state == SensorReader::Reconnecting)
            forgetSensorInformation(instance); // it may be another sensor
        error.code = instance->open(parameters, &error.text);
        if (state == SensorReader::Opening)
            closes = error.code == NoError || instance->isOpen();
        if (error.code != NoError) {
            error.text = failureText(error.code, error.text);
            return Result::Lost;
        }
    }
    Result result = checkIdentity(error);
    if (result != Result::Done)
        return result;
    TransmittedDataInfo withoutSettings;
    if (!task.settings.empty())
        instance->transmittedDataInfo(withoutSettings);
    result = applySettings(error);
    if (result != Result::Done)
        return result;

    const TransmittedDataInfo before = frame;
    error.code = describe(&error.text);
    if (error.code != NoError) {
        error.text = failureText(error.code, error.text);
        return Result::Lost;
    }
    if (frame.valuesPerFrame < 1 || frame.signals.size() != frame.valuesPerFrame) {
        error = {FrameError, QStringLiteral("the sensor reports %1 values per frame").arg(frame.valuesPerFrame)};
        frame = before;
        // A sensor that has just got its power back may answer nonsense once.
        return state == SensorReader::Reconnecting ? Result::Lost : Result::Failed;
    }
    isUndescribed = false;
    polled = instance->isGetMeasureNeeded();
    if (!task.settings.empty() && !hasSameValues(withoutSettings, frame))
        discard(waitingValues());
    updateTriggerState();
    report();
    if (!isSameDescription(before, frame) || state == SensorReader::Opening)
        queue->push(frame);
    resumeAccount(wasOpen);
    lastFrame = lastLook = Clock::now();
    wallClock = {};
    setState(triggered ? SensorReader::WaitingForTrigger : SensorReader::Reading);
    return Result::Done;
}

/// Passes on what the sensor has reported about itself. The caller's instance keeps its own error texts, which must
/// not be read by another thread.
void ReaderThread::report()
{
    SensorReport report{instance->getInfoParameters(), {}, {}};
    for (int number = 1; number <= report.parameters.size(); ++number)
        report.settings.append(instance->getInfoSettings(number));
    if (owned && errorTexts.isEmpty())
        errorTexts = errorValueTexts(owned.get());
    report.errorTexts = errorTexts;
    queue->push(report);
}

/// The first values may have been measured before the settings were applied, before others have changed the sensor, or before
/// a command that has stopped a tracking sensor. \a wasOpen: others may have sent commands.
void ReaderThread::resumeAccount(bool wasOpen)
{
    const bool mayHaveChanged = wasOpen || isSpecial() || !task.settings.empty();
    const double now = computerTime();
    int available = 0;
    const bool isCounted = mayHaveChanged && instance->dataAvail(available) == NoError;
    const bool mayWait = mayHaveChanged && (!isCounted || available > 0);
    waitingAtStart = available;
    countedAt = isCounted ? now : 0.0;
    drainedAt = available > 0 ? 0.0 : countedAt;
    unsettled = 0;
    if (!mayWait) {
        account.resume(timing());
    } else if (!task.settings.empty()) {
        FrameAccount::Timing unknown = timing();
        unknown.rateHz = 0.0;
        account.resume(unknown);
        account.commandSent(timing());
        unsettled = 2;
    } else {
        account.resumeWith(available, isSpecial(), timing());
    }
}

/// Failed if another sensor has answered than before, Lost if it does not report which one it is.
ReaderThread::Result ReaderThread::checkIdentity(ReaderError &error)
{
    const QStringList numbers = serialNumbers(*instance);
    const Identity found = state == SensorReader::Opening ? Identity::Same : compareIdentity(identity, numbers);
    switch (found) {
    case Identity::Same:
        identity = numbers;
        return Result::Done;
    case Identity::Unknown:
        error = {OtherSensorError, QStringLiteral("the sensor does not report its serial number, which was %1")
                                       .arg(identity.join(QStringLiteral(", ")))};
        return Result::Lost;
    case Identity::Other:
        break;
    }
    error = {OtherSensorError, QStringLiteral("another sensor answers: serial number %1 instead of %2")
                                   .arg(numbers.join(QStringLiteral(", ")), identity.join(QStringLiteral(", ")))};
    return Result::Failed;
}

ReaderThread::Result ReaderThread::applySettings(ReaderError &error)
{
    forgetSettingsIfRequested();
    for (const ReaderCommand &setting : qAsConst(task.settings)) {
        if (isStopping())
            return Result::Lost;
        const CommandResult result = send(setting);
        if (result.code == NoError)
            continue;
        error = {result.code, QStringLiteral("the sensor refuses %1: %2")
                                  .arg(setting.command, failureText(result.code, result.errorText))};
        int unused = 0;
        // Refused, or gone meanwhile?
        return instance->dataAvail(unused) == NoError ? Result::Failed : Result::Lost;
    }
    return Result::Done;
}

/// Reads the description of the frames and their rate.
ErrorCode ReaderThread::describe(QString *errorText)
{
    const ErrorCode result = instance->transmittedDataInfo(frame, errorText);
    if (result != NoError)
        return result;
    const double before = std::exchange(rateHz, usable(frame.datarate));
    rateFailed = false;
    // The rate of a tracking sensor is computed from what it reported when it was opened, and a command may have changed it.
    const bool isOutdated = isSpecial() && (rateHz > 0.0 || !isOpening() || !task.settings.empty());
    if (isOutdated)
        return NoError;
    double kiloHertz = 0.0;
    if (instance->getSampleRateInKhz(&kiloHertz) != NoError)
        rateFailed = before > 0.0 && rateHz == 0.0;
    else if (usable(kiloHertz) > 0.0)
        rateHz = kiloHertz * 1000.0;
    return NoError;
}

void ReaderThread::closeSensor()
{
    if (std::exchange(closes, false))
        instance->close();
}

/// Opens the sensor again after \a loss. False if that has failed; \a loss is then the reason.
bool ReaderThread::reopen(ReaderError &loss)
{
    deliver();
    if (!plan) // else nothing has arrived since the gap that was reported
        queue->push(account.breakOff(DataGap::Disconnected));
    collector.clear();
    if (!task.reconnect)
        return false;
    if (!plan) {
        plan.emplace(*task.reconnect);
        lostAt = Clock::now();
    }
    queue->push(loss);
    setState(SensorReader::Reconnecting);
    instance->close();

    while (!isStopping()) {
        const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - lostAt);
        const auto pause = plan->next(elapsed);
        if (!pause)
            return false;
        waitUntil(Clock::now() + *pause);
        if (isStopping())
            break;
        const Result result = openSensor(loss);
        if (result == Result::Done)
            return true;
        qCDebug(readerLog).noquote() << "cannot open the sensor again:" << int(loss.code) << loss.text;
        instance->close();
        if (result == Result::Failed)
            return false;
    }
    return false;
}

void ReaderThread::runCommand()
{
    forgetSettingsIfRequested();
    const ReaderCommand command = takeCommand();
    const Clock::duration silence = Clock::now() - lastFrame;
    const CommandResult answer = send(command);
    const bool onlyReads = command.work ? command.workEffect == SensorReader::OnlyReads : isQuery(command.command);
    const bool mayChange = !onlyReads || isSpecial();
    const int waiting = mayChange ? waitingValues() : 0;
    if (command.isSetting && answer.code == NoError) {
        task.settings.push_back(command);
        replaceEarlier(task.settings, command);
    }
    queue->push(CommandAnswer{command.number, answer});
    if (mayChange)
        followCommand(waiting);
    lastFrame = std::max(lastFrame, Clock::now() - silence); // no values were fetched meanwhile
}

CommandResult ReaderThread::send(const ReaderCommand &command)
{
    if (command.work)
        return command.work(*instance);
    CommandResult result;
    result.code =
        instance->sendCommandGetAll(command.command, command.parameters, result.answer, &result.errorText);
    return result;
}

/// Reads again what a command may have changed. \a waiting values were there when it had been carried out.
void ReaderThread::followCommand(int waiting)
{
    const TransmittedDataInfo before = frame;
    QString text;
    const bool isRead = describe(&text) == NoError;
    if (!isRead || frame.valuesPerFrame < 1 || frame.signals.size() != frame.valuesPerFrame) {
        if (!isUndescribed)
            qCWarning(readerLog).noquote() << "the sensor does not describe its data after a command:" << text
                                           << frame.valuesPerFrame << "values per frame";
        frame = before;
        isUndescribed = true;
        nextDescription = Clock::now() + descriptionInterval;
        return;
    }
    isUndescribed = false;
    const bool wasTriggered = triggered;
    updateTriggerState();
    const bool isSame = hasSameValues(before, frame);
    if (!isSame) {
        deliver();
        collector.clear();
        queue->push(account.breakOff(DataGap::Restarted));
        discard(waiting);
        account.resume(timing());
    } else {
        account.commandSent(timing());
    }
    if (!isSameDescription(before, frame)) {
        deliver();
        queue->push(frame);
    }
    unsettled = 2;
    if (wasTriggered != triggered) {
        lastFrame = Clock::now(); // from here on it may be silent
        setState(triggered ? SensorReader::WaitingForTrigger : SensorReader::Reading);
    }
}

void ReaderThread::updateTriggerState()
{
    readTriggerState(instance);
    triggered = instance->isTriggerEnabled();
}

void ReaderThread::deliver()
{
    if (collector.frameCount() > 0)
        queue->push(collector.take(wallClock.isKnown() ? std::optional<double>(wallClock.offset()) : std::nullopt,
                                   wallClock.uncertainty()));
    if (state == SensorReader::Reading && triggered && Clock::now() - lastFrame > triggerPause)
        setState(SensorReader::WaitingForTrigger);
}

void ReaderThread::setState(SensorReader::State newState)
{
    if (state == newState)
        return;
    state = newState;
    queue->push(state);
}

void ReaderThread::fail(ReaderError error)
{
    error.isEnd = true;
    queue->push(error);
}

} // namespace SondixQt
