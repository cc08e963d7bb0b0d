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
/// A plain account of what the bytes of a connection ask for, read from one end to the other once all are there.

struct RequestAccount
{
    QList<QByteArray> requests; ///< as describeRequest() says
    int refusal = 0;
};

using AccountHeaders = QMap<QString, QStringList>;

/// The first \a size bytes, those behind a zero byte included.
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

/// False when \a head is no head.
inline bool readAccountHeaders(const QString &head, AccountHeaders &headers)
{
    if (!matches(QString(head).remove(QLatin1String("\r\n")), "[^\\x00-\\x1f\\x7f]*"))
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
    const QString site = single(headers, "sec-fetch-site");
    if (isGet)
        return (site == QLatin1String("cross-site") || site == QLatin1String("same-site")) &&
               !(single(headers, "sec-fetch-mode") == QLatin1String("navigate") &&
                 single(headers, "sec-fetch-dest") == QLatin1String("document"));
    if (headers.contains(QStringLiteral("sec-fetch-site")))
        return site != QLatin1String("same-origin") && site != QLatin1String("none");
    return headers.contains(QStringLiteral("origin")) &&
           single(headers, "origin") != QLatin1String("http://") + single(headers, "host");
}

inline int accountRefusal(bool isGet, const AccountHeaders &headers, bool hostSeen)
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
    if ((hasHost && !isOwnHost(single(headers, "host"))) || comesFromForeignPage(isGet, headers))
        return 403;
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

inline RequestAccount accountOf(QByteArray bytes)
{
    RequestAccount account;
    bool hostSeen = false;
    for (;;) {
        while (bytes.startsWith("\r\n"))
            bytes.remove(0, 2);
        const int lineSize = bytes.indexOf("\r\n");
        if (lineSize < 0)
            return account;
        const QString line = textOf(bytes, lineSize);
        const bool isGet = line.startsWith(QLatin1String("GET "), Qt::CaseInsensitive);
        const bool isPost = line.startsWith(QLatin1String("POST "));
        if (!isGet && !isPost &&
            !matches(line, "[A-Za-z0-9!#$%&'*+.^_`|~-]+ [^\\x00-\\x20\\x7f]+ HTTP/1\\.[01]")) {
            if (!matches(line, "[^\\x00-\\x1f\\x7f]*"))
                return account;
            bytes.remove(0, lineSize + 2);
            continue;
        }
        const int headSize = bytes.indexOf("\r\n\r\n");
        if (headSize < 0)
            return account;
        AccountHeaders headers;
        const bool readable = readAccountHeaders(textOf(bytes, headSize), headers);
        account.refusal = readable ? accountRefusal(isGet, headers, hostSeen) : 400;
        if (account.refusal != 0)
            return account;
        bytes.remove(0, headSize + 4);

        const bool hasHost = headers.contains(QStringLiteral("host"));
        hostSeen = hostSeen || hasHost;
        const QStringList names = headers.keys();
        const bool raw = !hasHost && !headers.contains(QStringLiteral("origin")) &&
                         std::none_of(names.begin(), names.end(),
                                      [](const QString &name) { return name.startsWith(QLatin1String("sec-")); });
        if (isPost && raw && !headers.contains(QStringLiteral("content-length")))
            return account;
        const int length = single(headers, "content-length").toInt();
        if (bytes.size() < length)
            return account;
        const QByteArray body = bytes.left(length);
        bytes.remove(0, length);
        if (!isGet && !isPost)
            continue;
        if (isPost && body.contains('\0')) {
            account.refusal = 400;
            return account;
        }
        const QByteArray path =
            line.mid(4).section(QLatin1Char(' '), 0, 0).section(QLatin1Char('?'), 0, 0).toLatin1();
        const QByteArray tag =
            headers.value(QStringLiteral("if-none-match")).join(QStringLiteral(", ")).toLatin1();
        account.requests +=
            isGet ? "GET " + path + ' ' + QByteArray(tag).replace("\"", "") : accountOfCommand(body);
        const QString connection =
            headers.value(QStringLiteral("connection")).join(QStringLiteral(", ")).toLower();
        if (connection.contains(QLatin1String("close")) ||
            (line.endsWith(QLatin1String(" HTTP/1.0")) && !connection.contains(QLatin1String("keep-alive"))))
            return account;
    }
}
