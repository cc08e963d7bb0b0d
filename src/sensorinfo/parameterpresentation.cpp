// SPDX-License-Identifier: MIT
#include "parameterpresentation.h"

#include "sensorinfo.h"

#include <QCursor>
#include <QGridLayout>
#include <QLabel>
#include <QStringList>

#include <algorithm>

namespace SondixQt {

namespace {

constexpr int interfaceRow = 0;
constexpr int portRow = 1;
constexpr int firstFreeRow = 2;

// clang-format off
#define S QStringLiteral

QMap<QString, QString> makeFriendlyNames()
{
    return {
        // parameter                        friendly name
        {S("IP_SensorTypeName"),            S("$SensorType$")},
        {S("IP_Interface"),                 S("$Interface$")},
        {S("IP_Baudrate"),                  S("$Baudrate$")},
        {S("IP_Stopbits"),                  S("$Stopbits$")},
        {S("IP_Parity"),                    S("$Parity$")},
        {S("IP_ByteSize"),                  S("$Byte Size$")},
        {S("IP_CardInstance"),              S("$Card Instance$")},
        {S("IP_DeviceInstance"),            S("$Device Instance$")},
        {S("IP_SerialNumber"),              S("$Serial Number (Interface)$")},
        {S("SA_ControllerSerialNumber"),    S("$Serial Number (Controller)$")},
        {S("SA_SerialNumber"),              S("$Serial Number (Controller)$")},
        {S("IP_Port"),                      S("$Port Number$")},
        {S("IP_ChannelNumber"),             S("$Channel Number$")},
        {S("SA_MacAddress"),                S("$MAC Address$")},
        {S("IP_RemoteAddr"),                S("$IP Address$")},
        {S("SA_SubnetMask"),                S("$Subnet Mask$")},
        {S("SA_DHCPName"),                  S("$Host Name$")},
        {S("SA_Softwareversion"),           S("$Software Version$")},
        {S("IP_SensorAddress"),             S("Sensor Address")},
        {S("SA_LocalAdapterDescription"),   S("$Network Adapter$")},
        {S("$RecordingDate$"),              S("$RecordingDate$")},
        {S("$Unknown$"),                    S("$Unknown$")},
    };
}

QMap<SensorInterface, QStringList> makeBasicParameters()
{
    return {
        {RS232,     {S("IP_Port"), S("IP_Baudrate"), S("SA_SerialNumber"), S("SA_SerialNumber"), S("IP_SensorAddress"), S("SA_Softwareversion")}},
        {XA100,     {S("IP_Interface"), S("IP_CardInstance"), S("IP_Baudrate"), S("IP_SerialNumber"), S("SA_SerialNumber")}},
        {XA200,     {S("IP_Interface"), S("IP_CardInstance"), S("IP_SerialNumber"), S("SA_SerialNumber"), S("IP_ChannelNumber"), S("IP_Baudrate"),
                     S("SA_Softwareversion")}},
        {XA200_ETH, {S("IP_Interface"), S("IP_SensorTypeName"), S("IP_Interface"), S("IP_RemoteAddr"), S("SA_MacAddress"), S("IP_CardInstance"),
                     S("IP_ChannelNumber"), S("SA_Baudrate"), S("SA_Parity"), S("IP_SerialNumber"), S("SA_SerialNumber")}},
        {XA100_USB, {S("IP_Interface"), S("IP_ChannelNumber"), S("IP_Baudrate"), S("IP_DeviceInstance"), S("IP_SerialNumber"), S("SA_SerialNumber"),
                     S("SA_Softwareversion")}},
        {TCPIP,     {S("IP_RemoteAddr"), S("SA_MacAddress"), S("SA_SerialNumber"), S("IP_SerialNumber"), S("SA_Softwareversion")}},
        {WinUSB,    {S("IP_Interface"), S("IP_DeviceInstance"), S("SA_SerialNumber")}},
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
    if (parameter == QLatin1String("IP_Interface"))
        return interfaceRow;
    if (parameter == QLatin1String("IP_Port"))
        return portRow;
    return std::max(layout.rowCount(), firstFreeRow);
}

} // namespace

QMap<QString, QVariant> extractBasicParameters(const SensorInfo &info)
{
    return info.getParameters(makeBasicParameters().value(info.interfaceType()));
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
