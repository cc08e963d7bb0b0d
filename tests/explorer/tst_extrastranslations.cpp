// SPDX-License-Identifier: MIT
#include "explorer/application/translations.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QtTest>
#include <QXmlStreamReader>

using namespace Explorer;

namespace {

struct TranslatedText
{
    QString context;
    QString source;
    QStringList translations;
    bool isFinished = true;
    bool isNumerus = false;
};

QVector<TranslatedText> readTranslations(const QString &path)
{
    QFile file(path);
    QVector<TranslatedText> texts;
    if (!file.open(QIODevice::ReadOnly))
        return texts;
    QXmlStreamReader xml(&file);
    QString context;
    TranslatedText text;
    while (!xml.atEnd()) {
        const auto token = xml.readNext();
        const QString name = xml.name().toString();
        if (token == QXmlStreamReader::EndElement && name == "message")
            texts += text;
        if (token != QXmlStreamReader::StartElement)
            continue;
        if (name == "name") {
            context = xml.readElementText();
        } else if (name == "message") {
            text = {context, {}, {}, true, xml.attributes().value("numerus") == QString("yes")};
        } else if (name == "source") {
            text.source = xml.readElementText();
        } else if (name == "translation") {
            text.isFinished = !xml.attributes().hasAttribute("type");
            if (!text.isNumerus)
                text.translations += xml.readElementText();
        } else if (name == "numerusform") {
            text.translations += xml.readElementText();
        }
    }
    return texts;
}

/// The placeholders of \a text, sorted.
QStringList placeholders(const QString &text)
{
    static const QRegularExpression pattern("%(L?\\d+|n)");
    QStringList found;
    auto matches = pattern.globalMatch(text);
    while (matches.hasNext())
        found += matches.next().captured();
    found.sort();
    return found;
}

int mnemonics(const QString &text)
{
    static const QRegularExpression pattern("&[^& ]");
    return QString(text).remove("&&").count(pattern);
}

} // namespace

/// The German texts.
class ExtrasTranslationsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyTextIsTranslated();
    void everyTextOfTheSourcesIsInTheFile();
    void theLanguageIsAnOption();
    void germanIsInstalled();
    void englishNeedsNothing();
};

void ExtrasTranslationsTest::everyTextIsTranslated()
{
    const QVector<TranslatedText> texts = readTranslations(SONDIXQT_GERMAN);
    QVERIFY(texts.size() > 300);
    QStringList faults;
    for (const TranslatedText &text : texts) {
        const auto report = [&](const char *what) {
            faults += QString("%1: %2: %3").arg(text.context, what, text.source);
        };
        if (!text.isFinished || text.translations.isEmpty() || text.translations.contains(QString()))
            report("unfinished");
        if (text.isNumerus && text.translations.size() != 2)
            report("forms");
        for (const QString &translation : text.translations) {
            if (placeholders(translation) != placeholders(text.source))
                report("placeholders");
            if ((mnemonics(text.source) > 0) != (mnemonics(translation) > 0))
                report("mnemonic");
            if (text.source.endsWith(":") != translation.endsWith(":") ||
                text.source.endsWith("...") != translation.endsWith("..."))
                report("end");
            if (text.source.startsWith(" ") != translation.startsWith(" "))
                report("space");
        }
    }
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join('\n')));
}

/// Texts that were added to the sources later must be added to the file as well, which lupdate does.
void ExtrasTranslationsTest::everyTextOfTheSourcesIsInTheFile()
{
    const QVector<TranslatedText> texts = readTranslations(SONDIXQT_GERMAN);
    QSet<QString> known;
    for (const TranslatedText &text : texts)
        known += text.source;
    static const QRegularExpression call("\\btr\\(\\s*((?:\"(?:[^\"\\\\]|\\\\.)*\"\\s*)+)");
    static const QRegularExpression piece("\"((?:[^\"\\\\]|\\\\.)*)\"");
    QStringList missing;
    int found = 0;
    QDirIterator files(SONDIXQT_EXPLORER_SOURCES, {"*.cpp", "*.h"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        QVERIFY(file.open(QIODevice::ReadOnly));
        auto calls = call.globalMatch(QString::fromUtf8(file.readAll()));
        while (calls.hasNext()) {
            QString source;
            auto pieces = piece.globalMatch(calls.next().captured(1));
            while (pieces.hasNext())
                source += pieces.next().captured(1);
            if (source.contains("\\u")) // lupdate writes the character
                continue;
            source.replace("\\n", "\n").replace("\\\"", "\"");
            ++found;
            if (!known.contains(source))
                missing += file.fileName() + ": " + source;
        }
    }
    QVERIFY(found > 300);
    QVERIFY2(missing.isEmpty(), qPrintable(missing.join('\n')));
}

void ExtrasTranslationsTest::theLanguageIsAnOption()
{
    QCOMPARE(languageOption({"program", "--bench", "x", "--lang", "de"}), QString("de"));
    QCOMPARE(languageOption({"program", "--lang=de_AT"}), QString("de_AT"));
    QCOMPARE(languageOption({"program", "--lang"}), QString());
    QCOMPARE(languageOption({"--lang"}), QString());
}

void ExtrasTranslationsTest::germanIsInstalled()
{
    const QLocale before;
    QCOMPARE(QCoreApplication::translate("Explorer::SensorSession", "reading"), QString("reading"));
    {
        installTranslations(*QCoreApplication::instance(), "de");
        QCOMPARE(QLocale().language(), QLocale::German);
        QCOMPARE(QCoreApplication::translate("Explorer::SensorSession", "reading"), QString("liest"));
        QCOMPARE(QCoreApplication::translate("Explorer::GapItem", "%n frame(s) missing: %1", nullptr, 2),
                 QString("2 Datensätze fehlen: %1"));
    }
    for (QTranslator *translator : QCoreApplication::instance()->findChildren<QTranslator *>())
        delete translator; // which removes it
    QLocale::setDefault(before);
    QCOMPARE(QCoreApplication::translate("Explorer::SensorSession", "reading"), QString("reading"));
}

void ExtrasTranslationsTest::englishNeedsNothing()
{
    const QLocale before;
    installTranslations(*QCoreApplication::instance(), "en");
    QVERIFY(QCoreApplication::instance()->findChildren<QTranslator *>().isEmpty());
    QCOMPARE(QCoreApplication::translate("Explorer::SensorSession", "reading"), QString("reading"));
    installTranslations(*QCoreApplication::instance(), "xx");
    QCOMPARE(QCoreApplication::translate("Explorer::SensorSession", "reading"), QString("reading"));
    QLocale::setDefault(before);
}

QTEST_GUILESS_MAIN(ExtrasTranslationsTest)
#include "tst_extrastranslations.moc"
