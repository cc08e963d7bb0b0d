// SPDX-License-Identifier: MIT
#include "cheapsensor.h"
#include "paired.h"
#include "report.h"
#include "sondix/sondixapi_p.h"

#include <SondixQt/RS232Tunnel>
#include <SondixQt/SensorInstance>

#include <QHostAddress>
#include <QTcpSocket>
#include <QUrl>

#include <vector>

using namespace SondixQt;

namespace {

constexpr int timeLimitMs = 10000;

/// Fetches a page with "Get_HTTP" without a tunnel.
class BarePage
{
public:
    explicit BarePage(quint32 instance)
        : handle(instance)
    {
    }

    std::size_t fetch()
    {
        SetParameterInt(handle, "SP_HTTPMaxLength", 16383);
        SetParameterString(handle, "SP_HTTPPath", "/index.html");
        SetParameterString(handle, "SP_HTTPeTag", "");
        SetParameterString(handle, "S_Command", "Get_HTTP");
        SensorCommand(handle);
        read("SA_HTTPBody", body);
        read("SA_HTTPHeader", header);
        return header.size() + body.size();
    }

private:
    void read(const char *name, std::vector<char> &bytes) const
    {
        std::uint32_t length = 0;
        GetParameterBinary(handle, name, nullptr, &length);
        bytes.resize(length);
        GetParameterBinary(handle, name, bytes.data(), &length);
    }

    quint32 handle;
    std::vector<char> header;
    std::vector<char> body;
};

/// Fetches pages through the tunnel over one persistent connection, pipelining range(1) requests, and compares them
/// with the same number of direct calls.
void page(benchmark::State &state)
{
    cheapsensor::setPage(static_cast<std::size_t>(state.range(0)));
    const auto requests = static_cast<std::size_t>(state.range(1));
    SensorInstance instance(SensorType::TX290);
    RS232Tunnel tunnel(instance);
    QUrl url;
    tunnel.openTunnel(url);
    QTcpSocket socket;
    socket.connectToHost(QHostAddress(url.host()), static_cast<quint16>(url.port()));
    if (!socket.waitForConnected(timeLimitMs)) {
        state.SkipWithError("the tunnel does not listen");
        return;
    }
    BarePage bare(instance.handle());
    const std::size_t size = bare.fetch() * requests;
    const QByteArray request =
        QByteArray("GET /index.html HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n").repeated(static_cast<int>(requests));
    std::vector<char> buffer(size);
    bool complete = true;
    const auto fetch = [&] {
        socket.write(request);
        std::size_t received = 0;
        while (complete && received < size) {
            if (socket.bytesAvailable() == 0)
                complete = socket.waitForReadyRead(timeLimitMs);
            received += static_cast<std::size_t>(
                qMax<qint64>(0, socket.read(buffer.data(), static_cast<qint64>(size - received))));
        }
        return received;
    };
    const auto fetchBare = [&] {
        std::size_t fetched = 0;
        for (std::size_t i = 0; i < requests; ++i)
            fetched += bare.fetch();
        return fetched;
    };
    runPaired(state, fetchBare, fetch);
    if (!complete)
        state.SkipWithError("a page did not arrive");
}

report::Value milliseconds(const std::string &name, const std::string &counter)
{
    const report::Value nanoseconds = report::counter(name, counter);
    return [=](const report::Results &results) -> std::optional<double> {
        const std::optional<double> value = nanoseconds(results);
        return value ? std::optional(*value / 1e6) : std::nullopt;
    };
}

const bool tunnelBenchesAreRegistered = [] {
    constexpr int small = 1000;
    constexpr int large = 1000000;
    benchmark::RegisterBenchmark("tunnel page", page)->Args({small, 1})->Args({small, 2})->Args({large, 1});
    report::claim("a page of 1 kB through the tunnel: above direct calls", "ms", 0.1,
                  milliseconds("tunnel page/1000/1", "above"));
    report::claim("two pages of 1 kB at once through the tunnel: above direct calls", "ms", 0.2,
                  milliseconds("tunnel page/1000/2", "above"));
    report::claim("a page of 1 MB through the tunnel: 100 MB/s are 10 ms", "ms", 10.0,
                  milliseconds("tunnel page/1000000/1", "library"));
    return true;
}();

} // namespace
