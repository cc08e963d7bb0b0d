// SPDX-License-Identifier: MIT
#include "report.h"
#include "sondix/answerparser_p.h"

#include <QRegularExpression>

using namespace SondixQt;

namespace {

using Parameters = QMap<QString, QVariant>;

constexpr int parameterCount = 200;

/// A complete answer with a realistic mix of texts, decimal numbers and integers.
QString answer()
{
    QString text;
    for (int i = 0; text.count(QLatin1Char('=')) < parameterCount; ++i) {
        text +=
            QStringLiteral("SA_Measrate%1=%2.25 SA_OutputVideoRaw_ETH%1=%1 IA_Scaled_Name%1=\"Distance %1 (raw)\" "
                           "IA_Scaled_RangeMax%1=%1.5 SA_Address%1=0x%1F ")
                .arg(i)
                .arg(i * 17);
    }
    return text;
}

/// Parses the same answer with the regular expression that defines the format.
Parameters parseByPattern(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("([^\\s\"]+)=(\"(?:[^\"\\\\]++|\\\\.)*+\"|[^\"\\s]+)"));
    Parameters result;
    QRegularExpressionMatchIterator matches = pattern.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        const QString key = match.captured(1);
        QString value = match.captured(2);
        bool ok = true;
        QVariant converted;
        if (value.startsWith(QLatin1Char('"')))
            converted = value.remove(QLatin1Char('"'));
        else if (value.contains(QLatin1Char('.')))
            converted = value.toDouble(&ok);
        else if (value.contains(QLatin1String("0x")))
            converted = value;
        else
            converted = value.toInt(&ok);
        if (ok)
            result.insert(key, converted);
        else
            result.remove(key);
    }
    return result;
}

void parse(benchmark::State &state)
{
    const QString text = answer();
    for (auto _ : state)
        benchmark::DoNotOptimize(parseAllParameters(text));
}

void parsePattern(benchmark::State &state)
{
    const QString text = answer();
    const Parameters parsed = parseAllParameters(text);
    if (parsed.size() != parameterCount || parseByPattern(text) != parsed)
        state.SkipWithError("the two parsers do not agree");
    for (auto _ : state)
        benchmark::DoNotOptimize(parseByPattern(text));
}

const bool answerBenchesAreRegistered = [] {
    benchmark::RegisterBenchmark("parse 200 parameters", parse);
    benchmark::RegisterBenchmark("parse 200 parameters by pattern", parsePattern);
    report::claim("parsing 200 parameters", "us", std::nullopt, report::time("parse 200 parameters", 1e3));
    report::claim("parsing 200 parameters: part of the time of QRegularExpression", "x", 0.5,
                  report::ratio("parse 200 parameters", "parse 200 parameters by pattern"));
    return true;
}();

} // namespace
