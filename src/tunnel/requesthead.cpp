// SPDX-License-Identifier: MIT
#include "requesthead_p.h"

#include "httpstatus_p.h"
#include "tunnellimits_p.h"

#include <QHash>
#include <QList>

#include <algorithm>
#include <cstring>

namespace SondixQt {

namespace {

bool isControl(char byte)
{
    return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f;
}

bool isDigits(const QByteArray &text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isAlphanumeric(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// What methods and the names of headers are made of.
bool isToken(const QByteArray &text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](char c) {
        return isAlphanumeric(c) || (c != '\0' && std::strchr("!#$%&'*+-.^_`|~", c) != nullptr);
    });
}

/// Whether the four numbers of an address in 127.0.0.0/8 stand in \a host.
bool isLoopbackAddress(const QByteArray &host)
{
    const QList<QByteArray> numbers = host.split('.');
    return numbers.size() == 4 && numbers.first() == "127" &&
           std::all_of(numbers.begin(), numbers.end(), [](const QByteArray &number) {
               return isDigits(number) && number.size() <= 3 && number.toInt() <= 255;
           });
}

/// Whether \a host (of the Host header) is a name that only this computer can have: a foreign name that was made
/// to point here would be the page's own origin.
bool isThisComputer(QByteArray host)
{
    host = host.toLower();
    const int colon = host.startsWith('[') ? host.indexOf(':', host.indexOf(']')) : host.indexOf(':');
    if (colon >= 0) {
        const QByteArray port = host.mid(colon + 1);
        if (!port.isEmpty() && !isDigits(port))
            return false;
        host.truncate(colon);
    }
    if (host == "localhost" || host == "[::1]" || isLoopbackAddress(host))
        return true;
    constexpr int suffixLength = 10;
    return host.size() > suffixLength && host.endsWith(".localhost") &&
           std::all_of(host.begin(), host.end(), [](char c) { return isAlphanumeric(c) || c == '-' || c == '.'; });
}

using Headers = QHash<QByteArray, QByteArray>;

/// Whether the request may come from where it says it does.
bool isAllowedOrigin(RequestHead::Method method, const Headers &headers)
{
    const QByteArray site = headers.value("sec-fetch-site");
    if (method == RequestHead::Get) {
        const bool foreign = site == "cross-site" || site == "same-site";
        return !foreign ||
               (headers.value("sec-fetch-mode") == "navigate" && headers.value("sec-fetch-dest") == "document");
    }
    if (headers.contains("sec-fetch-site"))
        return site == "same-origin" || site == "none";
    return !headers.contains("origin") || headers.value("origin") == "http://" + headers.value("host");
}

/// The headers by their names in small letters, the lines of one together. False when a line is none, or when one
/// that decides something comes twice.
bool readHeaders(const QList<QByteArray> &lines, Headers &headers)
{
    static const QList<QByteArray> decisive = {"content-length", "host",           "origin",
                                               "sec-fetch-site", "sec-fetch-mode", "sec-fetch-dest"};
    for (int i = 1; i < lines.size(); ++i) {
        const int colon = lines[i].indexOf(':');
        const QByteArray name = lines[i].left(colon).toLower();
        if (colon < 0 || !isToken(name) || (headers.contains(name) && decisive.contains(name)))
            return false;
        QByteArray &value = headers[name];
        value += (value.isEmpty() ? "" : ", ") + lines[i].mid(colon + 1).trimmed();
    }
    return true;
}

int readContentLength(const Headers &headers, int &length)
{
    const auto announced = headers.constFind("content-length");
    if (announced == headers.constEnd())
        return 0;
    if (!isDigits(*announced))
        return HttpStatus::badRequest;
    bool fits = false;
    const int value = announced->toInt(&fits);
    if (!fits || value > TunnelLimits::body)
        return HttpStatus::contentTooLarge;
    length = value;
    return 0;
}

int refusalOf(RequestHead &request, const Headers &headers, bool hostSeen)
{
    if (headers.contains("transfer-encoding"))
        return HttpStatus::notImplemented;
    int length = -1;
    const int lengthRefusal = readContentLength(headers, length);
    if (lengthRefusal == HttpStatus::badRequest || (hostSeen && !request.hasHost))
        return HttpStatus::badRequest;
    if (request.hasHost && !isThisComputer(headers.value("host")))
        return HttpStatus::forbidden;
    if (!isAllowedOrigin(request.method, headers))
        return HttpStatus::forbidden;
    request.contentLength = length;
    return lengthRefusal;
}

QByteArray withoutQuotationMarks(QByteArray text)
{
    return text.replace("\"", "");
}

/// The lines of \a head; none when there are control bytes in it, a line end that is none included.
QList<QByteArray> splitLines(const QByteArray &head)
{
    QList<QByteArray> lines;
    int begin = 0;
    while (begin <= head.size()) {
        int end = head.indexOf("\r\n", begin);
        if (end < 0)
            end = head.size();
        const QByteArray line = head.mid(begin, end - begin);
        if (hasControl(line))
            return {};
        lines.append(line);
        begin = end + 2;
    }
    return lines;
}

} // namespace

bool hasControl(const QByteArray &bytes)
{
    return std::any_of(bytes.begin(), bytes.end(), isControl);
}

bool isRequestLine(const QByteArray &line)
{
    const QList<QByteArray> words = line.split(' ');
    return words.size() == 3 && isToken(words[0]) && !words[1].isEmpty() && !hasControl(words[1]) &&
           (words[2] == "HTTP/1.1" || words[2] == "HTTP/1.0");
}

RequestHead readRequestHead(const QByteArray &head, bool hostSeen)
{
    RequestHead request;
    QList<QByteArray> lines = splitLines(head);
    if (lines.isEmpty()) {
        request.refusal = HttpStatus::badRequest;
        return request;
    }
    // Of a head without a blank line the last line end may have come.
    while (lines.size() > 1 && lines.last().isEmpty())
        lines.removeLast();

    const QByteArray &line = lines.first();
    constexpr int getLength = 4;
    constexpr int postLength = 5;
    const bool isGet = qstrnicmp(line.constData(), "GET ", getLength) == 0;
    request.method = isGet                      ? RequestHead::Get
                     : line.startsWith("POST ") ? RequestHead::Post
                                                : RequestHead::Unserved;
    const QByteArray target = line.mid(isGet ? getLength : postLength);
    const auto *end = std::find_if(target.begin(), target.end(), [](char c) { return c == ' ' || c == '?'; });
    request.path = target.left(int(end - target.begin()));

    Headers headers;
    const bool readable = readHeaders(lines, headers);
    request.endsInsideHeaderName = lines.size() > 1 && !lines.last().contains(':');
    request.hasHost = headers.contains("host");
    request.fromBrowser = request.hasHost || headers.contains("origin") ||
                          std::any_of(headers.keyBegin(), headers.keyEnd(),
                                      [](const auto &name) { return name.startsWith("sec-"); });
    request.entityTag = withoutQuotationMarks(headers.value("if-none-match"));
    const QByteArray connection = headers.value("connection").toLower();
    request.closesConnection =
        connection.contains("close") || (line.endsWith(" HTTP/1.0") && !connection.contains("keep-alive"));
    request.refusal = readable ? refusalOf(request, headers, hostSeen) : HttpStatus::badRequest;
    return request;
}

} // namespace SondixQt
