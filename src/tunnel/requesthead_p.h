// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace SondixQt {

/// What the tunnel uses of an HTTP request's head.
struct RequestHead
{
    enum Method { Get, Post, Unsupported };

    Method method = Unsupported;
    QByteArray methodName;             ///< GET in capital letters, the others as they came
    QByteArray path;                   ///< the target up to the first blank or "?", without scheme and host
    QByteArray entityTag;              ///< of If-None-Match, without quotation marks
    int contentLength = -1;            ///< -1: not announced; never above TunnelLimits::body
    bool hasHost = false;              ///< Host is there
    bool fromBrowser = false;          ///< Host, Origin or Sec-... is there: no raw client
    bool closesConnection = false;     ///< the client wants no further request on this connection
    bool expectsContinue = false;      ///< the client waits for a 100 before it sends the body
    bool endsInsideHeaderName = false; ///< the last line has no colon yet
    int refusal = 0;                   ///< the HTTP status with which it is refused, 0: it may pass
};

bool hasControl(const QByteArray &bytes);
/// Whether \a text may be a method or the name of a header field.
bool isToken(const QByteArray &text);

/// Whether \a line is the first line of a well-formed HTTP request of any method.
bool isRequestLine(const QByteArray &line);

/// Parses \a head, without its blank line, and checks whether the request may pass: its syntax, the host that it is
/// for and the page that it is from. \a hostSeen: an earlier request of the connection had a Host field.
RequestHead readRequestHead(const QByteArray &head, bool hostSeen);

} // namespace SondixQt
