// SPDX-License-Identifier: MIT
#include "redaction.h"

#include <QRegularExpression>
#include <QSet>
#include <QTest>

#include <limits>

using sondixrec::Redaction;

/// What --redact makes of private texts.
class TestRedaction : public QObject
{
    Q_OBJECT

private:
    static QByteArray redactedText(Redaction &redaction, const QByteArray &text)
    {
        return QByteArray::fromStdString(redaction.text(text.toStdString()));
    }

private Q_SLOTS:
    void differentNumbersStayDifferent()
    {
        Redaction redaction("key");
        constexpr int maximum = std::numeric_limits<std::int32_t>::max();
        for (const auto &[first, last] : {std::pair(0, 20000), {-2000, -1}, {maximum - 2000, maximum - 1}}) {
            QSet<int> substitutes;
            for (int number = first; number <= last; ++number) {
                const int substitute = redaction.value("SA_SerialNumber", number);
                QCOMPARE(QString::number(substitute).size(), QString::number(number).size());
                substitutes += substitute;
            }
            QCOMPARE(substitutes.size(), last - first + 1);
        }
    }

    void differentTextsStayDifferent()
    {
        Redaction redaction("key");
        QSet<QByteArray> texts;
        for (char letter = 'a'; letter <= 'z'; ++letter) {
            for (char digit = '0'; digit <= '9'; ++digit) {
                for (const char *umlaut : {"", "\xE4", "\xC1"})
                    texts += QByteArray() + letter + umlaut + digit;
            }
        }
        QSet<QByteArray> substitutes;
        for (const QByteArray &text : qAsConst(texts)) {
            const auto substitute = redaction.value("SP_Hostname", text.toStdString());
            QCOMPARE(static_cast<int>(substitute.size()), text.size());
            substitutes += QByteArray::fromStdString(substitute);
        }
        QCOMPARE(substitutes.size(), texts.size());
        // As a whole, such as the texts of a log.
        QVERIFY(redaction.whole("sensor 1 fails") != redaction.whole("sensor 2 fails"));
        const std::string longText(100, 'x');
        QVERIFY(redaction.whole(longText + '1') != redaction.whole(longText + '2'));
    }

    void equalTextsStayEqual()
    {
        Redaction redaction("key");
        Redaction otherProcess("key");
        const std::string serial = redaction.value("SA_SerialNumber", "4711");
        QCOMPARE(otherProcess.value("SA_SerialNumber", "4711"), serial);
        QCOMPARE(std::to_string(redaction.value("SA_SerialNumber", 4711)), serial);
        QCOMPARE(redaction.text("SA_SerialNumber=\"4711\" SA_Range=10"),
                 "SA_SerialNumber=\"" + serial + "\" SA_Range=10");
        // Known from now on.
        QCOMPARE(redaction.text("sensor 4711 fails after 14711 s"), "sensor " + serial + " fails after 14711 s");
        QVERIFY(Redaction("other key").value("SA_SerialNumber", "47110815") !=
                redaction.value("SA_SerialNumber", "47110815"));
    }

    void addressesInTheNetworkStayDifferent()
    {
        Redaction redaction("key");
        QSet<QByteArray> substitutes;
        static const QRegularExpression form("^[1-9]\\d\\d\\.[12]\\d\\d\\.\\d\\.(\\d+):1024$");
        for (int host = 0; host < 256; ++host) {
            const QByteArray address = "192.168.7." + QByteArray::number(host);
            const QByteArray substitute = redactedText(redaction, address + ":1024");
            const auto match = form.match(QString::fromLatin1(substitute));
            QVERIFY2(match.hasMatch() && match.captured(1).toInt() < 256, substitute.constData());
            substitutes += substitute;
        }
        QCOMPARE(substitutes.size(), 256);
    }

    void replacesAddressesInTexts_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("form"); // a regular expression of what remains
        const auto row = [](const char *text, const char *form) {
            QTest::newRow(text) << QByteArray(text) << QByteArray(form);
        };
        const char *const link = "^no answer of [0-9a-f]{4}::[0-9a-f]{3}$";
        row("no answer of fe80::9ab", link);
        row("no answer of FE80::9AB", link);
        row("no answer of fe80::9ab%eth0.", "^no answer of [0-9a-f]{4}::[0-9a-f]{3}%eth0\\.$");
        row("lost [2001:db8:0:1:2:3:4:5]:1024 at 12:30:45",
            "^lost \\[[0-9a-f]{4}:[0-9a-f]{3}(:[0-9a-f]){6}\\]:1024 at 12:30:45$");
        row("2001:db8::7/64: refused", "^[0-9a-f]{4}:[0-9a-f]{3}::[0-9a-f]/64: refused$");
        row("address=2001:db8::1, next", "^address=[0-9a-f]{4}:[0-9a-f]{3}::[0-9a-f], next$");
        row("from ::ffff:192.168.17.29: reset",
            "^from ::[0-9a-f]{4}:[12]\\d\\d\\.[12]\\d\\d\\.\\d\\d\\.\\d\\d: reset$");
        row("MAC 02-5D-00-aa-BB-07 gone", "^MAC ([0-9a-f]{2}-){5}[0-9a-f]{2} gone$");
    }
    void replacesAddressesInTexts()
    {
        QFETCH(const QByteArray, text);
        QFETCH(const QByteArray, form);
        Redaction redaction("key");
        const QByteArray redacted = redactedText(redaction, text);
        QVERIFY2(QRegularExpression(form).match(QString::fromLatin1(redacted)).hasMatch(), redacted.constData());
        QVERIFY2(redacted.toLower() != text.toLower(), redacted.constData());
        QCOMPARE(redactedText(redaction, text), redacted);
    }

    void keepsWhatIsNoAddress_data()
    {
        QTest::addColumn<QByteArray>("text");
        for (const char *const text :
             {"at 12:34:56 or 12:34", "version 1.2.3", "::1 and 127.0.0.1", "mask 255.255.255.0", "ratio 3:4",
              "range: 0.5 - 2.5 mm", "std::move", "Error -22: too cold"})
            QTest::newRow(text) << QByteArray(text);
    }
    void keepsWhatIsNoAddress()
    {
        QFETCH(const QByteArray, text);
        Redaction redaction("key");
        QCOMPARE(redactedText(redaction, text), text);
    }

    void theSameAddressIsTheSameEverywhere()
    {
        Redaction redaction("key");
        QCOMPARE(redactedText(redaction, "FE80::9AB"), redactedText(redaction, "fe80::9ab"));
        QCOMPARE(redactedText(redaction, "02-5D-00-AA-BB-07").replace('-', ':'),
                 redactedText(redaction, "02:5d:00:aa:bb:07"));
        const QByteArray ipv4 = redactedText(redaction, "192.168.17.29");
        QVERIFY(redactedText(redaction, "::ffff:192.168.17.29").endsWith(':' + ipv4));
        QCOMPARE(redaction.value("SA_IPAddress", "192.168.17.29"), ipv4.toStdString());
    }
};

QTEST_GUILESS_MAIN(TestRedaction)
#include "tst_redaction.moc"
