// SPDX-License-Identifier: MIT
#include "sensoroptions.h"

#include "exitcode.h"
#include "librarylog.h"
#include "searchloop.h"
#include "validators.h"

#include "shared/sensoropener.h"

#include <SondixQt/namelookup.h>

#include <CLI/CLI.hpp>

#include <algorithm>

using namespace SondixQt;
using namespace SondixApp;

namespace {

struct KeyHelp
{
    QLatin1String parameter;
    const char *text;
};

constexpr KeyHelp keyHelp[] = {
    {InterfaceParameter::Port, "Serial port, such as COM3"},
    {InterfaceParameter::Baudrate, "Baud rate of the serial line"},
    {InterfaceParameter::Stopbits, "Stop bits of the serial line"},
    {InterfaceParameter::ByteSize, "Data bits of the serial line"},
    {InterfaceParameter::Parity, "Parity of the serial line, as a number"},
    {InterfaceParameter::SensorAddress, "The sensor's address on a bus"},
    {InterfaceParameter::RemoteAddr, "IP address"},
    {InterfaceParameter::RemotePort, "TCP port for commands"},
    {InterfaceParameter::DataPort, "TCP port for measured values"},
    {InterfaceParameter::AddressFamily, "IP version, as a number"},
    {InterfaceParameter::CardInstance, "Number of the interface card"},
    {InterfaceParameter::DeviceInstance, "Number of the USB device"},
    {InterfaceParameter::ChannelNumber, "Channel of the interface card or converter"},
    {InterfaceParameter::SerialNumber, "Serial number of the device"},
};

std::string helpOf(const QString &parameter)
{
    for (const KeyHelp &help : keyHelp)
        if (help.parameter == parameter)
            return help.text;
    return {};
}

Failure usage(const QString &text)
{
    return {ExitCode::Usage, text};
}

// The error for a search that did not find exactly one sensor.
Failure notExactlyOne(const QList<SensorInfo> &found, const QString &what)
{
    if (found.isEmpty())
        return {ExitCode::NothingFound, QStringLiteral("the search found no %1").arg(what)};
    QStringList addresses;
    for (const SensorInfo &info : found)
        addresses += QStringLiteral("\n  ") + SensorAddress::of(info).toString();
    return usage(QStringLiteral("the search found %1 sensors; name one of them:%2")
                     .arg(found.size())
                     .arg(addresses.join(QString())));
}

} // namespace

void SensorOptions::addTo(CLI::App &app)
{
    app.add_option("SENSOR", m_address,
                   "Address of the sensor as 'find' prints it, such as TX270@RS232,port=COM3,baudrate=115200");
    m_search.addModelOptions(app);
    app.add_option("-s,--serial", m_serial, "Search for the sensor with this serial number")
        ->check(Validators::notEmpty());
    auto *iface = app.add_option("-i,--interface", m_interface, "Interface that the sensor is connected to")
                      ->group("Interface parameters");
    iface->check(Validators::notEmpty())->allow_extra_args(false);
    for (const SensorAddress::Key &key : SensorAddress::keys())
        app.add_option("--" + key.name.toStdString(), m_values[key.parameter], helpOf(key.parameter))
            ->check(Validators::notEmpty())
            ->group("Interface parameters");
    app.add_option("--param", m_parameters, "Any other interface parameter, as NAME=VALUE; may be repeated")
        ->group("Interface parameters")
        ->allow_extra_args(false);
    app.footer("The sensor is given by its address, or by its model and interface parameters:\n"
               "  --type TX270 --port COM3 --baudrate 115200\n"
               "  --type CC430 --address 169.254.168.150\n"
               "or by its serial number, model or group, which starts a search:\n"
               "  --serial 1018001 --type TX270");
}

QStringList SensorOptions::wordsAfterSensor(const std::vector<std::string> &following)
{
    QStringList words;
    // If there is an address as well, it stays in place: resolve() then reports that the sensor is named twice.
    if (isNamedByOptions() && m_address.find('@') == std::string::npos) {
        words += QString::fromStdString(m_address);
        m_address.clear();
    }
    for (const std::string &word : following)
        words += QString::fromStdString(word);
    words.removeAll(QString());
    return words;
}

SensorAddress SensorOptions::resolve(Console &console, InterruptWatcher &interrupt) const
{
    if (m_address.empty())
        return hasInterfaceOptions() ? direct() : search(console, interrupt);
    if (isNamedByOptions())
        throw usage(QStringLiteral("a sensor is named by its address or by options, not by both"));
    QString problem;
    const auto address = SensorAddress::parse(QString::fromStdString(m_address), &problem);
    if (!address)
        throw usage(problem);
    return *address;
}

bool SensorOptions::hasInterfaceOptions() const
{
    const bool anyValue =
        std::any_of(m_values.begin(), m_values.end(), [](const auto &entry) { return !entry.second.empty(); });
    return !m_interface.empty() || anyValue || !m_parameters.empty();
}

bool SensorOptions::isNamedByOptions() const
{
    return hasInterfaceOptions() || !m_serial.empty() || m_search.type() != NoSensor || m_search.hasGroup();
}

SensorAddress SensorOptions::direct() const
{
    SensorAddress address;
    address.type = m_search.type();
    if (address.type == NoSensor)
        throw usage(QStringLiteral("--type is needed to open a sensor by its interface parameters"));
    if (!m_serial.empty())
        throw usage(
            QStringLiteral("--serial searches for the sensor and cannot be combined with interface parameters"));
    const auto insert = [&address](const QString &parameter, const QString &value) {
        QString problem;
        const auto parsed = SensorAddress::parseValue(parameter, value, &problem);
        if (!parsed)
            throw usage(problem);
        address.parameters.insert(parameter, *parsed);
    };
    for (const auto &[parameter, value] : m_values)
        if (!value.empty())
            insert(parameter, QString::fromStdString(value));
    for (const std::string &text : m_parameters) {
        const QString parameter = QString::fromStdString(text).section(QLatin1Char('='), 0, 0);
        if (parameter.isEmpty() || parameter.size() >= static_cast<int>(text.size()))
            throw usage(QStringLiteral("--param takes NAME=VALUE, not '%1'").arg(QString::fromStdString(text)));
        insert(parameter, QString::fromStdString(text).section(QLatin1Char('='), 1));
    }
    if (!m_interface.empty()) {
        QString problem;
        const auto iface = findSensorInterface(QString::fromStdString(m_interface), &problem);
        if (!iface)
            throw usage(problem);
        address.parameters.insert(InterfaceParameter::Interface, interfaceName(*iface, true));
    } else if (!address.parameters.contains(InterfaceParameter::Interface)) {
        const bool serial = address.parameters.contains(InterfaceParameter::Port);
        const bool network = address.parameters.contains(InterfaceParameter::RemoteAddr);
        if (serial == network)
            throw usage(QStringLiteral("--interface is needed with these interface parameters"));
        address.parameters.insert(InterfaceParameter::Interface, interfaceName(serial ? RS232 : TCPIP, true));
    }
    return address;
}

SensorAddress SensorOptions::search(Console &console, InterruptWatcher &interrupt) const
{
    if (m_serial.empty() && m_search.type() == NoSensor && !m_search.hasGroup())
        throw usage(QStringLiteral("no sensor is named: give its address as 'sondixqt find' prints it, its model "
                                   "and interface parameters, or its serial number"));
    const QString serial = QString::fromStdString(m_serial);
    QList<SensorInfo> found;
    const auto onFound = [&](const SensorInfo &info) {
        const bool matches =
            serial.isEmpty() || info.getParameter(InterfaceParameter::SerialNumber).toString() == serial;
        if (matches)
            found += info;
        return serial.isEmpty() || !matches;
    };
    const SearchOutcome outcome = runSearch(m_search.request(), console, interrupt, onFound);
    if (InterruptWatcher::isInterrupted())
        throw Failure{ExitCode::Interrupted, QStringLiteral("interrupted during the search")};
    if (outcome.end == SearchOutcome::Refused)
        throw Failure{ExitCode::Failed, outcome.problem};
    if (found.size() == 1)
        return SensorAddress::of(found.first());
    throw notExactlyOne(found, serial.isEmpty() ? QStringLiteral("such sensor")
                                                : QStringLiteral("sensor with the serial number %1").arg(serial));
}

std::unique_ptr<SensorInstance> openSensor(const SensorAddress &address, QString *warning)
{
    auto instance = SensorInstance::create(address.type);
    if (!instance->isValid())
        throw Failure{ExitCode::Failed, creationProblem(*instance)};
    LibraryLog::attach(*instance);
    QString text;
    QString failure; // open() returns the text of its last query alone, and success clears it
    const auto connection = QObject::connect(
        instance.get(), &SensorInstance::errorMessage, [&failure](ErrorCode code, const QString &reason) {
            failure = reason.isEmpty() ? QStringLiteral("error %1").arg(code) : reason;
        });
    const ErrorCode code = openInstance(*instance, address.parameters, &text);
    QObject::disconnect(connection);
    if (InterruptWatcher::isInterrupted())
        throw Failure{ExitCode::Interrupted, QStringLiteral("interrupted while the sensor was opened")};
    if (code != NoError)
        throw Failure{ExitCode::CannotOpen,
                      QStringLiteral("cannot open %1: %2")
                          .arg(address.toString(), text.isEmpty() ? QStringLiteral("error %1").arg(code) : text)};
    if (const SensorAddress actual = answeringSensor(*instance, address); actual.type != address.type)
        Console::toStderr(QStringLiteral("the sensor at %1 reports another model: %2\n")
                              .arg(address.toString(), actual.toString())
                              .toUtf8());
    if (warning)
        *warning = failure;
    return instance;
}
