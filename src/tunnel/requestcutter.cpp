// SPDX-License-Identifier: MIT
#include "requestcutter_p.h"

#include "httpstatus_p.h"
#include "tunnellimits_p.h"

#include <algorithm>
#include <utility>

namespace SondixQt {

namespace {

const QByteArray lineEnd = QByteArrayLiteral("\r\n");
const QByteArray blankLine = QByteArrayLiteral("\r\n\r\n");
const QByteArray get = QByteArrayLiteral("GET ");
/// The first byte of an encrypted connection.
constexpr char tlsHandshake = '\x16';

/// How many capital letters \a bytes begin with.
int methodSize(const QByteArray &bytes)
{
    const auto *end = std::find_if(bytes.begin(), bytes.end(), [](char c) { return c < 'A' || c > 'Z'; });
    return int(end - bytes.begin());
}

QByteArray withoutTrailingLineEnds(QByteArray text)
{
    while (text.endsWith('\r') || text.endsWith('\n'))
        text.chop(1);
    return text;
}

} // namespace

void RequestCutter::append(const QByteArray &more)
{
    if (state == State::Ended)
        return;
    bytes += more;
    judgedQuiet = false;
}

bool RequestCutter::next(Piece &piece)
{
    Step step = Step::Goes;
    while (step == Step::Goes) {
        switch (state) {
        case State::Head:
            step = cutHead(piece);
            break;
        case State::Body:
            step = cutBody(piece);
            break;
        case State::RawBody:
            step = cutRawBody(piece);
            break;
        case State::Garbage:
            step = dropGarbage(piece);
            break;
        case State::Ended:
            step = Step::NeedsBytes;
            break;
        }
    }
    return step == Step::HasPiece;
}

bool RequestCutter::beginsGet() const
{
    return qstrnicmp(bytes.constData(), get.constData(), uint(get.size())) == 0;
}

/// Whether the bytes begin with GET, with any method in capital letters and a blank, or with the whole first line of
/// a request.
bool RequestCutter::beginsRequest() const
{
    const int size = methodSize(bytes);
    return beginsGet() || (size > 0 && size < bytes.size() && bytes.at(size) == ' ') ||
           isRequestLine(bytes.left(qMin(firstLineSize(), TunnelLimits::requestLine + 1)));
}

/// Whether beginsRequest() may be true when more has come.
bool RequestCutter::mayBeginRequest() const
{
    return methodSize(bytes) == bytes.size() ||
           (bytes.size() < get.size() && qstrnicmp(bytes.constData(), get.constData(), uint(bytes.size())) == 0);
}

void RequestCutter::skipLineEnds()
{
    int size = 0;
    while (size + 1 < bytes.size() && bytes.at(size) == '\r' && bytes.at(size + 1) == '\n')
        size += lineEnd.size();
    bytes.remove(0, size);
}

/// Without its line end, or what has come of that.
int RequestCutter::firstLineSize() const
{
    const int end = bytes.indexOf(lineEnd);
    return end < 0 ? bytes.size() - (bytes.endsWith('\r') ? 1 : 0) : end;
}

RequestCutter::Step RequestCutter::cutHead(Piece &piece)
{
    skipLineEnds();
    if (bytes.isEmpty() || bytes == "\r")
        return Step::NeedsBytes;
    if (bytes.startsWith(tlsHandshake))
        return hungUp(piece);

    const int lineSize = firstLineSize();
    const bool isTooLong = lineSize > TunnelLimits::requestLine;
    if (mayBeginRequest() && !isTooLong)
        return Step::NeedsBytes;
    if (!beginsRequest() && !mayBeginRequest())
        // After a request that a pause has ended, this may be its rest: headers that would have refused it.
        return cutByQuiet ? refused(piece, HttpStatus::badRequest) : dropText(piece, lineSize);
    if (isTooLong)
        return refused(piece, HttpStatus::uriTooLong);

    const int end = bytes.indexOf(blankLine, searched);
    searched = qMax(0, bytes.size() - blankLine.size() + 1);
    if ((end < 0 ? searched : end) > TunnelLimits::head)
        return refused(piece, HttpStatus::headerFieldsTooLarge);
    if (end < 0)
        return Step::NeedsBytes;
    head = readRequestHead(bytes.left(end), hostSeen);
    bytes.remove(0, end + blankLine.size());
    cutByQuiet = false;
    return beginBody(piece);
}

/// Text is dropped line by line. Nobody knows where anything else ends, and what looks like a request in it may be a
/// stranger's text, such as a name in another protocol's greeting.
RequestCutter::Step RequestCutter::dropText(Piece &piece, int lineSize)
{
    searched = 0;
    if (hasControl(bytes.left(lineSize)) || lineSize > TunnelLimits::requestLine) {
        ++dropped;
        state = State::Garbage;
        return Step::Goes;
    }
    const int whole = lineSize + lineEnd.size();
    if (whole > bytes.size())
        return Step::NeedsBytes;
    ++dropped;
    garbage += whole;
    bytes.remove(0, whole);
    return garbage > TunnelLimits::garbage ? refused(piece, HttpStatus::badRequest) : Step::Goes;
}

RequestCutter::Step RequestCutter::beginBody(Piece &piece)
{
    searched = 0;
    garbage = 0;
    if (head.refusal != 0)
        return refused(piece, head.refusal);
    hostSeen = hostSeen || head.hasHost;
    body.clear();
    if (head.contentLength > 0) {
        state = State::Body;
        if (head.expectsContinue) {
            piece = Piece();
            piece.kind = Continue;
            return Step::HasPiece;
        }
    } else if (head.method == RequestHead::Post && head.contentLength < 0 && !head.fromBrowser) {
        state = State::RawBody;
    } else {
        return finish(piece);
    }
    return Step::Goes;
}

RequestCutter::Step RequestCutter::cutBody(Piece &piece)
{
    const int taken = qMin(head.contentLength - body.size(), bytes.size());
    body += bytes.left(taken);
    bytes.remove(0, taken);
    return body.size() == head.contentLength ? finish(piece) : Step::NeedsBytes;
}

RequestCutter::Step RequestCutter::cutRawBody(Piece &piece)
{
    body += std::exchange(bytes, QByteArray());
    return body.size() > TunnelLimits::body ? refused(piece, HttpStatus::contentTooLarge) : Step::NeedsBytes;
}

RequestCutter::Step RequestCutter::dropGarbage(Piece &piece)
{
    garbage += int(std::exchange(bytes, QByteArray()).size());
    return garbage > TunnelLimits::garbage ? refused(piece, HttpStatus::badRequest) : Step::NeedsBytes;
}

RequestCutter::Step RequestCutter::finish(Piece &piece)
{
    const QByteArray text = std::exchange(body, QByteArray());
    state = State::Head;
    if (head.closesConnection)
        end();
    // Commands end at a zero byte on their way to the sensor: half a command is worse than none.
    if (head.method == RequestHead::Post && text.contains('\0'))
        return refused(piece, HttpStatus::badRequest);

    piece = Piece();
    piece.method = head.methodName;
    piece.path = head.path;
    piece.closes = head.closesConnection;
    if (head.method == RequestHead::Other) {
        ++dropped;
        piece.kind = head.methodName == "HEAD" ? HeadMethod : OtherMethod;
    } else if (head.method == RequestHead::Get) {
        piece.entityTag = head.entityTag;
    } else if (text.startsWith("IMPORT ")) {
        piece.kind = Import;
        const int firstEnd = text.indexOf('\n');
        piece.text = firstEnd < 0 ? QByteArray() : text.mid(firstEnd + 1);
    } else {
        piece.kind = Command;
        piece.text = withoutTrailingLineEnds(text);
    }
    return Step::HasPiece;
}

bool RequestCutter::endQuiet(Piece &piece)
{
    if (!waitsForQuiet())
        return false;
    judgedQuiet = true;
    if (state == State::Garbage) {
        state = State::Head;
        return false;
    }
    if (state == State::RawBody) {
        cutByQuiet = true;
        return finish(piece) == Step::HasPiece;
    }

    searched = 0;
    if (!beginsGet()) {
        ++dropped;
        bytes.clear();
        return false;
    }
    const bool halfLineEnd = bytes.endsWith('\r');
    const RequestHead meant = readRequestHead(halfLineEnd ? bytes.chopped(1) : bytes, hostSeen);
    // A browser always sends the blank line: what has come of its head must not pass for all of it.
    if (meant.fromBrowser || meant.endsInsideHeaderName || meant.contentLength > 0)
        return false;
    head = meant;
    bytes.clear();
    cutByQuiet = true;
    return beginBody(piece) == Step::HasPiece;
}

bool RequestCutter::endInput(Piece &piece)
{
    judgedQuiet = false;
    const bool hasPiece = endQuiet(piece);
    end();
    return hasPiece;
}

RequestCutter::Piece RequestCutter::refuse(int status)
{
    end();
    Piece piece;
    piece.kind = Refusal;
    piece.status = status;
    return piece;
}

RequestCutter::Step RequestCutter::refused(Piece &piece, int status)
{
    piece = refuse(status);
    return Step::HasPiece;
}

RequestCutter::Step RequestCutter::hungUp(Piece &piece)
{
    ++dropped;
    end();
    piece = Piece();
    piece.kind = Hangup;
    return Step::HasPiece;
}

void RequestCutter::end()
{
    state = State::Ended;
    bytes.clear();
    body.clear();
}

bool RequestCutter::isIncomplete() const
{
    return state == State::Body || state == State::RawBody || (state == State::Head && !bytes.isEmpty());
}

bool RequestCutter::waitsForQuiet() const
{
    if (judgedQuiet || state == State::Body || !isIncomplete())
        return !judgedQuiet && state == State::Garbage;
    // A request of another method, or what may become one, ends with its blank line only: what comes after a pause
    // could otherwise pass for a request of its own.
    return state == State::RawBody || beginsGet() || !(beginsRequest() || mayBeginRequest());
}

int RequestCutter::takeDropped()
{
    return std::exchange(dropped, 0);
}

} // namespace SondixQt
