// SPDX-License-Identifier: MIT
#include <SondixQt/RS232Tunnel>

#include "tunnelbench.h"
#include "tunnelclient.h"

#include <QRegularExpression>

#include <memory>

using namespace SondixQt;

namespace {

QStringList names(std::initializer_list<const char *> list)
{
    QStringList result;
    for (const char *text : list)
        result.append(QString(text));
    return result;
}

/// The parameters staged for a page, in the form of commandsSent().
QString page(const char *path, const char *tag = "")
{
    return QString("SetParameterInt(\"SP_HTTPMaxLength\", 16383) SetParameterString(\"SP_HTTPPath\", \"%1\") "
                   "SetParameterString(\"SP_HTTPeTag\", \"%2\")")
        .arg(QString(path), QString(tag));
}

/// The parameters staged for a command, in the form of commandsSent().
QString command(const char *text, int init)
{
    return QString("SetParameterInt(\"CP_InitAfterSensorCommand\", %1) SetParameterString(\"SP_CmdStr\", \"%2\")")
        .arg(init)
        .arg(QString(text));
}

/// The pages and commands that were sent to the sensor, in order.
QStringList reached(CallRecorder &recorder)
{
    QStringList result;
    QString staged;
    const QStringList calls = recorder.take();
    for (const QString &call : calls) {
        static const QRegularExpression relevant(
            QString("^SetParameterString\\(\"(?:SP_HTTPPath|SP_HTTPeTag|SP_CmdStr)\", (\".*\")\\)$"));
        const QRegularExpressionMatch match = relevant.match(call);
        if (match.hasMatch())
            staged += QLatin1Char(' ') + match.captured(1);
        if (call == QLatin1String("SensorCommand()") && !staged.isEmpty())
            result.append(std::exchange(staged, QString()));
    }
    return result;
}

const QString getHttp = QStringLiteral("Get_HTTP");
const QString cmdGeneric = QStringLiteral("Cmd_Generic");

} // namespace

/// The commands that the tunnel sends to the sensor for the requests of browsers.
class TunnelRelayTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void pagesAreFetchedWithFiveArguments();
    void pathsAndTagsAreRelayed_data();
    void pathsAndTagsAreRelayed();
    void bytesBeyondAsciiReachTheSensorAsTheyAre();
    void answersOfTheSensorPassThrough_data();
    void answersOfTheSensorPassThrough();
    void bodiesWithoutALengthEndWithTheConnection();
    void failuresGiveAPageAndTheNextRequestIsServed();
    void failuresOnAClosedSensorEndTheConnection();

    void commandsReachTheSensor_data();
    void commandsReachTheSensor();
    void commandsAreAnsweredWithTheSensorsWords();
    void failingCommandsGiveAPage();
    void bodyInTwoReadsIsProcessedOnce();
    void requestsAreServedInTheirOrder();
    void splitRequestsGiveTheSame_data();
    void splitRequestsGiveTheSame();

    void strangersReachNothing_data();
    void strangersReachNothing();
    void nothingIsParsedAfterARefusal();
    void unknownBytesAreDropped();
    void rawClientNeedsNoBlankLine();
    void brokenOffBodyIsGivenUp();
    void closeIsHonoured();
    void theLastAnswerArrivesWholeWhateverTheClientStillSends();
    void aSensorThatEndsTheConnectionIsObeyed();
    void answersForAClientThatLeftAreDiscarded();

private:
    std::unique_ptr<SensorInstance> sensor;
    std::unique_ptr<RS232Tunnel> tunnel;
    std::unique_ptr<CallRecorder> recorder;
    QUrl url;
};

void TunnelRelayTest::init()
{
    loadTestBench();
    scriptOutputs(0, 1, 0, 0);
    sensor = std::make_unique<SensorInstance>(TX270);
    sensor->storeInterfaceParameters(testBenchParameters(TX270));
    tunnel = std::make_unique<RS232Tunnel>(*sensor);
    QCOMPARE(tunnel->openTunnel(url), NoError);
    recorder = std::make_unique<CallRecorder>();
}

void TunnelRelayTest::cleanup()
{
    sondixsim::releaseHangs();
    recorder.reset();
    tunnel.reset();
    sensor.reset();
}

void TunnelRelayTest::pagesAreFetchedWithFiveArguments()
{
    scriptPage();
    TunnelClient client(url);
    client.send(getRequest("/index.html"));
    QCOMPARE(client.response(), QByteArray(pageHeader) + pageBody);
    QStringList calls = recorder->take();
    calls = calls.mid(calls.indexOf(QString("SetParameterInt(\"SP_HTTPMaxLength\", 16383)")));
    const QStringList expected =
        names({"SetParameterInt(\"SP_HTTPMaxLength\", 16383)",
               "SetParameterString(\"SP_HTTPPath\", \"/index.html\")", "SetParameterString(\"SP_HTTPeTag\", \"\")",
               "SetParameterString(\"S_Command\", \"Get_HTTP\")", "SensorCommand()"});
    QCOMPARE(calls.mid(0, expected.size()), expected);
    for (const QString &call : calls.mid(expected.size(), 4))
        QVERIFY2(call.startsWith(QLatin1String("GetParameterBinary(\"SA_HTTP")), qPrintable(call));
    QCOMPARE(calls.size(), expected.size() + 4);
}

void TunnelRelayTest::pathsAndTagsAreRelayed_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QString>("staged");
    QTest::newRow("plain") << getRequest("/a/b.html") << page("/a/b.html");
    QTest::newRow("query") << getRequest("/values.json?since=5&x=1") << page("/values.json");
    QTest::newRow("only a query") << getRequest("/?") << page("/");
    QTest::newRow("tag") << getRequest("/", "If-None-Match: \"12-ab\"\r\n") << page("/", "12-ab");
    QTest::newRow("weak tag") << getRequest("/", "If-None-Match: W/\"12\"\r\n") << page("/", "W/12");
    QTest::newRow("tag of a query") << getRequest("/x?y", "If-None-Match: \"7\"\r\n") << page("/x", "7");
    QTest::newRow("small letters") << QByteArray("get /y HTTP/1.1\r\nHost: localhost\r\n\r\n") << page("/y");
    QTest::newRow("escapes stay") << getRequest("/a%20b%0d") << page("/a%20b%0d");
}

void TunnelRelayTest::pathsAndTagsAreRelayed()
{
    QFETCH(QByteArray, request);
    QFETCH(QString, staged);
    scriptPage();
    TunnelClient client(url);
    client.send(request);
    QCOMPARE(statusOf(client.response()), 200);
    QCOMPARE(commandsSent(*recorder, getHttp), QStringList(staged));
}

void TunnelRelayTest::bytesBeyondAsciiReachTheSensorAsTheyAre()
{
    scriptPage();
    scriptGenericAnswer();
    TunnelClient client(url);
    client.send(getRequest("/\xfc") + postRequest("NAME \xb5m \xc3\xa4"));
    QCOMPARE(statusOf(client.response()), 200);
    QCOMPARE(statusOf(client.response()), 200);
    const std::vector<sondixsim::Call> calls = sondixsim::calls();
    const auto staged = [&](const std::string &text) {
        return std::any_of(calls.begin(), calls.end(),
                           [&](const sondixsim::Call &call) { return call.text() == text; });
    };
    QVERIFY(staged("SetParameterString(\"SP_HTTPPath\", \"/\xfc\")"));
    QVERIFY(staged("SetParameterString(\"SP_CmdStr\", \"NAME \xb5m \xc3\xa4\")"));
}

void TunnelRelayTest::answersOfTheSensorPassThrough_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("response");
    const QByteArray body = "hello";
    const QByteArray lines = "HTTP/1.1 200 OK\r\nContent-Length: 5";
    QTest::newRow("header with its blank line") << lines + "\r\n\r\n" << body << lines + "\r\n\r\n" + body;
    QTest::newRow("header with a line end") << lines + "\r\n" << body << lines + "\r\n\r\n" + body;
    QTest::newRow("header without a line end") << lines << body << lines + "\r\n\r\n" + body;
    QTest::newRow("no header") << QByteArray() << body
                               << QByteArray("HTTP/1.1 200 OK\r\nConnection: keep-alive\r\nContent-Type: "
                                             "text/html\r\nContent-Length: 5\r\n\r\nhello");
    const QByteArray unchanged = "HTTP/1.1 304 Not Modified\r\nETag: 7\r\n\r\n";
    QTest::newRow("nothing new") << unchanged << body << unchanged;
    const QByteArray missing = "HTTP/1.1 404 Not Found\r\nContent-Length: 5\r\n\r\n";
    QTest::newRow("not found") << missing << body << missing + body;
    QTest::newRow("opened to others") << QByteArray(
                                             "HTTP/1.1 200 OK\r\nAccess-Control-Allow-Origin: *\r\n"
                                             "Content-Length: 5\r\naccess-control-allow-methods: POST\r\n\r\n")
                                      << body << lines + "\r\n\r\n" + body;
}

void TunnelRelayTest::answersOfTheSensorPassThrough()
{
    QFETCH(QByteArray, header);
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, response);
    scriptPage(header, body);
    TunnelClient client(url);
    for (int i = 0; i < 2; ++i) {
        client.send(getRequest("/"));
        QCOMPARE(client.response(), response);
    }
}

void TunnelRelayTest::bodiesWithoutALengthEndWithTheConnection()
{
    scriptPage("HTTP/1.1 200 OK\r\n\r\n", "all of it");
    TunnelClient client(url);
    client.send(getRequest("/"));
    QCOMPARE(client.everything(), QByteArray("HTTP/1.1 200 OK\r\n\r\nall of it"));
}

void TunnelRelayTest::failuresGiveAPageAndTheNextRequestIsServed()
{
    sondixsim::Fault failure;
    failure.command = "Get_HTTP";
    failure.code = -42;
    failure.text = "no <answer> & \xb0";
    failure.times = 1;
    sondixsim::inject(failure);
    scriptPage();
    TunnelClient client(url);
    const auto announce = [](const char *text) {
        QTest::ignoreMessage(QtDebugMsg,
                             QRegularExpression(QRegularExpression::escape(QString::fromLatin1(text))));
    };
    announce("Get_HTTP error:'no <answer> & \xb0' RS232TunnelWorker::handleRequestFromSocket "
             "SP_HTTPPath: /<b> SP_HTTPeTag: 3");
    client.send(getRequest("/<b>", "If-None-Match: \"3\"\r\n"));
    const QByteArray response = client.response();
    const QByteArray body = bodyOf(response);
    QCOMPARE(response.left(response.size() - body.size()),
             "HTTP/1.1 502 Bad Gateway\r\nConnection: keep-alive\r\nContent-Type: text/html\r\nContent-Length: " +
                 QByteArray::number(body.size()) + "\r\n\r\n");
    QVERIFY(body.contains("<title>502 Bad Gateway</title>"));
    QVERIFY2(body.contains("/&lt;b&gt;"), body.constData());
    QVERIFY2(body.contains("no &lt;answer&gt; &amp; \xc2\xb0"), body.constData());
    QVERIFY(!body.contains("<b>") && !body.contains("<answer>"));

    client.send(getRequest("/next"));
    QCOMPARE(statusOf(client.response()), 200);
}

void TunnelRelayTest::failuresOnAClosedSensorEndTheConnection()
{
    scriptPage();
    TunnelClient client(url);
    client.send(getRequest("/"));
    QCOMPARE(statusOf(client.response()), 200);
    sondixsim::clearFaults();
    QCOMPARE(sensor->close(), NoError);
    client.send(getRequest("/"));
    QCOMPARE(statusOf(client.everything()), 502);

    // Only a new connection opens the sensor again.
    QVERIFY(!sensor->isOpen());
    scriptPage();
    TunnelClient next(url);
    next.send(getRequest("/"));
    QCOMPARE(statusOf(next.response()), 200);
    QVERIFY(sensor->isOpen());
}

void TunnelRelayTest::commandsReachTheSensor_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("staged");
    QTest::newRow("a setting") << QByteArray("MEASRATE 2.5") << command("MEASRATE 2.5", 0);
    QTest::newRow("line ends at its end") << QByteArray("MEASRATE 2.5\r\n\n\r") << command("MEASRATE 2.5", 0);
    QTest::newRow("line ends within") << QByteArray("A 1\r\nB 2\r\n") << command("A 1\r\nB 2", 0);
    QTest::newRow("defaults") << QByteArray("SETDEFAULT ALL") << command("SETDEFAULT ALL", 1);
    QTest::newRow("not at the beginning") << QByteArray("X SETDEFAULT") << command("X SETDEFAULT", 0);
    QTest::newRow("import") << QByteArray("IMPORT settings.txt\r\nA 1\r\nB 2\r\n") << command("A 1\r\nB 2\r\n", 1);
    QTest::newRow("import of nothing") << QByteArray("IMPORT settings.txt") << command("", 1);
    QTest::newRow("no import") << QByteArray("IMPORTANT 1") << command("IMPORTANT 1", 0);
    QTest::newRow("small letters") << QByteArray("import x\nA") << command("import x\nA", 0);
    QTest::newRow("empty") << QByteArray() << command("", 0);
    QTest::newRow("like a request") << QByteArray("GET / HTTP/1.1\r\n\r\n") << command("GET / HTTP/1.1", 0);
}

void TunnelRelayTest::commandsReachTheSensor()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, staged);
    scriptGenericAnswer();
    TunnelClient client(url);
    client.send(postRequest(body));
    QCOMPARE(statusOf(client.response()), 200);
    QCOMPARE(commandsSent(*recorder, cmdGeneric), QStringList(staged));
}

void TunnelRelayTest::commandsAreAnsweredWithTheSensorsWords()
{
    const QByteArray head =
        "HTTP/1.1 200 OK\r\nConnection: keep-alive\r\nContent-Type: text/html\r\nContent-Length: ";
    scriptGenericAnswer("E 12 <odd>\r\n");
    TunnelClient client(url);
    client.send(postRequest("ECHO"));
    QCOMPARE(client.response(), head + "12\r\n\r\nE 12 <odd>\r\n");

    sondixsim::clearFaults();
    scriptAnswer("Cmd_Generic", "SA_Other=1");
    client.send(postRequest("ECHO"));
    QCOMPARE(client.response(), head + "0\r\n\r\n");
}

void TunnelRelayTest::failingCommandsGiveAPage()
{
    scriptCommandFailure("Cmd_Generic", -9);
    scriptPage();
    TunnelClient client(url);
    client.send(postRequest("WRONG") + getRequest("/"));
    const QByteArray response = client.response();
    QCOMPARE(statusOf(response), 502);
    QVERIFY(response.contains(scriptedFailure));
    QVERIFY(response.contains("/command"));
    QCOMPARE(statusOf(client.response()), 200);
}

void TunnelRelayTest::bodyInTwoReadsIsProcessedOnce()
{
    scriptGenericAnswer();
    scriptPage();
    TunnelClient other(url);
    TunnelClient client(url);
    const QByteArray request = postRequest("MEASRATE 2.5");
    client.send(request.left(request.size() - 5));
    // When another client has been served twice, the tunnel has read the first part.
    for (int i = 0; i < 2; ++i) {
        other.send(getRequest("/"));
        QCOMPARE(statusOf(other.response()), 200);
    }
    QCOMPARE(timesSent("Cmd_Generic"), 0);
    client.send(request.right(5));
    QCOMPARE(statusOf(client.response()), 200);
    QCOMPARE(commandsSent(*recorder, cmdGeneric), QStringList(command("MEASRATE 2.5", 0)));
}

void TunnelRelayTest::requestsAreServedInTheirOrder()
{
    scriptPage();
    scriptGenericAnswer();
    TunnelClient client(url);
    QByteArray all;
    QStringList expected;
    for (int i = 0; i < 40; ++i) {
        const QByteArray number = QByteArray::number(i);
        all += i % 3 == 1 ? postRequest("SET " + number) : getRequest("/" + number);
        expected += i % 3 == 1 ? QString(" \"SET %1\"").arg(i) : QString(" \"/%1\" \"\"").arg(i);
    }
    client.send(all);
    for (int i = 0; i < 40; ++i)
        QCOMPARE(bodyOf(client.response()), QByteArray(i % 3 == 1 ? "done" : pageBody));
    QCOMPARE(reached(*recorder), expected);
}

void TunnelRelayTest::splitRequestsGiveTheSame_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("page, command, page")
        << getRequest("/a?b", "If-None-Match: \"1\"\r\n") + postRequest("SET 1\r\n") + getRequest("/c");
    QTest::newRow("a body like a request") << postRequest("POST / HTTP/1.1\r\n\r\nSET 1") + getRequest("/");
    QTest::newRow("import") << postRequest("IMPORT x\r\nA 1\r\n") + postRequest("B");
    QTest::newRow("a method that is none of ours")
        << "PUT /x HTTP/1.1\r\nHost: localhost\r\nContent-Length: 4\r\n\r\nGET " + getRequest("/y");
    QTest::newRow("refused") << getRequest("/") + "GET /x HTTP/1.1\r\nHost: evil.example\r\n\r\n" +
                                    getRequest("/never");
}

void TunnelRelayTest::splitRequestsGiveTheSame()
{
    QFETCH(QByteArray, bytes);
    scriptPage();
    scriptGenericAnswer();
    // The last request or a refusal closes the connection, so that everything() returns all answers.
    if (!bytes.contains("evil.example"))
        bytes += getRequest("/last", "Connection: close\r\n");
    const auto outcome = [&](const QList<QByteArray> &parts) {
        TunnelClient client(url);
        for (const QByteArray &part : parts)
            client.send(part);
        QByteArray answers;
        if (!bytes.contains("evil.example"))
            answers = client.everything();
        for (int i = 0; i < 2 && bytes.contains("evil.example"); ++i)
            answers += client.response();
        return qMakePair(answers, reached(*recorder));
    };
    const auto whole = outcome({bytes});
    QVERIFY(!whole.first.endsWith("..."));
    QVERIFY(!whole.second.isEmpty());
    QList<QByteArray> single;
    for (int i = 0; i < bytes.size(); ++i) {
        QCOMPARE(outcome({bytes.left(i), bytes.mid(i)}), whole);
        single.append(bytes.mid(i, 1));
    }
    QCOMPARE(outcome(single), whole);
}

void TunnelRelayTest::strangersReachNothing_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<int>("status");
    const QByteArray command = "Content-Type: text/plain\r\nContent-Length: 10\r\n\r\nSETDEFAULT";
    QTest::newRow("another name for this computer")
        << QByteArray("GET / HTTP/1.1\r\nHost: evil.example\r\n\r\n") << 403;
    QTest::newRow("a command under that name")
        << "POST / HTTP/1.1\r\nHost: evil.example\r\nOrigin: http://evil.example\r\n" + command << 403;
    QTest::newRow("a foreign page's command")
        << "POST / HTTP/1.1\r\nHost: 127.0.0.1\r\nOrigin: http://evil.example\r\n" + command << 403;
    QTest::newRow("a sandboxed page's command")
        << "POST / HTTP/1.1\r\nHost: 127.0.0.1\r\nOrigin: null\r\n" + command << 403;
    QTest::newRow("a page of another port")
        << "POST / HTTP/1.1\r\nHost: 127.0.0.1:2\r\nSec-Fetch-Site: same-site\r\n" + command << 403;
    QTest::newRow("a picture in a foreign page")
        << getRequest("/", "Sec-Fetch-Site: cross-site\r\nSec-Fetch-Mode: no-cors\r\nSec-Fetch-Dest: image\r\n")
        << 403;
    QTest::newRow("a body of unknown length")
        << QByteArray(
               "POST / HTTP/1.1\r\nHost: 127.0.0.1\r\nTransfer-Encoding: chunked\r\n\r\na\r\nSETDEFAULT\r\n")
        << 501;
    QTest::newRow("two lengths") << "POST / HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 0\r\n" + command << 400;
    QTest::newRow("a long target") << getRequest(QByteArray(9000, 'x')) << 414;
    QTest::newRow("a long head") << getRequest("/", "X: " + QByteArray(33000, 'x') + "\r\n") << 431;
    QTest::newRow("a command of unknown length")
        << QByteArray("POST / HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\nSETDEFAULT") << 411;
    QTest::newRow("a web socket") << getRequest("/", "Origin: http://evil.example\r\nUpgrade: websocket\r\n")
                                  << 403;
    QTest::newRow("a page in advance") << getRequest("/", "Sec-Purpose: prefetch\r\n") << 403;
    QTest::newRow("an absolute target") << getRequest("http://evil.example/") << 403;
    QTest::newRow("another method's long line") << "PUT /" + QByteArray(9000, 'x') + " HTTP/1.1\r\n\r\n" << 414;
    QTest::newRow("a huge body") << QByteArray(
                                        "POST / HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 1048577\r\n\r\n")
                                 << 413;
}

void TunnelRelayTest::strangersReachNothing()
{
    QFETCH(QByteArray, request);
    QFETCH(int, status);
    scriptPage();
    scriptGenericAnswer();
    TunnelClient client(url);
    client.send(request);
    const QByteArray response = client.everything();
    QCOMPARE(statusOf(response), status);
    QVERIFY(response.contains("\r\nConnection: close\r\n"));
    QVERIFY(!response.toLower().contains("access-control"));
    QCOMPARE(reached(*recorder), QStringList());

    // The sensor's own page can still send commands.
    TunnelClient own(url);
    own.send(postRequest("SET 1", "Origin: http://127.0.0.1\r\nSec-Fetch-Site: same-origin\r\n"));
    QCOMPARE(statusOf(own.response()), 200);
    QCOMPARE(reached(*recorder), QStringList(QString(" \"SET 1\"")));
}

void TunnelRelayTest::nothingIsParsedAfterARefusal()
{
    scriptPage();
    scriptGenericAnswer();
    TunnelClient client(url);
    client.send(getRequest("/first") + "POST / HTTP/1.1\r\nHost: 127.0.0.1\r\nOrigin: http://evil.example\r\n"
                                       "Content-Length: 1000000\r\n\r\n");
    QCOMPARE(statusOf(client.response()), 200);
    QCOMPARE(statusOf(client.response()), 403);
    // A browser sends a long body in blocks, and a foreign page can choose how each of them begins.
    for (int i = 0; i < 4; ++i)
        client.send(("POST / HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 3\r\n\r\nSET" + getRequest("/"))
                        .leftJustified(16 * 1024, ' '));
    QCOMPARE(client.everything(), QByteArray());
    QCOMPARE(reached(*recorder), QStringList(QString(" \"/first\" \"\"")));
}

void TunnelRelayTest::unknownBytesAreDropped()
{
    scriptPage();
    TunnelClient client(url);
    QTest::ignoreMessage(QtDebugMsg, "Unknown HTTP request");
    client.send("HELLO\r\n" + getRequest("/"));
    QCOMPARE(client.response(), QByteArray(pageHeader) + pageBody);
    QTest::ignoreMessage(QtDebugMsg, "Unknown HTTP request");
    client.send("DELETE /settings HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 3\r\n\r\nabc" + getRequest("/x"));
    const QByteArray refusal = client.response();
    QCOMPARE(statusOf(refusal), 501);
    QVERIFY(refusal.contains("Unknown HTTP request"));
    QCOMPARE(client.response(), QByteArray(pageHeader) + pageBody);
    QCOMPARE(reached(*recorder), names({" \"/\" \"\"", " \"/x\" \"\""}));
}

void TunnelRelayTest::rawClientNeedsNoBlankLine()
{
    scriptPage();
    scriptGenericAnswer();
    TunnelClient client(url);
    client.send("GET /raw");
    QCOMPARE(client.response(), QByteArray(pageHeader) + pageBody);
    client.send("POST /\r\n\r\nSET 5\r\n");
    QCOMPARE(bodyOf(client.response()), QByteArray("done"));
    QCOMPARE(reached(*recorder), names({" \"/raw\" \"\"", " \"SET 5\""}));
}

void TunnelRelayTest::brokenOffBodyIsGivenUp()
{
    TunnelClient client(url);
    QElapsedTimer time;
    time.start();
    client.send(postRequest("MEASRATE 2.5").chopped(1));
    const QByteArray response = client.everything();
    QCOMPARE(statusOf(response), 408);
    // The limit is 5000 ms; two clocks with a resolution of 1 ms may differ by one.
    QVERIFY(time.elapsed() >= 4999);
    QCOMPARE(reached(*recorder), QStringList());
}

void TunnelRelayTest::closeIsHonoured()
{
    scriptPage();
    TunnelClient client(url);
    client.send(getRequest("/", "Connection: close\r\n"));
    QCOMPARE(client.everything(), QByteArray(pageHeader) + pageBody);
    TunnelClient old(url);
    old.send("GET / HTTP/1.0\r\n\r\n");
    QCOMPARE(old.everything(), QByteArray(pageHeader) + pageBody);
}

void TunnelRelayTest::theLastAnswerArrivesWholeWhateverTheClientStillSends()
{
    const QByteArray body(3000000, 'x');
    scriptPage("HTTP/1.1 200 OK\r\nContent-Length: 3000000\r\n\r\n", body);
    for (int round = 0; round < 10; ++round) {
        TunnelClient client(url);
        client.fetchNothing();
        client.send(getRequest("/", "Connection: close\r\n"));
        QTRY_COMPARE(timesSent("Get_HTTP"), round + 1);
        client.send("\r\n");
        client.fetchEverything();
        QCOMPARE(bodyOf(client.everything()).size(), body.size());
    }
}

void TunnelRelayTest::aSensorThatEndsTheConnectionIsObeyed()
{
    scriptPage("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 5\r\n\r\n");
    TunnelClient client(url);
    client.send(getRequest("/"));
    QVERIFY(client.everything().endsWith(QByteArray("\r\n\r\n") + pageBody));
}

void TunnelRelayTest::answersForAClientThatLeftAreDiscarded()
{
    sondixsim::Fault stuck;
    stuck.command = "Get_HTTP";
    stuck.hang = true;
    stuck.times = 1;
    sondixsim::inject(stuck);
    scriptPage();
    TunnelClient client(url);
    client.send(getRequest("/one") + getRequest("/two"));
    QTRY_COMPARE(timesSent("Get_HTTP"), 1);
    client.hangUp();
    sondixsim::releaseHangs();

    TunnelClient other(url);
    other.send(getRequest("/other"));
    QCOMPARE(other.response(), QByteArray(pageHeader) + pageBody);
    // Until the reset arrives, a client that has left cannot be told from one that has only ended sending.
    QStringList pages = reached(*recorder);
    pages.removeAll(QString(" \"/two\" \"\""));
    QCOMPARE(pages, names({" \"/one\" \"\"", " \"/other\" \"\""}));
}

QTEST_GUILESS_MAIN(TunnelRelayTest)
#include "tst_tunnelrelay.moc"
