// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/sensorfinder.h>
#include <SondixSimulator/control.h>

#include <QTest>

#include <optional>
#include <vector>

/// A search with scripted answers: a test defines what the sensor-access library reports at each tick of the
/// finder.
namespace scriptedsearch {

constexpr int refused = -5;
constexpr int waitLimit = 60000;

/// The answers that the finder gets in one tick.
struct Tick
{
    QByteArray progress;
    int found = 0;
};

inline void answerCommand(const char *command, const QByteArray &answer, int from = 1, int times = -1,
                          std::optional<SondixQt::SensorType> type = std::nullopt)
{
    sondixsim::Fault fault;
    fault.command = command;
    fault.answer = answer.toStdString();
    fault.from = from;
    fault.times = times;
    if (type)
        fault.sensorType = *type % 10000;
    sondixsim::inject(fault);
}

/// The finder reads the progress twice per tick: with the number of results, and again after it has read them.
/// The last tick is repeated until the search ends.
inline void answerProgress(const std::vector<Tick> &ticks, std::optional<SondixQt::SensorType> type = std::nullopt)
{
    for (std::size_t i = 0; i < ticks.size(); ++i) {
        const bool isLast = i + 1 == ticks.size();
        const QByteArray answer =
            "IA_Found=" + QByteArray::number(ticks[i].found) + " IA_Progress=" + ticks[i].progress;
        answerCommand("Get_FindSensorProgress", answer, int(2 * i + 1), isLast ? -1 : 2, type);
    }
}

/// The results in the order in which they are read; the last one is repeated.
inline void answerResults(const std::vector<QByteArray> &answers)
{
    for (std::size_t i = 0; i < answers.size(); ++i) {
        const bool isLast = i + 1 == answers.size();
        answerCommand("Get_FoundSensor", answers[i], int(i + 1), isLast ? -1 : 1);
    }
}

/// Every search is complete at the first tick and has the results \a answers.
inline void findAtOnce(const std::vector<QByteArray> &answers)
{
    answerProgress({{"100.0", int(answers.size())}});
    answerResults(answers);
}

inline int refuseCommand(const char *command, int from = 1, int times = -1)
{
    sondixsim::Fault fault;
    fault.command = command;
    fault.code = refused;
    fault.text = "refused by the test";
    fault.from = from;
    fault.times = times;
    return sondixsim::inject(fault);
}

inline void refuseToCreate(SondixQt::SensorType type)
{
    sondixsim::Fault fault;
    fault.function = "CreateSensorInstance";
    fault.sensorType = type % 10000;
    fault.code = refused;
    sondixsim::inject(fault);
}

/// Clears all faults and starts recording calls.
inline void begin()
{
    sondixsim::loadBuiltInBench();
    sondixsim::recordCalls(true);
    sondixsim::clearCalls();
}

/// All calls in order, as text.
inline QStringList callTexts()
{
    QStringList texts;
    for (const sondixsim::Call &call : sondixsim::calls())
        texts << QString::fromStdString(call.text());
    return texts;
}

/// The commands in the order in which they were sent.
inline QStringList sentCommands()
{
    const QString prefix = "SetParameterString(\"S_Command\", \"";
    QStringList commands;
    for (const QString &text : callTexts().filter(prefix))
        commands << text.mid(prefix.size()).chopped(2);
    return commands;
}

/// The parameters that were staged for each "Start_FindSensor": "key=value", strings in double quotes.
inline QList<QStringList> stagedForStart()
{
    QList<QStringList> searches;
    QStringList staged;
    for (const QString &text : callTexts()) {
        if (text.startsWith("SensorCommand")) {
            staged.clear();
        } else if (text == "SetParameterString(\"S_Command\", \"Start_FindSensor\")") {
            searches << staged;
        } else if (text.startsWith("SetParameter")) {
            QString assignment = text.section('(', 1).chopped(1);
            assignment.replace("\", ", "=");
            staged << assignment.mid(1);
        }
    }
    return searches;
}

/// The types for which a search was started, in order.
inline QList<int> searchedTypes()
{
    const QString key = "IP_SensorType=";
    QList<int> types;
    for (const QStringList &staged : stagedForStart())
        types << staged.filter(key).value(0).mid(key.size()).toInt();
    return types;
}

/// Records the signals of a finder as lines of text, errorOccurred() only if asked for.
class Recorder : public QObject
{
public:
    enum Errors { WithoutErrors, WithErrors };

    explicit Recorder(const SondixQt::SensorFinder &finder, Errors errors = WithoutErrors)
    {
        using SondixQt::SensorFinder;
        connect(&finder, &SensorFinder::searchStarted, this, [this] { add("started"); });
        connect(&finder, &SensorFinder::searchFinished, this, [this] { add("finished"); });
        connect(&finder, &SensorFinder::showNothingFoundMsg, this, [this] { add("nothing"); });
        connect(&finder, &SensorFinder::progressChanged, this,
                [this](int progress) { add(QStringLiteral("progress %1").arg(progress)); });
        connect(&finder, &SensorFinder::statusChanged, this,
                [this](SensorFinder::Status status) { add(QStringLiteral("status %1").arg(int(status))); });
        connect(&finder, &SensorFinder::updateSensorFinderStatus, this,
                [this](const QString &text) { add("text " + text); });
        connect(&finder, &SensorFinder::sensorFound, this, [this](const SondixQt::SensorInfo &info) {
            found << info;
            add("found " + info.getParameter("SA_SerialNumber").toString());
        });
        if (errors == WithErrors)
            connect(&finder, &SensorFinder::errorOccurred, this,
                    [this](SondixQt::ErrorCode code) { add(QStringLiteral("error %1").arg(code)); });
    }

    /// Waits until the signal recorded as \a line was emitted \a times times.
    bool waitFor(const QString &line, int times = 1)
    {
        return QTest::qWaitFor([&] { return lines.count(line) >= times; }, waitLimit);
    }

    bool waitForEnd(int times = 1) { return waitFor("finished", times); }

    /// The lines that begin with \a word.
    QStringList linesOf(const char *word) const
    {
        QStringList selected;
        for (const QString &line : lines) {
            if (line.startsWith(QLatin1String(word)))
                selected << line;
        }
        return selected;
    }

    void clear()
    {
        lines.clear();
        found.clear();
    }

    QStringList lines;
    QList<SondixQt::SensorInfo> found;

private:
    void add(const QString &line) { lines << line; }
};

/// Whether no function of the C interface is called for the duration of two ticks.
inline bool isQuiet()
{
    constexpr int twoTicks = 600;
    const auto before = sondixsim::calls().size();
    QTest::qWait(twoTicks);
    return sondixsim::calls().size() == before;
}

} // namespace scriptedsearch
