// SPDX-License-Identifier: MIT
#include "requestparser_p.h"

#include "httpstatus_p.h"
#include "tunnellimits_p.h"

#include <algorithm>
#include <utility>

namespace SondixQt {

namespace {

const QByteArray lineEnd = QByteArrayLiteral("\r\n");
const QByteArray blankLine = QByteArrayLiteral("\r\n\r\n");
const QByteArray get = QByteArrayLiteral("GET ");
/// First byte of a TLS connection.
constexpr char tlsHandshake = '\x16';

/// The number of capital letters at the beginning of \a bytes.
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

void RequestParser::append(const QByteArray &more)
{
    if (state == State::Ended)
        return;
    input.remove(0, std::exchange(inputBegin, 0));
    input += more;
    pauseHandled = false;
}

bool RequestParser::next(ParsedRequest &parsed)
{
    Step step = Step::Continue;
    while (step == Step::Continue) {
        switch (state) {
        case State::Head:
            step = parseHead(parsed);
            break;
        case State::Body:
            step = parseBody(parsed);
            break;
        case State::RawBody:
            step = parseRawBody(parsed);
            break;
        case State::Discard:
            step = discard(parsed);
            break;
        case State::Ended:
            step = Step::NeedsMore;
            break;
        }
        if (step == Step::NeedsMore && takeInput())
            step = Step::Continue;
    }
    return step == Step::Parsed;
}

/// Takes the next bytes of the input, false if there are none.
bool RequestParser::takeInput()
{
    constexpr int maxSize = 8 * 1024;
    const int size = qMin(maxSize, int(input.size()) - inputBegin);
    bytes.append(input.constData() + inputBegin, size);
    inputBegin += size;
    if (inputBegin == input.size()) {
        input.clear();
        inputBegin = 0;
    }
    return size > 0;
}

bool RequestParser::beginsGet() const
{
    return qstrnicmp(bytes.constData(), get.constData(), uint(get.size())) == 0;
}

/// Whether the bytes begin with GET in any case, a method in capital letters, or a complete request line.
bool RequestParser::beginsRequest() const
{
    const int size = methodSize(bytes);
    return beginsGet() || (size > 0 && size < bytes.size() && bytes.at(size) == ' ') ||
           isRequestLine(bytes.left(qMin(firstLineSize(), TunnelLimits::requestLine + 1)));
}

/// Whether beginsRequest() may become true with more bytes.
bool RequestParser::mayBeginRequest() const
{
    return methodSize(bytes) == bytes.size() ||
           (bytes.size() < get.size() && qstrnicmp(bytes.constData(), get.constData(), uint(bytes.size())) == 0);
}

void RequestParser::skipLineEnds()
{
    int size = 0;
    if (!bytes.isEmpty() && std::exchange(skipLineFeed, false) && bytes.at(0) == '\n')
        bytes.remove(0, 1);
    while (size + 1 < bytes.size() && bytes.at(size) == '\r' && bytes.at(size + 1) == '\n')
        size += lineEnd.size();
    bytes.remove(0, size);
}

/// The line end does not count, even if only its carriage return has arrived.
int RequestParser::firstLineSize() const
{
    const int end = bytes.indexOf(lineEnd);
    return end < 0 ? bytes.size() - (bytes.endsWith('\r') ? 1 : 0) : end;
}

RequestParser::Step RequestParser::parseHead(ParsedRequest &parsed)
{
    skipLineEnds();
    if (bytes.isEmpty() || bytes == "\r")
        return Step::NeedsMore;
    if (bytes.startsWith(tlsHandshake))
        return aborted(parsed);

    const int lineSize = firstLineSize();
    const bool isTooLong = lineSize > TunnelLimits::requestLine;
    if (mayBeginRequest() && !isTooLong)
        return Step::NeedsMore;
    if (isTooLong && isToken(bytes.left(bytes.indexOf(' '))))
        return refused(parsed, HttpStatus::uriTooLong);
    if (!beginsRequest() && !mayBeginRequest())
        // After a request that ended with a pause this may be the rest of it: fields that would have caused a
        // refusal.
        return endedByPause ? refused(parsed, HttpStatus::badRequest) : dropText(parsed, lineSize);
    if (isTooLong)
        return refused(parsed, HttpStatus::uriTooLong);

    const int end = bytes.indexOf(blankLine, searched);
    searched = qMax(0, bytes.size() - blankLine.size() + 1);
    if ((end < 0 ? searched : end) > TunnelLimits::head)
        return refused(parsed, HttpStatus::headerFieldsTooLarge);
    if (end < 0)
        return Step::NeedsMore;
    head = readRequestHead(bytes.left(end), hostSeen);
    bytes.remove(0, end + blankLine.size());
    endedByPause = false;
    return beginBody(parsed);
}

/// Drops text line by line. Binary data has no known end, and may contain text that looks like a request: it is
/// discarded until the client pauses.
RequestParser::Step RequestParser::dropText(ParsedRequest &parsed, int lineSize)
{
    searched = 0;
    if (hasControl(bytes.left(lineSize)) || lineSize > TunnelLimits::requestLine) {
        ++dropped;
        state = State::Discard;
        return Step::Continue;
    }
    const int whole = lineSize + lineEnd.size();
    if (whole > bytes.size())
        return Step::NeedsMore;
    ++dropped;
    discarded += whole;
    bytes.remove(0, whole);
    return discarded > TunnelLimits::discarded ? refused(parsed, HttpStatus::badRequest) : Step::Continue;
}

RequestParser::Step RequestParser::beginBody(ParsedRequest &parsed)
{
    searched = 0;
    discarded = 0;
    if (head.refusal != 0)
        return refused(parsed, head.refusal);
    hostSeen = hostSeen || head.hasHost;
    body.clear();
    if (head.contentLength > 0) {
        state = State::Body;
        if (head.expectsContinue) {
            parsed = ParsedRequest();
            parsed.kind = ParsedRequest::Continue;
            return Step::Parsed;
        }
    } else if (head.method == RequestHead::Post && head.contentLength < 0 && !head.fromBrowser) {
        state = State::RawBody;
    } else {
        return finish(parsed);
    }
    return Step::Continue;
}

RequestParser::Step RequestParser::parseBody(ParsedRequest &parsed)
{
    const int taken = qMin(head.contentLength - body.size(), bytes.size());
    body += bytes.left(taken);
    bytes.remove(0, taken);
    return body.size() == head.contentLength ? finish(parsed) : Step::NeedsMore;
}

RequestParser::Step RequestParser::parseRawBody(ParsedRequest &parsed)
{
    body += std::exchange(bytes, QByteArray());
    return body.size() > TunnelLimits::body ? refused(parsed, HttpStatus::contentTooLarge) : Step::NeedsMore;
}

RequestParser::Step RequestParser::discard(ParsedRequest &parsed)
{
    discarded += int(std::exchange(bytes, QByteArray()).size());
    return discarded > TunnelLimits::discarded ? refused(parsed, HttpStatus::badRequest) : Step::NeedsMore;
}

RequestParser::Step RequestParser::finish(ParsedRequest &parsed)
{
    const QByteArray text = std::exchange(body, QByteArray());
    state = State::Head;
    if (head.closesConnection)
        end();
    // The C interface ends texts at a zero byte: the sensor would get a truncated command.
    if (head.method == RequestHead::Post && text.contains('\0'))
        return refused(parsed, HttpStatus::badRequest);

    parsed = ParsedRequest();
    parsed.method = head.methodName;
    parsed.path = head.path;
    parsed.closes = head.closesConnection;
    if (head.method == RequestHead::Unsupported) {
        ++dropped;
        parsed.kind = head.methodName == "HEAD" ? ParsedRequest::HeadMethod : ParsedRequest::OtherMethod;
    } else if (head.method == RequestHead::Get) {
        parsed.entityTag = head.entityTag;
    } else if (text.startsWith("IMPORT ")) {
        parsed.kind = ParsedRequest::Import;
        const int firstEnd = text.indexOf('\n');
        parsed.text = firstEnd < 0 ? QByteArray() : text.mid(firstEnd + 1);
    } else {
        parsed.kind = ParsedRequest::Command;
        parsed.text = withoutTrailingLineEnds(text);
    }
    return Step::Parsed;
}

bool RequestParser::handlePause(ParsedRequest &parsed)
{
    if (!endsWithPause())
        return false;
    pauseHandled = true;
    if (state == State::Discard) {
        state = State::Head;
        return false;
    }
    if (state == State::RawBody) {
        endedByPause = true;
        return finish(parsed) == Step::Parsed;
    }

    searched = 0;
    if (!beginsGet()) {
        ++dropped;
        skipLineFeed = bytes.endsWith('\r');
        bytes.clear();
        return false;
    }
    const bool halfLineEnd = bytes.endsWith('\r');
    const RequestHead meant = readRequestHead(halfLineEnd ? bytes.chopped(1) : bytes, hostSeen);
    // A browser always sends the blank line, so the rest of its head is still to come. So is a missing target.
    const bool hasTarget = meant.refusal != 0 || !meant.path.isEmpty();
    if (!hasTarget || meant.fromBrowser || meant.endsInsideHeaderName || meant.contentLength > 0)
        return false;
    head = meant;
    bytes.clear();
    endedByPause = true;
    return beginBody(parsed) == Step::Parsed;
}

bool RequestParser::endInput(ParsedRequest &parsed)
{
    pauseHandled = false;
    const bool hasRequest = handlePause(parsed);
    end();
    return hasRequest;
}

ParsedRequest RequestParser::refuse(int status)
{
    end();
    ParsedRequest parsed;
    parsed.kind = ParsedRequest::Refusal;
    parsed.status = status;
    return parsed;
}

RequestParser::Step RequestParser::refused(ParsedRequest &parsed, int status)
{
    parsed = refuse(status);
    return Step::Parsed;
}

RequestParser::Step RequestParser::aborted(ParsedRequest &parsed)
{
    ++dropped;
    end();
    parsed = ParsedRequest();
    parsed.kind = ParsedRequest::Abort;
    return Step::Parsed;
}

void RequestParser::end()
{
    state = State::Ended;
    input.clear();
    inputBegin = 0;
    bytes.clear();
    body.clear();
}

bool RequestParser::isIncomplete() const
{
    return state == State::Body || state == State::RawBody || (state == State::Head && !bytes.isEmpty());
}

bool RequestParser::endsWithPause() const
{
    if (pauseHandled || state == State::Body || !isIncomplete())
        return !pauseHandled && state == State::Discard;
    // A request of another method, complete or not, never ends with a pause: its body could otherwise be taken
    // for the next request.
    return state == State::RawBody || beginsGet() || !(beginsRequest() || mayBeginRequest());
}

int RequestParser::takeDropped()
{
    return std::exchange(dropped, 0);
}

} // namespace SondixQt
