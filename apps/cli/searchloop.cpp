// SPDX-License-Identifier: MIT
#include "searchloop.h"

#include "librarylog.h"
#include "progressbar.h"

#include <SondixQt/sensoraddress.h>

#include <QEventLoop>
#include <QSet>
#include <QTimer>

using namespace SondixQt;

namespace {

void setOptions(SensorFinder &finder, const SearchRequest &request)
{
    finder.setSearchInterface(SensorInterfaces(~0), false);
    finder.setSearchInterface(request.interfaces, true);
    finder.setSearchBaudrates(request.baudrates);
    finder.setSearchSimilarSensors(request.similar);
    finder.setQuickScanRS485(request.quick);
    if (!LibraryLog::fileName().isEmpty())
        finder.enableLogging(LibraryLog::fileName());
}

QList<SensorType> typesOf(SensorGroup group)
{
    const QList<SensorType> types = sensorsInGroup(group, true);
    return group == AllGroups ? types + QList<SensorType>{MultiSensor} : types;
}

void start(SensorFinder &finder, const SearchRequest &request)
{
    if (request.type != NoSensor)
        finder.startSearch(request.type);
    else if (request.thorough)
        finder.startSearch(typesOf(request.group), true);
    else
        finder.startFullSearch(request.interfaces, request.group);
}

// A full search reports exactly the sensors asked for. The others scan more interfaces and may find a sensor several
// times.
class Filter
{
public:
    explicit Filter(const SearchRequest &request)
        : m_interfaces(request.interfaces)
    {
        if (request.thorough && !request.similar)
            m_types = typesOf(request.group);
    }

    bool accepts(const SensorInfo &info)
    {
        if (!m_interfaces.testFlag(info.interfaceType()) ||
            (!m_types.isEmpty() && !m_types.contains(info.sensorType())))
            return false;
        const QString sensor = SensorAddress::of(info).toString() + QLatin1Char(' ') +
                               info.getParameter(InterfaceParameter::SerialNumber).toString();
        const bool isNew = !m_known.contains(sensor);
        m_known.insert(sensor);
        return isNew;
    }

private:
    SensorInterfaces m_interfaces;
    QList<SensorType> m_types;
    QSet<QString> m_known;
};

} // namespace

SearchOutcome runSearch(const SearchRequest &request, Console &console, InterruptWatcher &interrupt,
                        const std::function<bool(const SensorInfo &)> &onFound,
                        std::chrono::milliseconds timeLimit)
{
    SensorFinder finder;
    setOptions(finder, request);
    finder.setTimeLimit(timeLimit);
    Filter filter(request);
    ProgressBar bar(console);
    QEventLoop loop;
    SearchOutcome outcome;
    bool wanted = true;
    bool anyFound = false;
    bool finished = false;

    QObject::connect(&finder, &SensorFinder::sensorFound, &loop, [&](const SensorInfo &info) {
        if (!wanted || !filter.accepts(info))
            return;
        anyFound = true;
        wanted = onFound(info);
        if (!wanted)
            finder.stopSearch();
    });
    QObject::connect(&finder, &SensorFinder::progressChanged, &loop,
                     [&bar](int percent) { bar.setPercent(percent); });
    QObject::connect(&finder, &SensorFinder::updateSensorFinderStatus, &loop,
                     [&bar](const QString &text) { bar.setText(text); });
    QObject::connect(&finder, &SensorFinder::errorOccurred, &loop, [&](ErrorCode code, const QString &text) {
        const bool isSearching = finder.status() == SensorFinder::Searching;
        if (isSearching && code != TimeLimitError && code != SkippedError) {
            console.note(text); // at once: the search may never end
            return;
        }
        if (code == TimeLimitError)
            outcome.end = SearchOutcome::TimedOut;
        outcome.problem = text;
        if (!isSearching)
            loop.quit();
    });
    QObject::connect(&finder, &SensorFinder::searchFinished, &loop, [&] {
        finished = true;
        loop.quit();
    });
    QObject::connect(&interrupt, &InterruptWatcher::interrupted, &finder, &SensorFinder::stopSearch);
    QTimer::singleShot(0, &finder, [&] { start(finder, request); });
    loop.exec();
    const bool isSkipped = finder.error() == SkippedError && !anyFound;
    if (!finished || isSkipped)
        outcome.end = SearchOutcome::Refused;
    return outcome;
}
