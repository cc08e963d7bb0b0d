// SPDX-License-Identifier: MIT
#pragma once

#include "requesthead_p.h"

#include <QByteArray>

namespace SondixQt {

struct ParsedRequest
{
    enum Kind {
        Get,         ///< a page of the sensor's web interface
        Import = 1,  ///< settings for the sensor: the body after its first line "IMPORT ..."
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
///
/// A raw client is a program that sends none of the fields that a browser sends (RequestHead::fromBrowser). It
/// may omit the blank line of a GET and the length of a body: a pause in its input then ends the request.
class RequestParser
{
public:
    void append(const QByteArray &bytes);
    /// Sets \a parsed to the next request that is complete or refused; false if there is none. A refusal is the
    /// last one.
    bool next(ParsedRequest &parsed);
    /// Handles a pause in the input: ends a raw client's request, and drops text that is not a request. True if
    /// \a parsed is set.
    bool handlePause(ParsedRequest &parsed);
    /// Handles the end of the input like a pause, then discards what is still incomplete. True if \a parsed is
    /// set.
    bool endInput(ParsedRequest &parsed);
    /// Refuses everything that follows.
    ParsedRequest refuse(int status);
    /// Ignores everything that follows.
    void end();

    bool isEnded() const { return state == State::Ended; }
    /// Whether a request has begun that is not complete.
    bool isIncomplete() const;
    /// Whether a pause in the input must be handled by handlePause().
    bool endsWithPause() const;
    /// How many times since the last call input was dropped or a method was not supported.
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
    QByteArray input; ///< appended bytes; those from inputBegin on are not in bytes yet
    int inputBegin = 0;
    QByteArray bytes;          ///< being parsed; kept short, since parsed bytes are removed from its front
    int searched = 0;          ///< there is no blank line before this position of bytes
    bool pauseHandled = false; ///< handlePause() was called since the last bytes
    bool endedByPause = false; ///< the last request ended with a pause: the rest of it may still arrive
    bool skipLineFeed = false; ///< a pause dropped text that ended with the carriage return of a line end
    RequestHead head;          ///< of the request whose body is outstanding
    QByteArray body;
    int discarded = 0; ///< bytes since the last request
    int dropped = 0;
    bool hostSeen = false;
};

} // namespace SondixQt
