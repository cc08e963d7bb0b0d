// SPDX-License-Identifier: MIT
#include "answer.h"
#include "browser.h"
#include "command.h"
#include "sensoroptions.h"

#include <SondixQt/rs232tunnel.h>
#include <SondixQt/sensorfeatures.h>
#include <SondixQt/sensorinfo.h>

#include <CLI/CLI.hpp>

#include <QEventLoop>
#include <QLoggingCategory>

#include <cstring>

using namespace SondixQt;

namespace {

WebInterface webInterfaceOf(const SensorAddress &address)
{
    return SensorInfo(address.parameters, address.type).getWebInterfaceSupport();
}

// Throws Failure unless the sensor serves web pages over a serial line.
void checkWebInterface(const SensorAddress &address)
{
    const WebInterface kind = webInterfaceOf(address);
    const bool inNetwork = address.interfaceType() == TCPIP;
    if (kind == SerialWebInterface && !inNetwork)
        return;
    const QString name = sensorName(address.type, true);
    if (kind == SerialWebInterface)
        throw Failure{ExitCode::Usage,
                      QStringLiteral("%1 is connected over the network; a tunnel is for serial lines").arg(name)};
    if (kind == NativeWebInterface)
        throw Failure{ExitCode::Usage,
                      QStringLiteral("%1 serves its web interface itself, over the network").arg(name)};
    QStringList names;
    for (const SensorType type : getSensorFeatures().keys())
        if (SensorInfo({}, type).getWebInterfaceSupport() == SerialWebInterface)
            names += sensorName(type, true);
    throw Failure{ExitCode::Usage, QStringLiteral("%1 has no web interface on its serial line; these have: %2")
                                       .arg(name, names.join(QStringLiteral(", ")))};
}

constexpr char requestCategory[] = "SondixQt.RS232Tunnel.Requests";

// Copies the log of the requests to stderr. The messages arrive in the tunnel's thread.
class RequestLog
{
public:
    RequestLog()
    {
        QLoggingCategory::setFilterRules(QLatin1String(requestCategory) + QStringLiteral(".info=true"));
        previous = qInstallMessageHandler(show);
    }
    ~RequestLog() { qInstallMessageHandler(previous); }
    RequestLog(const RequestLog &) = delete;
    RequestLog &operator=(const RequestLog &) = delete;

private:
    static void show(QtMsgType type, const QMessageLogContext &context, const QString &text)
    {
        if (type != QtInfoMsg || std::strcmp(context.category, requestCategory) != 0) {
            previous(type, context, text);
            return;
        }
        Console::toStderr(text.toUtf8() + '\n');
    }

    static inline QtMessageHandler previous = nullptr;
};

class TunnelCommand : public Command
{
public:
    explicit TunnelCommand(CLI::App &app)
    {
        m_sensor.addTo(app);
        app.add_flag("--open", m_open, "Open the web interface in the browser");
        app.add_flag("--json", m_json, "Print one JSON object instead of the plain address");
        app.footer(app.get_footer() + "\nPrints the address for a browser on this computer and logs each request "
                                      "on stderr. Ctrl-C ends it.\n"
                                      "Example:\n  sondixqt tunnel TX270@RS232,port=COM3 --open");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        const SensorAddress address = m_sensor.resolve(console, interrupt);
        checkWebInterface(address);
        const auto instance = openSensor(address);
        {
            const RequestLog log;
            RS232Tunnel tunnel(*instance);
            const QUrl url = openTunnel(tunnel, address);
            printAddress(console, address, url);
            if (m_open && !openBrowser(url))
                console.note(QStringLiteral("no browser could be started; open the address yourself"));
            serve(console, interrupt, tunnel);
            tunnel.closeTunnel();
        }
        printNewAddress(console, address, *instance);
        instance->close();
        return ExitCode::Interrupted;
    }

private:
    static QUrl openTunnel(RS232Tunnel &tunnel, const SensorAddress &address)
    {
        QUrl url;
        const ErrorCode code = tunnel.openTunnel(url);
        if (code != NoError)
            throw Failure{ExitCode::CannotOpen,
                          QStringLiteral("cannot open %1: error %2").arg(address.toString()).arg(code)};
        if (url.isEmpty())
            throw Failure{ExitCode::Failed,
                          QStringLiteral("the tunnel could not get a TCP port on this computer")};
        return url;
    }

    void printAddress(Console &console, const SensorAddress &address, const QUrl &url) const
    {
        if (m_json)
            Answer::printJson(console, address, {{QStringLiteral("url"), url.toString()}});
        else
            console.print(url.toString());
        if (!console.flush())
            throw Failure{ExitCode::Failed,
                          QStringLiteral("cannot write to standard output: %1").arg(console.outputProblem())};
        console.note(QStringLiteral("Ctrl-C ends it"));
    }

    static void serve(Console &console, InterruptWatcher &interrupt, RS232Tunnel &tunnel)
    {
        QEventLoop loop;
        bool lost = false;
        QObject::connect(&tunnel, &RS232Tunnel::forwardTunnelClosed, &loop, [&] {
            lost = true;
            console.note(QStringLiteral("the sensor is lost; the next connection of a browser tries to open it"));
        });
        QObject::connect(&tunnel, &RS232Tunnel::forwardTunnelOpened, &loop, [&] {
            if (lost)
                console.note(QStringLiteral("the sensor is back"));
            lost = false;
        });
        QObject::connect(&interrupt, &InterruptWatcher::interrupted, &loop, &QEventLoop::quit);
        if (!InterruptWatcher::isInterrupted())
            loop.exec();
    }

    // A browser may have changed the baud rate.
    static void printNewAddress(Console &console, SensorAddress address, const SensorInstance &instance)
    {
        const QMap<QString, QVariant> stored = instance.storedInterfaceParameters();
        if (stored == address.parameters)
            return;
        address.parameters = stored;
        console.note(QStringLiteral("the sensor is now reached as %1").arg(address.toString()));
    }

    SensorOptions m_sensor;
    bool m_open = false;
    bool m_json = false;
};

} // namespace

std::unique_ptr<Command> makeTunnelCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand =
        app.add_subcommand("tunnel", "Let a browser reach the web interface of a sensor on a serial line");
    return std::make_unique<TunnelCommand>(*subcommand);
}
