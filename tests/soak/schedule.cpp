// SPDX-License-Identifier: MIT
#include "schedule.h"

#include <QThread>

#include <cmath>

using namespace SondixQt;
using sondixsim::Fault;

static const char *const sensor = soakbench::serialNumber;
static constexpr double rates[] = {300.0, 1000.0, 2500.0, 6400.0, 10000.0};

const QVector<Schedule::Action> &Schedule::actions()
{
    static const QVector<Action> all = {
        {"some time passes", &Schedule::letSomeTimePass, true},
        {"some time passes", &Schedule::letSomeTimePass, true},
        {"some time passes", &Schedule::letSomeTimePass, false},
        {"much time passes", &Schedule::letMuchTimePass, true},
        {"the cable is pulled", &Schedule::pullCable, true},
        {"the cable is pulled for a moment", &Schedule::pullCableForAMoment, true},
        {"the sensor is silent", &Schedule::fallSilent, true},
        {"a transfer fails", &Schedule::failTransfer, true},
        {"opening fails", &Schedule::failOpening, true},
        {"a call hangs", &Schedule::hang, true},
        {"the rate is changed", &Schedule::changeRate, true},
        {"the values get other names", &Schedule::changeFrame, true},
        {"the values get other names while some wait", &Schedule::changeFrameOfWaitingValues, true},
        {"an answer is garbled", &Schedule::garbleAnswer, true},
        {"it fails for good", &Schedule::failForGood, true},
        {"the buffers are cleared", &Schedule::clearBuffers, true},
        {"the sensor is triggered", &Schedule::triggerFrames, true},
        {"a command is sent", &Schedule::sendCommand, false},
        {"the slots are slow", &Schedule::blockConsumer, true},
        {"it is stopped and started", &Schedule::stopAndStart, true},
        {"it is stopped in a slot", &Schedule::stopInSlot, true},
        {"it is stopped and started in a slot", &Schedule::restartInSlot, true},
        {"it is deleted in a slot", &Schedule::deleteInSlot, true},
    };
    return all;
}

static soakbench::Setup randomSetup(std::mt19937_64 &random)
{
    soakbench::Setup setup;
    setup.rate = rates[random() % std::size(rates)];
    setup.ring = 20 << (random() % 9);
    constexpr double rateErrors[] = {0.0, 0.0, 1e-4, -5e-4};
    setup.rateError = rateErrors[random() % std::size(rateErrors)];
    return setup;
}

Schedule::Schedule(quint64 seed)
    : m_seed(seed)
    , m_random(seed)
    , m_stand(randomSetup(m_random), seed % 4 == 3 ? ReaderWatch::Eventual : ReaderWatch::Exact)
{
}

bool Schedule::play()
{
    m_stand.newReader(randomInterval());
    m_stand.start();
    const int count = random(5, 25);
    for (int i = 0; i < count && !m_stand.failed(); ++i) {
        const Action &action = actions()[random(0, actions().size() - 1)];
        // Then no loss lies within a block of the sensor-access library.
        if (m_stand.accuracy() == ReaderWatch::Exact)
            m_stand.settle();
        m_log += QStringLiteral("%1 s: %2").arg(sondixsim::now(), 0, 'f', 4).arg(QLatin1String(action.name));
        ReaderWatch::note(m_log.last());
        (this->*action.play)();
        if (action.settles)
            m_stand.settle();
    }
    if (!m_stand.failed())
        m_stand.finish();
    return !m_stand.failed();
}

QStringList Schedule::report() const
{
    QStringList lines{QStringLiteral("seed %1: %2 Hz, a ring of %3 frames, losses reported %4")
                          .arg(m_seed)
                          .arg(m_stand.setup().rate)
                          .arg(m_stand.setup().ring)
                          .arg(m_stand.accuracy() == ReaderWatch::Exact ? QStringLiteral("where they are")
                                                                        : QStringLiteral("in the end"))};
    for (const QString &line : m_log)
        lines += QStringLiteral("  ") + line;
    for (const QString &line : m_stand.problems())
        lines += QStringLiteral("  WRONG: ") + line;
    return lines;
}

void Schedule::letSomeTimePass()
{
    m_stand.advanceFrames(random(0.1, 0.4 * m_stand.setup().ring));
}

/// A loss can be noticed only between frames of the sensor's own rhythm. After a command, or an opening with settings, its
/// frames are known when the library has been emptied twice.
void Schedule::letFramesArrive()
{
    for (int i = 0; i < 2; ++i) {
        m_stand.advanceFrames(3.0);
        m_stand.settle();
    }
    letSomeTimePass();
}

void Schedule::letMuchTimePass()
{
    m_stand.advanceFrames(random(1.1, 30.0) * m_stand.setup().ring);
}

void Schedule::pullCable()
{
    m_stand.pullCable(random(0.001, 1.0));
    letFramesArrive();
}

void Schedule::pullCableForAMoment()
{
    sondixsim::unplug(sensor);
    m_stand.advance(random(0.001, 1.0));
    sondixsim::plug(sensor); // the reader may or may not have noticed
    letFramesArrive();
}

void Schedule::fallSilent()
{
    sondixsim::setSilent(sensor, true);
    m_stand.advance(random(0.001, 1.0));
    sondixsim::setSilent(sensor, false);
    letFramesArrive();
}

void Schedule::failTransfer()
{
    Fault fault;
    fault.function = random(0, 1) == 0 ? "TransferDataTS" : "DataAvail";
    fault.sensor = sensor;
    fault.code = -77;
    fault.text = "injected";
    fault.times = random(1, 3);
    const int number = sondixsim::inject(fault);
    const int openings = m_stand.watch().openings();
    const qint64 blocks = m_stand.watch().blocks();
    // The reader may use only one of the two functions.
    m_stand.waitFor("a failed transfer or some blocks", [&] {
        m_stand.advanceFrames(1.0);
        return m_stand.watch().openings() > openings || m_stand.watch().blocks() > blocks + 3;
    });
    sondixsim::removeFault(number);
    m_stand.waitFor("reading", [this] { return m_stand.isRunning(); });
    letFramesArrive();
}

void Schedule::failOpening()
{
    Fault fault;
    fault.function = "OpenSensor";
    fault.code = -78;
    fault.times = random(1, 4);
    const int number = sondixsim::inject(fault);
    pullCable();
    sondixsim::removeFault(number);
}

void Schedule::hang()
{
    Fault fault;
    fault.sensor = sensor;
    fault.hang = true;
    fault.times = 1;
    if (random(0, 1) == 0) {
        fault.hang = false;
        fault.delay = 0.001 * random(1, 5);
        fault.times = random(1, 10);
    }
    const int number = sondixsim::inject(fault);
    letSomeTimePass();
    QThread::msleep(static_cast<unsigned long>(random(0, 5)));
    sondixsim::removeFault(number);
}

void Schedule::changeRate()
{
    m_stand.setRate(rates[random(0, int(std::size(rates)) - 1)]);
    letFramesArrive();
}

void Schedule::changeFrame()
{
    m_stand.settle(); // values of the frame before would be discarded
    m_stand.set(QStringLiteral("Set_MeasureMode"), QStringLiteral("SP_MeasureMode"),
                random(0, 1) * soakbench::otherMode);
    letFramesArrive();
}

/// The sensor-access library discards the values that wait when the command is carried out. No frame is measured between
/// this and the look of the reader for values of the frame before, which it would fetch and discard.
void Schedule::changeFrameOfWaitingValues()
{
    const QString command = QStringLiteral("Set_MeasureMode");
    Fault fault;
    fault.command = command.toStdString();
    fault.hang = true;
    fault.times = 1;
    const int number = sondixsim::inject(fault);
    m_stand.set(command, QStringLiteral("SP_MeasureMode"), random(0, 1) * soakbench::otherMode, [this] {
        letSomeTimePass();
        QThread::msleep(static_cast<unsigned long>(random(0, 3)));
        letSomeTimePass();
    });
    sondixsim::removeFault(number);
    letFramesArrive();
}

/// The description of the frames, when it is read after a command or after opening.
void Schedule::garbleAnswer()
{
    static const char *const answers[] = {"",
                                          "garbage",
                                          "IA_ValuesPerFrame=-1",
                                          "IA_ValuesPerFrame=2",
                                          "IA_ValuesPerFrame=2000000000",
                                          "IA_ValuesPerFrame=2 IA_Index1=1 IA_Ind"};
    Fault fault;
    fault.command = "Get_TransmittedDataInfo";
    fault.answer = answers[random(0, int(std::size(answers)) - 1)];
    fault.times = 1;
    m_stand.settle(); // as before another frame
    const int number = sondixsim::inject(fault);
    if (random(0, 1) == 0) {
        m_stand.set(QStringLiteral("Set_SyncMode"), QStringLiteral("SP_SyncMode"), random(0, 1));
    } else {
        m_stand.pullCable(random(0.001, 1.0), ReaderStand::MayFail);
        if (m_stand.reader().state() == SensorReader::Failed)
            m_stand.start();
    }
    sondixsim::removeFault(number);
    letFramesArrive();
    m_stand.settle();
    m_stand.set(QStringLiteral("Set_SyncMode"), QStringLiteral("SP_SyncMode"), random(0, 1)); // reads it again
    letFramesArrive();
}

void Schedule::failForGood()
{
    m_stand.stop();
    m_stand.reader().setReconnect(std::nullopt);
    m_stand.start();
    letSomeTimePass();
    sondixsim::unplug(sensor);
    m_stand.waitFor("the end by an error", [this] { return m_stand.reader().state() == SensorReader::Failed; });
    sondixsim::plug(sensor);
    m_stand.reader().setReconnect(ReaderStand::quickReconnect());
    m_stand.start();
    letSomeTimePass();
}

void Schedule::clearBuffers()
{
    m_stand.post(QStringLiteral("Clear_Buffers"));
    letSomeTimePass();
    m_stand.waitFor("the answer of a command", [this] { return !m_stand.hasPendingCommands(); });
    letFramesArrive();
}

void Schedule::triggerFrames()
{
    const QString command = QStringLiteral("Update_TriggerMode");
    const QString parameter = QStringLiteral("SP_TriggerMode");
    m_stand.set(command, parameter, 1);
    const int count = random(0, 15);
    for (int i = 0; i < count; ++i) {
        sondixsim::trigger(sensor);
        m_stand.advance(random(0.0001, 0.1));
    }
    m_stand.settle();
    m_stand.set(command, parameter, 0);
    letFramesArrive();
}

void Schedule::sendCommand()
{
    m_stand.post(random(0, 4) == 0 ? QStringLiteral("Get_Nonsense") : QStringLiteral("Get_Info"));
}

void Schedule::blockConsumer()
{
    const int rounds = random(1, 10);
    for (int i = 0; i < rounds; ++i) {
        letSomeTimePass();
        QThread::msleep(static_cast<unsigned long>(random(0, 5))); // no events are processed
    }
}

void Schedule::stopAndStart()
{
    m_stand.stop();
    m_stand.reader().setQueueLimit(random(0, 1) == 0 ? 100 : 1000000);
    m_stand.start();
}

void Schedule::stopInSlot()
{
    m_stand.inSlot([this] { m_stand.reader().stop(); });
    m_stand.waitFor("being stopped", [this] { return m_stand.reader().state() == SensorReader::Stopped; });
    m_stand.start();
}

void Schedule::restartInSlot()
{
    const int starts = m_stand.watch().starts();
    m_stand.inSlot([this] {
        m_stand.reader().stop();
        m_stand.reader().start();
    });
    m_stand.waitFor("being started again",
                    [this, starts] { return m_stand.watch().starts() > starts && m_stand.isRunning(); });
}

void Schedule::deleteInSlot()
{
    m_stand.inSlot([this] { m_stand.deleteReader(); });
    if (m_stand.failed())
        return;
    m_stand.newReader(randomInterval());
    m_stand.start();
}

std::chrono::milliseconds Schedule::randomInterval()
{
    return std::chrono::milliseconds(random(1, 5));
}

int Schedule::random(int low, int high)
{
    return low + static_cast<int>(m_random() % static_cast<quint64>(high - low + 1));
}

double Schedule::random(double low, double high)
{
    const double part = static_cast<double>(m_random() >> 11) * 0x1.0p-53;
    return low * std::pow(high / low, part);
}
