// SPDX-License-Identifier: MIT
#include "requestqueue_p.h"

#include "httpstatus_p.h"
#include "responses_p.h"
#include "tunnellimits_p.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

namespace SondixQt {

using Lock = std::lock_guard<std::mutex>;

namespace {

constexpr qint64 never = -1;

bool isCommand(const ParsedRequest &parsed)
{
    return parsed.kind == ParsedRequest::Import || parsed.kind == ParsedRequest::Command;
}

} // namespace

RequestQueue::RequestQueue(int timeout)
    : timeoutMs(qint64(timeout) * 1000)
{
}

void RequestQueue::reset()
{
    const Lock lock(mutex);
    connections.clear();
    left.clear();
    responses.clear();
    dropped = 0;
}

void RequestQueue::addClient(Client client, qint64 now, bool accepted)
{
    const Lock lock(mutex);
    Connection &connection = connections[client];
    connection = Connection();
    connection.lastActivity = now;
    if (!accepted) {
        connection.waiting.push_back(connection.parser.refuse(HttpStatus::serviceUnavailable));
        answerDirectly(client, connection);
    }
}

void RequestQueue::removeClient(Client client)
{
    const Lock lock(mutex);
    const auto found = connections.find(client);
    if (found != connections.end()) {
        Connection &connection = found->second;
        ParsedRequest parsed;
        while (connection.parser.next(parsed))
            connection.waiting.push_back(parsed);
        if (connection.inputEnded && connection.parser.endInput(parsed))
            connection.waiting.push_back(parsed);
        dropped += connection.parser.takeDropped();
        std::copy_if(connection.waiting.begin(), connection.waiting.end(), std::back_inserter(left), isCommand);
        connections.erase(found);
    }
    const auto isForClient = [client](const Response &response) { return response.client == client; };
    responses.erase(std::remove_if(responses.begin(), responses.end(), isForClient), responses.end());
}

int RequestQueue::openConnections() const
{
    const Lock lock(mutex);
    return int(std::count_if(connections.begin(), connections.end(),
                             [](const auto &entry) { return !entry.second.parser.isEnded(); }));
}

void RequestQueue::feed(Client client, const QByteArray &bytes, qint64 now)
{
    const Lock lock(mutex);
    const auto found = connections.find(client);
    if (found == connections.end())
        return;
    found->second.lastActivity = now;
    found->second.parser.append(bytes);
    parse(client, found->second);
}

bool RequestQueue::isFull(const Connection &connection)
{
    const auto &waiting = connection.waiting;
    const auto add = [](int sum, const ParsedRequest &parsed) { return sum + parsed.text.size(); };
    return waiting.size() >= size_t(TunnelLimits::waitingRequests) ||
           std::accumulate(waiting.begin(), waiting.end(), 0, add) >= TunnelLimits::waitingText;
}

bool RequestQueue::wantsBytes(Client client) const
{
    const Lock lock(mutex);
    const auto found = connections.find(client);
    return found != connections.end() && !isFull(found->second);
}

void RequestQueue::endInput(Client client, qint64 now)
{
    const Lock lock(mutex);
    const auto found = connections.find(client);
    if (found == connections.end() || found->second.inputEnded)
        return;
    found->second.inputEnded = true;
    found->second.lastActivity = now;
    parse(client, found->second);
}

void RequestQueue::parse(Client client, Connection &connection)
{
    ParsedRequest parsed;
    while (!isFull(connection) && connection.parser.next(parsed))
        connection.waiting.push_back(parsed);
    if (connection.inputEnded && !isFull(connection) && connection.parser.endInput(parsed))
        connection.waiting.push_back(parsed);
    dropped += connection.parser.takeDropped();
    answerDirectly(client, connection);
}

/// Answers what needs no sensor, once everything before it is answered.
void RequestQueue::answerDirectly(Client client, Connection &connection)
{
    while (connection.serving == 0 && !connection.waiting.empty()) {
        const ParsedRequest &parsed = connection.waiting.front();
        if (parsed.kind == ParsedRequest::Refusal)
            end(connection, {0, client, refusalResponse(parsed.status), ConnectionAction::CloseDiscarding});
        else if (parsed.kind == ParsedRequest::Abort)
            end(connection, {0, client, QByteArray(), ConnectionAction::Abort});
        else if (parsed.kind == ParsedRequest::Continue)
            responses.push_back({0, client, continueResponse(), ConnectionAction::KeepAlive});
        else
            return;
        if (!connection.waiting.empty())
            connection.waiting.pop_front();
    }
    if (connection.inputEnded && connection.serving == 0 && connection.waiting.empty() && !connection.over)
        end(connection, {0, client, QByteArray(), ConnectionAction::Close});
}

void RequestQueue::end(Connection &connection, const Response &response)
{
    connection.parser.end();
    connection.waiting.clear();
    connection.over = true;
    responses.push_back(response);
}

void RequestQueue::setReading(Client client, bool reading, qint64 now)
{
    const Lock lock(mutex);
    const auto found = connections.find(client);
    if (found == connections.end())
        return;
    found->second.reading = reading;
    found->second.lastActivity = now;
}

bool RequestQueue::isServable(const Connection &connection)
{
    return connection.serving == 0 && connection.reading && !connection.waiting.empty();
}

bool RequestQueue::hasRequest() const
{
    const Lock lock(mutex);
    return !left.empty() || std::any_of(connections.begin(), connections.end(),
                                        [](const auto &entry) { return isServable(entry.second); });
}

bool RequestQueue::takeLeft(Request &request)
{
    if (left.empty())
        return false;
    const ParsedRequest parsed = std::move(left.front());
    left.pop_front();
    request = {++lastNumber, nullptr, parsed.kind, parsed.method, parsed.path, parsed.entityTag, parsed.text};
    return true;
}

bool RequestQueue::takeRequest(Request &request)
{
    const Lock lock(mutex);
    if (takeLeft(request))
        return true;
    const auto servable = [](const auto &entry) { return isServable(entry.second); };
    const auto after = connections.upper_bound(lastServed);
    auto next = std::find_if(after, connections.end(), servable);
    if (next == connections.end())
        next = std::find_if(connections.begin(), after, servable);
    if (next == after && (after == connections.end() || !servable(*after)))
        return false;

    Connection &connection = next->second;
    ParsedRequest parsed = std::move(connection.waiting.front());
    connection.waiting.pop_front();
    connection.serving = ++lastNumber;
    connection.servingCloses = parsed.closes;
    lastServed = next->first;
    // There is room again: parse what is already buffered, so that expire() does not take it for a stalled request.
    parse(next->first, connection);
    request = {lastNumber, next->first, parsed.kind, parsed.method, parsed.path, parsed.entityTag, parsed.text};
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

void RequestQueue::answerOtherMethod(const Request &request, qint64 now)
{
    respond(request, otherMethodResponse(request.kind != ParsedRequest::HeadMethod), false, now);
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
        end(connection, {request.number, request.client, bytes, ConnectionAction::Close});
        return;
    }
    responses.push_back({request.number, request.client, bytes, ConnectionAction::KeepAlive});
    parse(request.client, connection);
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
    if (!connection.reading)
        return connection.lastActivity + TunnelLimits::idleMs;
    if (connection.parser.isEnded() || isFull(connection))
        return never;
    if (connection.parser.endsWithPause())
        return connection.lastActivity + TunnelLimits::quietMs;
    if (connection.parser.isIncomplete())
        return connection.lastActivity + timeoutMs;
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
    RequestParser &parser = connection.parser;
    ParsedRequest parsed;
    if (!connection.reading || !(parser.endsWithPause() || parser.isIncomplete())) {
        connection.reading = true;
        end(connection, {0, client, QByteArray(), ConnectionAction::Abort});
    } else if (!parser.endsWithPause()) {
        connection.waiting.push_back(parser.refuse(HttpStatus::requestTimeout));
        answerDirectly(client, connection);
    } else if (parser.handlePause(parsed)) {
        connection.waiting.push_back(parsed);
    }
    parse(client, connection);
}

} // namespace SondixQt
