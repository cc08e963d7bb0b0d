// SPDX-License-Identifier: MIT
#pragma once

#include "tunnel/requesthead_p.h"
#include "tunnel/tunnellimits_p.h"

#include <QByteArray>
#include <QList>

#include <algorithm>

/// \file
/// Helpers of the tests of request heads.

inline constexpr int ok = 0;

inline QByteArray headOf(const QByteArray &line, const QList<QByteArray> &headers)
{
    QByteArray head = line;
    for (const QByteArray &header : headers)
        head += "\r\n" + header;
    return head;
}

inline SondixQt::RequestHead readGet(const QList<QByteArray> &headers, bool hostSeen = false)
{
    return SondixQt::readRequestHead(headOf("GET /page HTTP/1.1", headers), hostSeen);
}

/// Adds "Content-Length: 0" unless \a headers have a length.
inline SondixQt::RequestHead readPost(QList<QByteArray> headers, bool hostSeen = false)
{
    const auto isLength = [](const QByteArray &header) { return header.toLower().startsWith("content-length"); };
    if (std::none_of(headers.cbegin(), headers.cend(), isLength))
        headers.append("Content-Length: 0");
    return SondixQt::readRequestHead(headOf("POST /command HTTP/1.1", headers), hostSeen);
}

inline QByteArray rowName(const QByteArray &text)
{
    return text.isEmpty() ? QByteArrayLiteral("(empty)") : text.toPercentEncoding(" /:.[]?\"");
}
