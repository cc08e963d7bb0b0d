// SPDX-License-Identifier: MIT
#include "mismatch.h"
#include "requestaccount.h"
#include "tunnel/requestcorpus.h"
#include "tunnel/requestqueue_p.h"
#include "tunnel/tunnellimits_p.h"

#include <cstddef>
#include <cstdint>
#include <iterator>

using namespace SondixQt;

namespace {

/// A connection to a request queue, and a sensor whose answers depend on the request alone.
class Connection
{
public:
    Connection() { queue.addClient(this, 0); }

    void feed(const QByteArray &bytes, bool pauses)
    {
        while (!queue.wantsBytes(this) && queue.hasRequest())
            serveOne();
        queue.feed(this, bytes, now);
        if (pauses) {
            serve();
            now += TunnelLimits::quietMs;
            queue.expire(now);
        }
    }

    void serve()
    {
        while (queue.hasRequest())
            serveOne();
        collect();
        dropped += queue.takeDropped();
    }

    QList<QByteArray> requests;
    QByteArray answers;
    int refusal = 0;
    int dropped = 0;

private:
    void serveOne()
    {
        RequestQueue::Request request;
        if (!queue.takeRequest(request))
            reportMismatch("takeRequest()", answers, false, true);
        collect();
        requests += describeRequest(request);
        if (request.kind == ParsedRequest::OtherMethod || request.kind == ParsedRequest::HeadMethod)
            queue.answerOtherMethod(request, now);
        else
            queue.answer(request, QByteArray(), describeRequest(request), now);
        collect();
    }

    void collect()
    {
        RequestQueue::Response response;
        while (queue.takeResponse(response)) {
            if (refusal != 0)
                reportMismatch("response after a refusal", answers, response.bytes, QByteArray());
            answers += response.bytes;
            if (response.action == RequestQueue::ConnectionAction::CloseDiscarding)
                refusal = response.bytes.mid(int(sizeof "HTTP/1.1 ") - 1, 3).toInt();
            if (response.action == RequestQueue::ConnectionAction::Abort)
                refusal = aborted;
        }
    }

    RequestQueue queue{TunnelLimits::incompleteRequestSeconds};
    qint64 now = 0;
};

enum class Manner { ServesAtOnce, ServesLate, Pauses };

void feedInPieces(Connection &connection, const QByteArray &bytes, const QByteArray &sizes, Manner manner)
{
    for (int begin = 0, i = 0; begin < bytes.size(); ++i) {
        const int size = sizes.isEmpty() ? 1 : static_cast<unsigned char>(sizes.at(i % sizes.size())) + 1;
        connection.feed(bytes.mid(begin, size), manner == Manner::Pauses);
        if (manner == Manner::ServesAtOnce)
            connection.serve();
        begin += size;
    }
    connection.serve();
}

void compareWithAccount(const QByteArray &bytes, const QByteArray &sizes)
{
    Connection whole;
    feedInPieces(whole, bytes, QByteArray(1, '\xff'), Manner::ServesAtOnce);
    const RequestAccount account = accountOf(bytes);
    if (whole.requests != account.requests)
        reportMismatch("requests", bytes, whole.requests, account.requests);
    if (whole.refusal != account.refusal)
        reportMismatch("refusal", bytes, whole.refusal, account.refusal);

    for (const Manner manner : {Manner::ServesAtOnce, Manner::ServesLate}) {
        Connection split;
        feedInPieces(split, bytes, sizes, manner);
        if (split.answers != whole.answers)
            reportMismatch("answers to split input", bytes, split.answers, whole.answers);
        if (split.requests != whole.requests)
            reportMismatch("requests in split input", bytes, split.requests, whole.requests);
        if (split.dropped != whole.dropped)
            reportMismatch("dropped bytes of split input", bytes, split.dropped, whole.dropped);
    }
}

const char *const foreignHeaders[] = {
    "Host: localhost:8080\r\nOrigin: http://example.com\r\n",
    "Host: example.com\r\nOrigin: http://example.com\r\n",
    "Host: 127.0.0.1\r\nSec-Fetch-Site: cross-site\r\n",
    "Accept: */*\r\nSec-Fetch-Site: cross-site\r\nHost: localhost\r\n",
};

const char *const methods[] = {"POST", "PUT", "OPTIONS", "HEAD", "GET"};

/// No command of a foreign page may be accepted, whatever its bytes are and however they are split.
void sendFromForeignPage(unsigned choice, const QByteArray &bytes, const QByteArray &sizes)
{
    const QByteArray headers = foreignHeaders[choice % std::size(foreignHeaders)];
    const QByteArray method = methods[choice / std::size(foreignHeaders) % std::size(methods)];
    const QByteArray target = '/' + QByteArray(sizes.isEmpty() ? 0 : sizes.at(0) & 0x7f, 'a');
    const bool isGet = method == "GET";
    Connection connection;
    feedInPieces(connection, foreignRequestOf(method, target, headers) + bytes, sizes, Manner::Pauses);
    for (const QByteArray &request : qAsConst(connection.requests)) {
        // A GET request whose head is cut off by a pause looks like that of a client that is not a browser.
        if (!isGet || !request.startsWith("GET /"))
            reportMismatch("requests of a foreign page", bytes, connection.requests, QList<QByteArray>());
    }
    if (connection.refusal != 403 && !(isGet && connection.refusal == 400))
        reportMismatch("refusal of a foreign page", bytes, connection.refusal, 403);
}

} // namespace

/// The input: one byte for the number of chunk sizes and the kind of foreign page, the chunk sizes, the client's bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray input(reinterpret_cast<const char *>(data), static_cast<int>(size));
    constexpr int maxSizes = 8;
    const int count = data[0] % maxSizes;
    const QByteArray sizes = input.mid(1, count);
    const QByteArray bytes = input.mid(1 + count);
    compareWithAccount(bytes, sizes);
    sendFromForeignPage(data[0] / maxSizes, bytes, sizes);
    Connection anyhow;
    feedInPieces(anyhow, bytes, sizes, Manner::Pauses);
    return 0;
}
