// SPDX-License-Identifier: MIT
#pragma once

#include "requestcorpus.h"
#include "tunnel/requestparser_p.h"

#include <QByteArray>
#include <QList>

/// \file
/// Helpers of the tests of the request parser: its results as texts.

using Requests = QList<QByteArray>;

inline QByteArray describe(const SondixQt::ParsedRequest &parsed)
{
    switch (parsed.kind) {
    case SondixQt::ParsedRequest::Refusal:
        return QByteArray::number(parsed.status);
    case SondixQt::ParsedRequest::Continue:
        return "100";
    case SondixQt::ParsedRequest::Abort:
        return "end";
    default:
        return describeRequest(parsed);
    }
}

inline Requests takeAll(SondixQt::RequestParser &parser)
{
    Requests requests;
    SondixQt::ParsedRequest parsed;
    while (parser.next(parsed))
        requests += describe(parsed);
    return requests;
}

/// The results of \a parser after it has received \a bytes.
inline Requests parse(SondixQt::RequestParser &parser, const QByteArray &bytes)
{
    parser.append(bytes);
    return takeAll(parser);
}

inline Requests parse(const QByteArray &bytes)
{
    SondixQt::RequestParser parser;
    return parse(parser, bytes);
}

/// The results of \a parser after a pause of its client.
inline Requests pause(SondixQt::RequestParser &parser)
{
    Requests requests;
    SondixQt::ParsedRequest parsed;
    if (parser.handlePause(parsed))
        requests += describe(parsed);
    return requests + takeAll(parser);
}

inline const Requests pageA = {"GET /a "};
inline const QByteArray rawPost = QByteArrayLiteral("POST / HTTP/1.1\r\n\r\n");
