// SPDX-License-Identifier: MIT
#include "requestcutter_p.h"

#include "httpstatus_p.h"
#include "tunnellimits_p.h"

#include <utility>

namespace SondixQt {

namespace {

const QByteArray lineEnd = QByteArrayLiteral("\r\n");
const QByteArray blankLine = QByteArrayLiteral("\r\n\r\n");
const QByteArray get = QByteArrayLiteral("GET ");
const QByteArray post = QByteArrayLiteral("POST ");

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

bool RequestCutter::beginsRequest() const
{
    return qstrnicmp(bytes.constData(), get.constData(), uint(get.size())) == 0 || bytes.startsWith(post);
}

bool RequestCutter::mayBeginRequest() const
{
    const auto size = uint(bytes.size());
    return (bytes.size() < get.size() && qstrnicmp(bytes.constData(), get.constData(), size) == 0) ||
           (bytes.size() < post.size() && post.startsWith(bytes));
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
    if (bytes.isEmpty() || bytes == "\r" || mayBeginRequest())
        return Step::NeedsBytes;

    const int firstSize = firstLineSize();
    const bool tooLong = firstSize > TunnelLimits::requestLine;
    // What begins no request of ours may still become a line of another method, unless it is too long.
    if (!beginsRequest() && (tooLong || !isRequestLine(bytes.left(firstSize))))
        return dropForeignLine(piece, firstSize);
    if (tooLong)
        return refused(piece, HttpStatus::uriTooLong);

    const int end = bytes.indexOf(blankLine, searched);
    searched = qMax(0, bytes.size() - blankLine.size() + 1);
    if ((end < 0 ? searched : end) > TunnelLimits::head)
        return refused(piece, HttpStatus::headerFieldsTooLarge);
    if (end < 0)
        return Step::NeedsBytes;
    head = readRequestHead(bytes.left(end), hostSeen);
    bytes.remove(0, end + blankLine.size());
    return beginBody(piece);
}

/// Text is dropped line by line. Nobody knows where anything else ends, and what looks like a request in it may be a
/// stranger's text, such as a name in another protocol's greeting.
RequestCutter::Step RequestCutter::dropForeignLine(Piece &piece, int size)
{
    searched = 0;
    if (hasControl(bytes.left(size)) || size > TunnelLimits::requestLine) {
        ++dropped;
        state = State::Garbage;
        return Step::Goes;
    }
    const int whole = size + lineEnd.size();
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
    if (head.contentLength > 0)
        state = State::Body;
    else if (head.method == RequestHead::Post && head.contentLength < 0 && !head.fromBrowser)
        state = State::RawBody;
    else
        return finish(piece);
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
    if (head.method == RequestHead::Unserved) {
        ++dropped;
        return Step::Goes;
    }
    if (head.closesConnection)
        end();
    // Commands end at a zero byte on their way to the sensor: half a command is worse than none.
    if (head.method == RequestHead::Post && text.contains('\0'))
        return refused(piece, HttpStatus::badRequest);

    piece = Piece();
    piece.path = head.path;
    piece.closes = head.closesConnection;
    if (head.method == RequestHead::Get) {
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
    if (state == State::RawBody)
        return finish(piece) == Step::HasPiece;

    searched = 0;
    if (!beginsRequest() && !isRequestLine(bytes.left(firstLineSize()))) {
        ++dropped;
        bytes.clear();
        return false;
    }
    const bool halfLineEnd = bytes.endsWith('\r');
    const RequestHead meant = readRequestHead(halfLineEnd ? bytes.chopped(1) : bytes, hostSeen);
    // A browser always sends the blank line: what has come of its head must not pass for all of it. Nor does anybody
    // command anything without the line below which commands stand.
    if (meant.method == RequestHead::Post || meant.fromBrowser || meant.endsInsideHeaderName ||
        meant.contentLength > 0)
        return false;
    head = meant;
    bytes.clear();
    return beginBody(piece) == Step::HasPiece;
}

RequestCutter::Piece RequestCutter::refuse(int status)
{
    end();
    Piece piece;
    piece.refusal = status;
    return piece;
}

RequestCutter::Step RequestCutter::refused(Piece &piece, int status)
{
    piece = refuse(status);
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
    return !judgedQuiet && (state == State::Garbage || (isIncomplete() && state != State::Body));
}

int RequestCutter::takeDropped()
{
    return std::exchange(dropped, 0);
}

} // namespace SondixQt
