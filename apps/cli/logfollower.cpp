// SPDX-License-Identifier: MIT
#include "logfollower.h"

#include <QFile>

#include <utility>

namespace {

constexpr qint64 headSize = 256; // contains at least one line, which begins with the time of a call

} // namespace

LogFollower::LogFollower(QString file, QString oldFile, Begin begin)
    : m_file(std::move(file))
    , m_oldFile(std::move(oldFile))
{
    QFile log(m_file);
    if (log.open(QIODevice::ReadOnly)) {
        m_place.head = log.read(headSize);
        m_place.position = begin == Begin::AtEnd ? log.size() : 0;
    }
    QFile old(m_oldFile);
    if (old.open(QIODevice::ReadOnly)) {
        m_before.head = old.read(headSize);
        m_before.position = begin == Begin::AtEnd ? old.size() : 0;
    }
}

LogFollower::Found LogFollower::readFrom(const QString &file, Place &place, const Write &write, bool &isWritten)
{
    QFile log(file);
    if (!log.open(QIODevice::ReadOnly))
        return Found::Nothing;
    const QByteArray head = log.read(headSize);
    if (!head.startsWith(place.head))
        return Found::OtherLog;
    place.head = head;
    log.seek(place.position);
    constexpr qint64 piece = 1 << 16;
    while (isWritten) {
        const QByteArray bytes = log.read(piece);
        if (bytes.isEmpty())
            break;
        isWritten = write(bytes);
        place.position += bytes.size();
    }
    return Found::ThisLog;
}

bool LogFollower::readNew(const Write &write)
{
    bool isWritten = true;
    if (!m_before.head.isEmpty())
        readFrom(m_oldFile, m_before, write, isWritten);
    if (readFrom(m_file, m_place, write, isWritten) != Found::OtherLog || !isWritten)
        return isWritten;
    // First the rest of the log that was renamed.
    m_before = std::exchange(m_place, {});
    m_missed = readFrom(m_oldFile, m_before, write, isWritten) != Found::ThisLog || m_missed;
    if (isWritten)
        readFrom(m_file, m_place, write, isWritten);
    return isWritten;
}

bool LogFollower::takeMissed()
{
    return std::exchange(m_missed, false);
}
