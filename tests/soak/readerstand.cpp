// SPDX-License-Identifier: MIT
#include "readerstand.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>

using namespace SondixQt;
using namespace std::chrono_literals;

ReaderStand::ReaderStand(const soakbench::Setup &setup, ReaderWatch::Accuracy accuracy)
    : m_setup(setup)
    , m_accuracy(accuracy)
{
    soakbench::load(setup);
}

ReaderStand::~ReaderStand()
{
    sondixsim::clearFaults();
    sondixsim::releaseHangs();
}

QStringList ReaderStand::problems() const
{
    return m_watch ? m_problems + m_watch->problems() : m_problems;
}

void ReaderStand::newReader(std::chrono::milliseconds interval)
{
    m_fetchedBefore = sondixsim::totalFrameCounts(soakbench::serialNumber).fetched;
    m_reader = std::make_unique<SensorReader>(soakbench::address());
    m_reader->setDeliveryInterval(interval);
    m_reader->setReconnect(quickReconnect());
    m_watch = std::make_unique<ReaderWatch>(*m_reader, m_setup, m_accuracy);
}

Reconnect ReaderStand::quickReconnect()
{
    Reconnect reconnect;
    reconnect.first = 1ms;
    reconnect.longest = 4ms;
    return reconnect;
}

void ReaderStand::deleteReader()
{
    m_problems += m_watch->problems();
    m_reader.reset();
    m_watch.reset();
    m_pendingCommands = 0;
}

void ReaderStand::start()
{
    m_reader->start();
    waitFor("reading", [this] { return isRunning(); });
}

void ReaderStand::stop()
{
    m_reader->stop();
    waitFor("being stopped", [this] { return m_reader->state() == SensorReader::Stopped; });
}

bool ReaderStand::isRunning() const
{
    return m_reader->state() == SensorReader::Reading || m_reader->state() == SensorReader::WaitingForTrigger;
}

qint64 ReaderStand::fetched() const
{
    return static_cast<qint64>(sondixsim::totalFrameCounts(soakbench::serialNumber).fetched - m_fetchedBefore);
}

void ReaderStand::settle()
{
    const auto isSettled = [this] {
        return isRunning() && sondixsim::frameCounts(soakbench::serialNumber).waiting == 0 &&
               fetched() == m_watch->delivered() + m_watch->told(DataGap::ConsumerOverrun);
    };
    if (failed() || waitFor("the delivery of all frames", isSettled))
        return;
    problem(QStringLiteral(
                "%1 frames wait in the sensor-access library, %2 were fetched, %3 delivered, %4 reported as "
                "lost by the consumer")
                .arg(sondixsim::frameCounts(soakbench::serialNumber).waiting)
                .arg(fetched())
                .arg(m_watch->delivered())
                .arg(m_watch->told(DataGap::ConsumerOverrun)));
}

void ReaderStand::finish()
{
    settle();
    // A loss within a block is noticed by the time of the next one, so two more blocks are read.
    for (int i = 0; i < 2 && !failed(); ++i) {
        advanceFrames(3.0);
        settle();
    }
    if (!failed()) {
        m_watch->checkBalance();
        m_watch->checkTotals(*m_reader);
    }
    stop();
    if (m_pendingCommands != 0)
        problem(QStringLiteral("%1 commands were not answered").arg(m_pendingCommands));
}

void ReaderStand::set(const QString &command, const QString &parameter, const QVariant &value,
                      const std::function<void()> &meanwhile)
{
    const auto answered = std::make_shared<bool>(false);
    const auto callback = [this, answered, command](const CommandResult &result) {
        *answered = true;
        if (result.code < 0)
            problem(QStringLiteral("%1 failed: %2").arg(command, result.errorText));
    };
    m_watch->expectChange();
    m_reader->addSetting(command, {{parameter, value}}, m_reader.get(), callback);
    if (meanwhile)
        meanwhile();
    waitFor("the answer of a setting", [answered] { return *answered; });
    m_watch->expectChange(); // blocks from before it have been delivered meanwhile
}

void ReaderStand::setRate(double hertz)
{
    m_setup.rate = hertz;
    set(QStringLiteral("Set_Samplerate"), QStringLiteral("SP_Measrate"), hertz / 1000.0);
}

void ReaderStand::post(const QString &command)
{
    ++m_pendingCommands;
    const bool onlyReads = command.startsWith(QLatin1String("Get_"));
    m_reader->post(command, {}, m_reader.get(), [this, onlyReads](const CommandResult &) {
        --m_pendingCommands;
        if (!onlyReads)
            m_watch->expectChange();
    });
}

void ReaderStand::pullCable(double seconds, End end)
{
    const int before = m_watch->openings();
    sondixsim::unplug(soakbench::serialNumber);
    waitFor("the loss of the sensor", [&] { return m_watch->openings() > before; });
    advance(seconds);
    sondixsim::plug(soakbench::serialNumber);
    waitFor("reading again",
            [this, end] { return isRunning() || (end == MayFail && m_reader->state() == SensorReader::Failed); });
}

void ReaderStand::inSlot(const std::function<void()> &slot)
{
    const auto called = std::make_shared<bool>(false);
    const auto connection = std::make_shared<QMetaObject::Connection>();
    *connection =
        QObject::connect(m_reader.get(), &SensorReader::blockReady, m_reader.get(), [called, connection, slot] {
            QObject::disconnect(*connection);
            *called = true;
            slot();
        });
    waitFor("a block", [&] {
        if (!*called)
            advanceFrames(2.0);
        return *called;
    });
}

bool ReaderStand::waitFor(const char *what, const std::function<bool()> &condition)
{
    const QDeadlineTimer deadline(20s);
    while (!condition()) {
        if (failed())
            return false;
        if (deadline.hasExpired()) {
            problem(QStringLiteral("waited in vain for %1: state %2, error %3 %4")
                        .arg(QLatin1String(what), QVariant::fromValue(m_reader->state()).toString())
                        .arg(m_reader->error())
                        .arg(m_reader->errorString()));
            return false;
        }
        // A call that is hit by a hang may begin to hang after the fault was removed.
        sondixsim::releaseHangs();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::usleep(50);
    }
    return true;
}
