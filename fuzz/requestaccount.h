// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <algorithm>

/// \file
/// A simple reference parser for the requests of a connection. It works on all bytes at once.

struct RequestAccount
{
    QList<QByteArray> requests; ///< in the form of describeRequest()
    int refusal = 0;            ///< HTTP status; 0: none, -1: the connection is closed without an answer
};

using AccountHeaders = QMap<QString, QStringList>;

/// The first \a size bytes, including those after a zero byte.
inline QString textOf(const QByteArray &bytes, int size)
{
    return QString::fromLatin1(bytes.constData(), size);
}

inline bool matches(const QString &text, const char *pattern)
{
    static QHash<const char *, QRegularExpression> expressions;
    QRegularExpression &expression = expressions[pattern];
    if (expression.pattern().isEmpty())
        expression.setPattern(QRegularExpression::anchoredPattern(QLatin1String(pattern)));
    return expression.match(text).hasMatch();
}

inline bool isOwnHost(const QString &host)
{
    return matches(host.toLower(), "(localhost|[a-z0-9.-]+\\.localhost|\\[::1\\]|"
                                   "127(\\.(\\d{1,2}|[01]\\d\\d|2[0-4]\\d|25[0-5])){3})(:\\d*)?");
}

/// False if \a head is malformed.
inline bool readAccountHeaders(const QString &head, AccountHeaders &headers)
{
    if (!matches(head.section(QStringLiteral("\r\n"), 0, 0), "[^\\x00-\\x1f\\x7f]*") ||
        !matches(QString(head).remove(QLatin1String("\r\n")), "[^\\x00-\\x08\\x0a-\\x1f\\x7f]*"))
        return false;
    const QStringList lines = head.split(QStringLiteral("\r\n")).mid(1);
    for (const QString &line : lines) {
        if (!matches(line, "[A-Za-z0-9!#$%&'*+.^_`|~-]+:.*"))
            return false;
        const QByteArray value = line.section(QLatin1Char(':'), 1).toLatin1().trimmed();
        headers[line.section(QLatin1Char(':'), 0, 0).toLower()] += textOf(value, value.size());
    }
    return true;
}

inline QString single(const AccountHeaders &headers, const char *name)
{
    return headers.value(QLatin1String(name)).value(0);
}

inline bool comesFromForeignPage(bool isGet, const AccountHeaders &headers)
{
    if (isGet && (headers.contains(QStringLiteral("upgrade")) ||
                  headers.value(QStringLiteral("sec-purpose"))
                      .join(QString())
                      .contains(QLatin1String("prefetch"), Qt::CaseInsensitive)))
        return true;
    if (!headers.contains(QStringLiteral("sec-fetch-site")))
        return headers.contains(QStringLiteral("origin")) &&
               single(headers, "origin") != QLatin1String("http://") + single(headers, "host");
    const QString site = single(headers, "sec-fetch-site");
    if (isGet)
        return (site == QLatin1String("cross-site") || site == QLatin1String("same-site")) &&
               !(single(headers, "sec-fetch-mode") == QLatin1String("navigate") &&
                 single(headers, "sec-fetch-dest") == QLatin1String("document"));
    return site != QLatin1String("same-origin") && site != QLatin1String("none");
}

/// A client without Host, Origin and Sec-... header is not a browser and may omit headers that browsers always send.
inline bool isRawClient(const AccountHeaders &headers)
{
    const QStringList names = headers.keys();
    return !headers.contains(QStringLiteral("host")) && !headers.contains(QStringLiteral("origin")) &&
           std::none_of(names.begin(), names.end(),
                        [](const QString &name) { return name.startsWith(QLatin1String("sec-")); });
}

inline int accountRefusal(bool isGet, bool isPost, const QString &host, const AccountHeaders &headers,
                          bool hostSeen)
{
    for (const char *name :
         {"host", "origin", "content-length", "sec-fetch-site", "sec-fetch-mode", "sec-fetch-dest"}) {
        if (headers.value(QLatin1String(name)).size() > 1)
            return 400;
    }
    if (headers.contains(QStringLiteral("transfer-encoding")))
        return 501;
    const bool hasHost = headers.contains(QStringLiteral("host"));
    const bool announced = headers.contains(QStringLiteral("content-length"));
    const QString length = single(headers, "content-length");
    if ((announced && !matches(length, "[0-9]+")) || (hostSeen && !hasHost))
        return 400;
    if ((hasHost && !isOwnHost(single(headers, "host"))) || !isOwnHost(host) ||
        comesFromForeignPage(isGet, headers))
        return 403;
    if (isPost && !announced && !isRawClient(headers))
        return 411;
    return announced && length.toDouble() > 1048576 ? 413 : 0;
}

inline QByteArray accountOfCommand(QByteArray body)
{
    if (body.startsWith("IMPORT "))
        return "IMPORT " + (body.contains('\n') ? body.mid(body.indexOf('\n') + 1) : QByteArray());
    while (body.endsWith('\r') || body.endsWith('\n'))
        body.chop(1);
    return "COMMAND " + body;
}

/// Removes scheme and host from an absolute \a target and returns the host; "localhost" if there is none.
inline QString takeHost(QString &target)
{
    const QRegularExpressionMatch match = QRegularExpression(QStringLiteral("^[^:/?]+://([^/?]*)")).match(target);
    if (!match.hasMatch())
        return QStringLiteral("localhost");
    target.remove(0, match.capturedLength());
    if (!target.startsWith(QLatin1Char('/')))
        target.prepend(QLatin1Char('/'));
    return match.captured(1);
}

inline bool endsConnection(const QString &line, const AccountHeaders &headers)
{
    const QString connection = headers.value(QStringLiteral("connection")).join(QStringLiteral(", ")).toLower();
    return connection.contains(QLatin1String("close")) ||
           (line.endsWith(QLatin1String(" HTTP/1.0")) && !connection.contains(QLatin1String("keep-alive")));
}

inline RequestAccount accountOf(QByteArray bytes)
{
    RequestAccount account;
    bool hostSeen = false;
    for (;;) {
        while (bytes.startsWith("\r\n"))
            bytes.remove(0, 2);
        if (bytes.startsWith('\x16')) {
            account.refusal = -1;
            return account;
        }
        const int lineSize = bytes.indexOf("\r\n");
        if (lineSize < 0)
            return account;
        const QString line = textOf(bytes, lineSize);
        const bool isGet = line.startsWith(QLatin1String("GET "), Qt::CaseInsensitive);
        const bool isPost = line.startsWith(QLatin1String("POST "));
        const bool isWhole =
            isGet || isPost || matches(line, "[A-Za-z0-9!#$%&'*+.^_`|~-]+ [^\\x00-\\x20\\x7f]+ HTTP/1\\.[01]");
        if (!isWhole && !matches(line, "[A-Z]+ [\\x00-\\xff]*")) {
            if (!matches(line, "[^\\x00-\\x1f\\x7f]*"))
                return account;
            bytes.remove(0, lineSize + 2);
            continue;
        }
        const int headSize = bytes.indexOf("\r\n\r\n");
        if (headSize < 0)
            return account;
        AccountHeaders headers;
        const QString tag = QStringLiteral("if-none-match");
        const bool readable = readAccountHeaders(textOf(bytes, headSize), headers) && isWhole &&
                              !headers.value(tag).join(QString()).contains(QLatin1Char('\t'));
        QString target = line.section(QLatin1Char(' '), 1, 1);
        const QString host = takeHost(target);
        account.refusal = readable ? accountRefusal(isGet, isPost, host, headers, hostSeen) : 400;
        if (account.refusal != 0)
            return account;
        bytes.remove(0, headSize + 4);
        hostSeen = hostSeen || headers.contains(QStringLiteral("host"));

        if (isPost && !headers.contains(QStringLiteral("content-length")))
            return account;
        const int length = single(headers, "content-length").toInt();
        if (bytes.size() < length)
            return account;
        const QByteArray body = bytes.left(length);
        bytes.remove(0, length);
        if (isPost && body.contains('\0')) {
            account.refusal = 400;
            return account;
        }
        if (isGet)
            account.requests += "GET " + target.section(QLatin1Char('?'), 0, 0).toLatin1() + ' ' +
                                headers.value(tag).join(QStringLiteral(", ")).remove(QLatin1Char('"')).toLatin1();
        else if (isPost)
            account.requests += accountOfCommand(body);
        else
            account.requests += "OTHER " + line.section(QLatin1Char(' '), 0, 0).toLatin1();
        if (endsConnection(line, headers))
            return account;
    }
}
