// SPDX-License-Identifier: MIT
#include "expectedmodels.h"

#include <catalogue/namematching_p.h>
#include <SondixQt/sensortypes.h>

#include <QtTest>

#include <algorithm>
#include <random>

using namespace SondixQt;

namespace {

using Candidates = QVector<NameCandidate>;

/// A straightforward implementation of the matching rules with the search functions of Qt.
SensorType matchedStepByStep(const Candidates &ascending, const QString &name)
{
    if (name.isEmpty())
        return NoSensor;
    SensorType result = NoSensor;
    for (int pass = 0; pass < 4; ++pass) {
        const bool shortNames = pass == 0 || pass == 2;
        const bool reduced = pass >= 2;
        QString best;
        for (const NameCandidate &entry : ascending) {
            QString candidate = shortNames ? entry.shortName : entry.name;
            if (name == candidate)
                return entry.type;
            if (reduced) {
                candidate.remove(QLatin1Char('x'), Qt::CaseInsensitive);
                candidate.remove('-');
            }
            if (candidate.size() <= 2)
                continue;
            QString text = name;
            if (shortNames)
                text.remove(' ');
            if (text.contains(candidate, Qt::CaseInsensitive) && candidate.size() > best.size()) {
                best = candidate;
                result = entry.type;
            }
        }
    }
    return result;
}

Candidates catalogue()
{
    Candidates candidates;
    for (const expected::Model &model : expected::models)
        candidates.append({model.type, QString::fromLatin1(model.name), QString::fromLatin1(model.shortName)});
    return candidates;
}

/// Generates texts that are similar to names: parts of names in upper and lower case, with spaces, dashes, "x" and
/// characters whose case folding is a letter.
class TextMaker
{
public:
    explicit TextMaker(const Candidates &candidates, quint32 seed)
        : m_random(seed)
        , m_candidates(candidates)
    {
    }

    int upTo(int limit) { return static_cast<int>(m_random() % static_cast<quint32>(limit + 1)); }

    QString text(int pieces)
    {
        QString made;
        for (int i = 0; i < pieces; ++i)
            made += piece();
        return made;
    }

private:
    QString piece()
    {
        static const QStringList odd = {
            " ",
            "x",
            "X",
            "-",
            "_",
            "/",
            QStringLiteral("\u212A"),
            QStringLiteral("\u017F"),
            QStringLiteral("\u0130"),
            QStringLiteral("\u00DF"),
            QStringLiteral("\uFB01"),
            QString(QChar(0xD801)),
            QString(QChar(0xDC00)),
            "file",
            "sensor ",
            QString(QChar(0)),
        };
        if (upTo(3) == 0)
            return odd.at(upTo(odd.size() - 1));
        const NameCandidate &candidate = m_candidates.at(upTo(m_candidates.size() - 1));
        QString name = upTo(1) == 0 ? candidate.name : candidate.shortName;
        if (upTo(2) == 0)
            name = name.mid(upTo(name.size()), upTo(name.size()));
        return mutated(name);
    }

    QString mutated(QString name)
    {
        switch (upTo(7)) {
        case 0:
            return name.toLower();
        case 1:
            return name.toUpper();
        case 2:
            return name.remove(QLatin1Char('x'), Qt::CaseInsensitive);
        case 3:
            return name.remove('-');
        case 4:
            return name.insert(upTo(name.size()), ' ');
        case 5:
            return name.replace('s', QChar(0x017F)).replace('k', QChar(0x212A));
        case 6:
            return name.replace('S', QChar(0x017F)).replace('K', QChar(0x212A));
        default:
            return name;
        }
    }

    std::mt19937 m_random;
    const Candidates m_candidates;
};

} // namespace

class TestNameMatching : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void exactShortNameGivesItsType_data();
    void exactShortNameGivesItsType();
    void textGivesType_data();
    void textGivesType();
    void exactShortNameGoesBeforeExactLongName();
    void exactLongNameGoesBeforeContainedShortName();
    void exactNamesMayBeShorterThanThreeCharacters();
    void candidatesNeedNoOrder();
    void noCandidatesMatchNothing();
    void catalogueTextsAgreeWithMatchingStepByStep_data();
    void catalogueTextsAgreeWithMatchingStepByStep();
    void anyCandidatesAgreeWithMatchingStepByStep();
    void everyCharacterFoldsAsInAQtSearch();
    void modelIsConfirmed_data();
    void modelIsConfirmed();
};

void TestNameMatching::exactShortNameGivesItsType_data()
{
    QTest::addColumn<expected::Model>("model");
    for (const expected::Model &model : expected::models)
        QTest::addRow("%d %s", model.value, model.shortName) << model;
}

void TestNameMatching::exactShortNameGivesItsType()
{
    QFETCH(expected::Model, model);
    const QString shortName = QString::fromLatin1(model.shortName);
    QCOMPARE(getSensorTypeFromName(shortName), shortName.isEmpty() ? NoSensor : model.type);
}

void TestNameMatching::textGivesType_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<SensorType>("type");
    const auto row = [](const char *behaviour, const char *text, SensorType type) {
        QTest::newRow(behaviour) << QString::fromUtf8(text) << type;
    };
    row("empty text names nothing", "", NoSensor);
    row("exact short name", "TX270", TX270);
    row("exact long name", "Universal controller UC100", UC100);
    row("exact long name with x", "Tavrin RG52x", RG52x);
    row("exact name of the empty type", "No Sensor", NoSensor);
    row("text without a name", "thermometer", NoSensor);
    row("spaces only", "   ", NoSensor);
    row("the letters file", "Profile sensor", File);
    row("the letters file in capitals", "PROFILE SENSOR", File);
    row("two-letter name is not looked for", "my PF sensor", NoSensor);
    row("two-letter name is found exactly", "PF", PF);
    row("its long name is looked for", "a profax gauge", PF);
    row("long name inside a text", "one Tavrin TX270 at 5 mm", TX270);
    row("short name inside a text", "serial TX270-50", TX270);
    row("short name with spaces between", "M C 3 2 0", MC320);
    row("long name with another space", "Oscura  CC450", CC450);
    row("lower case", "wavlen wi620", WI620);
    row("name without its x", "T270", TX270);
    row("x as a placeholder for a digit", "RG525-100", RG52x);
    row("name that reduces to two letters is not looked for", "DV-12", NoSensor);
    row("long name reduced", "Morvik DV-510", DVxxx);
    row("long bus name without dash", "generic kvbus sensor", GenericKVBus);
    row("the longest name wins", "Morvik MV410 sensor", MV410);
    row("a family name where no longer one is contained", "Morvik MV455 sensor", MV4xx);
    row("equally long names give the lowest type", "a Korrin EC82 probe", EC82x_ETH);
    row("long names have the last word", "GY310 and Huvar HV2", HV2);
    row("reduced short names override plain long names", "Tavrin TX270 with MC320", MC320);
    row("long name under another text", "Huvar HV220 colour", HV220);
    row("the Kelvin sign is a k", "the \u212Aorrin EC830", EC830);
    row("the long s is an s", "spe\u017F\u017Fa balance", Spessa);
    row("the dotted capital I is no i", "F\u0130LE", NoSensor);
    row("a ligature is no pair of letters", "\uFB01le", NoSensor);
}

void TestNameMatching::textGivesType()
{
    QFETCH(QString, text);
    QTEST(getSensorTypeFromName(text), "type");
}

void TestNameMatching::exactShortNameGoesBeforeExactLongName()
{
    const NameMatcher matcher({{TX210, "twin", "first"}, {TX220, "second", "twin"}, {TX230, "third", "twin"}});
    QCOMPARE(matcher.match("twin"), TX220);
    QCOMPARE(matcher.match("third"), TX230);
}

void TestNameMatching::exactLongNameGoesBeforeContainedShortName()
{
    const NameMatcher matcher({{TX210, "one", "long name"}, {TX220, "a long name here", "two"}});
    QCOMPARE(matcher.match("a long name here"), TX220);
}

void TestNameMatching::exactNamesMayBeShorterThanThreeCharacters()
{
    const NameMatcher matcher({{TX210, "a", "bb"}});
    QCOMPARE(matcher.match("a"), TX210);
    QCOMPARE(matcher.match("bb"), TX210);
    QCOMPARE(matcher.match("abba"), NoSensor);
}

void TestNameMatching::candidatesNeedNoOrder()
{
    Candidates backwards = catalogue();
    std::reverse(backwards.begin(), backwards.end());
    const NameMatcher matcher(backwards);
    TextMaker maker(backwards, 7);
    for (int i = 0; i < 2000; ++i) {
        const QString text = maker.text(1 + maker.upTo(3));
        QCOMPARE(matcher.match(text), getSensorTypeFromName(text));
    }
}

void TestNameMatching::noCandidatesMatchNothing()
{
    const NameMatcher matcher({});
    QCOMPARE(matcher.match(QString()), NoSensor);
    QCOMPARE(matcher.match("TX270"), NoSensor);
}

void TestNameMatching::catalogueTextsAgreeWithMatchingStepByStep_data()
{
    QTest::addColumn<int>("texts");
    QTest::addColumn<int>("pieces");
    QTest::newRow("single pieces") << 8000 << 1;
    QTest::newRow("a few pieces") << 8000 << 4;
    QTest::newRow("beyond 500 characters") << 400 << 80;
    QTest::newRow("thousands of characters") << 30 << 800;
}

void TestNameMatching::catalogueTextsAgreeWithMatchingStepByStep()
{
    QFETCH(int, texts);
    QFETCH(int, pieces);
    const Candidates candidates = catalogue();
    TextMaker maker(candidates, static_cast<quint32>(4711 + pieces));
    for (int i = 0; i < texts; ++i) {
        const QString text = maker.text(pieces);
        QVERIFY2(getSensorTypeFromName(text) == matchedStepByStep(candidates, text), qPrintable(text));
    }
}

void TestNameMatching::anyCandidatesAgreeWithMatchingStepByStep()
{
    // A small alphabet produces names of equal length, duplicate names and names within names.
    std::mt19937 random(99);
    const auto word = [&random](const QString &alphabet, quint32 longest) {
        QString made;
        for (auto length = random() % (longest + 1); length > 0; --length)
            made += alphabet.at(static_cast<int>(random() % static_cast<quint32>(alphabet.size())));
        return made;
    };
    const QString inNames = QStringLiteral("aBsx- 1\u017F");
    const QString inTexts = QStringLiteral("AbsSX- 1\u017F");
    for (int round = 0; round < 300; ++round) {
        Candidates candidates;
        for (int type = -3; type < 12; ++type)
            candidates.append({static_cast<SensorType>(type), word(inNames, 6), word(inNames, 5)});
        const NameMatcher matcher(candidates);
        for (int i = 0; i < 100; ++i) {
            const QString text = word(inTexts, 12);
            QVERIFY2(matcher.match(text) == matchedStepByStep(candidates, text), qPrintable(text));
        }
    }
}

void TestNameMatching::everyCharacterFoldsAsInAQtSearch()
{
    const QString letters = "abcdefghijklmnopqrstuvwxyz0123456789 -_/";
    Candidates candidates;
    for (const QChar letter : letters)
        candidates.append({static_cast<SensorType>(letter.unicode()), QString(3, letter), QString()});
    const NameMatcher matcher(candidates);
    for (uint code = 1; code <= 0xFFFF; ++code) {
        const QString text = QStringLiteral("[%1]").arg(QString(3, QChar(code)));
        QVERIFY2(matcher.match(text) == matchedStepByStep(candidates, text),
                 qPrintable(QString::number(code, 16)));
    }
}

void TestNameMatching::modelIsConfirmed_data()
{
    QTest::addColumn<QString>("catalogueName");
    QTest::addColumn<QString>("reportedName");
    QTest::addColumn<bool>("confirmed");
    const auto row = [](const char *title, const char *catalogueName, const char *reportedName, bool confirmed) {
        QTest::newRow(title) << QString::fromLatin1(catalogueName) << QString::fromLatin1(reportedName)
                             << confirmed;
    };
    row("catalogue name contains the reported", "EC82x_ETH", "ec82", true);
    row("two characters are too few for that", "EC82x_ETH", "EC", false);
    row("reported contains the name without x", "MV4xx", "Morvik mv4-10", true);
    row("without zero", "EC830", "EC83-special", true);
    row("without slash", "AB/12", "ab12", true);
    row("reported without underscore", "GY330", "G_Y_3_3 GY_33", true);
    row("reported without hyphen", "MV410", "MV-41", true);
    row("reported without blank", "MV410", "MV 41", true);
    row("removals add up", "MV/410x", "M_V-4 1", true);
    row("another model", "MV410", "EC830", false);
    row("nothing reported", "MV410", "", false);
    row("model without a name", "", "EC830", true);
    row("neither has a name", "", "", true);
}

void TestNameMatching::modelIsConfirmed()
{
    QFETCH(QString, catalogueName);
    QFETCH(QString, reportedName);
    QTEST(confirmsModel(catalogueName, reportedName), "confirmed");
}

QTEST_GUILESS_MAIN(TestNameMatching)
#include "tst_namematching.moc"
