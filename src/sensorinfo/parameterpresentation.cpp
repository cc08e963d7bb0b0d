// SPDX-License-Identifier: MIT
#include "parameterpresentation.h"

#include "catalogue/interfaceparameters.h"
#include "sensorinfo.h"

#include <QCursor>
#include <QGridLayout>
#include <QLabel>
#include <QStringList>

#include <algorithm>

namespace SondixQt {

namespace {

namespace P = InterfaceParameter;

constexpr int interfaceRow = 0;
constexpr int portRow = 1;
constexpr int firstFreeRow = 2;

// clang-format off
#define S QStringLiteral

QMap<QString, QString> makeFriendlyNames()
{
    return {
        // parameter                        friendly name
        {P::SensorTypeName,                 S("$SensorType$")},
        {P::Interface,                      S("$Interface$")},
        {P::Baudrate,                       S("$Baudrate$")},
        {P::Stopbits,                       S("$Stopbits$")},
        {P::Parity,                         S("$Parity$")},
        {P::ByteSize,                       S("$Byte Size$")},
        {P::CardInstance,                   S("$Card Instance$")},
        {P::DeviceInstance,                 S("$Device Instance$")},
        {P::InterfaceSerialNumber,          S("$Serial Number (Interface)$")},
        {S("SA_ControllerSerialNumber"),    S("$Serial Number (Controller)$")},
        {P::SerialNumber,                   S("$Serial Number (Controller)$")},
        {P::Port,                           S("$Port Number$")},
        {P::ChannelNumber,                  S("$Channel Number$")},
        {P::MacAddress,                     S("$MAC Address$")},
        {P::RemoteAddr,                     S("$IP Address$")},
        {S("SA_SubnetMask"),                S("$Subnet Mask$")},
        {S("SA_DHCPName"),                  S("$Host Name$")},
        {P::SoftwareVersion,                S("$Software Version$")},
        {P::SensorAddress,                  S("Sensor Address")},
        {S("SA_LocalAdapterDescription"),   S("$Network Adapter$")},
        {S("$RecordingDate$"),              S("$RecordingDate$")},
        {S("$Unknown$"),                    S("$Unknown$")},
    };
}

QMap<SensorInterface, QStringList> makeBasicParameters()
{
    return {
        {RS232,     {P::Port, P::Baudrate, P::SerialNumber, P::SerialNumber, P::SensorAddress, P::SoftwareVersion}},
        {XA100,     {P::Interface, P::CardInstance, P::Baudrate, P::InterfaceSerialNumber, P::SerialNumber}},
        {XA200,     {P::Interface, P::CardInstance, P::InterfaceSerialNumber, P::SerialNumber, P::ChannelNumber, P::Baudrate,
                     P::SoftwareVersion}},
        {XA200_ETH, {P::Interface, P::SensorTypeName, P::Interface, P::RemoteAddr, P::MacAddress, P::CardInstance,
                     P::ChannelNumber, S("SA_Baudrate"), S("SA_Parity"), P::InterfaceSerialNumber, P::SerialNumber}},
        {XA100_USB, {P::Interface, P::ChannelNumber, P::Baudrate, P::DeviceInstance, P::InterfaceSerialNumber, P::SerialNumber,
                     P::SoftwareVersion}},
        {TCPIP,     {P::RemoteAddr, P::MacAddress, P::SerialNumber, P::InterfaceSerialNumber, P::SoftwareVersion}},
        {WinUSB,    {P::Interface, P::DeviceInstance, P::SerialNumber}},
    };
}

#undef S
// clang-format on

QLabel *makeLabel(const QString &text, const QString &objectName)
{
    auto *label = new QLabel(text);
    label->setObjectName(objectName);
    label->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Maximum);
    return label;
}

int rowFor(const QString &parameter, const QGridLayout &layout)
{
    if (parameter == P::Interface)
        return interfaceRow;
    if (parameter == P::Port)
        return portRow;
    return std::max(layout.rowCount(), firstFreeRow);
}

} // namespace

QMap<QString, QVariant> extractBasicParameters(const SensorInfo &info)
{
    static const QMap<SensorInterface, QStringList> parameters = makeBasicParameters();
    return info.getParameters(parameters.value(info.interfaceType()));
}

QString friendlyParameterName(const QString &parameter)
{
    static const QMap<QString, QString> names = makeFriendlyNames();
    return names.value(parameter);
}

void createParameterTable(QGridLayout *layout, const QMap<QString, QVariant> &parameters, bool friendlyNames)
{
    if (!layout)
        return;
    for (auto parameter = parameters.begin(); parameter != parameters.end(); ++parameter) {
        const QString caption = friendlyNames ? friendlyParameterName(parameter.key()) : parameter.key();
        if (caption.isEmpty())
            continue;
        QLabel *name = makeLabel(caption, QStringLiteral("name"));
        QLabel *value = makeLabel(parameter->toString(), QStringLiteral("value"));
        value->setTextInteractionFlags(Qt::TextBrowserInteraction);
        value->setCursor(Qt::IBeamCursor);
        const int row = rowFor(parameter.key(), *layout);
        layout->addWidget(name, row, 0);
        layout->addWidget(value, row, 1);
    }
}

} // namespace SondixQt
