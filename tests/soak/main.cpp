// SPDX-License-Identifier: MIT
#include "schedule.h"
#include "week.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QLoggingCategory>

#include <cstdio>

static bool playSchedules(quint64 first, int count)
{
    constexpr int maxFailures = 10;
    int failures = 0;
    for (quint64 seed = first; seed < first + static_cast<quint64>(count) && failures < maxFailures; ++seed) {
        Schedule schedule(seed);
        if (schedule.play())
            continue;
        ++failures;
        for (const QString &line : schedule.report())
            std::printf("%s\n", qPrintable(line));
        std::fflush(stdout);
    }
    std::printf("%d schedules from seed %llu on, %d failed\n", count, static_cast<unsigned long long>(first),
                failures);
    return failures == 0;
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("SondixQt.*=false")); // faults are the rule
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Reads a simulated sensor to which much happens, and checks "
                                                    "that every frame is accounted for."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("kind"), QStringLiteral("week, schedules"));
    parser.addOptions({
        {QStringLiteral("seed"), QStringLiteral("The first seed (1)."), QStringLiteral("n"), QStringLiteral("1")},
        {QStringLiteral("count"), QStringLiteral("Schedules: how many."), QStringLiteral("n"),
         QStringLiteral("100")},
        {QStringLiteral("seconds"), QStringLiteral("Week: bench time (a week)."), QStringLiteral("s"),
         QStringLiteral("604800")},
        {QStringLiteral("pulls"), QStringLiteral("Week: how often the cable is pulled (10000)."),
         QStringLiteral("n"), QStringLiteral("10000")},
        {QStringLiteral("trace"), QStringLiteral("Print all events.")},
    });
    parser.process(application);
    ReaderWatch::trace(parser.isSet(QStringLiteral("trace")));
    const QString kind = parser.positionalArguments().value(0);
    const quint64 seed = parser.value(QStringLiteral("seed")).toULongLong();
    if (kind == QLatin1String("schedules"))
        return playSchedules(seed, parser.value(QStringLiteral("count")).toInt()) ? 0 : 1;
    if (kind == QLatin1String("week")) {
        WeekPlan plan;
        plan.seconds = parser.value(QStringLiteral("seconds")).toDouble();
        plan.pulls = parser.value(QStringLiteral("pulls")).toInt();
        plan.seed = seed;
        return playWeek(plan) ? 0 : 1;
    }
    parser.showHelp(2);
}
