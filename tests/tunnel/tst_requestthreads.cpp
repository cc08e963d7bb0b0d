// SPDX-License-Identifier: MIT
#include "requestcorpus.h"
#include "tunnel/requestqueue_p.h"

#include <QDeadlineTimer>
#include <QtTest>

#include <array>
#include <atomic>
#include <map>
#include <thread>

using namespace SondixQt;

namespace {

constexpr int clientCount = 6;
constexpr int goingClient = 5; ///< leaves and comes back all the time
constexpr int pageCount = 400;
constexpr int timeLimitMs = 60000;

/// The page number in an answer, whose body ends in "/<client>/<page>".
int pageOf(const QByteArray &answer)
{
    return answer.mid(answer.lastIndexOf('/') + 1).toInt();
}

} // namespace

class TestRequestThreads : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void threadsMayShareTheQueue();

private:
    void ask();
    void answer();
    void watch();
    bool isOver() const { return limit.hasExpired(); }

    RequestQueue queue{5};
    std::array<char, clientCount> clients{};
    std::atomic<bool> asked{false};
    std::atomic<bool> answered{false};
    QDeadlineTimer limit;
    std::map<RequestQueue::Client, QList<int>> answers;
    int strayAnswers = 0;
};

/// Feeds the requests of all clients page by page, each request in two parts.
void TestRequestThreads::ask()
{
    for (int page = 0; page < pageCount; ++page) {
        for (int i = 0; i < clientCount; ++i) {
            char *const client = &clients[size_t(i)];
            if (i == goingClient && page % 10 == 0) {
                queue.removeClient(client);
                queue.addClient(client, page);
            }
            const QByteArray bytes = pageRequest('/' + QByteArray::number(i) + '/' + QByteArray::number(page));
            const int half = bytes.size() / 2;
            for (const QByteArray &parsed : {bytes.left(half), bytes.mid(half)}) {
                while (!queue.wantsBytes(client) && !isOver())
                    std::this_thread::yield();
                queue.feed(client, parsed, page);
            }
        }
    }
    asked = true;
}

void TestRequestThreads::answer()
{
    RequestQueue::Request request;
    RequestQueue::Response response;
    while (!isOver()) {
        const bool last = asked;
        const bool served = queue.takeRequest(request);
        if (served)
            queue.answer(request, QByteArray(), request.path, pageCount);
        while (queue.takeResponse(response)) {
            const auto index = static_cast<char *>(response.client) - clients.data();
            if (!response.bytes.contains("\r\n\r\n/" + QByteArray::number(qlonglong(index)) + '/'))
                ++strayAnswers;
            answers[response.client] += pageOf(response.bytes);
        }
        if (last && !served)
            break;
        if (!served)
            std::this_thread::yield();
    }
    answered = true;
}

/// Makes the calls that timers and sockets make meanwhile.
void TestRequestThreads::watch()
{
    while (!answered) {
        queue.expire(0);
        queue.hasRequest();
        queue.nextDeadline();
        queue.takeDropped();
        queue.setReading(&clients[0], true, 0);
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
}

void TestRequestThreads::threadsMayShareTheQueue()
{
    limit.setRemainingTime(timeLimitMs);
    for (char &client : clients)
        queue.addClient(&client, 0);
    std::thread asking(&TestRequestThreads::ask, this);
    std::thread watching(&TestRequestThreads::watch, this);
    answer();
    asking.join();
    watching.join();

    QVERIFY(!isOver());
    QCOMPARE(strayAnswers, 0);
    QList<int> all;
    for (int page = 0; page < pageCount; ++page)
        all += page;
    for (int i = 0; i < clientCount; ++i) {
        const QList<int> &pages = answers[&clients[size_t(i)]];
        if (i != goingClient)
            QCOMPARE(pages, all);
        // The client that leaves may miss answers but gets none twice or out of order.
        QVERIFY(std::is_sorted(pages.begin(), pages.end()));
        QVERIFY(std::adjacent_find(pages.begin(), pages.end()) == pages.end());
        QCOMPARE(pages.isEmpty() ? -1 : pages.last(), pageCount - 1);
    }
}

QTEST_APPLESS_MAIN(TestRequestThreads)
#include "tst_requestthreads.moc"
