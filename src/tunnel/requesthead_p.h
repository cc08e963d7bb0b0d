// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace SondixQt {

/// The head of an HTTP request, as far as the tunnel cares.
struct RequestHead
{
    enum Method { Get, Post, Other };

    Method method = Other;
    QByteArray methodName;             ///< GET in capital letters, the others as they came
    QByteArray path;                   ///< the target up to the first blank or "?"
    QByteArray entityTag;              ///< of If-None-Match, without quotation marks
    int contentLength = -1;            ///< -1: not announced; never above TunnelLimits::body
    bool hasHost = false;              ///< Host is there
    bool fromBrowser = false;          ///< Host, Origin or Sec-Fetch-... is there: no raw client
    bool closesConnection = false;     ///< the client wants no further request on this connection
    bool expectsContinue = false;      ///< the client waits for a 100 before it sends the body
    bool endsInsideHeaderName = false; ///< what has come ends in the middle of a header
    int refusal = 0;                   ///< the HTTP status with which it is refused, 0: it may pass
};

bool hasControl(const QByteArray &bytes);

/// Whether \a line is the first line of a well-formed HTTP request of any method.
bool isRequestLine(const QByteArray &line);

/// Reads \a head, up to but without its blank line, and decides whether the request may pass: its syntax, whom
/// it was meant for and whose page sent it. \a hostSeen: an earlier request of the connection named a host.
RequestHead readRequestHead(const QByteArray &head, bool hostSeen);

} // namespace SondixQt
