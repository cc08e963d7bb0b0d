// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <deque>
#include <map>

namespace SondixQt {

/// Writes a line for each request, such as "GET / 200, 1445 bytes in 23 ms", when the last byte of its answer is
/// written, or when its client has left: the bytes are those of the body that were written. Times are milliseconds.
class RequestLog
{
public:
    using Client = const void *;

    struct Entry
    {
        quint64 number = 0; ///< of the request
        QByteArray method;
        QByteArray path;
        int status = 0;
        QString problem; ///< why it failed
        qint64 begun = 0;
    };

    void connected(Client client);
    /// The request of \a entry has been answered; the answer's bytes follow, unless its client has left.
    void answered(Client client, const Entry &entry, qint64 now);
    /// \a bytes are about to be written, which answer the request \a number, or 0.
    void writes(Client client, quint64 number, const QByteArray &bytes);
    /// All bytes but \a unsent are written.
    void wrote(Client client, qint64 unsent, qint64 now);
    void left(Client client, qint64 now);

private:
    struct Line
    {
        Entry entry;
        qint64 begin = 0; ///< of the body, counted from the first byte that was ever written
        qint64 size = -1; ///< of the body, -1: not known yet
    };
    struct Output
    {
        qint64 total = 0;
        qint64 written = 0;
        std::deque<Line> lines;
    };

    static void print(const Line &line, qint64 written, qint64 now);

    std::map<Client, Output> outputs;
};

} // namespace SondixQt
