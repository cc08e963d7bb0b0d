// SPDX-License-Identifier: MIT
// A tunnel to a sensor of the simulator's built-in bench, for tests that are not written in C++.
//
// It prints the tunnel's address and then answers each line of input with one line of output. Both are JSON objects;
// the member "do" of the input is the name of the request.

#include <SondixQt/rs232tunnel.h>
#include <SondixQt/sensorinstance.h>

#include <SondixSimulator/control.h>

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QtDebug>
#include <QUrl>

#include <cstdio>
#include <cstring>
#include <iostream>
#include <map>
#include <mutex>
#include <string>

using namespace SondixQt;

namespace {

const std::string serialNumber = "1018001";
const QMap<QString, QVariant> place{{QStringLiteral("IP_Interface"), QStringLiteral("RS232")},
                                    {QStringLiteral("IP_Port"), QStringLiteral("COM3")},
                                    {QStringLiteral("IP_Baudrate"), 115200}};

constexpr char requestCategory[] = "SondixQt.RS232Tunnel.Requests";

std::mutex logMutex;
QJsonArray logLines;

void keepLog(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type == QtInfoMsg && std::strcmp(context.category, requestCategory) == 0) {
        const std::lock_guard<std::mutex> lock(logMutex);
        logLines.append(text);
    } else if (type != QtDebugMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(text));
    }
}

QJsonArray takeLog()
{
    const std::lock_guard<std::mutex> lock(logMutex);
    const QJsonArray taken = logLines;
    logLines = {};
    return taken;
}

/// Removes the quotation marks around a text in the call log.
QString unquoted(const std::string &argument)
{
    const QString text = QString::fromLatin1(argument.data(), static_cast<int>(argument.size()));
    return text.startsWith(QLatin1Char('"')) && text.endsWith(QLatin1Char('"')) ? text.mid(1, text.size() - 2)
                                                                                : text;
}

/// The commands that have reached the sensor since the last call, with their parameters.
QJsonArray takeCommands()
{
    QJsonArray commands;
    std::map<uint32_t, QJsonObject> staged;
    for (const sondixsim::Call &call : sondixsim::calls()) {
        QJsonObject &parameters = staged[call.handle];
        if (call.function.compare(0, 12, "SetParameter") == 0 && call.arguments.size() > 1) {
            parameters.insert(unquoted(call.arguments[0]), unquoted(call.arguments[1]));
        } else if (call.function == "SensorCommand") {
            const QString name = parameters.take(QStringLiteral("S_Command")).toString();
            commands.append(
                QJsonObject{{QStringLiteral("command"), name}, {QStringLiteral("parameters"), parameters}});
            parameters = {};
        }
    }
    sondixsim::clearCalls();
    return commands;
}

void failPages(const std::string &text)
{
    sondixsim::Fault fault;
    fault.command = "Get_HTTP";
    fault.code = -77;
    fault.text = text;
    sondixsim::inject(fault);
}

void setPage(const std::string &path, int size)
{
    sondixsim::setPage(serialNumber, path,
                       "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nContent-Length: " + std::to_string(size) +
                           "\r\n\r\n",
                       std::string(static_cast<size_t>(size), 'x'));
}

/// Reads a value from the sensor as the application does, without the tunnel.
QJsonObject read(SensorInstance &sensor, const QString &command, const QString &answer)
{
    QString value;
    QString errorText;
    if (sensor.sendCommandGetString(command, answer, value, &errorText) != NoError)
        return {{QStringLiteral("error"), errorText}};
    return {{QStringLiteral("value"), value}};
}

QJsonObject answer(const QJsonObject &question, SensorInstance &sensor)
{
    const QString what = question.value(QStringLiteral("do")).toString();
    const auto text = [&question](const char *key) { return question.value(QLatin1String(key)).toString(); };
    if (what == QLatin1String("calls"))
        return {{QStringLiteral("calls"), takeCommands()}};
    if (what == QLatin1String("log"))
        return {{QStringLiteral("log"), takeLog()}};
    if (what == QLatin1String("read"))
        return read(sensor, text("command"), text("answer"));
    if (what == QLatin1String("unplug"))
        sondixsim::unplug(serialNumber);
    else if (what == QLatin1String("plug"))
        sondixsim::plug(serialNumber);
    else if (what == QLatin1String("fail"))
        failPages(text("text").toStdString());
    else if (what == QLatin1String("mend"))
        sondixsim::clearFaults();
    else if (what == QLatin1String("lineSpeed"))
        sondixsim::setLineSpeedEffect(question.value(QStringLiteral("on")).toBool());
    else if (what == QLatin1String("page"))
        setPage(text("path").toStdString(), question.value(QStringLiteral("size")).toInt());
    else
        return {{QStringLiteral("error"), QStringLiteral("unknown request '%1'").arg(what)}};
    return {};
}

void print(const QJsonObject &object)
{
    const QByteArray line = QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
    std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stdout);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char *argv[])
{
    QLoggingCategory::setFilterRules(QLatin1String(requestCategory) + QStringLiteral(".info=true"));
    qInstallMessageHandler(keepLog);
    const QCoreApplication application(argc, argv);
    sondixsim::loadBuiltInBench();
    SensorInstance sensor(TX270);
    QString errorText;
    if (sensor.open(place, &errorText) != NoError) {
        std::fprintf(stderr, "%s\n", qPrintable(errorText));
        return 1;
    }
    RS232Tunnel tunnel(sensor);
    QUrl url;
    if (tunnel.openTunnel(url) != NoError || url.isEmpty()) {
        std::fprintf(stderr, "the tunnel does not open\n");
        return 1;
    }
    sondixsim::recordCalls(true);
    print({{QStringLiteral("url"), url.toString()}});
    std::string line;
    while (std::getline(std::cin, line))
        print(answer(QJsonDocument::fromJson(QByteArray::fromStdString(line)).object(), sensor));
    tunnel.closeTunnel();
    return 0;
}
