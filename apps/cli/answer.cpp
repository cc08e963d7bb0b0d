// SPDX-License-Identifier: MIT
#include "answer.h"

#include "exitcode.h"
#include "texttable.h"

#include "shared/binaryanswers.h"
#include "shared/commandparameters.h"

#include <QJsonDocument>

using namespace SondixQt;
using namespace SondixApp;

namespace Answer {

// Control characters in a value would break the table or be executed by the terminal.
static QString onOneLine(QString text)
{
    text.replace(QLatin1String("\r\n"), QLatin1String(" | "));
    for (QChar &c : text)
        if (c.category() == QChar::Other_Control)
            c = QLatin1Char(' ');
    return text;
}

QString checkedCommand(const QString &name)
{
    if (!isCommandWord(name))
        throw Failure{ExitCode::Usage, QStringLiteral("'%1' is no name of a command, such as Get_Info").arg(name)};
    return name;
}

Parameters checkedParameters(const QStringList &words)
{
    QString problem;
    const auto parameters = commandParameters(words, problem);
    if (!parameters)
        throw Failure{ExitCode::Usage, problem};
    return *parameters;
}

Parameters ask(SensorInstance &instance, const QString &command, const Parameters &parameters)
{
    const QStringList binary = binaryAnswers(instance, command);
    Parameters answer;
    QString text;
    check(instance.sendCommandGetAll(command, parameters, answer, &text), command, text);
    if (!binary.isEmpty()) {
        const Parameters bytes = askBinary(instance, command, parameters, binary);
        for (auto it = bytes.cbegin(); it != bytes.cend(); ++it)
            answer.insert(it.key(), it.value());
    }
    return withoutInternals(answer);
}

void check(ErrorCode code, const QString &what, const QString &text)
{
    if (code != NoError)
        throw Failure{ExitCode::Refused,
                      QStringLiteral("the sensor refuses %1: %2")
                          .arg(what, text.isEmpty() ? QStringLiteral("error %1").arg(code) : text)};
}

Parameters withoutInternals(Parameters parameters)
{
    parameters.remove(QStringLiteral("S_Command"));
    return parameters;
}

QString textOf(const QVariant &value)
{
    if (value.type() != QVariant::ByteArray)
        return onOneLine(value.toString());
    const int size = value.toByteArray().size();
    return size == 1 ? QStringLiteral("1 byte") : QStringLiteral("%1 bytes").arg(size);
}

void print(Console &console, const Parameters &parameters, int indent)
{
    TextTable table({});
    for (auto it = parameters.cbegin(); it != parameters.cend(); ++it)
        table.addRow({it.key(), textOf(it.value())});
    table.print(console, indent);
}

void printJson(Console &console, const SensorAddress &address, QJsonObject object)
{
    object.insert(QStringLiteral("model"), sensorName(address.type, true));
    object.insert(QStringLiteral("address"), address.toString());
    console.write(QJsonDocument(object).toJson());
}

} // namespace Answer
