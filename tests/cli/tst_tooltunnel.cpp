// SPDX-License-Identifier: MIT
#include "benches.h"
#include "interruptible.h"
#include "toolrunner.h"

#include <QTcpSocket>
#include <QUrl>

namespace {

const char *const serialLaser = "tunnel TX270@RS232,port=COM3";

/// A tunnel that runs until it is interrupted.
class RunningTunnel
{
public:
    RunningTunnel(const ToolRunner &runner, const QStringList &arguments) { runner.start(m_process, arguments); }
    ~RunningTunnel()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    RunningTunnel(const RunningTunnel &) = delete;
    RunningTunnel &operator=(const RunningTunnel &) = delete;

    QByteArray out()
    {
        m_out += m_process.readAllStandardOutput();
        return m_out;
    }
    QByteArray err()
    {
        m_err += m_process.readAllStandardError();
        return m_err;
    }
    /// The printed address; empty before it is printed.
    QUrl url() { return out().endsWith('\n') ? QUrl(QString::fromLatin1(m_out.trimmed())) : QUrl(); }

    void interrupt() { m_process.interrupt(); }
    QProcess &process() { return m_process; }
    ToolResult finish()
    {
        ToolResult result = ToolRunner::finish(m_process);
        result.out = m_out + result.out;
        result.err = m_err + result.err;
        return result;
    }

private:
    InterruptibleProcess m_process;
    QByteArray m_out;
    QByteArray m_err;
};

/// The bytes received in answer to \a request until the connection is closed.
QByteArray ask(const QUrl &url, const QByteArray &request)
{
    QTcpSocket socket;
    socket.connectToHost(url.host(), static_cast<quint16>(url.port()));
    if (!socket.waitForConnected(5000))
        return {};
    socket.write(request);
    socket.waitForDisconnected(10000);
    return socket.readAll();
}

QByteArray pageFrom(const QUrl &url, const QByteArray &path)
{
    return ask(url, "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n");
}

QByteArray post(const QUrl &url, const QByteArray &body, const QByteArray &headers = QByteArray())
{
    return ask(url, "POST / HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n" + headers +
                        "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body);
}

QByteArray status(const QByteArray &answer)
{
    return answer.left(answer.indexOf("\r\n"));
}

} // namespace

class TestToolTunnel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void printsTheAddressAlone();
    void printsTheAddressAsJson();
    void servesUntilItIsInterrupted();
    void logsEachRequest_data();
    void logsEachRequest();
    void logsWhatItRefuses();
    void goesOnAfterAFailureOfTheSensor();
    void saysWhenTheSensorIsLostAndBack();
    void reportsTheNewAddressWhenTheBaudRateWasChanged();
    void startsTheBrowser();
    void goesOnWithoutABrowser();
    void refusesModelsWithoutAWebInterface_data();
    void refusesModelsWithoutAWebInterface();
    void endsWithCode4WhenTheSensorIsNotThere();
    void theSecondInterruptEndsACallThatDoesNotReturn();
};

void TestToolTunnel::printsTheAddressAlone()
{
    const ToolRunner runner(Benches::of(Benches::laser(100)));
    RunningTunnel tunnel(runner, words(serialLaser));
    QTRY_VERIFY(!tunnel.url().isEmpty());
    QCOMPARE(tunnel.url().scheme(), QStringLiteral("http"));
    QCOMPARE(tunnel.url().host(), QStringLiteral("127.0.0.1"));
    QVERIFY(tunnel.url().port() > 0);
    QCOMPARE(tunnel.out().count('\n'), 1);
    tunnel.interrupt();
    const ToolResult result = tunnel.finish();
    QCOMPARE(result.code, 130);
    QCOMPARE(result.out.count('\n'), 1);
}

void TestToolTunnel::printsTheAddressAsJson()
{
    const ToolRunner runner(Benches::of(Benches::laser(100)));
    RunningTunnel tunnel(runner, words(serialLaser) << "--json");
    QJsonObject object;
    QTRY_VERIFY(!(object = QJsonDocument::fromJson(tunnel.out()).object()).isEmpty());
    QCOMPARE(object.value("model").toString(), QStringLiteral("TX270"));
    QCOMPARE(object.value("address").toString(), QStringLiteral("TX270@RS232,port=COM3"));
    const QUrl url(object.value("url").toString());
    QCOMPARE(status(pageFrom(url, "/")), QByteArray("HTTP/1.1 200 OK"));
    tunnel.interrupt();
    QCOMPARE(tunnel.finish().code, 130);
}

void TestToolTunnel::servesUntilItIsInterrupted()
{
    const ToolRunner runner(Benches::of(Benches::laser(100)));
    RunningTunnel tunnel(runner, words(serialLaser));
    QTRY_VERIFY(!tunnel.url().isEmpty());
    for (int i = 0; i < 3; ++i)
        QCOMPARE(status(pageFrom(tunnel.url(), "/")), QByteArray("HTTP/1.1 200 OK"));
    tunnel.interrupt();
    const ToolResult result = tunnel.finish();
    QCOMPARE(result.code, 130);
    QCOMPARE(pageFrom(tunnel.url(), "/"), QByteArray());
}

void TestToolTunnel::logsEachRequest_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("shown");
    QTest::newRow("a page") << QByteArray("/") << QByteArray("GET / 200, ");
    QTest::newRow("with a query") << QByteArray("/?a=1") << QByteArray("GET / 200, ");
    // A control character that would start an escape sequence on a terminal.
    QTest::newRow("no letters") << QByteArray("/\x9b"
                                              "31m")
                                << QByteArray("GET /%9B31m ");
}

void TestToolTunnel::logsEachRequest()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, shown);
    const ToolRunner runner(Benches::of(Benches::laser(100)));
    RunningTunnel tunnel(runner, words(serialLaser));
    QTRY_VERIFY(!tunnel.url().isEmpty());
    QVERIFY(pageFrom(tunnel.url(), path).startsWith("HTTP/1.1 "));
    QTRY_VERIFY2_WITH_TIMEOUT(tunnel.err().contains('\n' + shown), tunnel.err().constData(), longestTestWait);
    const QByteArray line = tunnel.err().mid(tunnel.err().indexOf(shown)).split('\n').first();
    const QRegularExpression rest(" [0-9]{3}, [0-9]+ bytes in [0-9]+ ms$");
    QVERIFY2(rest.match(QString::fromUtf8(line)).hasMatch(), line.constData());
    QCOMPARE(tunnel.err().count("GET "), 1);
}

void TestToolTunnel::logsWhatItRefuses()
{
    const ToolRunner runner(Benches::of(Benches::laser(100)));
    RunningTunnel tunnel(runner, words(serialLaser));
    QTRY_VERIFY(!tunnel.url().isEmpty());
    const QByteArray answer = post(tunnel.url(), "SETDEFAULT", "Origin: http://page.example\r\n");
    QCOMPARE(status(answer), QByteArray("HTTP/1.1 403 Forbidden"));
    QTRY_VERIFY2_WITH_TIMEOUT(tunnel.err().contains("\nrefused: 403 Forbidden\n"), tunnel.err().constData(),
                              longestTestWait);
    QVERIFY(!tunnel.err().contains("POST "));
}

void TestToolTunnel::goesOnAfterAFailureOfTheSensor()
{
    const ToolRunner runner(Benches::of(Benches::laser(
        100, R"("faults": [ { "command": "Get_HTTP", "times": 1, "code": -77, "text": "it is tired" } ])")));
    RunningTunnel tunnel(runner, words(serialLaser));
    QTRY_VERIFY(!tunnel.url().isEmpty());
    QCOMPARE(status(pageFrom(tunnel.url(), "/")), QByteArray("HTTP/1.1 502 Bad Gateway"));
    QTRY_VERIFY2_WITH_TIMEOUT(tunnel.err().contains("\nGET / 502, it is tired in "), tunnel.err().constData(),
                              longestTestWait);
    QCOMPARE(status(pageFrom(tunnel.url(), "/")), QByteArray("HTTP/1.1 200 OK"));
    QTRY_VERIFY2_WITH_TIMEOUT(tunnel.err().contains("\nGET / 200, "), tunnel.err().constData(), longestTestWait);
}

void TestToolTunnel::saysWhenTheSensorIsLostAndBack()
{
    // Setting the baud rate opens the sensor again. That fails, and so does the return to the old rate.
    const ToolRunner runner(Benches::of(Benches::laser(
        100,
        R"("faults": [ { "function": "OpenSensor", "from": 2, "times": 2, "code": -78, "text": "no answer" } ])")));
    RunningTunnel tunnel(runner, words(serialLaser));
    QTRY_VERIFY(!tunnel.url().isEmpty());
    QCOMPARE(status(post(tunnel.url(), "BAUDRATE 115200")), QByteArray("HTTP/1.1 502 Bad Gateway"));
    QTRY_VERIFY2_WITH_TIMEOUT(tunnel.err().contains("\nthe sensor is lost; "), tunnel.err().constData(),
                              longestTestWait);
    QVERIFY(!tunnel.err().contains("the sensor is back"));
    pageFrom(tunnel.url(), "/");
    QTRY_VERIFY2_WITH_TIMEOUT(tunnel.err().contains("\nthe sensor is back\n"), tunnel.err().constData(),
                              longestTestWait);
    tunnel.interrupt();
    QCOMPARE(tunnel.finish().code, 130);
}

void TestToolTunnel::reportsTheNewAddressWhenTheBaudRateWasChanged()
{
    const ToolRunner runner(Benches::of(Benches::laser(100)));
    RunningTunnel tunnel(runner, words("tunnel TX270@RS232,port=COM3,baudrate=115200"));
    QTRY_VERIFY(!tunnel.url().isEmpty());
    QCOMPARE(status(post(tunnel.url(), "BAUDRATE 230400")), QByteArray("HTTP/1.1 200 OK"));
    tunnel.interrupt();
    const ToolResult result = tunnel.finish();
    QCOMPARE(result.code, 130);
    QVERIFY2(result.err.contains("\nthe sensor is now reached as TX270@RS232,port=COM3,baudrate=230400\n"),
             result.err.constData());
}

void TestToolTunnel::startsTheBrowser()
{
#ifdef Q_OS_WIN
    QSKIP("Windows starts the browser of its user, not what stands first in the path");
#endif
    ToolRunner runner(Benches::of(Benches::laser(100)));
    const QString shown = runner.path("shown");
    const QString browser = runner.writeFile("xdg-open", "#!/bin/sh\necho noise; echo noise >&2; echo \"$*\" >" +
                                                             shown.toUtf8() + "\n");
    QVERIFY(QFile::setPermissions(browser, QFile::ReadOwner | QFile::ExeOwner));
    runner.setEnvironment("PATH", runner.path(QString()) + ":/usr/bin:/bin");
    RunningTunnel tunnel(runner, words(serialLaser) << "--open");
    QTRY_VERIFY(!tunnel.url().isEmpty());
    QTRY_COMPARE(runner.contentOf("shown"), tunnel.url().toString().toUtf8() + '\n');
    tunnel.interrupt();
    const ToolResult result = tunnel.finish();
    QCOMPARE(result.code, 130);
    QVERIFY(!(result.out + result.err).contains("noise"));
}

void TestToolTunnel::goesOnWithoutABrowser()
{
#ifdef Q_OS_WIN
    QSKIP("Windows always has a browser");
#endif
    ToolRunner runner(Benches::of(Benches::laser(100)));
    runner.setEnvironment("PATH", runner.path(QString()));
    RunningTunnel tunnel(runner, words(serialLaser) << "--open");
    QTRY_VERIFY2_WITH_TIMEOUT(tunnel.err().contains("no browser could be started"), tunnel.err().constData(),
                              longestTestWait);
    QCOMPARE(status(pageFrom(tunnel.url(), "/")), QByteArray("HTTP/1.1 200 OK"));
}

void TestToolTunnel::refusesModelsWithoutAWebInterface_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("none") << "RG52x@RS232,port=COM4"
                          << QByteArray("sondixqt: RG52x has no web interface on its serial line; these have: "
                                        "TX270, TX280, TX290, TX300, TX310\n");
    QTest::newRow("its own") << "CC480@TCP/IP,address=192.168.0.10"
                             << QByteArray("sondixqt: CC480 serves its web interface itself, over the network\n");
    QTest::newRow("in the network")
        << "TX290@TCP/IP,address=192.168.0.31"
        << QByteArray("sondixqt: TX290 is connected over the network; a tunnel is for serial lines\n");
}

void TestToolTunnel::refusesModelsWithoutAWebInterface()
{
    QFETCH(QString, address);
    QFETCH(QByteArray, expected);
    const ToolResult result = ToolRunner(Benches::of("")).run({"tunnel", address});
    QCOMPARE(result.err, expected);
    QCOMPARE(result.code, 2);
    QCOMPARE(result.out, QByteArray());
}

void TestToolTunnel::endsWithCode4WhenTheSensorIsNotThere()
{
    const ToolResult result = ToolRunner(Benches::of("")).run(words(serialLaser));
    QCOMPARE(result.code, 4);
    QVERIFY2(result.err.startsWith("sondixqt: cannot open TX270@RS232,port=COM3: "), result.err.constData());
    QCOMPARE(result.out, QByteArray());
}

void TestToolTunnel::theSecondInterruptEndsACallThatDoesNotReturn()
{
    const ToolRunner runner(Benches::of(
        Benches::laser(100, R"("faults": [ { "command": "Get_HTTP", "times": 1, "code": -77, "text": "soon" },
                                           { "command": "Get_HTTP", "from": 2, "delay": 3600 } ])")));
    RunningTunnel tunnel(runner, words(serialLaser));
    QTRY_VERIFY(!tunnel.url().isEmpty());
    // Two requests on one connection: when the first is in the log, the second is being served.
    QTcpSocket socket;
    socket.connectToHost(tunnel.url().host(), static_cast<quint16>(tunnel.url().port()));
    QVERIFY(socket.waitForConnected(5000));
    socket.write("GET /a HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\nGET /b HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    QVERIFY(socket.waitForBytesWritten(5000));
    QTRY_VERIFY(tunnel.err().contains("GET /a 502"));
    tunnel.interrupt();
    QVERIFY(!tunnel.process().waitForFinished(500));
    tunnel.interrupt();
    QVERIFY(tunnel.process().waitForFinished(10000));
    QCOMPARE(tunnel.process().exitStatus(), QProcess::CrashExit);
}

QTEST_GUILESS_MAIN(TestToolTunnel)
#include "tst_tooltunnel.moc"
