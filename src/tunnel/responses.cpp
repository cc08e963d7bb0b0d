// SPDX-License-Identifier: MIT
#include "responses_p.h"

#include "httpstatus_p.h"
#include "sondix/latin1literal_p.h"

#include <algorithm>
#include <iterator>

namespace SondixQt {

namespace {

struct Refusal
{
    int status;
    QLatin1String name;
    QLatin1String reason;
};

constexpr Refusal refusals[] = {
    // clang-format off
    {HttpStatus::badRequest,           "Bad Request"_latin1,                      "The request cannot be understood."_latin1},
    {HttpStatus::forbidden,            "Forbidden"_latin1,                        "The sensor's pages serve requests of their own and of this computer only."_latin1},
    {HttpStatus::requestTimeout,       "Request Timeout"_latin1,                  "The rest of the request did not come."_latin1},
    {HttpStatus::lengthRequired,       "Length Required"_latin1,                  "Announce the length of the body with Content-Length."_latin1},
    {HttpStatus::contentTooLarge,      "Content Too Large"_latin1,                "A command has at most 1 MiB."_latin1},
    {HttpStatus::uriTooLong,           "URI Too Long"_latin1,                     "The first line of a request has at most 8 KiB."_latin1},
    {HttpStatus::headerFieldsTooLarge, "Request Header Fields Too Large"_latin1,  "The head of a request has at most 32 KiB."_latin1},
    {HttpStatus::notImplemented,       "Not Implemented"_latin1,                  "Announce the length of the body: it cannot be sent in requests."_latin1},
    {HttpStatus::serviceUnavailable,   "Service Unavailable"_latin1,              "Too many connections are open."_latin1},
    // clang-format on
};

const QByteArray headEnd = QByteArrayLiteral("\r\n\r\n");

QByteArray page(const QString &title, const QString &htmlText)
{
    // The icon is inside the page: otherwise the browser would ask the sensor for one.
    return QStringLiteral(
               "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><link rel=\"icon\" href=\"data:,\">"
               "<title>%1</title></head>\n"
               "<body><h1>%1</h1><p>%2</p></body></html>\n")
        .arg(title, htmlText)
        .toUtf8();
}

QByteArray composed(int status, QLatin1String name, const char *connection, const QByteArray &body)
{
    return "HTTP/1.1 " + QByteArray::number(status) + ' ' + QByteArray(name.data(), name.size()) +
           "\r\nConnection: " + connection +
           "\r\nContent-Type: text/html\r\nContent-Length: " + QByteArray::number(body.size()) + headEnd + body;
}

bool isNotModified(const QByteArray &header)
{
    return header.startsWith("HTTP/1.") && header.mid(header.indexOf(' ') + 1).startsWith("304");
}

/// The line at \a begin with its line end. Like browsers, it accepts a bare "\n" as one.
QByteArray line(const QByteArray &text, int begin)
{
    const int end = text.indexOf('\n', begin);
    return text.mid(begin, end < 0 ? -1 : end + 1 - begin);
}

/// \a header without CORS fields, which would let pages of other origins read the answer.
QByteArray withoutSharing(const QByteArray &header)
{
    if (!header.toLower().contains("\naccess-control-"))
        return header;
    QByteArray shown;
    for (int begin = 0; begin < header.size();) {
        const QByteArray next = line(header, begin);
        if (!next.toLower().startsWith("access-control-"))
            shown += next;
        begin += next.size();
    }
    return shown;
}

} // namespace

QByteArray sensorResponse(const QByteArray &header, const QByteArray &body)
{
    if (header.isEmpty())
        return commandResponse(body);
    QByteArray response = withoutSharing(header);
    const bool noBody = isNotModified(header);
    response.reserve(response.size() + int(headEnd.size()) + (noBody ? 0 : int(body.size())));
    if (!response.endsWith("\n\r\n") && !response.endsWith("\n\n"))
        response += response.endsWith('\n') ? "\r\n" : "\r\n\r\n";
    return noBody ? response : response += body;
}

bool isDelimited(const QByteArray &header, const QByteArray &body)
{
    if (header.isEmpty() || isNotModified(header))
        return true;
    constexpr char name[] = "\ncontent-length:";
    const QByteArray small = header.toLower();
    const int begin = small.indexOf(name);
    if (begin < 0 || small.indexOf(name, begin + 1) >= 0 || small.contains("\ntransfer-encoding:"))
        return false;
    return line(small, begin + 1).mid(int(sizeof name) - 2).trimmed() == QByteArray::number(body.size());
}

bool announcesEnd(const QByteArray &header)
{
    constexpr char name[] = "\nconnection:";
    const QByteArray small = header.toLower();
    const int begin = small.indexOf(name);
    return begin >= 0 && line(small, begin + 1).contains("close");
}

QByteArray commandResponse(const QByteArray &answer)
{
    return composed(HttpStatus::ok, "OK"_latin1, "keep-alive", answer);
}

QByteArray badGatewayResponse(const QByteArray &path, const QByteArray &errorText)
{
    const QString text =
        QStringLiteral("The requested URL <code>%1</code> could not be fetched from the sensor: %2")
            .arg(QString::fromLatin1(path).toHtmlEscaped(), QString::fromLatin1(errorText).toHtmlEscaped());
    return composed(HttpStatus::badGateway, "Bad Gateway"_latin1, "keep-alive",
                    page(QStringLiteral("502 Bad Gateway"), text));
}

QByteArray otherMethodResponse(bool withBody)
{
    const QByteArray response =
        composed(HttpStatus::notImplemented, "Not Implemented"_latin1, "keep-alive",
                 page(QStringLiteral("501 Not Implemented"), QStringLiteral("Unknown HTTP request")));
    return withBody ? response : response.left(response.indexOf(headEnd) + headEnd.size());
}

QByteArray continueResponse()
{
    return "HTTP/1.1 100 Continue" + headEnd;
}

QByteArray refusalResponse(int status)
{
    const auto *refusal = std::find_if(std::begin(refusals), std::end(refusals),
                                       [&](const Refusal &row) { return row.status == status; });
    Q_ASSERT(refusal != std::end(refusals));
    return composed(status, refusal->name, "close",
                    page(QStringLiteral("%1 %2").arg(QString::number(status), refusal->name), refusal->reason));
}

} // namespace SondixQt
