// SPDX-License-Identifier: MIT
#include "requestqueue_p.h"

#include "httpstatus_p.h"
#include "responses_p.h"
#include "tunnellimits_p.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace SondixQt {

using Lock = std::lock_guard<std::mutex>;

namespace {

constexpr qint64 never = -1;

} // namespace

RequestQueue::RequestQueue(int patience)
    : patienceMs(qint64(patience) * 1000)
{
}

void RequestQueue::reset()
{
    const Lock lock(mutex);
    connections.clear();
    responses.clear();
    dropped = 0;
}

void RequestQueue::addClient(Client client, qint64 now, bool welcome)
{
    const Lock lock(mutex);
    Connection &connection = connections[client];
    connection = Connection();
    connection.lastActivity = now;
    if (!welcome) {
        connection.waiting.push_back(connection.cutter.refuse(HttpStatus::serviceUnavailable));
        passRefusal(client, connection);
    }
}

void RequestQueue::removeClient(Client client)
{
    const Lock lock(mutex);
    connections.erase(client);
    const auto isHis = [client](const Response &response) { return response.client == client; };
    responses.erase(std::remove_if(responses.begin(), responses.end(), isHis), responses.end());
}

int RequestQueue::openConnections() const
{
    const Lock lock(mutex);
    return int(std::count_if(connections.begin(), connections.end(),
                             [](const auto &entry) { return !entry.second.cutter.isEnded(); }));
}

void RequestQueue::feed(Client client, const QByteArray &bytes, qint64 now)
{
    const Lock lock(mutex);
    const auto found = connections.find(client);
    if (found == connections.end())
        return;
    found->second.lastActivity = now;
    found->second.cutter.append(bytes);
    cut(client, found->second);
}

bool RequestQueue::isFull(const Connection &connection)
{
    const auto &waiting = connection.waiting;
    const auto add = [](int sum, const RequestCutter::Piece &piece) { return sum + piece.text.size(); };
    return waiting.size() >= size_t(TunnelLimits::waitingRequests) ||
           std::accumulate(waiting.begin(), waiting.end(), 0, add) >= TunnelLimits::waitingText;
}

bool RequestQueue::wantsBytes(Client client) const
{
    const Lock lock(mutex);
    const auto found = connections.find(client);
    return found != connections.end() && !isFull(found->second);
}

void RequestQueue::cut(Client client, Connection &connection)
{
    RequestCutter::Piece piece;
    while (!isFull(connection) && connection.cutter.next(piece))
        connection.waiting.push_back(piece);
    dropped += connection.cutter.takeDropped();
    passRefusal(client, connection);
}

/// A refusal is its own answer, as soon as everything before it is answered.
void RequestQueue::passRefusal(Client client, Connection &connection)
{
    if (connection.serving != 0 || connection.waiting.empty() || connection.waiting.front().refusal == 0)
        return;
    const int status = connection.waiting.front().refusal;
    connection.waiting.clear();
    responses.push_back({client, refusalResponse(status), Afterwards::Refuses});
}

void RequestQueue::setFetching(Client client, bool fetching, qint64 now)
{
    const Lock lock(mutex);
    const auto found = connections.find(client);
    if (found == connections.end())
        return;
    found->second.fetching = fetching;
    found->second.lastActivity = now;
}

bool RequestQueue::isServable(const Connection &connection)
{
    return connection.serving == 0 && connection.fetching && !connection.waiting.empty();
}

bool RequestQueue::hasRequest() const
{
    const Lock lock(mutex);
    return std::any_of(connections.begin(), connections.end(),
                       [](const auto &entry) { return isServable(entry.second); });
}

bool RequestQueue::takeRequest(Request &request)
{
    const Lock lock(mutex);
    const auto servable = [](const auto &entry) { return isServable(entry.second); };
    const auto after = connections.upper_bound(lastServed);
    auto next = std::find_if(after, connections.end(), servable);
    if (next == connections.end())
        next = std::find_if(connections.begin(), after, servable);
    if (next == after && (after == connections.end() || !servable(*after)))
        return false;

    Connection &connection = next->second;
    RequestCutter::Piece piece = std::move(connection.waiting.front());
    connection.waiting.pop_front();
    connection.serving = ++lastNumber;
    connection.servingCloses = piece.closes;
    lastServed = next->first;
    // Its place is free for one whose bytes came long ago, which no pause must end.
    cut(next->first, connection);
    request = {lastNumber, next->first, piece.kind, piece.path, piece.entityTag, piece.text};
    return true;
}

void RequestQueue::answer(const Request &request, const QByteArray &header, const QByteArray &body, qint64 now)
{
    respond(request, sensorResponse(header, body), !isDelimited(header, body) || announcesEnd(header), now);
}

void RequestQueue::answerCommand(const Request &request, const QByteArray &answer, qint64 now)
{
    respond(request, commandResponse(answer), false, now);
}

void RequestQueue::fail(const Request &request, const QByteArray &errorText, bool closes, qint64 now)
{
    respond(request, badGatewayResponse(request.path, errorText), closes, now);
}

void RequestQueue::respond(const Request &request, const QByteArray &bytes, bool closes, qint64 now)
{
    const Lock lock(mutex);
    const auto found = connections.find(request.client);
    if (found == connections.end() || found->second.serving != request.number)
        return;
    Connection &connection = found->second;
    connection.serving = 0;
    connection.lastActivity = now;
    if (closes || connection.servingCloses) {
        connection.cutter.end();
        connection.waiting.clear();
        responses.push_back({request.client, bytes, Afterwards::Ends});
        return;
    }
    responses.push_back({request.client, bytes, Afterwards::Goes});
    cut(request.client, connection);
}

bool RequestQueue::takeResponse(Response &response)
{
    const Lock lock(mutex);
    if (responses.empty())
        return false;
    response = std::move(responses.front());
    responses.pop_front();
    return true;
}

int RequestQueue::takeDropped()
{
    const Lock lock(mutex);
    return std::exchange(dropped, 0);
}

qint64 RequestQueue::deadlineOf(const Connection &connection) const
{
    if (!connection.fetching)
        return connection.lastActivity + TunnelLimits::idleMs;
    if (connection.cutter.isEnded() || isFull(connection))
        return never;
    if (connection.cutter.waitsForQuiet())
        return connection.lastActivity + TunnelLimits::quietMs;
    if (connection.cutter.isIncomplete())
        return connection.lastActivity + patienceMs;
    if (connection.serving != 0 || !connection.waiting.empty())
        return never;
    return connection.lastActivity + TunnelLimits::idleMs;
}

qint64 RequestQueue::nextDeadline() const
{
    const Lock lock(mutex);
    qint64 next = never;
    for (const auto &[client, connection] : connections) {
        const qint64 deadline = deadlineOf(connection);
        if (deadline != never && (next == never || deadline < next))
            next = deadline;
    }
    return next;
}

void RequestQueue::expire(qint64 now)
{
    const Lock lock(mutex);
    for (auto &[client, connection] : connections) {
        const qint64 deadline = deadlineOf(connection);
        if (deadline != never && deadline <= now)
            expire(client, connection);
    }
}

void RequestQueue::expire(Client client, Connection &connection)
{
    RequestCutter &cutter = connection.cutter;
    RequestCutter::Piece piece;
    if (!connection.fetching || !(cutter.waitsForQuiet() || cutter.isIncomplete())) {
        cutter.end();
        connection.waiting.clear();
        connection.fetching = true;
        responses.push_back({client, QByteArray(), Afterwards::Ends});
    } else if (!cutter.waitsForQuiet()) {
        connection.waiting.push_back(cutter.refuse(HttpStatus::requestTimeout));
        passRefusal(client, connection);
    } else if (cutter.endQuiet(piece)) {
        connection.waiting.push_back(piece);
    }
    cut(client, connection);
}

} // namespace SondixQt
