// SPDX-License-Identifier: MIT
#include "englishtexts.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QVector>

#include <array>

namespace Explorer {

namespace {

// Not in the list: it needs two literals, between which a comma would seem to be missing.
constexpr const char *noAddress =
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts",
                      "'%1' is no sensor address; one reads <model>@<interface>,<name>=<value>,..., such as "
                      "TX270@RS232,port=COM3,baudrate=115200");

// With %1, %2 ... where the sentence has a name, a number or another sentence. Of those that fit the first is taken.
constexpr const char *sources[] = {
    noAddress,
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "'%1' in a sensor's address is no <name>=<value>"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the sensor's address has two values of '%1'"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the %1 '%2' is no whole number"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the %1 %2 is not from %3 to %4"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "there is no %1 '%2'; %3"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "model"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "interface"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "interface parameter"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "did you mean %1 or %2 or %3?"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "did you mean %1 or %2?"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "did you mean %1?"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "models have names such as TX270"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the interfaces are %1"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "they are %1"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "'%1' is no PARAMETER=VALUE, such as SP_Measrate=2.5"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "'S_Command' is the command itself and no parameter of one"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "'%1' is given twice"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "'%1' has characters that cannot be sent to a sensor"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts",
                      "the number in '%1' is too large for an integer; with a point it is a decimal"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the number in '%1' is too large"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the double quotes in '%1' do not enclose the value"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "'%1' gives no value; two double quotes stand for an empty text"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the search for %1 was refused: %2"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "%1 cannot be searched for: %2"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the sensor-access library does not support it"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the search could not be aborted: %1"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts",
                      "the search did not end within %1 s; its progress cannot be read: %2"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the search did not end within %1 s"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "error %1"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the sensor-access library does not support this model"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the sensor refuses %1: %2"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the sensor reports error %1"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the reader has stopped"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "cannot write '%1': .npy needs a file"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "cannot write '%1' to the disk: %2"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "cannot write '%1': %2"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "it is a directory"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "it is write-protected"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "%1; all of it is in '%2'"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "line %1: %2"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the file is empty"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "'%1' are not the columns of a recording"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "'%1' is no JSON object"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "'%1' is no number of a frame"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "frame %1 of the file: '%2' is no number of a frame"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "'%1' is no raw value"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "'%1' is no time"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "'%1' is no value, and too many others are none"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "it has not the %1 columns of the file"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts",
                      "it is no recording, or cut: a line with the names of the columns is missing"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "it is no recording, or cut: there are neither a head nor frames"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "it is no recording: the object has no 'head' and no 'frame'"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "it is too long for a recording"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the array has not the columns of a recording"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts",
                      "the file is cut: it has only %1 of the %2 frames that its header tells of"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the frame has %1 instead of %2 raw values"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the frame has %1 instead of %2 values"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the frame has no time"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the frame has no values"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the gap is described incompletely"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the head describes no signals"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the header of the array is cut or no header of .npy"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the last frame is incomplete and is left out"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the last line is incomplete and is left out"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the number of the frame is none"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the raw value %1 is no whole number"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the value %1 is neither a number nor an error value"),
    QT_TRANSLATE_NOOP("Explorer::EnglishTexts", "the sensor does not report its serial number, which was %1"),
};

/// A sentence as a pattern. Between quotes stands what a user has written; the rest may be a sentence again.
struct Sentence
{
    struct Place
    {
        int number = 0;
        bool isQuoted = false;
    };

    const char *source;
    QRegularExpression pattern;
    QVector<Place> places;
};

Sentence sentenceOf(const char *source)
{
    const QString text = QString::fromLatin1(source);
    Sentence sentence{source, {}, {}};
    QString pattern;
    int begin = 0;
    for (int at = text.indexOf(QLatin1Char('%')); at >= 0; at = text.indexOf(QLatin1Char('%'), begin)) {
        pattern += QRegularExpression::escape(text.mid(begin, at - begin)) + QStringLiteral("(.*?)");
        sentence.places.append({text.at(at + 1).digitValue(), at > 0 && text.at(at - 1) == QLatin1Char('\'')});
        begin = at + 2;
    }
    pattern += QRegularExpression::escape(text.mid(begin));
    sentence.pattern = QRegularExpression(QRegularExpression::anchoredPattern(pattern),
                                          QRegularExpression::DotMatchesEverythingOption);
    return sentence;
}

const QVector<Sentence> &sentences()
{
    static const QVector<Sentence> all = [] {
        QVector<Sentence> result;
        for (const char *source : sources)
            result += sentenceOf(source);
        return result;
    }();
    return all;
}

} // namespace

QString shownText(const QString &english)
{
    for (const Sentence &sentence : sentences()) {
        const QRegularExpressionMatch match = sentence.pattern.match(english);
        if (!match.hasMatch())
            continue;
        constexpr int maxPlaces = 10;
        std::array<QString, maxPlaces> parts;
        for (int i = 0; i < sentence.places.size(); ++i) {
            const auto &[number, isQuoted] = sentence.places.at(i);
            const QString part = match.captured(i + 1);
            parts[static_cast<std::size_t>(number)] = isQuoted ? part : shownText(part);
        }
        // Not with arg(): a part may have a percent sign.
        const QString translated = QCoreApplication::translate("Explorer::EnglishTexts", sentence.source);
        QString shown;
        for (int i = 0; i < translated.size(); ++i) {
            const bool isPlace = translated.at(i) == QLatin1Char('%') && i + 1 < translated.size() &&
                                 translated.at(i + 1).isDigit();
            if (isPlace)
                shown += parts[static_cast<std::size_t>(translated.at(++i).digitValue())];
            else
                shown += translated.at(i);
        }
        return shown;
    }
    return english;
}

} // namespace Explorer
