// SPDX-License-Identifier: MIT
#include "tunnel/responses_p.h"

#include "tunnelclient.h"

#include <QtTest>

using namespace SondixQt;

namespace {

const QByteArray blankLine = QByteArrayLiteral("\r\n\r\n");

QByteArray headOf(const QByteArray &response)
{
    return response.left(response.indexOf(blankLine) + blankLine.size());
}

} // namespace

class TestResponses : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void answersWithoutAHeaderGetOurs_data();
    void answersWithoutAHeaderGetOurs();
    void answersKeepTheirHeader_data();
    void answersKeepTheirHeader();
    void notModifiedHasNoBody_data();
    void notModifiedHasNoBody();
    void nobodySharesAnswersWithOtherOrigins_data();
    void nobodySharesAnswersWithOtherOrigins();
    void responsesAreDelimitedByTheirLength_data();
    void responsesAreDelimitedByTheirLength();
    void failuresAreShownAsAPage();
    void textsOfFailuresAreEscaped_data();
    void textsOfFailuresAreEscaped();
    void refusalsSayWhyAndClose_data();
    void refusalsSayWhyAndClose();
    void noPageHasTheBrowserAskForAnIcon();
};

void TestResponses::answersWithoutAHeaderGetOurs_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("length");
    QTest::newRow("empty") << QByteArray("") << 0;
    QTest::newRow("text") << QByteArrayLiteral("hello") << 5;
    QTest::newRow("markup and bytes stay as they are") << QByteArray("<b>&\0\r\n\r\n\xff", 11) << 11;
    QTest::newRow("long") << QByteArray(1048576, 'a') << 1048576;
}

void TestResponses::answersWithoutAHeaderGetOurs()
{
    QFETCH(QByteArray, body);
    QFETCH(int, length);
    const QByteArray head =
        QStringLiteral("HTTP/1.1 200 OK\r\nConnection: keep-alive\r\nContent-Type: text/html\r\n"
                       "Content-Length: %1\r\n\r\n")
            .arg(length)
            .toLatin1();
    QCOMPARE(sensorResponse(QByteArray(), body), head + body);
    QCOMPARE(commandResponse(body), head + body);
    QVERIFY(isDelimited(QByteArray(), body));
}

void TestResponses::answersKeepTheirHeader_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QByteArray>("head");
    const QByteArray header = "HTTP/1.1 200 OK\r\nContent-Type: image/png\r\nContent-Length: 5";
    QTest::newRow("without a line end") << header << header + blankLine;
    QTest::newRow("with a line end") << header + "\r\n" << header + blankLine;
    QTest::newRow("with its blank line") << header + blankLine << header + blankLine;
    QTest::newRow("bare line ends") << QByteArray("HTTP/1.1 200 OK\nContent-Length: 5\n\n")
                                    << QByteArray("HTTP/1.1 200 OK\nContent-Length: 5\n\n");
    QTest::newRow("bare line end at its end") << QByteArray("HTTP/1.1 200 OK\nContent-Length: 5\n")
                                              << QByteArray("HTTP/1.1 200 OK\nContent-Length: 5\n\r\n");
    QTest::newRow("another status") << QByteArray("HTTP/1.1 404 Not Found\r\nContent-Length: 5")
                                    << QByteArray("HTTP/1.1 404 Not Found\r\nContent-Length: 5\r\n\r\n");
}

void TestResponses::answersKeepTheirHeader()
{
    QFETCH(QByteArray, header);
    QFETCH(QByteArray, head);
    QCOMPARE(sensorResponse(header, "hello"), head + "hello");
    QCOMPARE(sensorResponse(header, ""), head);
    QCOMPARE(sensorResponse(header, "\r\n\r\n"), head + "\r\n\r\n");
}

void TestResponses::notModifiedHasNoBody_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::newRow("1.1") << QByteArrayLiteral("HTTP/1.1 304 Not Modified\r\nETag: \"1\"");
    QTest::newRow("1.0") << QByteArrayLiteral("HTTP/1.0 304 Not Modified\r\nETag: \"1\"");
    QTest::newRow("length") << QByteArrayLiteral("HTTP/1.1 304 Not Modified\r\nContent-Length: 5");
    QTest::newRow("no reason") << QByteArrayLiteral("HTTP/1.1 304");
}

void TestResponses::notModifiedHasNoBody()
{
    QFETCH(QByteArray, header);
    QCOMPARE(sensorResponse(header, "hello"), header + blankLine);
    QCOMPARE(sensorResponse(header + "\r\n", ""), header + blankLine);
    QCOMPARE(sensorResponse(header + blankLine, "hello"), header + blankLine);
    QVERIFY(isDelimited(header, "hello"));
    QVERIFY(isDelimited(header + blankLine, ""));
}

void TestResponses::nobodySharesAnswersWithOtherOrigins_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QByteArray>("kept");
    const auto row = [](const char *name, const QByteArray &header, const QByteArray &kept) {
        QTest::newRow(name) << header << kept;
    };
    const QByteArray success = "HTTP/1.1 200 OK\r\n";
    const QByteArray length = "Content-Length: 5\r\n";
    const QByteArray allow = "Access-Control-Allow-Origin: *\r\n";
    row("first", success + allow + length + "\r\n", success + length + "\r\n");
    row("last", success + length + allow + "\r\n", success + length + "\r\n");
    row("last, without a blank line", success + length + allow, success + length + "\r\n");
    row("last, without a line end", success + length + allow.trimmed(), success + length + "\r\n");
    row("only", success + allow + "\r\n", success + "\r\n");
    row("several", success + allow + length + "Access-Control-Allow-Credentials: true\r\n\r\n",
        success + length + "\r\n");
    row("letters of another case", success + "ACCESS-control-ALLOW-origin: *\r\n" + length + "\r\n",
        success + length + "\r\n");
    row("bare line ends", "HTTP/1.1 200 OK\nAccess-Control-Allow-Origin: *\nContent-Length: 5\n\n",
        "HTTP/1.1 200 OK\nContent-Length: 5\n\n");
    row("mixed line ends", "HTTP/1.1 200 OK\r\nX: y\nAccess-Control-Allow-Origin: *\r\n" + length + "\r\n",
        "HTTP/1.1 200 OK\r\nX: y\n" + length + "\r\n");
    row("in a value it means nothing", success + "X: Access-Control-Allow-Origin: *\r\n" + length + "\r\n",
        success + "X: Access-Control-Allow-Origin: *\r\n" + length + "\r\n");
}

void TestResponses::nobodySharesAnswersWithOtherOrigins()
{
    QFETCH(QByteArray, header);
    QFETCH(QByteArray, kept);
    const QByteArray body = "\r\nAccess-Control-Allow-Origin: this is text\r\n";
    QCOMPARE(sensorResponse(header, body), kept + body);
}

void TestResponses::responsesAreDelimitedByTheirLength_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<bool>("delimited");
    const auto row = [](const QByteArray &lines, bool delimited) {
        QTest::newRow(lines.toPercentEncoding(" :").constData()) << "HTTP/1.1 200 OK" + lines << delimited;
    };
    row("\r\nContent-Length: 5", true);
    row("\r\nContent-Length: 5\r\n\r\n", true);
    row("\r\nContent-Length:5\r\nX: y\r\n", true);
    row("\r\ncontent-length: 5 \r\n", true);
    row("\nContent-Length: 5\n\n", true);
    row("", false);
    row("\r\n\r\n", false);
    row("\r\nX: y\r\n", false);
    row("\r\nContent-Length: 4\r\n", false);
    row("\r\nContent-Length: 6\r\n", false);
    row("\r\nContent-Length: 55\r\n", false);
    row("\r\nContent-Length:\r\n", false);
    row("\r\nContent-Length: five\r\n", false);
    row("\r\nX-Content-Length: 5\r\n", false);
    row("\r\nX: Content-Length: 5\r\n", false);
    row("\r\nContent-Length: 5\r\nTransfer-Encoding: chunked\r\n", false);
    row("\nTransfer-Encoding: chunked\nContent-Length: 5\n", false);
    row("\r\nContent-Length: 5\r\nContent-Length: 6\r\n", false);
}

void TestResponses::responsesAreDelimitedByTheirLength()
{
    QFETCH(QByteArray, header);
    QFETCH(bool, delimited);
    QCOMPARE(isDelimited(header, "hello"), delimited);
}

void TestResponses::failuresAreShownAsAPage()
{
    const QByteArray response = badGatewayResponse("/values.html", "No answer");
    const QByteArray body = bodyOf(response);
    QCOMPARE(headOf(response),
             QStringLiteral("HTTP/1.1 502 Bad Gateway\r\nConnection: keep-alive\r\nContent-Type: text/html\r\n"
                            "Content-Length: %1\r\n\r\n")
                 .arg(body.size())
                 .toLatin1());
    QVERIFY(body.contains("<title>502 Bad Gateway</title>"));
    QVERIFY(body.contains("/values.html"));
    QVERIFY(body.contains("No answer"));
    QVERIFY(body.contains("charset=\"utf-8\""));
}

void TestResponses::textsOfFailuresAreEscaped_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("html");
    const auto row = [](const char *name, const QByteArray &text, const QByteArray &html) {
        QTest::newRow(name) << text << html;
    };
    row("tag", "<script>alert(1)</script>", "&lt;script&gt;alert(1)&lt;/script&gt;");
    row("ampersand", "a&b", "a&amp;b");
    row("entity", "&lt;", "&amp;lt;");
    row("quotation mark", "a\"b", "a&quot;b");
    row("umlauts", "Ger\xe4t f\xfcr \xb5m", "Ger\xc3\xa4t f\xc3\xbcr \xc2\xb5m");
    row("place markers", "%1 %2 %L1 100%", "%1 %2 %L1 100%");
    row("line ends", "a\r\nb", "a\r\nb");
}

void TestResponses::textsOfFailuresAreEscaped()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, html);
    for (const QByteArray &response : {badGatewayResponse("/a" + text, "plain"), badGatewayResponse("/a", text)}) {
        const QByteArray body = bodyOf(response);
        QVERIFY2(body.contains(html), body.constData());
        QCOMPARE(body.count(text), html.count(text));
        QVERIFY(headOf(response).endsWith("\r\nContent-Length: " + QByteArray::number(body.size()) + blankLine));
    }
}

void TestResponses::refusalsSayWhyAndClose_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("name");
    const auto row = [](int status, const char *name) { QTest::newRow(name) << status << QByteArray(name); };
    row(400, "Bad Request");
    row(403, "Forbidden");
    row(408, "Request Timeout");
    row(413, "Content Too Large");
    row(414, "URI Too Long");
    row(431, "Request Header Fields Too Large");
    row(501, "Not Implemented");
    row(503, "Service Unavailable");
}

void TestResponses::refusalsSayWhyAndClose()
{
    QFETCH(int, status);
    QFETCH(QByteArray, name);
    const QByteArray response = refusalResponse(status);
    const QByteArray title = QByteArray::number(status) + ' ' + name;
    const QByteArray body = bodyOf(response);
    QVERIFY(response.startsWith("HTTP/1.1 " + title + "\r\n"));
    QVERIFY(headOf(response).contains("\r\nConnection: close\r\n"));
    QVERIFY(headOf(response).contains("\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n"));
    QVERIFY(!response.toLower().contains("access-control"));
    QVERIFY(body.contains("<title>" + title + "</title>"));
}

void TestResponses::noPageHasTheBrowserAskForAnIcon()
{
    const QByteArray icon = "<link rel=\"icon\" href=\"data:,\">";
    QVERIFY(bodyOf(refusalResponse(403)).contains(icon));
    QVERIFY(bodyOf(badGatewayResponse("/", "No answer")).contains(icon));
}

QTEST_APPLESS_MAIN(TestResponses)
#include "tst_responses.moc"
