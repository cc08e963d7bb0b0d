// SPDX-License-Identifier: MIT
#include "commandparameters.h"

#include <QRegularExpression>

#include <algorithm>

namespace SondixApp {

namespace {

const QLatin1Char quote('"');

bool matches(const QString &text, const QString &pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}

QVariant invalid(QString &problem, const QString &sentence)
{
    problem = sentence;
    return {};
}

// The sensor-access library takes 8-bit texts: other characters would arrive as question marks.
bool isLatin1(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.unicode() <= 0xFF; });
}

QVariant textValue(const QString &word, const QString &text, QString &problem)
{
    if (!isLatin1(text))
        return invalid(problem, QStringLiteral("'%1' has characters that cannot be sent to a sensor").arg(word));
    return text;
}

QVariant numberValue(const QString &word, const QString &text, bool isInteger, QString &problem)
{
    bool fits = false;
    QVariant value = isInteger ? QVariant(text.toInt(&fits)) : QVariant(text.toDouble(&fits));
    if (fits)
        return value;
    return invalid(
        problem,
        QStringLiteral("the number in '%1' is too large%2")
            .arg(word, isInteger ? QStringLiteral(" for an integer; with a point it is a decimal") : QString()));
}

QVariant valueOf(const QString &word, const QString &text, QString &problem)
{
    if (text.startsWith(quote) || text.endsWith(quote)) {
        if (text.size() < 2 || !text.startsWith(quote) || !text.endsWith(quote))
            return invalid(problem,
                           QStringLiteral("the double quotes in '%1' do not enclose the value").arg(word));
        return textValue(word, text.mid(1, text.size() - 2), problem);
    }
    if (text.isEmpty())
        return invalid(problem,
                       QStringLiteral("'%1' gives no value; two double quotes stand for an empty text").arg(word));
    if (matches(text, QStringLiteral("[+-]?[0-9]+")))
        return numberValue(word, text, true, problem);
    if (matches(text, QStringLiteral("[+-]?([0-9]+[.]?[0-9]*|[.][0-9]+)([eE][+-]?[0-9]+)?")))
        return numberValue(word, text, false, problem);
    return textValue(word, text, problem);
}

} // namespace

bool isCommandWord(const QString &text)
{
    return matches(text, QStringLiteral("[A-Za-z][A-Za-z0-9_#]*"));
}

std::optional<QMap<QString, QVariant>> commandParameters(const QStringList &words, QString &problem)
{
    QMap<QString, QVariant> parameters;
    for (const QString &word : words) {
        const int equals = word.indexOf(QLatin1Char('='));
        const QString name = word.left(equals);
        if (equals < 0 || !isCommandWord(name)) {
            problem = QStringLiteral("'%1' is no PARAMETER=VALUE, such as SP_Measrate=2.5").arg(word);
            return std::nullopt;
        }
        if (name == QLatin1String("S_Command")) {
            problem = QStringLiteral("'S_Command' is the command itself and no parameter of one");
            return std::nullopt;
        }
        if (parameters.contains(name)) {
            problem = QStringLiteral("'%1' is given twice").arg(name);
            return std::nullopt;
        }
        const QVariant value = valueOf(word, word.mid(equals + 1), problem);
        if (!value.isValid())
            return std::nullopt;
        parameters.insert(name, value);
    }
    return parameters;
}

} // namespace SondixApp
