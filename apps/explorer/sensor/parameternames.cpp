// SPDX-License-Identifier: MIT
#include "parameternames.h"

#include <SondixQt/parameterpresentation.h>

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>
#include <iterator>

namespace Explorer {

namespace {

struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(Explorer::Parameters)
};

struct NameRow
{
    const char *answer;
    const char *name;
    const char *unit;
};

// clang-format off
constexpr NameRow nameRows[] = {
    // answer                  name                                                            unit
    {"SA_Measrate",                  QT_TRANSLATE_NOOP("Explorer::Parameters", "Sample rate"),                             "kHz"},
    {"SA_SampleTime",                QT_TRANSLATE_NOOP("Explorer::Parameters", "Sample time"),                             "\302\265s"},
    {"SA_MeasFrequency",             QT_TRANSLATE_NOOP("Explorer::Parameters", "Measuring frequency"),                     "Hz"},
    {"SA_Average",                   QT_TRANSLATE_NOOP("Explorer::Parameters", "Averaged values"),                         ""},
    {"SA_AvrType",                   QT_TRANSLATE_NOOP("Explorer::Parameters", "Averaging type"),                          ""},
    {"SA_AvrNbr",                    QT_TRANSLATE_NOOP("Explorer::Parameters", "Averaged values"),                         ""},
    {"SA_AveragingNumber",           QT_TRANSLATE_NOOP("Explorer::Parameters", "Averaged values"),                         ""},
    {"SA_SRIndex",                   QT_TRANSLATE_NOOP("Explorer::Parameters", "Sample rate number"),                      ""},
    {"SA_TrgMode",                   QT_TRANSLATE_NOOP("Explorer::Parameters", "Trigger mode"),                            ""},
    {"SA_Sync_TrgMode",              QT_TRANSLATE_NOOP("Explorer::Parameters", "Synchronisation and trigger"),             ""},
    {"SA_SyncMode",                  QT_TRANSLATE_NOOP("Explorer::Parameters", "Synchronisation"),                         ""},
    {"SA_MeasureMode",               QT_TRANSLATE_NOOP("Explorer::Parameters", "Measuring mode"),                          ""},
    {"SA_AveragingType",             QT_TRANSLATE_NOOP("Explorer::Parameters", "Averaging type"),                          ""},
    {"SA_LaserPower",                QT_TRANSLATE_NOOP("Explorer::Parameters", "Laser power"),                             ""},
    {"SA_SensorName",                QT_TRANSLATE_NOOP("Explorer::Parameters", "Sensor name"),                             ""},
    {"SA_TriggerMode",               QT_TRANSLATE_NOOP("Explorer::Parameters", "Trigger mode"),                            ""},
    {"SA_TriggerSource",             QT_TRANSLATE_NOOP("Explorer::Parameters", "Trigger source"),                          ""},
    {"SA_Speed",                     QT_TRANSLATE_NOOP("Explorer::Parameters", "Speed"),                                   ""},
    {"SA_OutputMode",                QT_TRANSLATE_NOOP("Explorer::Parameters", "Output mode"),                             ""},
    {"SA_AutostartCommand",          QT_TRANSLATE_NOOP("Explorer::Parameters", "Start of measuring"),                      ""},
    {"SA_MeasureTime",               QT_TRANSLATE_NOOP("Explorer::Parameters", "Measuring time"),                          ""},
    {"SA_SyncTermination",           QT_TRANSLATE_NOOP("Explorer::Parameters", "Termination of the synchronisation line"), ""},
    {"SA_OutputVideoRaw_ETH",        QT_TRANSLATE_NOOP("Explorer::Parameters", "Raw video line"),                          ""},
    {"SA_OutputVideoCorr_ETH",       QT_TRANSLATE_NOOP("Explorer::Parameters", "Corrected video line"),                    ""},
    {"SA_OutputVideoDark_ETH",       QT_TRANSLATE_NOOP("Explorer::Parameters", "Dark reference line"),                     ""},
    {"SA_OutputVideoLight_ETH",      QT_TRANSLATE_NOOP("Explorer::Parameters", "Light reference line"),                    ""},
    {"SA_OutputVideoDarkTable_ETH",  QT_TRANSLATE_NOOP("Explorer::Parameters", "Dark reference table"),                    ""},
    {"SA_OutputVideoLightTable_ETH", QT_TRANSLATE_NOOP("Explorer::Parameters", "Light reference table"),                   ""},
    {"SA_OutputVideoRaw_RS422",      QT_TRANSLATE_NOOP("Explorer::Parameters", "Raw video line"),                          ""},
    {"SA_OutputRS422",               QT_TRANSLATE_NOOP("Explorer::Parameters", "RS422 output"),                            ""},
    {"SA_OutputAnalog",              QT_TRANSLATE_NOOP("Explorer::Parameters", "Analogue output"),                         ""},
    {"SA_OutputErrorOut1",           QT_TRANSLATE_NOOP("Explorer::Parameters", "Error output 1"),                          ""},
    {"SA_OutputErrorOut2",           QT_TRANSLATE_NOOP("Explorer::Parameters", "Error output 2"),                          ""},
};

constexpr NameRow groupRows[] = {
    {"Samplerate",       QT_TRANSLATE_NOOP("Explorer::Parameters", "Sample rate"),             ""},
    {"Averaging",        QT_TRANSLATE_NOOP("Explorer::Parameters", "Averaging"),               ""},
    {"Average",          QT_TRANSLATE_NOOP("Explorer::Parameters", "Averaging"),               ""},
    {"LaserPower",       QT_TRANSLATE_NOOP("Explorer::Parameters", "Laser power"),             ""},
    {"SensorName",       QT_TRANSLATE_NOOP("Explorer::Parameters", "Sensor name"),             ""},
    {"Settings",         QT_TRANSLATE_NOOP("Explorer::Parameters", "Settings"),                ""},
    {"SampleTime",       QT_TRANSLATE_NOOP("Explorer::Parameters", "Sample time"),             ""},
    {"Autostart",        QT_TRANSLATE_NOOP("Explorer::Parameters", "Start of measuring"),      ""},
    {"MeasureTime",      QT_TRANSLATE_NOOP("Explorer::Parameters", "Measuring time"),          ""},
    {"DataOutInterface", QT_TRANSLATE_NOOP("Explorer::Parameters", "Outputs"),                 ""},
    {"TriggerMode",      QT_TRANSLATE_NOOP("Explorer::Parameters", "Trigger"),                 ""},
    {"TriggerSource",    QT_TRANSLATE_NOOP("Explorer::Parameters", "Trigger"),                 ""},
    {"SyncMode",         QT_TRANSLATE_NOOP("Explorer::Parameters", "Synchronisation"),         ""},
    {"MeasureMode",      QT_TRANSLATE_NOOP("Explorer::Parameters", "Measuring mode"),          ""},
    {"MeasFrequency",    QT_TRANSLATE_NOOP("Explorer::Parameters", "Measuring frequency"),     ""},
    {"OutputVideo_ETH",  QT_TRANSLATE_NOOP("Explorer::Parameters", "Video output (Ethernet)"), ""},
    {"Output_ETH",       QT_TRANSLATE_NOOP("Explorer::Parameters", "Video output (Ethernet)"), ""},
    {"Output_RS422",     QT_TRANSLATE_NOOP("Explorer::Parameters", "Video output (RS422)"),    ""},
};
// clang-format on

template<std::size_t size>
const NameRow *rowOf(const NameRow (&rows)[size], const QString &key)
{
    const auto found = std::find_if(std::begin(rows), std::end(rows),
                                    [&key](const NameRow &row) { return key == QLatin1String(row.answer); });
    return found != std::end(rows) ? &*found : nullptr;
}

bool isSwitch(const QString &answer)
{
    return answer.startsWith(QLatin1String("SA_Output")) && answer != QLatin1String("SA_OutputMode");
}

/// Settings of which only the value 0 means the same for all models.
bool isOffAtZero(const QString &answer)
{
    static const QStringList names{QStringLiteral("SA_TriggerMode"), QStringLiteral("SA_TriggerSource"),
                                   QStringLiteral("SA_TrgMode"), QStringLiteral("SA_SyncMode"),
                                   QStringLiteral("SA_AveragingType")};
    return names.contains(answer);
}

} // namespace

QString wordsOf(const QString &name)
{
    QString words;
    for (int i = 0; i < name.size(); ++i) {
        const QChar c = name.at(i);
        const bool isStart =
            i > 0 && c.isUpper() && !name.at(i - 1).isUpper() && name.at(i - 1) != QLatin1Char('_');
        const bool endsCapitals =
            i > 0 && i + 1 < name.size() && c.isUpper() && name.at(i - 1).isUpper() && name.at(i + 1).isLower();
        if (c == QLatin1Char('_')) {
            words += QLatin1Char(' ');
            continue;
        }
        if (isStart || endsCapitals)
            words += QLatin1Char(' ');
        const bool isAbbreviation = i + 1 < name.size() && (name.at(i + 1).isUpper() || name.at(i + 1).isDigit());
        words += i > 0 && c.isUpper() && !isAbbreviation && (isStart || endsCapitals) ? c.toLower() : c;
    }
    return words.simplified();
}

ParameterPresentationEntry presentationOf(const QString &answer)
{
    ParameterPresentationEntry entry;
    if (const NameRow *row = rowOf(nameRows, answer)) {
        entry.name = Texts::tr(row->name);
        entry.unit = QString::fromUtf8(row->unit);
    } else {
        entry.name = friendlyName(answer);
        if (entry.name.isEmpty())
            entry.name = wordsOf(answer.mid(answer.indexOf(QLatin1Char('_')) + 1));
    }
    if (isSwitch(answer))
        entry.values = {{0, Texts::tr("off")}, {1, Texts::tr("on")}};
    else if (isOffAtZero(answer))
        entry.values = {{0, Texts::tr("off")}};
    return entry;
}

QString groupTitle(const QString &writeCommand)
{
    const QString group = writeCommand.mid(writeCommand.indexOf(QLatin1Char('_')) + 1);
    const NameRow *const row = rowOf(groupRows, group);
    return row ? Texts::tr(row->name) : wordsOf(group);
}

QString presentedValue(const ParameterPresentationEntry &entry, const QVariant &value)
{
    for (const NamedValue &named : entry.values) {
        if (value.userType() == QMetaType::Int && value.toInt() == named.value)
            return named.name;
    }
    QString text = value.toString();
    if (value.userType() == QMetaType::Double) {
        QLocale locale;
        locale.setNumberOptions(QLocale::OmitGroupSeparator);
        text = locale.toString(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    }
    return entry.unit.isEmpty() ? text : QStringLiteral("%1 %2").arg(text, entry.unit);
}

QString friendlyName(const QString &parameter)
{
    static const char *const texts[] = {
        QT_TRANSLATE_NOOP("Explorer::Parameters", "SensorType"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Interface"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Baudrate"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Stopbits"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Parity"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Byte Size"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Card Instance"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Device Instance"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Serial Number (Interface)"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Serial Number (Controller)"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Port Number"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Channel Number"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "MAC Address"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "IP Address"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Subnet Mask"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Host Name"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Software Version"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Sensor Address"),
        QT_TRANSLATE_NOOP("Explorer::Parameters", "Network Adapter"),
    };
    Q_UNUSED(texts) // for the translators
    QString name = SondixQt::friendlyParameterName(parameter);
    if (name.size() > 2 && name.startsWith(QLatin1Char('$')) && name.endsWith(QLatin1Char('$')))
        name = name.mid(1, name.size() - 2);
    if (name == QLatin1String("SensorType"))
        return Texts::tr("Sensor type");
    return name.isEmpty() ? name : Texts::tr(name.toUtf8().constData());
}

} // namespace Explorer
