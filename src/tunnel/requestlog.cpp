// SPDX-License-Identifier: MIT
#include "requestlog_p.h"

#include "tunnellog_p.h"

#include <algorithm>

namespace SondixQt {

namespace {

/// \a path with all bytes except printable ASCII percent-encoded, so that it cannot fake other log output.
QString printable(const QByteArray &path)
{
    QByteArray shown;
    for (const char byte : path) {
        if (byte > ' ' && byte < '\x7f')
            shown += byte;
        else
            shown += '%' + QByteArray(1, byte).toHex().toUpper();
    }
    return QString::fromLatin1(shown);
}

int headSize(const QByteArray &response)
{
    const int end = response.indexOf("\r\n\r\n");
    const int bareEnd = response.indexOf("\n\n"); // the lines of a sensor's head may end in a bare "\n"
    return bareEnd >= 0 && (end < 0 || bareEnd < end) ? bareEnd + 2 : end + 4;
}

} // namespace

void RequestLog::connected(Client client)
{
    outputs[client] = Output();
}

void RequestLog::answered(Client client, const Entry &entry, qint64 now)
{
    if (!tunnelRequestLog().isInfoEnabled())
        return;
    const auto found = outputs.find(client);
    if (found != outputs.end())
        found->second.lines.push_back({entry});
    else
        print({entry}, 0, now);
}

void RequestLog::writes(Client client, quint64 number, const QByteArray &bytes)
{
    const auto found = outputs.find(client);
    if (found == outputs.end())
        return;
    Output &output = found->second;
    for (Line &line : output.lines) {
        if (number != 0 && line.entry.number == number) {
            line.begin = output.total + headSize(bytes);
            line.size = bytes.size() - headSize(bytes);
        }
    }
    output.total += bytes.size();
}

void RequestLog::wrote(Client client, qint64 unsent, qint64 now)
{
    const auto found = outputs.find(client);
    if (found == outputs.end())
        return;
    Output &output = found->second;
    output.written = output.total - unsent;
    while (!output.lines.empty()) {
        const Line &line = output.lines.front();
        if (line.size < 0 || line.begin + line.size > output.written)
            return;
        print(line, line.size, now);
        output.lines.pop_front();
    }
}

void RequestLog::left(Client client, qint64 now)
{
    const auto found = outputs.find(client);
    if (found == outputs.end())
        return;
    for (const Line &line : found->second.lines)
        print(line, std::clamp<qint64>(found->second.written - line.begin, 0, std::max<qint64>(0, line.size)),
              now);
    outputs.erase(found);
}

void RequestLog::print(const Line &line, qint64 written, qint64 now)
{
    const bool isWhole = line.size == written;
    QString result = line.entry.problem.simplified();
    if (result.isEmpty())
        result = isWhole || line.size < 0 ? QStringLiteral("%1 bytes").arg(written)
                                          : QStringLiteral("%1 of %2 bytes").arg(written).arg(line.size);
    qCInfo(tunnelRequestLog).noquote() << QStringLiteral("%1 %2 %3, %4 in %5 ms%6")
                                              .arg(QString::fromLatin1(line.entry.method),
                                                   printable(line.entry.path), QString::number(line.entry.status),
                                                   result, QString::number(now - line.entry.begun),
                                                   isWhole ? QString() : QStringLiteral(", the client has left"));
}

} // namespace SondixQt
