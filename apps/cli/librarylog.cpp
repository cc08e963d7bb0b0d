// SPDX-License-Identifier: MIT
#include "librarylog.h"

#include "console.h"

#include <QFile>

using namespace SondixQt;

namespace {

constexpr int showInterval = 200;

} // namespace

LibraryLog *LibraryLog::current = nullptr;

LibraryLog::LibraryLog()
{
    current = this;
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, &LibraryLog::show);
    m_timer.start(showInterval);
}

LibraryLog::~LibraryLog()
{
    show();
    current = nullptr;
}

QString LibraryLog::fileName()
{
    return current && current->m_dir.isValid() ? current->m_dir.filePath(QStringLiteral("sondix.log")) : QString();
}

void LibraryLog::attach(SensorInstance &instance)
{
    const QString file = fileName();
    if (file.isEmpty())
        return;
    constexpr bool append = true;
    constexpr bool writeThrough = true;
    QString text;
    if (instance.enableLogging(file, SensorInstance::LogAllLevels, SensorInstance::LogAllTypes, append,
                               writeThrough, 0, &text) != NoError)
        Console::toStderr(
            QStringLiteral("the sensor-access library cannot write its log: %1\n").arg(text).toUtf8());
}

void LibraryLog::show()
{
    if (!current)
        return;
    QFile file(fileName());
    if (!file.open(QIODevice::ReadOnly) || !file.seek(current->m_shown))
        return;
    QByteArray lines = file.readAll();
    lines.truncate(lines.lastIndexOf('\n') + 1);
    if (lines.isEmpty())
        return;
    current->m_shown += lines.size();
    Console::toStderr(lines);
}
