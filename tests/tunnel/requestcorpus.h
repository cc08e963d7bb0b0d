// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>

/// \file
/// Byte sequences of clients on one connection, with the results that the tunnel must have however the bytes are
/// split. Shared by the tests of the queue and of the sockets.

/// Instead of a status: the connection is closed without an answer.
constexpr int aborted = -1;

struct RequestSequence
{
    QByteArray name;
    QByteArray bytes;
    QList<QByteArray> requests; ///< in the order in which they are served, in the form of describeRequest()
    int refusal = 0;            ///< the HTTP status of the refusal that ends the connection; 0: none
    int directAnswers = 0;      ///< number of answers such as 100, besides those to the requests
    bool pauses = false;        ///< a pause of the client after these bytes completes the last request
};

/// "GET <path> <tag>", "IMPORT <text>", "COMMAND <text>" or "OTHER <method>", for requests of the queue and of the
/// parser.
template<typename Request>
QByteArray describeRequest(const Request &request)
{
    switch (int(request.kind)) {
    case 1:
        return "IMPORT " + request.text;
    case 2:
        return "COMMAND " + request.text;
    case 3:
    case 4:
        return "OTHER " + request.method;
    default:
        return "GET " + request.path + ' ' + request.entityTag;
    }
}

constexpr char sequenceHost[] = "Host: localhost:8080\r\n";

inline QByteArray pageRequest(const QByteArray &target, const QByteArray &headers = sequenceHost)
{
    return "GET " + target + " HTTP/1.1\r\n" + headers + "\r\n";
}

inline QByteArray commandRequest(const QByteArray &body, const QByteArray &headers = sequenceHost)
{
    return "POST /command HTTP/1.1\r\n" + headers + "Content-Length: " + QByteArray::number(body.size()) +
           "\r\n\r\n" + body;
}

/// A body that looks like a command at the start of each of the 16 KiB blocks in which a browser sends it.
inline QByteArray blocksThatLookLikeCommands(int blocks)
{
    constexpr int blockSize = 16 * 1024;
    QByteArray body;
    for (int i = 0; i < blocks; ++i) {
        const QByteArray command = "POST /command HTTP/1.1\r\nContent-Length: 8\r\n\r\nSETRESET";
        body += command + QByteArray(blockSize - command.size(), '\n');
    }
    return body;
}

/// A request that a browser could send for a foreign page. Its body looks like a command.
inline QByteArray foreignRequestOf(const QByteArray &method, const QByteArray &target, const QByteArray &headers)
{
    const QByteArray body = commandRequest("SETDEFAULT ALL", "");
    return method + ' ' + target + " HTTP/1.1\r\n" + headers +
           "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

/// The TLS ClientHello for \a host, a name that a foreign page can choose.
inline QByteArray encryptedGreeting(const QByteArray &host)
{
    const QByteArray name = QByteArrayLiteral("\x00\x00") + char(host.size() + 5) + '\0' + char(host.size() + 3) +
                            '\0' + '\0' + char(host.size()) + host;
    return QByteArray("\x16\x03\x01\x01\x00\x01\x00\x00\xfc\x03\x03", 11) + QByteArray(32, '\xa5') +
           QByteArray("\x00\x00\x02\x13\x01\x01\x00", 7) + name;
}

inline QList<RequestSequence> pageSequences()
{
    QByteArray many;
    QList<QByteArray> manyPages;
    for (int i = 0; i < 40; ++i) {
        many += pageRequest("/" + QByteArray::number(i));
        manyPages += "GET /" + QByteArray::number(i) + ' ';
    }
    return {
        {"a page", pageRequest("/index.html"), {"GET /index.html "}},
        {"a page without metadata", pageRequest("/a", ""), {"GET /a "}},
        {"GET in small letters", "get /a HTTP/1.1\r\n\r\n", {"GET /a "}},
        {"a query", pageRequest("/a?b=c"), {"GET /a "}},
        {"tags",
         pageRequest("/a", "If-None-Match: \"1\"\r\nHost: localhost\r\n") + pageRequest("/b") +
             pageRequest("/c", "Host: localhost\r\nif-none-match: W/\"2\"\r\n"),
         {"GET /a 1", "GET /b ", "GET /c W/2"}},
        {"more pages than may wait", many, manyPages},
        {"a page with a body",
         "GET /a HTTP/1.1\r\nContent-Length: 28\r\n\r\nPOST / HTTP/1.1\r\n\r\nSETRESET\r" + pageRequest("/b"),
         {"GET /a ", "GET /b "}},
        {"the last page of a connection",
         pageRequest("/a", "Host: localhost\r\nConnection: close\r\n") + pageRequest("/b"),
         {"GET /a "}},
        {"a page of an old client", "GET /a HTTP/1.0\r\n\r\n" + commandRequest("SETRESET"), {"GET /a "}},
        {"tabs as white space", "GET /a HTTP/1.1\r\nHost:\tlocalhost\t\r\nAccept: a\tb\r\n\r\n", {"GET /a "}},
        {"an absolute target", pageRequest("http://localhost:8080/a?b"), {"GET /a "}},
        {"an absolute target without a path", pageRequest("HTTP://127.0.0.1?b"), {"GET / "}},
        {"line ends before pages",
         "\r\n\r\n" + pageRequest("/a") + "\r\n" + pageRequest("/b"),
         {"GET /a ", "GET /b "}},
        {"pages that fail",
         pageRequest("/fail") + pageRequest("/plain") + pageRequest("/304") + pageRequest("/open") +
             pageRequest("/b"),
         {"GET /fail ", "GET /plain ", "GET /304 ", "GET /open "}},
        {"a navigation from a foreign page",
         pageRequest("/a", "Host: 127.0.0.1:80\r\nSec-Fetch-Site: cross-site\r\nSec-Fetch-Mode: "
                           "navigate\r\nSec-Fetch-Dest: document\r\n"),
         {"GET /a "}},
    };
}

inline QList<RequestSequence> commandSequences()
{
    const QByteArray blocks = blocksThatLookLikeCommands(2);
    return {
        {"a command", commandRequest("MEASRATE 1"), {"COMMAND MEASRATE 1"}},
        {"a command that ends in line ends", commandRequest("MEASRATE 1\r\n\n\r"), {"COMMAND MEASRATE 1"}},
        {"an import", commandRequest("IMPORT all\r\nA 1\r\nB 2\r\n"), {"IMPORT A 1\r\nB 2\r\n"}},
        {"an import of one line", commandRequest("IMPORT all"), {"IMPORT "}},
        {"an import in small letters", commandRequest("import all\nA 1"), {"COMMAND import all\nA 1"}},
        {"an empty command", commandRequest(""), {"COMMAND "}},
        {"commands among pages",
         pageRequest("/a") + commandRequest("ONE") + pageRequest("/b") + commandRequest("TWO"),
         {"GET /a ", "COMMAND ONE", "GET /b ", "COMMAND TWO"}},
        {"a command from an own page",
         commandRequest("ONE", "Host: localhost\r\nOrigin: http://localhost\r\nSec-Fetch-Site: same-origin\r\n"),
         {"COMMAND ONE"}},
        {"a body that looks like requests",
         commandRequest("GET /x HTTP/1.1\r\n\r\nPOST / HTTP/1.1\r\n\r\nTWO"),
         {"COMMAND GET /x HTTP/1.1\r\n\r\nPOST / HTTP/1.1\r\n\r\nTWO"}},
        {"a body of blocks that look like commands",
         commandRequest(blocks) + pageRequest("/a"),
         {"COMMAND " + commandRequest(blocks).mid(commandRequest(blocks).indexOf("\r\n\r\n") + 4).trimmed(),
          "GET /a "}},
        {"half a body",
         "POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 50\r\n\r\nPOST / HTTP/1.1\r\n\r\nONE",
         {}},
        {"a zero byte in a command", commandRequest(QByteArray("ONE\0TWO", 7)) + commandRequest("THREE"), {}, 400},
        {"POST in small letters",
         "post / HTTP/1.1\r\nContent-Length: 3\r\n\r\nONE" + commandRequest("TWO"),
         {"OTHER post", "COMMAND TWO"}},
        {"a command that waits for its go-ahead",
         pageRequest("/a") + commandRequest("ONE", "Host: localhost\r\nExpect: 100-continue\r\n") +
             commandRequest("TWO"),
         {"GET /a ", "COMMAND ONE", "COMMAND TWO"},
         0,
         1},
    };
}

inline QList<RequestSequence> refusedSequences()
{
    const QByteArray blocks = blocksThatLookLikeCommands(2);
    const QByteArray foreign = "Host: localhost:8080\r\nOrigin: http://example.com\r\n";
    const QByteArray after = commandRequest("SETRESET") + pageRequest("/after");
    return {
        {"a foreign name", pageRequest("/a", "Host: example.com\r\n") + after, {}, 403},
        {"a foreign name after a page",
         pageRequest("/a") + commandRequest("ONE", "Host: example.com:8080\r\n") + after,
         {"GET /a "},
         403},
        {"a foreign page's command", commandRequest("ONE", foreign) + after, {}, 403},
        {"a foreign page's long command", commandRequest(blocks, foreign) + after, {}, 403},
        {"a foreign page's picture",
         pageRequest("/a", "Host: localhost\r\nSec-Fetch-Site: cross-site\r\nSec-Fetch-Mode: "
                           "no-cors\r\nSec-Fetch-Dest: image\r\n") +
             after,
         {},
         403},
        {"a browser's command without a length", "POST / HTTP/1.1\r\nHost: localhost\r\n\r\n" + after, {}, 411},
        {"a foreign page's command that waits",
         commandRequest("ONE", foreign + "Expect: 100-continue\r\n") + after,
         {},
         403},
        {"a foreign page's web socket",
         pageRequest("/a", "Host: localhost\r\nOrigin: http://example.com\r\nUpgrade: websocket\r\n") + after,
         {},
         403},
        {"an own page's web socket",
         pageRequest("/a", "Host: localhost\r\nUpgrade: websocket\r\n") + after,
         {},
         403},
        {"a foreign origin", pageRequest("/a", foreign) + after, {}, 403},
        {"a page fetched in advance",
         pageRequest("/a", "Host: localhost\r\nSec-Fetch-Site: none\r\nSec-Purpose: prefetch;prerender\r\n") +
             after,
         {},
         403},
        {"an absolute target elsewhere", pageRequest("http://example.com/a") + after, {}, 403},
        {"a tag with a tab", pageRequest("/a", "Host: localhost\r\nIf-None-Match: a\tb\r\n") + after, {}, 400},
        {"a foreign page's question", "OPTIONS / HTTP/1.1\r\n" + foreign + "\r\n" + after, {}, 403},
        {"a name that vanishes", pageRequest("/a") + commandRequest("ONE", "") + after, {"GET /a "}, 400},
        {"a control byte", pageRequest("/a\x01") + after, {}, 400},
        {"a line end that is none",
         "GET /a HTTP/1.1\r\nHost: localhost\nOrigin: http://example.com\r\n\r\n" + after,
         {},
         400},
        {"two lengths", commandRequest("ONE", "Host: localhost\r\nContent-Length: 300\r\n") + after, {}, 400},
        {"a length that is no number", "POST / HTTP/1.1\r\nContent-Length: +3\r\n\r\nONE" + after, {}, 400},
        {"a body in requests",
         "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nONE\r\n0\r\n\r\n" + after,
         {},
         501},
        {"a body that is too long",
         "POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1048577\r\n\r\nONE" + after,
         {},
         413},
        {"a first line that is too long", pageRequest("/" + QByteArray(9000, 'a')) + after, {}, 414},
        {"a head that is too long", pageRequest("/a", "X: " + QByteArray(33000, 'a') + "\r\n") + after, {}, 431},
    };
}

/// Garbage, other methods and other protocols.
inline QList<RequestSequence> foreignSequences()
{
    const QByteArray after = pageRequest("/after");
    const QByteArray command = "POST / HTTP/1.1\r\nContent-Length: 8\r\n\r\nSETRESET";
    return {
        {"lines of text", "hello\r\nGetting up\r\nPOSTS\r\n" + after, {"GET /after "}},
        {"another method",
         "PUT /a HTTP/1.1\r\nHost: localhost\r\nContent-Length: " + QByteArray::number(command.size()) +
             "\r\n\r\n" + command + after,
         {"OTHER PUT", "GET /after "}},
        {"HEAD", "HEAD /a HTTP/1.1\r\nHost: localhost\r\n\r\n" + after, {"OTHER HEAD", "GET /after "}},
        {"another method of an old client", "HEAD /a HTTP/1.0\r\n\r\n" + after, {"OTHER HEAD"}},
        {"another method's last request",
         "HEAD /a HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n" + after,
         {"OTHER HEAD"}},
        {"another method that waits for its go-ahead",
         "PUT /a HTTP/1.1\r\nContent-Length: 1\r\nExpect: 100-continue\r\n\r\nA" + pageRequest("/after", ""),
         {"OTHER PUT", "GET /after "},
         0,
         1},
        {"a foreign page's other method", "DELETE / HTTP/1.1\r\nHost: example.com\r\n\r\n" + command, {}, 403},
        {"another method's long line", "PUT /" + QByteArray(9000, 'a') + " HTTP/1.1\r\n\r\n" + command, {}, 414},
        {"another method without an end", "PUT /" + QByteArray(9000, 'a'), {}, 414},
        {"capital letters without an end", QByteArray(9000, 'A'), {}, 414},
        {"another version", "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n" + command, {}, 400},
        {"another method without a version", "PUT /a\r\n\r\n" + command, {}, 400},
        {"a control byte in another method", "PUT /\x02 HTTP/1.1\r\n\r\n" + command, {}, 400},
        {"a word in capital letters", "HELLO\r\n" + after, {"GET /after "}},
        {"words in capital letters", "HELLO THERE\r\n\r\n" + command, {}, 400},
        {"a long line of text", QByteArray(9000, 'a') + "\r\n" + command, {}},
        {"an encrypted greeting", encryptedGreeting("a.localhost") + command, {}, aborted},
        {"an encrypted greeting with lines",
         after + encryptedGreeting("\r\n\r\n" + command) + command + after,
         {"GET /after "},
         aborted},
        {"text, then binary", "hello\r\n\x01\r\n" + command, {}},
    };
}

inline QList<RequestSequence> pausedSequences()
{
    return {
        {"a raw page", "GET /a", {"GET /a "}, 0, 0, true},
        {"a raw page with a version", "GET /a HTTP/1.1\r\n", {"GET /a "}, 0, 0, true},
        {"a raw page with a tag", "GET /a\r\nIf-None-Match: \"1\"", {"GET /a 1"}, 0, 0, true},
        {"a raw page after another", pageRequest("/a", "") + "GET /b", {"GET /a ", "GET /b "}, 0, 0, true},
        {"a raw command", "POST / HTTP/1.1\r\n\r\nMEASRATE 1\r\n", {"COMMAND MEASRATE 1"}, 0, 0, true},
        {"a raw import", "POST /\r\n\r\nIMPORT all\nA 1\n", {"IMPORT A 1\n"}, 0, 0, true},
        {"a raw command with requests in it",
         "POST /\r\n\r\nONE\r\nGET / HTTP/1.1\r\n\r\n",
         {"COMMAND ONE\r\nGET / HTTP/1.1"},
         0,
         0,
         true},
        {"a raw command with a zero byte", QByteArray("POST /\r\n\r\nO\0NE", 13), {}, 400, 0, true},
        {"a browser's half head", "POST / HTTP/1.1\r\nHost: localhost", {}, 0, 0, true},
        {"a browser's half head with a line end",
         "GET / HTTP/1.1\r\nOrigin: http://example.com\r\n",
         {},
         0,
         0,
         true},
        {"half a name of a header", "GET / HTTP/1.1\r\nHos", {}, 0, 0, true},
        {"half a head that announces a body", "POST / HTTP/1.1\r\nContent-Length: 3\r\n", {}, 0, 0, true},
        {"half a word", "GE", {}, 0, 0, true},
        {"half a line of another method", "PUT /a", {}, 0, 0, true},
        {"another method without its blank line", "PUT /a HTTP/1.1\r\n", {}, 0, 0, true},
        {"half a line of text", "hello", {}, 0, 0, true},
    };
}

inline QList<RequestSequence> allSequences()
{
    return pageSequences() + commandSequences() + refusedSequences() + foreignSequences() + pausedSequences();
}
