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

/// \a text up to the first character that is in \a ends, or all of it.
QByteArray upTo(const QByteArray &text, const char *ends)
{
    return text.left(int(std::strcspn(text.constData(), ends)));
}

bool isDigits(const QByteArray &text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isAlphanumeric(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// Whether \a host is an address in 127.0.0.0/8.
bool isLoopbackAddress(const QByteArray &host)
{
    const QList<QByteArray> numbers = host.split('.');
    return numbers.size() == 4 && numbers.first() == "127" &&
           std::all_of(numbers.begin(), numbers.end(), [](const QByteArray &number) {
               return isDigits(number) && number.size() <= 3 && number.toInt() <= 255;
           });
}

/// Whether \a host, the value of a Host field, always means this computer. Any other name could be made to
/// resolve to the loopback address (DNS rebinding), and pages under that name would then have the same origin.
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

/// Whether the request is allowed from its origin, which Sec-Fetch-Site or Origin contains.
bool isAllowedOrigin(RequestHead::Method method, const Headers &headers)
{
    if (!headers.contains("sec-fetch-site"))
        return !headers.contains("origin") || headers.value("origin") == "http://" + headers.value("host");
    const QByteArray site = headers.value("sec-fetch-site");
    if (method != RequestHead::Get)
        return site == "same-origin" || site == "none";
    const bool foreign = site == "cross-site" || site == "same-site";
    return !foreign ||
           (headers.value("sec-fetch-mode") == "navigate" && headers.value("sec-fetch-dest") == "document");
}

/// Whether a GET opens a WebSocket or fetches a page in advance.
bool isWebSocketOrPrefetch(const Headers &headers)
{
    return headers.contains("upgrade") || headers.value("sec-purpose").toLower().contains("prefetch");
}

/// Parses the header fields by lower-case name; repeated ones are joined with ", ". False for a malformed line or
/// a repeated security-relevant field.
bool readHeaders(const QList<QByteArray> &lines, Headers &headers)
{
    static const QList<QByteArray> unique = {"content-length", "host",           "origin",
                                             "sec-fetch-site", "sec-fetch-mode", "sec-fetch-dest"};
    for (int i = 1; i < lines.size(); ++i) {
        const int colon = lines[i].indexOf(':');
        const QByteArray name = lines[i].left(colon).toLower();
        if (colon < 0 || !isToken(name) || (headers.contains(name) && unique.contains(name)))
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

int refusalOf(RequestHead &request, const Headers &headers, bool isOwnTarget, bool hostSeen)
{
    if (headers.contains("transfer-encoding"))
        return HttpStatus::notImplemented;
    int length = -1;
    const int lengthRefusal = readContentLength(headers, length);
    if (lengthRefusal == HttpStatus::badRequest || (hostSeen && !request.hasHost))
        return HttpStatus::badRequest;
    if (!isOwnTarget || (request.hasHost && !isThisComputer(headers.value("host"))))
        return HttpStatus::forbidden;
    if (!isAllowedOrigin(request.method, headers) ||
        (request.method == RequestHead::Get && isWebSocketOrPrefetch(headers)))
        return HttpStatus::forbidden;
    // Only a raw client may leave the length out: its body ends with a pause.
    if (request.method == RequestHead::Post && length < 0 && lengthRefusal == 0 && request.fromBrowser)
        return HttpStatus::lengthRequired;
    request.contentLength = length;
    return lengthRefusal;
}

/// Reduces an absolute-form target, "http://host:port/path", to its path. False if the host is not this computer.
bool reduceToPath(QByteArray &target)
{
    const QByteArray separator = QByteArrayLiteral("://");
    const QByteArray scheme = upTo(target, ":/?");
    if (scheme.isEmpty() || target.mid(scheme.size(), separator.size()) != separator)
        return true;
    target.remove(0, scheme.size() + separator.size());
    const QByteArray authority = upTo(target, "/?");
    target.remove(0, authority.size());
    if (!target.startsWith('/'))
        target.prepend('/');
    return isThisComputer(authority);
}

QByteArray withoutQuotationMarks(QByteArray text)
{
    return text.replace("\"", "");
}

/// The lines of \a head; empty if one of them contains a control byte. Tabs are white space in header fields.
QList<QByteArray> splitLines(const QByteArray &head)
{
    QList<QByteArray> lines;
    int begin = 0;
    while (begin <= head.size()) {
        int end = head.indexOf("\r\n", begin);
        if (end < 0)
            end = head.size();
        const QByteArray line = head.mid(begin, end - begin);
        if (hasControl(lines.isEmpty() ? line : QByteArray(line).replace('\t', ' ')))
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

bool isToken(const QByteArray &text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](char c) {
        return isAlphanumeric(c) || (c != '\0' && std::strchr("!#$%&'*+-.^_`|~", c) != nullptr);
    });
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
    // A head that ended with a pause may end in a line break.
    while (lines.size() > 1 && lines.last().isEmpty())
        lines.removeLast();

    const QByteArray &line = lines.first();
    constexpr int getLength = 4;
    const bool isGet = qstrnicmp(line.constData(), "GET ", getLength) == 0;
    request.method = isGet                      ? RequestHead::Get
                     : line.startsWith("POST ") ? RequestHead::Post
                                                : RequestHead::Unsupported;
    request.methodName = isGet ? QByteArrayLiteral("GET") : upTo(line, " ");
    QByteArray target = upTo(line.mid(line.indexOf(' ') + 1), " ");
    const bool isOwnTarget = reduceToPath(target);
    request.path = upTo(target, "?");

    Headers headers;
    const bool readable =
        readHeaders(lines, headers) && (request.method != RequestHead::Unsupported || isRequestLine(line));
    request.endsInsideHeaderName = lines.size() > 1 && !lines.last().contains(':');
    request.hasHost = headers.contains("host");
    request.fromBrowser = request.hasHost || headers.contains("origin") ||
                          std::any_of(headers.keyBegin(), headers.keyEnd(),
                                      [](const auto &name) { return name.startsWith("sec-"); });
    request.entityTag = withoutQuotationMarks(headers.value("if-none-match"));
    const bool isOldVersion = line.endsWith(" HTTP/1.0");
    request.expectsContinue = !isOldVersion && headers.value("expect").toLower() == "100-continue";
    const QByteArray connection = headers.value("connection").toLower();
    request.closesConnection =
        connection.contains("close") || (isOldVersion && !connection.contains("keep-alive"));
    request.refusal = readable && !hasControl(request.entityTag)
                          ? refusalOf(request, headers, isOwnTarget, hostSeen)
                          : HttpStatus::badRequest;
    return request;
}

} // namespace SondixQt
