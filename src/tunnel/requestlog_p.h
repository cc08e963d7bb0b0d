// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <deque>
#include <map>

namespace SondixQt {

/// Logs a line for each request, such as "GET / 200, 1445 bytes in 23 ms", when its answer is completely written
/// or its client disconnects. The number of bytes is that of the body bytes written. Times are in milliseconds.
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
    /// The request of \a entry has been answered. writes() follows with the bytes, unless the client has
    /// disconnected.
    void answered(Client client, const Entry &entry, qint64 now);
    /// \a bytes are about to be written; they answer the request \a number, or none if it is 0.
    void writes(Client client, quint64 number, const QByteArray &bytes);
    /// All bytes except the last \a unsent have been written.
    void wrote(Client client, qint64 unsent, qint64 now);
    void left(Client client, qint64 now);

private:
    struct Line
    {
        Entry entry;
        qint64 begin = 0; ///< of the body, counted from the first byte of the connection
        qint64 size = -1; ///< of the body; -1: not known yet
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
