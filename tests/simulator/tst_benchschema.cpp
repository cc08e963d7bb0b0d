// SPDX-License-Identifier: MIT
#include "SondixSimulator/control.h"

#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

using nlohmann::ordered_json;

namespace {

QByteArray contentOfFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

ordered_json withoutComments(const QByteArray &text)
{
    return ordered_json::parse(text.begin(), text.end(), nullptr, false, true);
}

/// Why the simulator refuses a bench; empty if it accepts it.
QByteArray reasonAgainst(const std::string &bench)
{
    try {
        sondixsim::loadBench(bench);
        return {};
    } catch (const sondixsim::BenchError &error) {
        return error.what();
    }
}

bool isAccepted(const std::string &bench)
{
    return reasonAgainst(bench).isEmpty();
}

QStringList filesBelow(const QString &folder, const QStringList &patterns)
{
    QStringList files;
    QDirIterator it(QLatin1String(SONDIXQT_SOURCES) + '/' + folder, patterns, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        files += it.next();
    return files;
}

/// The texts in the sources of the tests that are benches which the simulator accepts.
[[maybe_unused]] std::vector<ordered_json> benchesOfTests() // not on Windows
{
    std::vector<ordered_json> benches;
    for (const QString &file : filesBelow("tests", {"*.cpp", "*.h"})) {
        const QByteArray source = contentOfFile(file);
        for (int at = source.indexOf("R\"("); at >= 0; at = source.indexOf("R\"(", at + 1)) {
            const QByteArray text = source.mid(at + 3, source.indexOf(")\"", at) - at - 3);
            ordered_json bench = withoutComments(text);
            if (bench.is_object() && bench.contains("sensors") && isAccepted(text.toStdString()))
                benches.push_back(std::move(bench));
        }
    }
    return benches;
}

/// A change to a bench: an unknown key in an object, or a value of another type.
struct Change
{
    QByteArray where;
    ordered_json bench;
};

using Pointer = ordered_json::json_pointer;

/// All such changes below \a at, except in values whose meaning depends on the model's settings, which are no matter of
/// form.
void addChanges(const ordered_json &bench, const Pointer &at, std::vector<Change> &changes)
{
    const auto add = [&](const Pointer &where, const ordered_json &value) {
        changes.push_back({QByteArray::fromStdString(where.to_string() + " " + value.dump()), bench});
        changes.back().bench[where] = value;
    };
    const ordered_json &value = bench.at(at);
    if (value.is_object()) {
        add(at / "unknownKey", 1);
        add(at, "text");
        static const std::set<std::string> free = {"info",       "settings", "answers", "limits",
                                                   "errorTexts", "pages",    "value"};
        for (const auto &[key, member] : value.items()) {
            if (free.count(key) == 0)
                addChanges(bench, at / key, changes);
            else
                add(at / key, ordered_json::array({5}));
        }
    } else if (value.is_array()) {
        add(at, 5);
        for (std::size_t i = 0; i < value.size(); ++i)
            addChanges(bench, at / i, changes);
    } else if (value.is_string()) {
        add(at, 12);
    } else {
        add(at, "text");
        const std::string &key = at.back();
        const bool isElement = std::all_of(key.begin(), key.end(), [](char c) { return c >= '0' && c <= '9'; });
        if (value.is_number() && !isElement) // the order of two numbers is no matter of form either
            add(at, -1.0e300);
    }
}

/// The verdict of an independent validator on each bench: "ok" or the error.
[[maybe_unused]] QList<QByteArray> validated(const std::vector<ordered_json> &benches)
{
    const QString script = "import json, sys\n"
                           "from jsonschema import Draft7Validator\n"
                           "lines = iter(sys.stdin)\n"
                           "schema = json.loads(next(lines))\n"
                           "Draft7Validator.check_schema(schema)\n"
                           "validator = Draft7Validator(schema)\n"
                           "for line in lines:\n"
                           "    error = next(validator.iter_errors(json.loads(line)), None)\n"
                           "    print('ok' if error is None else ascii(error.message[:100]))\n";
    std::string input = ordered_json::parse(sondixsim::benchSchema()).dump() + '\n';
    for (const ordered_json &bench : benches)
        input += bench.dump(-1, ' ', true) + '\n';
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start("/usr/bin/python3", {"-c", script});
    process.write(input.c_str(), static_cast<qint64>(input.size()));
    process.closeWriteChannel();
    process.waitForFinished(60000);
    QList<QByteArray> lines = process.readAllStandardOutput().split('\n');
    lines.removeLast();
    return lines;
}

void collectKeys(const ordered_json &value, std::set<std::string> &keys, bool isSchema)
{
    for (const auto &[key, member] : value.items()) {
        if (value.is_object() && !isSchema)
            keys.insert(key);
        if (isSchema && key == "properties" && member.is_object()) {
            for (const auto &[name, property] : member.items())
                keys.insert(name);
        }
        if (member.is_structured())
            collectKeys(member, keys, isSchema);
    }
}

/// The keys whose rules have no description.
void collectUndescribed(const ordered_json &schema, QByteArrayList &keys)
{
    for (const auto &[key, member] : schema.items()) {
        if (key == "properties" && schema.contains("additionalProperties")) {
            for (const auto &[name, property] : member.items()) {
                if (property.value("description", std::string()).empty())
                    keys += QByteArray::fromStdString(name);
            }
        }
        if (member.is_structured())
            collectUndescribed(member, keys);
    }
}

} // namespace

class TestBenchSchema : public QObject
{
    Q_OBJECT

private:
    static QByteArray everyKey()
    {
        return contentOfFile(QLatin1String(SONDIXQT_SOURCES) + "/tests/simulator/everykey.json");
    }
    /// Files are looked for beside the bench, which has no folder in these tests.
    [[maybe_unused]] static ordered_json everyKeyWithoutFiles() // not on Windows
    {
        ordered_json bench = withoutComments(everyKey());
        bench["sensors"][0]["signals"][0]["generator"].erase(8);
        bench["sensors"][0]["pages"].erase("/file");
        bench["sensors"][9].erase("recording");
        return bench;
    }

private Q_SLOTS:
    void thePublishedSchemaIsCurrent();
    void everyKeyIsDescribed();
    void commandsAreCompleted();
    void everyKeyIsRead();
    void acceptsEveryBench();
    void refusesWrongFiles();
    void agreesWithTheReader();
};

/// If this fails: sondixqt bench schema > docs/bench.schema.json
void TestBenchSchema::thePublishedSchemaIsCurrent()
{
    const QByteArray published = contentOfFile(QLatin1String(SONDIXQT_SOURCES) + "/docs/bench.schema.json");
    QVERIFY(!published.isEmpty());
    QVERIFY2(published == QByteArray::fromStdString(sondixsim::benchSchema()),
             "docs/bench.schema.json is not what 'sondixqt bench schema' prints");
}

void TestBenchSchema::everyKeyIsDescribed()
{
    QByteArrayList keys;
    collectUndescribed(ordered_json::parse(sondixsim::benchSchema()), keys);
    QCOMPARE(keys, QByteArrayList());
}

/// Wherever calls of a command are meant. Others are allowed: a bench can have commands of its own.
void TestBenchSchema::commandsAreCompleted()
{
    const ordered_json definitions = ordered_json::parse(sondixsim::benchSchema()).at("definitions");
    std::vector<ordered_json> commands;
    for (const char *const definition : {"fault", "expectation", "benchExpectation"})
        commands.push_back(definitions.at(definition).at("properties").at("command"));
    for (const ordered_json &kind : definitions.at("event").at("allOf")) {
        if (kind.contains("then"))
            commands.push_back(kind.at("then").at("properties").at("command"));
    }
    QCOMPARE(commands.size(), std::size_t(3 + 9)); // there are nine kinds of events
    for (const ordered_json &command : commands) {
        const ordered_json &known = command.at("anyOf").at(0).at("enum");
        for (const char *const name : {"Get_Info", "Set_Samplerate", "DistanceTracking"})
            QVERIFY2(std::count(known.begin(), known.end(), name) == 1, name);
        QCOMPARE(command.at("anyOf").at(1).at("type"), ordered_json("string"));
    }
}

void TestBenchSchema::everyKeyIsRead()
{
    const QString path = QLatin1String(SONDIXQT_SOURCES) + "/tests/simulator/everykey.json";
    try {
        sondixsim::loadBenchFile(path.toStdString());
    } catch (const sondixsim::BenchError &error) {
        QFAIL(error.what());
    }
    std::set<std::string> used;
    collectKeys(withoutComments(everyKey()), used, false);
    std::set<std::string> known;
    collectKeys(ordered_json::parse(sondixsim::benchSchema()), known, true);
    QByteArrayList missing;
    for (const std::string &key : known) {
        if (used.count(key) == 0)
            missing += QByteArray::fromStdString(key);
    }
    QCOMPARE(missing, QByteArrayList());
}

void TestBenchSchema::acceptsEveryBench()
{
#ifdef Q_OS_WIN
    QSKIP("the validator is installed for Linux only");
#else
    QStringList names;
    std::vector<ordered_json> benches;
    for (const char *const folder : {"simulator/benches", "examples/benches", "tests/simulator"}) {
        for (const QString &file : filesBelow(folder, {"*.json"})) {
            names += file;
            benches.push_back(withoutComments(contentOfFile(file)));
            QVERIFY2(benches.back().is_object(), qPrintable(file));
        }
    }
    QVERIFY(names.size() >= 3);
    const std::vector<ordered_json> others = benchesOfTests();
    QVERIFY(others.size() >= 10);
    for (const ordered_json &bench : others) {
        names += QString::fromStdString(bench.dump());
        benches.push_back(bench);
    }
    const QList<QByteArray> verdicts = validated(benches);
    QCOMPARE(verdicts.size(), names.size());
    for (int i = 0; i < names.size(); ++i)
        QVERIFY2(verdicts[i] == "ok", qPrintable(names[i] + ": " + verdicts[i]));
#endif
}

void TestBenchSchema::refusesWrongFiles()
{
#ifdef Q_OS_WIN
    QSKIP("the validator is installed for Linux only");
#else
    QByteArrayList names{"unchanged"};
    QByteArrayList reasons{""};
    std::vector<ordered_json> benches{everyKeyWithoutFiles()};
    const auto row = [&](const char *path, const char *value, const char *reason) {
        names += QByteArray(path) + ": " + value;
        reasons += reason;
        benches.push_back(benches.front());
        benches.back()[Pointer(path)] = ordered_json::parse(value);
    };
    row("/sensor", "[]", "has no key");
    row("/seed", "\"1\"", "must be a whole number");
    row("/seed", "-1", "must be from 0");
    row("/clock/speed", "0", "must be from 0.001");
    row("/sensors/0/model", "\"TX999\"", "there is no model");
    row("/sensors/0/models", "\"TX270\"", "has no key");
    row("/sensors/0/serialNumber", "\"\"", "must not be empty");
    row("/sensors/0/serialNumber", "1", "must be a text");
    row("/sensors/0/members", "[\"1\"]", "cannot have members");
    row("/sensors/0/place/interface", "\"COM\"", "there is no interface");
    row("/sensors/0/place/device", "1", "has no key");
    row("/sensors/0/place/port", "1", "must be a text");
    row("/sensors/1/place", "{ \"interface\": \"WinUSB\" }", "cannot be connected"); // a bus sensor
    row("/sensors/3/place/port", "\"COM1\"", "has no key");
    row("/sensors/3/place/remotePort", "65536", "must be from 1 to 65535");
    row("/sensors/0/signals/0/range", "[1]", "must be two numbers");
    row("/sensors/0/signals/0/generator/0/kind", "\"sinus\"", "there is no generator");
    row("/sensors/0/signals/0/generator/0/kind", "\"sine\"", "needs");
    row("/sensors/0/signals/0/generator/0/amplitude", "1", "has no key");
    row("/sensors/0/signals/0/generator/1/period", "0", "must be from");
    row("/sensors/0/faults/0/function", "\"OpenSensors\"", "there is no function");
    row("/sensors/0/faults/0/damage", "\"none\"", "there is no damage");
    row("/sensors/0/faults/0", "{ \"command\": \"Get_Info\" }", "at least one of these");
    row("/sensors/0/faults/0", "{ \"code\": -1 }", "at least one of these");
    row("/sensors/0/timeline/0/do", "\"explode\"", "there is no event");
    row("/sensors/0/timeline/0/frames", "5", "has no key");
    row("/sensors/0/timeline/1/times", "5", "needs");
    row("/sensors/0/expect/1/frames", "\"told\"", "there is no kind of frames");
    row("/sensors/0/expect/1/at", "1", "has no key");
    row("/sensors/0/expect/1/command", "\"Get_Info\"", "exactly one of these");
    row("/sensors/0/expect/2/exactly", "1", "exactly one of these");
    row("/sensors/0/expect/3/exactly", "1", "exactly one of these");
    row("/expect/0", "{ \"setting\": \"SA_Measrate\", \"value\": 1 }", "only a sensor has settings");
    row("/sensors/0/video/lines/0/kind", "\"picture\"", "there is no");
    row("/sensors/0/pages", "{ \"/a\": { \"text\": \"a\", \"file\": \"b\" } }", "exactly one of these");
    row("/sensors/0/pages", "{ \"a\": { \"text\": \"a\" } }", "/");
    row("/sensors/0/settings", "{ \"Averaging\": { \"AveragingNumber\": 4 } }", "must begin with SA_");
    row("/sensors/0/errorTexts", "{ \"one\": \"text\" }", "not a whole number");
    row("/sensors/1/rateRule/unit", "\"MHz\"", "there is no rate unit");
    row("/seed", "2147483648", "to 2147483647");
    row("/clock/speed", "1000.001", "to 1000");
    row("/clock/step", "86400.001", "to 86400");
    row("/search/RS232", "3600.001", "to 3600");
    row("/sensors/0/silentAfter", "1000000000.1", "to 1000000000");
    row("/sensors/0/ring", "10000001", "to 10000000");
    row("/sensors/0/standing", "10000001", "to 10000000");
    row("/sensors/0/outOfRange", "0", "to -1");
    row("/sensors/0/place/baudrate", "20000001", "to 20000000");
    row("/sensors/0/signals/0/generator/1/phase", "1.0001", "to 1");
    row("/sensors/0/signals/0/generator/3/share", "1.0001", "to 1");
    row("/sensors/0/signals/0/generator/5/in", "1000000000.1", "to 1000000000");
    row("/sensors/0/signals/0/generator/6/warmUp", "1000.1", "to 1000");
    row("/sensors/0/signals/0/generator/7/modulo", "4503599627370497", "to 4.503599627370496e+15");
    row("/sensors/0/signals/0/errors/0/key", "0", "to -1");
    row("/sensors/0/signals/0/errors/0", "{ \"key\": -1 }", "exactly one of these");
    row("/sensors/0/signals/0/errors/0", "{ \"key\": -1, \"every\": 5, \"probability\": 0.5 }",
        "exactly one of these");
    row("/sensors/0/signals/0/errors/0", "{ \"key\": -1, \"every\": 5, \"probability\": 0 }",
        "exactly one of these");
    row("/sensors/0/signals/0/errors/1/probability", "1.0001", "to 1");
    row("/sensors/0/faults/0/probability", "1.0001", "to 1");
    row("/sensors/0/faults/0/delay", "3600.1", "to 3600");
    row("/sensors/0/faults/0/times", "2147483648", "to 2147483647");
    row("/sensors/0/faults/0/command", "\"\"", "must not be empty");
    row("/sensors/0/faults/0", "{ \"command\": \"\", \"code\": -1 }", "must not be empty");
    row("/sensors/0/faults/1/parameter", "\"\"", "must not be empty");
    row("/sensors/0/timeline/0/at", "1000000000.1", "to 1000000000");
    row("/sensors/0/timeline/5/by", "1.0001", "to 1");
    row("/sensors/0/timeline/6/frames", "2147483648", "to 2147483647");
    row("/sensors/0/expect/3/command", "\"\"", "must not be empty");
    row("/sensors/0/expect/1", "{ \"frames\": \"lost\" }", "exactly one of these");
    row("/sensors/0/expect/1", "{ \"exactly\": 1 }", "exactly one of these");
    row("/sensors/2/tracking/commands/0/command", "\"\"", "must not be empty");
    const QList<QByteArray> verdicts = validated(benches);
    QCOMPARE(verdicts.size(), names.size());
    // Both accept the bench without the change, which is therefore the reason.
    QCOMPARE(verdicts[0], QByteArray("ok"));
    QCOMPARE(reasonAgainst(benches[0].dump()), QByteArray());
    QByteArrayList differences;
    for (int i = 1; i < names.size(); ++i) {
        const QByteArray reason = reasonAgainst(benches[static_cast<std::size_t>(i)].dump());
        if (reason.isEmpty() || !reason.contains(reasons[i]))
            differences += names[i] + ": the reader says \"" + reason + "\" instead of \"" + reasons[i] + '"';
        if (verdicts[i] == "ok")
            differences += names[i] + ": the schema accepts it";
    }
    QVERIFY2(differences.isEmpty(), differences.join('\n').constData());
#endif
}

/// Unknown keys and values of a wrong type, everywhere: the schema and the reader have the same verdict.
void TestBenchSchema::agreesWithTheReader()
{
#ifdef Q_OS_WIN
    QSKIP("the validator is installed for Linux only");
#else
    const ordered_json bench = everyKeyWithoutFiles();
    QCOMPARE(reasonAgainst(bench.dump()), QByteArray());
    std::vector<Change> changes;
    addChanges(bench, Pointer(), changes);
    QVERIFY(changes.size() > 250);
    std::vector<ordered_json> benches;
    for (const Change &change : changes)
        benches.push_back(change.bench);
    const QList<QByteArray> verdicts = validated(benches);
    QCOMPARE(static_cast<std::size_t>(verdicts.size()), changes.size());
    QByteArrayList differences;
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const QByteArray &verdict = verdicts[static_cast<int>(i)];
        const bool accepted = isAccepted(benches[i].dump());
        if ((verdict == "ok") != accepted)
            differences += changes[i].where + (accepted ? ": the schema refuses it: " + verdict
                                                        : QByteArray(": the schema accepts it"));
    }
    QVERIFY2(differences.isEmpty(), differences.join('\n').constData());
#endif
}

QTEST_GUILESS_MAIN(TestBenchSchema)
#include "tst_benchschema.moc"
