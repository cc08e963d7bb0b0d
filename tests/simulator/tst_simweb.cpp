// SPDX-License-Identifier: MIT
#include "web.h"

#include <QJsonArray>
#include <QTemporaryDir>
#include <QTest>
#include <zlib.h>

/// The content of a gzip file; empty for anything else.
static std::string inflated(const std::string &packed)
{
    z_stream stream{};
    if (inflateInit2(&stream, 15 + 16) != Z_OK)
        return {};
    std::string input = packed;
    std::string plain(1u << 20, '\0');
    stream.next_in = reinterpret_cast<Bytef *>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef *>(plain.data());
    stream.avail_out = static_cast<uInt>(plain.size());
    const bool whole = inflate(&stream, Z_FINISH) == Z_STREAM_END && stream.avail_in == 0;
    plain.resize(whole ? stream.total_out : 0);
    inflateEnd(&stream);
    return plain;
}

class TestSimWeb : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void modelsWithAWebInterfaceServePages_data()
    {
        QTest::addColumn<QByteArray>("model");
        QTest::addColumn<int>("type");
        QTest::newRow("TX270") << QByteArray("TX270") << int(SensorType::TX270);
        QTest::newRow("TX280") << QByteArray("TX280") << int(SensorType::TX280);
        QTest::newRow("TX290") << QByteArray("TX290") << int(SensorType::TX290);
        QTest::newRow("TX300") << QByteArray("TX300") << int(SensorType::TX300);
        QTest::newRow("TX310") << QByteArray("TX310") << int(SensorType::TX310);
    }
    void modelsWithAWebInterfaceServePages()
    {
        QFETCH(QByteArray, model);
        QFETCH(int, type);
        loadWebSensor("", R"("clock": { "virtual": true },)", model.toStdString());
        Handle handle(type);
        QCOMPARE(handle.open(), 0);
        QCOMPARE(fetch(handle, "/").statusLine(), std::string("HTTP/1.1 200 OK"));
        QCOMPARE(askGeneric(handle, "MEASRATE 5"), std::string("MEASRATE 5.0"));
        QCOMPARE(handle.command("Get_DataOutInterface"), 0);
        QCOMPARE(handle.getInt("SA_OutputRS422"), 1);
        QCOMPARE(handle.getInt("SA_OutputAnalog"), 0);
        QCOMPARE(handle.getInt("SA_OutputErrorOut1"), 0);
        QCOMPARE(handle.getInt("SA_OutputErrorOut2"), 0);
    }

    void otherModelsDoNotKnowTheCommands_data()
    {
        QTest::addColumn<QByteArray>("model");
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("place");
        QTest::newRow("model without pages") << QByteArray("TX240") << int(SensorType::TX240)
                                             << QByteArray(R"({ "interface": "RS232", "port": "COM1" })");
        QTest::newRow("network") << QByteArray("TX290") << int(SensorType::TX290)
                                 << QByteArray(R"({ "interface": "TCP/IP", "ip": "10.0.0.1" })");
        QTest::newRow("USB") << QByteArray("TX300") << int(SensorType::TX300)
                             << QByteArray(R"({ "interface": "WinUSB" })");
    }
    void otherModelsDoNotKnowTheCommands()
    {
        QFETCH(QByteArray, model);
        QFETCH(int, type);
        QFETCH(QByteArray, place);
        sondixsim::loadBench(R"({ "clock": { "virtual": true }, "sensors": [ { "model": ")" + model.toStdString() +
                             R"(", "serialNumber": "1", "place": )" + place.toStdString() + " } ] }");
        Handle handle(type);
        QCOMPARE(handle.open(), 0);
        const int unknown = handle.command("Get_Nonsense");
        QVERIFY(unknown < 0);
        QCOMPARE(fetch(handle, "/").result, unknown);
        if (type == 23)
            QCOMPARE(sendGeneric(handle, "MEASRATE"), unknown);
        else
            QVERIFY(askGeneric(handle, "BAUDRATE 9600").find("BAUDRATE") != std::string::npos);
        handle.command("Get_HTTP");
        std::string text;
        handle.error(&text);
        QVERIFY2(text.find("Get_HTTP") != std::string::npos, text.c_str());
    }

    void pageSaysWhatItIs_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("part");
        QTest::newRow("overview") << QByteArray("/") << QByteArray("text/html; charset=utf-8")
                                  << QByteArray("<title>Sensor overview</title>");
        QTest::newRow("by name") << QByteArray("/index.html") << QByteArray("text/html; charset=utf-8")
                                 << QByteArray("<title>Sensor overview</title>");
        QTest::newRow("with a query") << QByteArray("/index.html?x=1") << QByteArray("text/html; charset=utf-8")
                                      << QByteArray("<title>Sensor overview</title>");
        QTest::newRow("settings") << QByteArray("/settings.html") << QByteArray("text/html; charset=utf-8")
                                  << QByteArray("data-name=\"MEASRATE\"");
        QTest::newRow("picture") << QByteArray("/sensor.svg") << QByteArray("image/svg+xml") << QByteArray("<svg");
        QTest::newRow("style") << QByteArray("/style.css") << QByteArray("text/css; charset=utf-8")
                               << QByteArray("body {");
        QTest::newRow("script") << QByteArray("/overview.js") << QByteArray("text/javascript; charset=utf-8")
                                << QByteArray("fetch('/values.json'");
        QTest::newRow("other script") << QByteArray("/settings.js") << QByteArray("text/javascript; charset=utf-8")
                                      << QByteArray("fetch('/', {");
    }
    void pageSaysWhatItIs()
    {
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, type);
        QFETCH(QByteArray, part);
        loadWebSensor();
        Handle handle(SensorType::TX270);
        handle.open();
        const Fetched page = fetch(handle, path.toStdString());
        QCOMPARE(page.result, 0);
        QCOMPARE(page.statusLine(), std::string("HTTP/1.1 200 OK"));
        QCOMPARE(page.line("Content-Type"), type.toStdString());
        QCOMPARE(page.line("Content-Length"), std::to_string(page.body.size()));
        QCOMPARE(page.line("Connection"), std::string("keep-alive"));
        QCOMPARE(page.line("Cache-Control"), std::string("no-cache"));
        QVERIFY(!page.tag().empty());
        QCOMPARE(page.header.find("\r\n\r\n"), page.header.size() - 4);
        QVERIFY(page.body.find(part.toStdString()) != std::string::npos);
        QVERIFY(page.body.size() <= std::size_t(defaultMaxLength));
    }

    void builtInPagesLoadNothingFromElsewhere()
    {
        loadWebSensor();
        Handle handle(SensorType::TX270);
        handle.open();
        for (const char *path : {"/", "/settings.html", "/overview.js", "/settings.js", "/style.css", "/none"}) {
            const std::string body = fetch(handle, path).body;
            std::size_t at = 0;
            while ((at = body.find("//", at)) != std::string::npos) {
                // Comments and names of XML namespaces, which no browser loads.
                const bool isAddress = at > 0 && body[at - 1] == ':';
                QVERIFY2(!isAddress || body.compare(at, 12, "//www.w3.org") == 0, path);
                at += 2;
            }
        }
    }

    void answersCanBeReadAsTextsAndAsBytes()
    {
        loadWebSensor();
        Handle handle(SensorType::TX270);
        handle.open();
        const Fetched page = fetch(handle, "/");
        QCOMPARE(handle.getText("SA_HTTPHeader"), page.header);
        QCOMPARE(handle.getText("SA_HTTPBody"), page.body);
    }

    void matchingTagGivesNoBody_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");
        QTest::newRow("as it comes") << QByteArray() << QByteArray();
        QTest::newRow("weak") << QByteArray("W/") << QByteArray();
        QTest::newRow("quoted") << QByteArray("\"") << QByteArray("\"");
        QTest::newRow("weak and quoted") << QByteArray("W/\"") << QByteArray("\"");
        QTest::newRow("among others") << QByteArray("abc, ") << QByteArray(", W/def");
    }
    void matchingTagGivesNoBody()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        loadWebSensor();
        Handle handle(SensorType::TX270);
        handle.open();
        const std::string tag = fetch(handle, "/style.css").tag();
        const Fetched again = fetch(handle, "/style.css", before.toStdString() + tag + after.toStdString());
        QCOMPARE(again.result, 0);
        QCOMPARE(again.statusLine(), std::string("HTTP/1.1 304 Not Modified"));
        QCOMPARE(again.tag(), tag);
        QCOMPARE(again.body, std::string());
        QCOMPARE(again.header.find("\r\n\r\n"), again.header.size() - 4);
    }

    void otherTagGivesThePage()
    {
        loadWebSensor();
        Handle handle(SensorType::TX270);
        handle.open();
        const Fetched page = fetch(handle, "/style.css");
        for (const std::string &tag : {std::string("abc"), page.tag() + "0", page.tag().substr(1),
                                       std::string("W/"), fetch(handle, "/settings.js").tag()}) {
            const Fetched again = fetch(handle, "/style.css", tag);
            QCOMPARE(again.statusLine(), std::string("HTTP/1.1 200 OK"));
            QCOMPARE(again.body, page.body);
        }
    }

    void missingPageIsAnsweredWith404_data()
    {
        QTest::addColumn<QByteArray>("path");
        for (const char *path : {"/nothing.html", "", "index.html", "/index.htm", "//", "/../style.css", "/%2e"})
            QTest::newRow(*path != '\0' ? path : "empty") << QByteArray(path);
    }
    void missingPageIsAnsweredWith404()
    {
        QFETCH(QByteArray, path);
        loadWebSensor();
        Handle handle(SensorType::TX270);
        handle.open();
        const Fetched page = fetch(handle, path.toStdString());
        QCOMPARE(page.result, 0);
        QCOMPARE(page.statusLine(), std::string("HTTP/1.1 404 Not Found"));
        QCOMPARE(page.line("Content-Type"), std::string("text/html; charset=utf-8"));
        QCOMPARE(page.line("ETag"), std::string("(missing)"));
        QCOMPARE(page.line("Cache-Control"), std::string("no-store"));
        QCOMPARE(page.line("Content-Length"), std::to_string(page.body.size()));
        QVERIFY(page.body.find("Page not found") != std::string::npos);
        QCOMPARE(fetch(handle, path.toStdString(), "*").statusLine(), std::string("HTTP/1.1 404 Not Found"));
    }

    void longPageComesCompressed()
    {
        loadWebSensor();
        Handle handle(SensorType::TX270);
        handle.open();
        const Fetched whole = fetch(handle, "/reference.html", "", 1000000);
        QVERIFY(whole.body.size() > std::size_t(defaultMaxLength));
        QCOMPARE(whole.line("Content-Encoding"), std::string("(missing)"));
        const Fetched packed = fetch(handle, "/reference.html");
        QCOMPARE(packed.statusLine(), std::string("HTTP/1.1 200 OK"));
        QCOMPARE(packed.line("Content-Encoding"), std::string("gzip"));
        QCOMPARE(packed.line("Content-Type"), whole.line("Content-Type"));
        QCOMPARE(packed.line("Content-Length"), std::to_string(packed.body.size()));
        QVERIFY(packed.body.size() <= std::size_t(defaultMaxLength));
        QCOMPARE(inflated(packed.body), whole.body);
        QVERIFY(packed.tag() != whole.tag());
        QCOMPARE(fetch(handle, "/reference.html", packed.tag()).statusLine(),
                 std::string("HTTP/1.1 304 Not Modified"));
        QCOMPARE(fetch(handle, "/reference.html", whole.tag()).body, packed.body);
    }

    void lengthDecidesHowAPageComes()
    {
        loadWebSensor(R"(, "pages": { "/a.txt": { "text": ")" + std::string(1000, 'a') + R"(" } })");
        Handle handle(SensorType::TX270);
        handle.open();
        QCOMPARE(fetch(handle, "/a.txt", "", 1000).line("Content-Encoding"), std::string("(missing)"));
        const Fetched packed = fetch(handle, "/a.txt", "", 999);
        QCOMPARE(packed.line("Content-Encoding"), std::string("gzip"));
        const auto size = static_cast<std::int32_t>(packed.body.size());
        QCOMPARE(fetch(handle, "/a.txt", "", size).body, packed.body);
        QCOMPARE(fetch(handle, "/a.txt", "", size - 1).statusLine(),
                 std::string("HTTP/1.1 500 Internal Server Error"));
    }

    void pageThatDoesNotFitIsAnsweredWith500()
    {
        std::string noise;
        unsigned state = 1;
        for (int i = 0; i < 60000; ++i) {
            state = state * 1664525u + 1013904223u;
            noise += "0123456789abcdef"[state >> 28];
        }
        loadWebSensor(R"(, "pages": { "/noise.txt": { "text": ")" + noise + R"(" } })");
        Handle handle(SensorType::TX270);
        handle.open();
        const Fetched page = fetch(handle, "/noise.txt");
        QCOMPARE(page.result, 0);
        QCOMPARE(page.statusLine(), std::string("HTTP/1.1 500 Internal Server Error"));
        QVERIFY(page.body.find("longer than one answer") != std::string::npos);
        QCOMPARE(page.line("ETag"), std::string("(missing)"));
        const Fetched nothing = fetch(handle, "/noise.txt", "", 0);
        QCOMPARE(nothing.statusLine(), std::string("HTTP/1.1 500 Internal Server Error"));
        QCOMPARE(nothing.body, std::string());
        QCOMPARE(nothing.line("Content-Length"), std::string("0"));
    }

    void requestNeedsAPathAndALength()
    {
        loadWebSensor();
        Handle handle(SensorType::TX270);
        handle.open();
        handle.set("SP_HTTPMaxLength", 100);
        QVERIFY(handle.command("Get_HTTP") < 0);
        handle.set("SP_HTTPPath", "/");
        QVERIFY(handle.command("Get_HTTP") < 0);
        QVERIFY(fetch(handle, "/", "", -1).result < 0);
    }

    void valuesAreThePresentOnes()
    {
        loadWebSensor(R"(, "rate": 1000, "errorTexts": { "-3": "Zu hei\u00df" }, "signals": [
            { "name": "Rising", "unit": "\u00b5m", "range": [0, 100], "rawRange": [0, 100000],
              "generator": { "kind": "ramp", "from": 0, "to": 100, "period": 100 } },
            { "name": "Never", "errors": [ { "key": -3, "every": 1 } ] } ])");
        Handle handle(SensorType::TX270);
        handle.open();
        sondixsim::advance(25.0);
        const Fetched values = fetch(handle, "/values.json");
        QCOMPARE(values.line("Content-Type"), std::string("application/json"));
        QCOMPARE(values.line("Cache-Control"), std::string("no-store"));
        QCOMPARE(values.line("ETag"), std::string("(missing)"));
        const QJsonObject sensor = values.json();
        QCOMPARE(sensor[QStringLiteral("simulated")].toBool(), true);
        QCOMPARE(sensor[QStringLiteral("model")].toString(), QStringLiteral("TX270-10"));
        QCOMPARE(sensor[QStringLiteral("serialNumber")].toString(), QStringLiteral("1"));
        QVERIFY(sensor[QStringLiteral("firmware")].toString().contains(QStringLiteral("simulator")));
        QCOMPARE(sensor[QStringLiteral("rate")].toDouble(), 1000.0);
        QCOMPARE(sensor[QStringLiteral("baudrate")].toInt(), 115200);
        const QJsonArray measured = sensor[QStringLiteral("signals")].toArray();
        QCOMPARE(measured.size(), 2);
        const QJsonObject rising = measured[0].toObject();
        QCOMPARE(rising[QStringLiteral("name")].toString(), QStringLiteral("Rising"));
        QCOMPARE(rising[QStringLiteral("unit")].toString(), QStringLiteral("\u00b5m"));
        QCOMPARE(rising[QStringLiteral("decimals")].toInt(), 3);
        QVERIFY(qAbs(rising[QStringLiteral("value")].toDouble() - 25.0) < 0.01);
        const QJsonObject never = measured[1].toObject();
        QVERIFY(never[QStringLiteral("value")].isNull());
        QCOMPARE(never[QStringLiteral("error")].toString(), QStringLiteral("Zu hei\u00df"));
        sondixsim::advance(10.0);
        const QJsonArray later = fetch(handle, "/values.json").json()[QStringLiteral("signals")].toArray();
        QVERIFY(qAbs(later[0].toObject()[QStringLiteral("value")].toDouble() - 35.0) < 0.01);
    }

    void showingValuesTakesNoneAway()
    {
        loadWebSensor(R"(, "rate": 1000)");
        Handle handle(SensorType::TX270);
        handle.open();
        sondixsim::advance(1.0);
        const double shown = fetch(handle, "/values.json")
                                 .json()[QStringLiteral("signals")]
                                 .toArray()[0]
                                 .toObject()[QStringLiteral("value")]
                                 .toDouble();
        QCOMPARE(handle.available(), 1000);
        const Block block = takeBlock(handle, 2000);
        QCOMPARE(block.scaled.size(), std::size_t(1000));
        QCOMPARE(shown, block.scaled.back());
        QCOMPARE(block.timestamp, 0.001);
    }

    void valuesGoOnWithoutSerialOutput()
    {
        loadWebSensor(R"(, "rate": 1000, "signals": [ { "name": "a", "range": [0, 100], "rawRange": [0, 100000],
            "generator": { "kind": "ramp", "from": 0, "to": 100, "period": 100 } } ])");
        Handle handle(SensorType::TX270);
        handle.open();
        handle.set("SP_OutputRS422", 0);
        QCOMPARE(handle.command("Set_DataOutInterface"), 0);
        sondixsim::advance(30.0);
        QCOMPARE(handle.available(), 0);
        const QJsonObject sensor = fetch(handle, "/values.json").json();
        QCOMPARE(sensor[QStringLiteral("serialOutput")].toBool(), false);
        const QJsonObject shown = sensor[QStringLiteral("signals")].toArray()[0].toObject();
        QVERIFY(qAbs(shown[QStringLiteral("value")].toDouble() - 30.0) < 0.01);
        handle.set("SP_OutputRS422", 1);
        QCOMPARE(handle.command("Set_DataOutInterface"), 0);
        sondixsim::advance(0.5);
        QCOMPARE(handle.available(), 500);
    }

    void benchFileAddsAndReplacesPages()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("logo.png")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        const QByteArray picture("\x89PNG\0\xFF\r\n", 8);
        file.write(picture);
        file.close();
        QFile bench(folder.filePath(QStringLiteral("bench.json")));
        QVERIFY(bench.open(QIODevice::WriteOnly));
        bench.write(R"({ "clock": { "virtual": true }, "sensors": [ { "model": "TX270", "serialNumber": "1",
            "place": { "interface": "RS232", "port": "COM1" },
            "pages": { "/": { "text": "<p>Gr\u00fc\u00dfe</p>", "type": "text/html; charset=utf-8" },
                       "/logo": { "file": "logo.png" }, "/raw": { "text": "x" } } } ] })");
        bench.close();
        sondixsim::loadBenchFile(bench.fileName().toStdString());
        Handle handle(SensorType::TX270);
        handle.open();
        const Fetched page = fetch(handle, "/");
        QCOMPARE(page.body, std::string("<p>Gr\xC3\xBC\xC3\x9F"
                                        "e</p>"));
        QCOMPARE(page.line("Content-Type"), std::string("text/html; charset=utf-8"));
        QVERIFY(!page.tag().empty());
        const Fetched logo = fetch(handle, "/logo");
        QCOMPARE(logo.line("Content-Type"), std::string("image/png"));
        QCOMPARE(QByteArray::fromStdString(logo.body), picture);
        QCOMPARE(fetch(handle, "/raw").line("Content-Type"), std::string("application/octet-stream"));
        QCOMPARE(fetch(handle, "/style.css").statusLine(), std::string("HTTP/1.1 200 OK"));
    }

    void errorsInPagesAreReported_data()
    {
        QTest::addColumn<QByteArray>("model");
        QTest::addColumn<QByteArray>("pages");
        QTest::addColumn<QByteArray>("word");
        const auto row = [](const char *name, const char *pages, const char *word, const char *model = "TX270") {
            QTest::newRow(name) << QByteArray(model) << QByteArray(pages) << QByteArray(word);
        };
        row("no web interface", "{}", "TX240 has no web interface", "TX240");
        row("no object", "3", "pages");
        row("relative path", R"({ "a": { "text": "" } })", "\"a\"");
        row("query", R"({ "/a?b": { "text": "" } })", "/a?b");
        row("blank", R"({ "/a b": { "text": "" } })", "/a b");
        row("no content", R"({ "/a": {} })", "exactly one of these");
        row("two contents", R"({ "/a": { "text": "", "file": "x" } })", "exactly one of these");
        row("missing file", R"({ "/a": { "file": "no/such/file" } })", "no/such/file");
        row("type that breaks the header", R"({ "/a": { "text": "", "type": "text/html\r\nX: y" } })", "type");
        row("type that is none", R"({ "/a": { "text": "", "type": "html" } })", "type");
        row("unknown key", R"({ "/a": { "text": "", "size": 3 } })", "size");
    }
    void errorsInPagesAreReported()
    {
        QFETCH(QByteArray, model);
        QFETCH(QByteArray, pages);
        QFETCH(QByteArray, word);
        try {
            sondixsim::loadBench("{ \"sensors\": [ {\n\"model\": \"" + model.toStdString() +
                                     "\", \"serialNumber\": \"1\",\n"
                                     "\"place\": { \"interface\": \"RS232\", \"port\": \"COM1\" },\n\"pages\": " +
                                     pages.toStdString() + " } ] }",
                                 "mine");
            QFAIL("the mistake was not noticed");
        } catch (const sondixsim::BenchError &error) {
            QCOMPARE(error.line, 4);
            QVERIFY2(QByteArray(error.what()).startsWith("mine:4: "), error.what());
            QVERIFY2(QByteArray(error.what()).contains(word), error.what());
        }
    }
};

QTEST_GUILESS_MAIN(TestSimWeb)
#include "tst_simweb.moc"
