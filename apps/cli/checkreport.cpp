// SPDX-License-Identifier: MIT
#include "checkreport.h"

#include <QFileInfo>
#include <QSet>
#include <QXmlStreamWriter>

#include <algorithm>

namespace {

/// XML has no way to write most control characters, and QXmlStreamWriter writes them as they are.
QString writable(QString text)
{
    for (int i = 0; i < text.size(); ++i) {
        const QChar character = text.at(i);
        const ushort unit = character.unicode();
        const bool isSpace = unit == '\t' || unit == '\n' || unit == '\r';
        if (character.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            ++i;
        else if ((unit < ' ' && !isSpace) || character.isSurrogate() || unit >= 0xFFFE)
            text[i] = QChar::ReplacementCharacter;
    }
    return text;
}

QString number(double seconds)
{
    return QString::number(seconds, 'f', 3);
}

void write(QXmlStreamWriter &xml, const CheckCase &checked, const QString &name, const CheckReport &report)
{
    xml.writeStartElement(QStringLiteral("testcase"));
    xml.writeAttribute(QStringLiteral("name"), writable(name));
    xml.writeAttribute(QStringLiteral("classname"), writable(QFileInfo(report.benchFile).completeBaseName()));
    xml.writeAttribute(QStringLiteral("time"), number(checked.seconds));
    xml.writeAttribute(QStringLiteral("file"), writable(report.benchFile));
    if (checked.line > 0)
        xml.writeAttribute(QStringLiteral("line"), QString::number(checked.line));
    if (checked.state != CheckCase::Met) {
        const bool isSkipped = checked.state == CheckCase::Skipped;
        xml.writeStartElement(isSkipped ? QStringLiteral("skipped") : QStringLiteral("failure"));
        xml.writeAttribute(QStringLiteral("message"),
                           writable(QStringLiteral("expected %1, found %2").arg(checked.expected, checked.found)));
        if (!isSkipped) {
            const QString place =
                checked.line > 0 ? QStringLiteral("%1:%2: ").arg(report.benchFile).arg(checked.line) : QString();
            xml.writeCharacters(writable(place + checked.text()));
        }
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

} // namespace

int CheckReport::count(CheckCase::State state) const
{
    return static_cast<int>(std::count_if(cases.begin(), cases.end(),
                                          [state](const CheckCase &checked) { return checked.state == state; }));
}

QByteArray CheckReport::junit() const
{
    double seconds = 0.0;
    for (const CheckCase &checked : cases)
        seconds += checked.seconds;
    QByteArray text;
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(2);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("testsuites"));
    xml.writeStartElement(QStringLiteral("testsuite"));
    xml.writeAttribute(QStringLiteral("name"), writable(benchFile));
    xml.writeAttribute(QStringLiteral("tests"), QString::number(cases.size()));
    xml.writeAttribute(QStringLiteral("failures"), QString::number(count(CheckCase::NotMet)));
    xml.writeAttribute(QStringLiteral("errors"), QStringLiteral("0"));
    xml.writeAttribute(QStringLiteral("skipped"), QString::number(count(CheckCase::Skipped)));
    xml.writeAttribute(QStringLiteral("time"), number(seconds));
    // Without a time zone: some readers refuse one.
    xml.writeAttribute(QStringLiteral("timestamp"), begun.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")));
    QSet<QString> names; // servers distinguish tests by their names
    for (const CheckCase &checked : cases) {
        const QString name = names.contains(checked.name)
                                 ? QStringLiteral("%1 (line %2)").arg(checked.name).arg(checked.line)
                                 : checked.name;
        names += name;
        write(xml, checked, name, *this);
    }
    xml.writeEndElement();
    xml.writeEndElement();
    xml.writeEndDocument();
    return text;
}
