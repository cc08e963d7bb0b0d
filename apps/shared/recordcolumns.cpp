// SPDX-License-Identifier: MIT
#include "recordcolumns.h"

#include <QSet>

using namespace SondixQt;

namespace SondixApp {

namespace {

QString titled(const QString &name, const QString &unit)
{
    return unit.isEmpty() ? name : QStringLiteral("%1 [%2]").arg(name, unit);
}

void add(QStringList &names, QSet<QString> &used, const QString &name)
{
    QString unique = name;
    for (int number = 2; used.contains(unique); ++number)
        unique = QStringLiteral("%1 (%2)").arg(name).arg(number);
    used += unique;
    names += unique;
}

} // namespace

QStringList RecordColumns::names() const
{
    QStringList names;
    QSet<QString> used;
    if (run)
        add(names, used, QStringLiteral("run"));
    if (number)
        add(names, used, QStringLiteral("frame"));
    add(names, used, QStringLiteral("time [s]"));
    for (const SignalInfo &info : frame.signalList()) {
        if (scaled)
            add(names, used, titled(info.scaledName, info.scaledUnit));
        if (raw)
            add(names, used, titled(info.rawName + QStringLiteral(" raw"), info.rawUnit));
    }
    return names;
}

} // namespace SondixApp
