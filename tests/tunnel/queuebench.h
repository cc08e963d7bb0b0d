// SPDX-License-Identifier: MIT
#pragma once

#include "requestcorpus.h"
#include "tunnel/requestqueue_p.h"

#include <QByteArray>
#include <QList>

#include <memory>

/// The expected time limits of the queue in milliseconds.
inline constexpr qint64 quiet = 300;
inline constexpr qint64 idle = 60000;
inline constexpr qint64 never = -1;

inline const QByteArray foreignRequest = pageRequest("/foreign", "Host: example.com\r\n");
inline const QByteArray halfBody =
    QByteArrayLiteral("POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 9\r\n\r\nONE");

/// A queue with three clients, and a sensor that answers everything.
class QueueBench
{
public:
    using Client = SondixQt::RequestQueue::Client;
    using Texts = QList<QByteArray>;

    void begin()
    {
        queue = std::make_unique<SondixQt::RequestQueue>(5);
        for (const Client client : {first, second, third})
            queue->addClient(client, 0);
    }

    /// The next request; without a client if there is none.
    SondixQt::RequestQueue::Request take()
    {
        SondixQt::RequestQueue::Request request;
        const bool announced = queue->hasRequest();
        if (queue->takeRequest(request) != announced)
            qFatal("hasRequest() and takeRequest() disagree");
        return request;
    }

    void serve(const SondixQt::RequestQueue::Request &request, qint64 now = 0)
    {
        queue->answerCommand(request, describeRequest(request), now);
    }

    /// Serves all requests that are waiting, and returns them.
    Texts serveAll(qint64 now = 0)
    {
        Texts served;
        SondixQt::RequestQueue::Request request;
        while (queue->takeRequest(request)) {
            served += describeRequest(request);
            serve(request, now);
        }
        return served;
    }

    /// The next response; without a client if there is none.
    SondixQt::RequestQueue::Response response()
    {
        SondixQt::RequestQueue::Response next;
        queue->takeResponse(next);
        return next;
    }

    std::unique_ptr<SondixQt::RequestQueue> queue;

private:
    char places[4] = {};

public:
    const Client first = &places[0];
    const Client second = &places[1];
    const Client third = &places[2];
    const Client stranger = &places[3]; ///< not added to the queue
};

inline QByteArray pageRequests(int first, int count, const QByteArray &headers = sequenceHost)
{
    QByteArray bytes;
    for (int i = first; i < first + count; ++i)
        bytes += pageRequest("/" + QByteArray::number(i), headers);
    return bytes;
}
