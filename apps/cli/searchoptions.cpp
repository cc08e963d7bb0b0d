// SPDX-License-Identifier: MIT
#include "searchoptions.h"

#include "exitcode.h"
#include "validators.h"

#include <SondixQt/namelookup.h>
#include <SondixQt/sensoraddress.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <optional>

using namespace SondixQt;

namespace {

// What \a find, a lookup by name, returns for \a name. Throws Failure if there is no such name.
template<typename T>
T named(std::optional<T> find(const QString &, QString *), const std::string &name)
{
    QString problem;
    const std::optional<T> found = find(QString::fromStdString(name), &problem);
    if (!found)
        throw Failure{ExitCode::Usage, problem};
    return *found;
}

bool isBaudRateList(const QString &text)
{
    const QStringList rates = text.split(QLatin1Char(','));
    return std::all_of(rates.cbegin(), rates.cend(), [](const QString &rate) {
        return SensorAddress::parseValue(InterfaceParameter::Baudrate, rate.trimmed());
    });
}

} // namespace

void SearchOptions::addModelOptions(CLI::App &app)
{
    auto *type = app.add_option("-t,--type", m_type, "Model, by name or number (see 'sondixqt models')")
                     ->check(Validators::notEmpty());
    app.add_option("-g,--group", m_group, "All models of this group, by name or number")
        ->check(Validators::notEmpty())
        ->excludes(type);
    app.add_flag("--thorough", m_thorough, "Search each family of models separately, which takes much longer")
        ->excludes(type);
}

void SearchOptions::addScanOptions(CLI::App &app)
{
    app.add_option("-i,--interface", m_interfaces,
                   "Search only this interface, by name or number; may be repeated (default: all)")
        ->delimiter(',')
        ->check(Validators::notEmpty())
        ->allow_extra_args(false);
    app.add_option("--baudrates", m_baudrates, "Baud rates to try on serial lines, such as 9600,115200")
        ->check([](const std::string &text) {
            return isBaudRateList(QString::fromStdString(text))
                       ? std::string()
                       : "'" + text + "' is no list of baud rates, such as 9600,115200";
        });
    app.add_flag("--similar", m_similar, "Also print sensors of other models that answer the search");
    app.add_flag("--quick,!--no-quick", m_quick,
                 "Search RS485 buses quickly (default); --no-quick searches them thoroughly");
}

SensorType SearchOptions::type() const
{
    return m_type.empty() ? NoSensor : named(findSensorType, m_type);
}

SearchRequest SearchOptions::request() const
{
    SearchRequest request;
    request.type = type();
    if (!m_group.empty())
        request.group = named(findSensorGroup, m_group);
    for (const std::string &name : m_interfaces)
        request.interfaces |= named(findSensorInterface, name);
    if (m_interfaces.empty())
        request.interfaces = SensorInterfaces(~0);
    request.baudrates = QString::fromStdString(m_baudrates);
    request.thorough = m_thorough;
    request.similar = m_similar;
    request.quick = m_quick;
    return request;
}
