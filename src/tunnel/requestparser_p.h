// SPDX-License-Identifier: MIT
#pragma once

#include "requesthead_p.h"

#include <QByteArray>

namespace SondixQt {

struct ParsedRequest
{
    enum Kind {
        Get,         ///< a page of the sensor's web interface
        Import = 1,  ///< settings for the sensor: the body below its first line, "IMPORT ..."
        Command = 2, ///< any other command for the sensor
        OtherMethod, ///< neither GET nor POST: not for the sensor
        HeadMethod,  ///< the same, but the answer has no body
        Continue,    ///< no request: the client waits for a 100 before it sends the body
        Refusal,     ///< the connection ends with the answer \ref status
        Abort,       ///< the connection ends without an answer
    };

    Kind kind = Get;
    int status = 0; ///< HTTP status of a refusal
    QByteArray method;
    QByteArray path;
    QByteArray entityTag;
    QByteArray text;     ///< of a command
    bool closes = false; ///< the client wants no further request
};

/// Parses the bytes of one connection. The result does not depend on how the bytes are split.
class RequestParser
{
public:
    void append(const QByteArray &bytes);
    /// The next request that is complete or refused. Nothing follows a refusal.
    bool next(ParsedRequest &parsed);
    /// The client has paused: a raw client's GET or command without a length ends here, and text is dropped.
    bool handlePause(ParsedRequest &parsed);
    /// The client sends nothing more. Has the effect of a pause; what is still incomplete then is discarded.
    bool endInput(ParsedRequest &parsed);
    /// Refuses everything that follows.
    ParsedRequest refuse(int status);
    /// Ignores everything that follows.
    void end();

    bool isEnded() const { return state == State::Ended; }
    /// Whether a request has begun that is not complete.
    bool isIncomplete() const;
    /// Whether handlePause() would end something.
    bool endsWithPause() const;
    /// How many times bytes that are no request were dropped since the last call.
    int takeDropped();

private:
    enum class State {
        Head,    ///< before or inside a request's head
        Body,    ///< announced bytes are outstanding
        RawBody, ///< the client has announced no length: the body ends with a pause
        Discard, ///< binary data: everything is dropped until the client pauses
        Ended,
    };
    enum class Step { NeedsMore, Continue, Parsed };

    Step parseHead(ParsedRequest &parsed);
    Step dropText(ParsedRequest &parsed, int lineSize);
    Step parseBody(ParsedRequest &parsed);
    Step parseRawBody(ParsedRequest &parsed);
    Step discard(ParsedRequest &parsed);
    Step beginBody(ParsedRequest &parsed);
    Step finish(ParsedRequest &parsed);
    Step refused(ParsedRequest &parsed, int status);
    Step aborted(ParsedRequest &parsed);
    bool takeInput();
    void skipLineEnds();
    int firstLineSize() const;
    bool beginsGet() const;
    bool beginsRequest() const;
    bool mayBeginRequest() const;

    State state = State::Head;
    QByteArray input; ///< appended, from inputBegin on not taken into bytes yet
    int inputBegin = 0;
    QByteArray bytes;          ///< being parsed; kept short, since parsed bytes are removed from its front
    int searched = 0;          ///< there is no blank line before this position of bytes
    bool pauseHandled = false; ///< handlePause() was called since the last bytes
    bool endedByPause = false; ///< the last request ended with a pause: its rest may still come
    bool skipLineFeed = false; ///< the carriage return of a line end was dropped by a pause
    RequestHead head;          ///< of the request whose body is outstanding
    QByteArray body;
    int discarded = 0; ///< bytes since the last request
    int dropped = 0;
    bool hostSeen = false;
};

} // namespace SondixQt
