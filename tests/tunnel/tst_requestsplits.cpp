// SPDX-License-Identifier: MIT
#include "requestcorpus.h"
#include "tunnel/requestqueue_p.h"
#include "tunnel/tunnellimits_p.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace SondixQt;

namespace {

/// All visible results of a connection, for its client and for the sensor.
struct Outcome
{
    QList<QByteArray> requests;
    QByteArray answers;
    QByteArray ends;
    int dropped = 0;
};

bool operator==(const Outcome &a, const Outcome &b)
{
    return a.requests == b.requests && a.answers == b.answers && a.ends == b.ends && a.dropped == b.dropped;
}

/// A connection to a sensor whose answers depend on the request alone.
class Connection
{
public:
    Connection() { queue.addClient(this, 0); }

    void feed(const QByteArray &bytes)
    {
        while (!queue.wantsBytes(this) && queue.hasRequest())
            serveOne();
        queue.feed(this, bytes, 0);
    }

    void serve()
    {
        while (queue.hasRequest())
            serveOne();
        collect();
    }

    Outcome finish(bool pauses)
    {
        serve();
        if (pauses)
            queue.expire(TunnelLimits::quietMs);
        serve();
        outcome.dropped += queue.takeDropped();
        return outcome;
    }

private:
    void serveOne()
    {
        RequestQueue::Request request;
        QVERIFY(queue.takeRequest(request));
        outcome.requests += describeRequest(request);
        if (request.kind == ParsedRequest::OtherMethod || request.kind == ParsedRequest::HeadMethod)
            queue.answerOtherMethod(request, 0);
        else if (request.kind != ParsedRequest::Get)
            queue.answerCommand(request, "ran " + request.text, 0);
        else if (request.path == "/fail")
            queue.fail(request, "No answer", false, 0);
        else if (request.path == "/plain")
            queue.answer(request, QByteArray(), "plain", 0);
        else if (request.path == "/304")
            queue.answer(request, "HTTP/1.1 304 Not Modified\r\n\r\n", QByteArray(), 0);
        else if (request.path == "/open")
            queue.answer(request, "HTTP/1.1 200 OK\r\n\r\n", "until the end", 0);
        else
            queue.answer(request, headerOf(request), request.path, 0);
        collect();
    }

    static QByteArray headerOf(const RequestQueue::Request &request)
    {
        return "HTTP/1.1 200 OK\r\nETag: \"" + request.entityTag +
               "\"\r\nContent-Length: " + QByteArray::number(request.path.size()) + "\r\n\r\n";
    }

    void collect()
    {
        RequestQueue::Response response;
        while (queue.takeResponse(response)) {
            outcome.answers += response.bytes;
            outcome.ends += char('0' + int(response.action));
        }
    }

    RequestQueue queue{TunnelLimits::incompleteRequestSeconds};
    Outcome outcome;
};

Outcome fedAtOnce(const RequestSequence &sequence)
{
    Connection connection;
    connection.feed(sequence.bytes);
    return connection.finish(sequence.pauses);
}

enum class Serving { AtOnce, WhenManyWait };

Outcome fedInPieces(const RequestSequence &sequence, int pieceSize, Serving serving)
{
    Connection connection;
    for (int begin = 0; begin < sequence.bytes.size(); begin += pieceSize) {
        connection.feed(sequence.bytes.mid(begin, pieceSize));
        if (serving == Serving::AtOnce)
            connection.serve();
    }
    return connection.finish(sequence.pauses);
}

Outcome cutOnce(const RequestSequence &sequence, int position, Serving serving)
{
    Connection connection;
    connection.feed(sequence.bytes.left(position));
    if (serving == Serving::AtOnce)
        connection.serve();
    connection.feed(sequence.bytes.mid(position));
    return connection.finish(sequence.pauses);
}

void addSequences()
{
    QTest::addColumn<RequestSequence>("sequence");
    const QList<RequestSequence> sequences = allSequences();
    for (const RequestSequence &sequence : sequences)
        QTest::newRow(sequence.name.constData()) << sequence;
}

/// The status of the refusal that ends the connection: 0 if there is none, aborted if it has no answer.
int refusalOf(const Outcome &outcome)
{
    if (outcome.ends.endsWith('3'))
        return aborted;
    if (!outcome.ends.endsWith('2'))
        return 0;
    const QByteArray start = "HTTP/1.1 ";
    return outcome.answers.mid(outcome.answers.lastIndexOf(start) + start.size(), 3).toInt();
}

} // namespace

Q_DECLARE_METATYPE(RequestSequence)

class TestRequestSplits : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void sequencesAreServedAsExpected_data() { addSequences(); }
    void sequencesAreServedAsExpected();
    void oneCutChangesNothing_data() { addSequences(); }
    void oneCutChangesNothing();
    void manyCutsChangeNothing_data() { addSequences(); }
    void manyCutsChangeNothing();
    void foreignRequestsCommandNothingHoweverTheyCome();
};

void TestRequestSplits::sequencesAreServedAsExpected()
{
    QFETCH(RequestSequence, sequence);
    const Outcome outcome = fedAtOnce(sequence);
    QCOMPARE(outcome.requests, sequence.requests);
    QCOMPARE(refusalOf(outcome), sequence.refusal);
    QCOMPARE(outcome.ends.size(),
             sequence.requests.size() + sequence.directAnswers + (sequence.refusal == 0 ? 0 : 1));
}

void TestRequestSplits::oneCutChangesNothing()
{
    QFETCH(RequestSequence, sequence);
    const Outcome whole = fedAtOnce(sequence);
    constexpr int longSize = 4096;
#ifdef __SANITIZE_ADDRESS__
    constexpr int step = 5; // what the cuts change is checked without sanitizers
#else
    constexpr int step = 1;
#endif
    for (int position = 0; position <= sequence.bytes.size(); position += step) {
        // To save time, long sequences are split at every 17th position only, except near their ends.
        const bool isFarFromEnds = position > longSize / 8 && sequence.bytes.size() - position > longSize / 8;
        if (sequence.bytes.size() >= longSize && isFarFromEnds && position % 17 != 0)
            continue;
        QVERIFY2(cutOnce(sequence, position, Serving::AtOnce) == whole, QByteArray::number(position).constData());
        if (sequence.bytes.size() < longSize)
            QVERIFY2(cutOnce(sequence, position, Serving::WhenManyWait) == whole,
                     QByteArray::number(position).constData());
    }
}

void TestRequestSplits::manyCutsChangeNothing()
{
    QFETCH(RequestSequence, sequence);
    const Outcome whole = fedAtOnce(sequence);
    for (const int size : {1, 2, 3, 7, 64, 1000, 16 * 1024}) {
        for (const Serving serving : {Serving::AtOnce, Serving::WhenManyWait})
            QVERIFY2(fedInPieces(sequence, size, serving) == whole, QByteArray::number(size).constData());
    }
}

void TestRequestSplits::foreignRequestsCommandNothingHoweverTheyCome()
{
    const QList<QByteArray> methods{"POST", "PUT", "OPTIONS", "HEAD", "DELETE", "GET"};
    const QList<QByteArray> headers{"Host: evil.example\r\nSec-Fetch-Site: cross-site\r\n",
                                    "Host: localhost\r\nOrigin: http://evil.example\r\n",
                                    "Accept: */*\r\nHost: 127.0.0.1\r\nSec-Fetch-Site: cross-site\r\n"};
    QRandomGenerator random(20);
    for (int round = 0; round < 5000; ++round) {
        const QByteArray method = methods.at(random.bounded(methods.size()));
        const bool isLong = random.bounded(10) == 0;
        const QByteArray target = '/' + QByteArray(random.bounded(isLong ? 9000 : 200), 'a');
        const QByteArray lineEnds = random.bounded(4) == 0 ? QByteArray("\r\n\r\n") : QByteArray();
        const QByteArray bytes =
            lineEnds + foreignRequestOf(method, target, headers.at(random.bounded(headers.size())));
        RequestQueue queue(TunnelLimits::incompleteRequestSeconds);
        queue.addClient(this, 0);
        qint64 now = 0;
        for (int begin = 0; begin < bytes.size();) {
            const int size = 1 + random.bounded(random.bounded(4) == 0 ? bytes.size() : 40);
            queue.feed(this, bytes.mid(begin, size), now);
            begin += size;
            if (random.bounded(2) == 0)
                queue.expire(now += TunnelLimits::quietMs);
        }
        queue.expire(now + TunnelLimits::quietMs);
        RequestQueue::Request request;
        while (queue.takeRequest(request)) {
            // A GET request whose head is cut off by a pause looks like that of a client that is not a browser.
            QVERIFY2(method == "GET" && request.kind == ParsedRequest::Get, bytes.constData());
            queue.answerCommand(request, QByteArray(), now);
        }
        RequestQueue::Response response;
        QByteArray status;
        while (queue.takeResponse(response))
            status = response.bytes.mid(9, 3);
        QVERIFY2(status == "403" || status == "414" || (method == "GET" && status == "400"), bytes.constData());
    }
}

QTEST_APPLESS_MAIN(TestRequestSplits)
#include "tst_requestsplits.moc"
