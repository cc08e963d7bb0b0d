// SPDX-License-Identifier: MIT
#include "searchloop.h"

#include "librarylog.h"
#include "progressbar.h"

#include <QEventLoop>
#include <QTimer>

using namespace SondixQt;
using namespace SondixApp;

SearchOutcome runSearch(const SearchRun::Plan &plan, Console &console, InterruptWatcher &interrupt,
                        const std::function<bool(const SensorInfo &)> &onFound, double seconds)
{
    SearchRun search(plan);
    search.setLogFile(LibraryLog::fileName());
    ProgressBar bar(console);
    QEventLoop loop;
    SearchOutcome outcome;
    bool wanted = true;

    QObject::connect(&search, &SearchRun::sensorFound, &loop, [&](const SensorInfo &info) {
        if (!wanted)
            return;
        wanted = onFound(info);
        // Queued: the finder is still processing this sensor.
        if (!wanted)
            QMetaObject::invokeMethod(&search, &SearchRun::stop, Qt::QueuedConnection);
    });
    QObject::connect(&search, &SearchRun::progressChanged, &loop,
                     [&bar](int percent) { bar.setPercent(percent); });
    QObject::connect(&search, &SearchRun::statusText, &loop, [&bar](const QString &text) { bar.setText(text); });
    QObject::connect(&search, &SearchRun::finished, &loop, [&](SearchRun::End end) {
        outcome.end = end;
        loop.quit();
    });
    QObject::connect(&interrupt, &InterruptWatcher::interrupted, &search, &SearchRun::stop);
    if (seconds > 0.0)
        QTimer::singleShot(static_cast<int>(seconds * 1000.0), &search, [&] {
            outcome.timedOut = true;
            search.stop();
        });
    QTimer::singleShot(0, &search, &SearchRun::start);
    loop.exec();
    outcome.problem = search.problem();
    return outcome;
}
