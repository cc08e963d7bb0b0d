// SPDX-License-Identifier: MIT
#include "explorer/application/translations.h"
#include "explorer/plot/plotmarks.h"
#include "explorer/sensor/englishtexts.h"
#include "explorer/sensor/librarytexts.h"
#include "shared/commandparameters.h"
#include "shared/lossaccount.h"
#include "shared/recordingreader.h"

#include <SondixQt/sensoraddress.h>

#include <QCoreApplication>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>
#include <QXmlStreamReader>

using namespace Explorer;
using namespace SondixQt;

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

/// German as long as it exists.
class German
{
public:
    German() { installTranslations(*QCoreApplication::instance(), "de"); }
    ~German()
    {
        for (QTranslator *translator : QCoreApplication::instance()->findChildren<QTranslator *>())
            delete translator; // which removes it
        QLocale::setDefault(m_before);
    }
    Q_DISABLE_COPY(German)

private:
    const QLocale m_before;
};

/// An asterisk at the end of \a expected stands for any text.
void compareWith(const QString &text, const QString &expected)
{
    if (expected.endsWith('*'))
        QVERIFY2(text.startsWith(expected.chopped(1)) && text.size() >= expected.size(), qPrintable(text));
    else
        QCOMPARE(text, expected);
}

/// One gap of each reason, with a known length and without.
QVector<DataGap> gapsOfAllReasons()
{
    QVector<DataGap> gaps;
    for (const DataGap::Reason reason : {DataGap::LibraryOverrun, DataGap::ConsumerOverrun, DataGap::Disconnected,
                                         DataGap::Restarted, DataGap::Unknown}) {
        DataGap gap;
        gap.reason = reason;
        gaps += gap;
        gap.frames = 1234 + int(reason);
        gaps += gap;
    }
    return gaps;
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
    void lossesAreGerman();
    void gapsAreGerman();
    void placesAreGerman();
    void errorsOfTheReaderAreGerman();
    void problemsOfAddressesAreGerman_data();
    void problemsOfAddressesAreGerman();
    void problemsOfCommandsAreGerman_data();
    void problemsOfCommandsAreGerman();
    void problemsOfRecordingsAreGerman_data();
    void problemsOfRecordingsAreGerman();
    void otherSentencesStayAsTheyAre();
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
    static const QRegularExpression call(
        "\\b(?:tr\\(|QT_TRANSLATE_NOOP\\(\"[^\"]*\",)\\s*((?:\"(?:[^\"\\\\]|\\\\.)*\"\\s*)+)");
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
    QCOMPARE(QCoreApplication::translate("Explorer::SensorSession", "reading"), QString("reading"));
    {
        const German german;
        QCOMPARE(QLocale().language(), QLocale::German);
        QCOMPARE(QCoreApplication::translate("Explorer::SensorSession", "reading"), QString("liest"));
        QCOMPARE(QCoreApplication::translate("Explorer::GapItem", "%n frame(s) missing: %1", nullptr, 2),
                 QString("2 Datensätze fehlen: %1"));
    }
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

void ExtrasTranslationsTest::lossesAreGerman()
{
    SondixApp::LossAccount losses;
    for (const DataGap &gap : gapsOfAllReasons())
        losses.add(gap);
    DataGap one;
    one.frames = 1;
    SondixApp::LossAccount single;
    single.add(one);
    SondixApp::LossAccount uncounted;
    uncounted.add(DataGap());
    QCOMPARE(shownLosses(uncounted), QString("some lost"));
    QCOMPARE(shownLosses(losses), QString("at least 6,180 lost")); // 5 * 1234 + 0 + 1 + 2 + 3 + 4
    QCOMPARE(shownLosses(single), QString("1 lost"));
    QCOMPARE(shownLossCauses(losses).count('\n'), 7); // two lines for each of four causes
    const German german;
    QCOMPARE(shownLosses(uncounted), QString("etwas verloren"));
    QCOMPARE(shownLosses(losses), QString("mind. 6.180 verloren"));
    QCOMPARE(shownLosses(single), QString("1 verloren"));
    QCOMPARE(shownLossCauses(single),
             QString("1 Datensatz ging verloren: die Zeiten der Werte passen nicht zueinander"));
    QCOMPARE(
        shownLossCauses(losses),
        QString("2.469 Datensätze gingen verloren: Werte wurden nicht rechtzeitig gelesen oder verarbeitet\n"
                "eine unbekannte Zahl von Datensätzen ging in 2 Lücken verloren: Werte wurden nicht rechtzeitig "
                "gelesen oder verarbeitet\n"
                "1.236 Datensätze gingen verloren: der Sensor war getrennt\n"
                "eine unbekannte Zahl von Datensätzen ging in 1 Lücke verloren: der Sensor war getrennt\n"
                "1.237 Datensätze gingen verloren: eine Einstellung hat die Messung unterbrochen\n"
                "eine unbekannte Zahl von Datensätzen ging in 1 Lücke verloren: eine Einstellung hat die Messung "
                "unterbrochen\n"
                "1.238 Datensätze gingen verloren: die Zeiten der Werte passen nicht zueinander\n"
                "eine unbekannte Zahl von Datensätzen ging in 1 Lücke verloren: die Zeiten der Werte passen nicht "
                "zueinander"));
}

void ExtrasTranslationsTest::gapsAreGerman()
{
    const QVector<DataGap> gaps = gapsOfAllReasons();
    QSet<QString> english;
    for (const DataGap &gap : gaps) {
        QCOMPARE(shownGapReason(gap.reason), gapReasonText(gap.reason));
        english += gapReasonText(gap.reason);
    }
    const German german;
    for (const DataGap &gap : gaps) {
        const QString sentence = GapItem::sentence(gap);
        QVERIFY2(sentence.contains("fehlen: ") || sentence.contains("fehlt: "), qPrintable(sentence));
        QVERIFY2(!english.contains(shownGapReason(gap.reason)), qPrintable(shownGapReason(gap.reason)));
        QVERIFY2(sentence.endsWith(shownGapReason(gap.reason)), qPrintable(sentence));
    }
}

void ExtrasTranslationsTest::placesAreGerman()
{
    const SensorAddress onCard{CC430,
                               {{"IP_Interface", "XA200"}, {"IP_CardInstance", 1}, {"IP_ChannelNumber", 2}}};
    const SensorAddress device{TX300, {{"IP_Interface", "WinUSB"}, {"IP_DeviceInstance", 0}}};
    const SensorAddress onBus{EC82x, {{"IP_Interface", "RS485"}, {"IP_Port", "COM4"}, {"IP_SensorAddress", 126}}};
    const auto places = [&] { return QStringList{shownPlace(onCard), shownPlace(device), shownPlace(onBus)}; };
    QCOMPARE(places(), (QStringList{onCard.place(), device.place(), onBus.place()}));
    QCOMPARE(places().last(), QString("COM4, bus address 126"));
    const German german;
    QCOMPARE(places(), (QStringList{"Karte 1, Kanal 2", "Gerät 0", "COM4, Busadresse 126"}));
}

void ExtrasTranslationsTest::errorsOfTheReaderAreGerman()
{
    const QString other("another sensor answers: serial number 17 %2 instead of 4");
    const auto errors = [&] {
        return QStringList{shownReaderError(SilenceError, "the sensor has sent no values for 2.5 s"),
                           shownReaderError(FrameError, "the sensor reports 0 values per frame"),
                           shownReaderError(OtherSensorError, other),
                           shownReaderError(OtherSensorError, "something new"),
                           shownReaderError(ErrorCode(-4), "Laser is off")};
    };
    QCOMPARE(errors(),
             (QStringList{"the sensor has sent no values for 2.5 s", "the sensor reports 0 values per frame",
                          other, "something new", "Laser is off"}));
    const German german;
    QCOMPARE(errors(), (QStringList{"der Sensor hat seit 2,5 s keine Werte gesendet",
                                    "der Sensor meldet 0 Werte je Datensatz",
                                    "ein anderer Sensor antwortet: Seriennummer 17 %2 statt 4", "something new",
                                    "Laser is off"}));
}

void ExtrasTranslationsTest::problemsOfAddressesAreGerman_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("german");
    QTest::newRow("none") << "nonsense %2"
                          << "„nonsense %2“ ist keine Sensoradresse; eine lautet <Modell>@<Schnittstelle>,<Name>="
                             "<Wert>,..., etwa TX270@RS232,port=COM3,baudrate=115200";
    QTest::newRow("model") << "QQQQQQ@RS232"
                           << "unbekannt: Modell „QQQQQQ“; Modelle heißen etwa TX270";
    QTest::newRow("named as the word") << "model@RS232"
                                       << "unbekannt: Modell „model“; *";
    QTest::newRow("similar") << "TX27@RS232"
                             << "unbekannt: Modell „TX27“; meinten Sie *";
    QTest::newRow("interface") << "TX270@QQQQQQ"
                               << "unbekannt: Schnittstelle „QQQQQQ“; es gibt die Schnittstellen *";
    QTest::newRow("parameter") << "TX270@RS232,qqqqqq=3"
                               << "unbekannt: Parameter der Schnittstelle „qqqqqq“; es gibt *";
    QTest::newRow("no value") << "TX270@RS232,port"
                              << "„port“ in einer Sensoradresse ist kein <Name>=<Wert>";
    QTest::newRow("twice") << "TX270@RS232,port=3,port=4"
                           << "die Sensoradresse hat zwei Werte für „port“";
    QTest::newRow("no number") << "TX270@RS232,baudrate=fast"
                               << "baudrate „fast“ ist keine ganze Zahl";
}

void ExtrasTranslationsTest::problemsOfAddressesAreGerman()
{
    QFETCH(QString, address);
    QFETCH(QString, german);
    QString problem;
    QVERIFY(!SensorAddress::parse(address, &problem));
    QCOMPARE(shownText(problem), problem);
    const German language;
    compareWith(shownText(problem), german);
}

void ExtrasTranslationsTest::problemsOfCommandsAreGerman_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("german");
    QTest::newRow("none") << "nonsense"
                          << "„nonsense“ ist kein PARAMETER=WERT, etwa SP_Measrate=2.5";
    QTest::newRow("command") << "S_Command=1"
                             << "„S_Command“ ist der Befehl selbst und keiner seiner Parameter";
    QTest::newRow("large")
        << "A=99999999999"
        << "die Zahl in „A=99999999999“ ist zu groß für eine ganze Zahl; mit einem Punkt ist sie "
           "eine Dezimalzahl";
    QTest::newRow("larger") << "A=1e999"
                            << "die Zahl in „A=1e999“ ist zu groß";
    QTest::newRow("quotes") << QString("A=%1b").arg('"')
                            << QString("die Anführungszeichen in „A=%1b“ umschließen nicht den Wert").arg('"');
    QTest::newRow("empty") << "A="
                           << "„A=“ hat keinen Wert; zwei Anführungszeichen stehen für einen leeren Text";
    QTest::newRow("characters") << QString::fromUtf8("A=Ω")
                                << "„A=Ω“ hat Zeichen, die nicht an einen Sensor gesendet werden können";
}

void ExtrasTranslationsTest::problemsOfCommandsAreGerman()
{
    QFETCH(QString, word);
    QFETCH(QString, german);
    QString problem;
    QVERIFY(!SondixApp::commandParameters({word}, problem));
    QCOMPARE(shownText(problem), problem);
    const German language;
    compareWith(shownText(problem), german);
}

void ExtrasTranslationsTest::problemsOfRecordingsAreGerman_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("german");
    QTest::newRow("empty") << QByteArray() << "die Datei ist leer";
    QTest::newRow("no columns") << QByteArray("# sensor: TX270\n")
                                << "es ist keine Aufzeichnung, oder sie ist abgeschnitten: *";
    QTest::newRow("other columns") << QByteArray("a,b\n1,2\n")
                                   << "Zeile 1: „a,b“ sind nicht die Spalten einer Aufzeichnung";
    QTest::newRow("number") << QByteArray("frame,time [s],Distance 1 [mm]\nx,0,1\n0,0,1\n")
                            << "Zeile 2: „x“ ist keine Nummer eines Datensatzes";
    QTest::newRow("cut") << QByteArray("frame,time [s],Distance 1 [mm]\n0,0,1\n1,0.0")
                         << "die letzte Zeile ist unvollständig und wird ausgelassen";
    QTest::newRow("object") << QByteArray("{}\n")
                            << "Zeile 1: es ist keine Aufzeichnung: das Objekt hat weder „head“ noch „frame“";
    QTest::newRow("array") << QByteArray("\x93NUMPY")
                           << "der Kopf des Felds ist abgeschnitten oder keiner von .npy";
}

void ExtrasTranslationsTest::problemsOfRecordingsAreGerman()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, german);
    QTemporaryDir folder;
    QFile file(folder.filePath("recording"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    SondixApp::RecordingReader reader(file.fileName());
    if (reader.open())
        while (reader.next()) {
        }
    const QString problem = reader.problem() + reader.warning();
    QCOMPARE(shownText(problem), problem);
    const German language;
    compareWith(shownText(problem), german);
}

void ExtrasTranslationsTest::otherSentencesStayAsTheyAre()
{
    const German language;
    for (const char *sentence : {"", "Laser is off", "E45: wrong parameter '3'", "%1", "the models"})
        QCOMPARE(shownText(sentence), QString(sentence));
    // What a user has written is not translated, and may have places.
    QCOMPARE(shownText("cannot write '%2/model': it is a directory"),
             QString("„%2/model“ kann nicht geschrieben werden: es ist ein Ordner"));
    QCOMPARE(shownText("the search for TX270 was refused: the sensor-access library does not support it"),
             QString("die Suche nach TX270 wurde abgelehnt: die Sensorbibliothek unterstützt das nicht"));
}

QTEST_GUILESS_MAIN(ExtrasTranslationsTest)
#include "tst_extrastranslations.moc"
