// SPDX-License-Identifier: MIT
#pragma once

#include "requesthead_p.h"

#include <QByteArray>

namespace SondixQt {

/// Cuts the bytes of one connection into requests. However the bytes arrive, in one piece or each on its own, the
/// requests are the same.
class RequestCutter
{
public:
    enum Kind {
        Get,         ///< a page of the sensor's web interface
        Import = 1,  ///< settings for the sensor: what stood below the body's first line, "IMPORT ..."
        Command = 2, ///< any other command for the sensor
        OtherMethod, ///< neither GET nor POST: not for the sensor
        HeadMethod,  ///< likewise; the answer has no body
        Continue,    ///< no request: the client waits for a 100 before it sends the body
        Refusal,     ///< the connection ends with the status
        Hangup,      ///< the connection ends without an answer
    };

    struct Piece
    {
        Kind kind = Get;
        int status = 0; ///< of a refusal
        QByteArray method;
        QByteArray path;
        QByteArray entityTag;
        QByteArray text;     ///< of a command
        bool closes = false; ///< the client wants no further request
    };

    void append(const QByteArray &bytes);
    /// The next request that is complete, or refused. After a refusal there is none any more.
    bool next(Piece &piece);
    /// The client has paused: gives out what it may have meant as a request.
    bool endQuiet(Piece &piece);
    /// The client sends nothing more: like a pause, and what is incomplete after it is discarded.
    bool endInput(Piece &piece);
    /// Refuses whatever may still come.
    Piece refuse(int status);
    /// Parses nothing more.
    void end();

    bool isEnded() const { return state == State::Ended; }
    /// Whether a request has begun that is not complete.
    bool isIncomplete() const;
    /// Whether a pause of the client would end something.
    bool waitsForQuiet() const;
    /// How many times bytes that fit no request were dropped since the last call.
    int takeDropped();

private:
    enum class State {
        Head,    ///< a request is to begin, or has
        Body,    ///< announced bytes are outstanding
        RawBody, ///< of a client that announces nothing and just stops
        Garbage, ///< no text: all is dropped until the client pauses
        Ended,
    };
    /// What a step of the cutting has led to.
    enum class Step { NeedsBytes, Goes, HasPiece };

    Step cutHead(Piece &piece);
    Step dropText(Piece &piece, int lineSize);
    Step cutBody(Piece &piece);
    Step cutRawBody(Piece &piece);
    Step dropGarbage(Piece &piece);
    Step beginBody(Piece &piece);
    Step finish(Piece &piece);
    Step refused(Piece &piece, int status);
    Step hungUp(Piece &piece);
    void skipLineEnds();
    int firstLineSize() const;
    bool beginsGet() const;
    bool beginsRequest() const;
    bool mayBeginRequest() const;

    State state = State::Head;
    QByteArray bytes;         ///< not cut yet
    int searched = 0;         ///< of these: no blank line begins there
    bool judgedQuiet = false; ///< the client has paused since its last bytes, without having said all
    bool cutByQuiet = false;  ///< a pause has ended the last request: its rest may still come
    RequestHead head;         ///< of the request whose body is outstanding
    QByteArray body;
    int garbage = 0; ///< bytes that fit no request since the last one that did
    int dropped = 0;
    bool hostSeen = false;
};

} // namespace SondixQt
