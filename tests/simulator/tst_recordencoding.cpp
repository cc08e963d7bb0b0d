// SPDX-License-Identifier: MIT
#include "encoding.h"

#include <QtTest>

#include <nlohmann/json.hpp>

#include <cstring>
#include <limits>
#include <random>

using namespace sondixrec;

namespace {

quint64 bitsOfReal(double value)
{
    quint64 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

double realOfBits(quint64 bits)
{
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

double readAgain(double value)
{
    std::string json;
    appendDouble(json, value);
    const nlohmann::json parsed = nlohmann::json::parse(json);
    return parsed.is_string() ? doubleOfText(parsed.get<std::string>()).value_or(1.25) : parsed.get<double>();
}

} // namespace

class TestRecordEncoding : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void realsAreExact_data()
    {
        QTest::addColumn<double>("value");
        QTest::newRow("zero") << 0.0;
        QTest::newRow("negative zero") << -0.0;
        QTest::newRow("whole") << 3.0;
        QTest::newRow("error value") << -1.0e10 - 4.0;
        QTest::newRow("smallest") << std::numeric_limits<double>::denorm_min();
        QTest::newRow("largest") << std::numeric_limits<double>::max();
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity();
        QTest::newRow("minus infinite") << -std::numeric_limits<double>::infinity();
        QTest::newRow("NaN") << std::numeric_limits<double>::quiet_NaN();
        QTest::newRow("NaN with a payload") << realOfBits(0xFFF8000000000123U);
    }
    void realsAreExact()
    {
        QFETCH(double, value);
        QCOMPARE(bitsOfReal(readAgain(value)), bitsOfReal(value));
    }

    void randomBitsAreExact()
    {
        std::mt19937_64 random(1);
        for (int i = 0; i < 100000; ++i) {
            quint64 bits = random();
            if (std::isnan(realOfBits(bits)))
                bits |= 0x0008000000000000U; // processors make signalling NaNs quiet
            QCOMPARE(bitsOfReal(readAgain(realOfBits(bits))), bits);
        }
    }

    void textsAreReadable()
    {
        std::string json;
        appendBytes(json, "a\"b\\c\r\n\xb5m \x80");
        QCOMPARE(json, std::string("\"a\\\"b\\\\c\\r\\n\xc2\xb5m \xe2\x82\xac\""));
    }

    void otherBytesAreBase64()
    {
        std::string json;
        appendBytes(json, "a\x81");
        QCOMPARE(json, std::string(R"({"base64":"YYE="})"));
        std::string all;
        for (int length = 0; length < 300; ++length, all += static_cast<char>(length * 7)) {
            json.clear();
            appendBase64(json, all);
            const auto text = nlohmann::json::parse(json).at("base64").get<std::string>();
            const std::string again = bytesOfBase64(text).value_or("no base64");
            QVERIFY(again == all);
            QCOMPARE(QByteArray::fromStdString(text), QByteArray::fromStdString(all).toBase64());
        }
    }

    void wrongTextsAreNoValues()
    {
        for (const char *text : {"", "nanny", "nan:", "nan:12", "nan:xyz", "nan:3ff0000000000000", "1.0"})
            QVERIFY2(!doubleOfText(text), text);
        for (const char *text : {"A", "AA", "AAA", "=AAA", "A===", "AA=A", "A A="})
            QVERIFY2(!bytesOfBase64(text), text);
    }
};

QTEST_GUILESS_MAIN(TestRecordEncoding)
#include "tst_recordencoding.moc"
