// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace SondixQt {

/// The data of an HTTP request's head that the tunnel uses.
struct RequestHead
{
    enum Method { Get, Post, Unsupported };

    Method method = Unsupported;
    QByteArray methodName;             ///< "GET" in capital letters, others as received
    QByteArray path;                   ///< the target up to the first blank or "?", without scheme and host
    QByteArray entityTag;              ///< of If-None-Match, without quotation marks
    int contentLength = -1;            ///< -1: not announced; never above TunnelLimits::body
    bool hasHost = false;              ///< there is a Host field
    bool fromBrowser = false;          ///< there is a Host, Origin or Sec-... field: not a raw client
    bool closesConnection = false;     ///< the client wants no further request on this connection
    bool expectsContinue = false;      ///< the client waits for a 100 before it sends the body
    bool endsInsideHeaderName = false; ///< the last line has no colon yet
    int refusal = 0;                   ///< HTTP status of the refusal; 0: not refused
};

bool hasControl(const QByteArray &bytes);
/// Whether \a text may be a method or the name of a header field.
bool isToken(const QByteArray &text);

/// Whether \a line is the first line of a well-formed HTTP request of any method.
bool isRequestLine(const QByteArray &line);

/// Parses \a head, without its blank line, and checks whether the request is allowed: its syntax, its host and its
/// origin. \a hostSeen: an earlier request of the connection had a Host field.
RequestHead readRequestHead(const QByteArray &head, bool hostSeen);

} // namespace SondixQt
