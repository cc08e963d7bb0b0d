// SPDX-License-Identifier: MIT
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

/// The program itself.
class ExplorerStartTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void drawsItsWindow();
};

void ExplorerStartTest::drawsItsWindow()
{
    QTemporaryDir settings;
    QVERIFY(settings.isValid());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("XDG_CONFIG_HOME", settings.path());
    QProcess program;
    program.setProcessEnvironment(environment);
    program.start(SONDIXQT_EXPLORER, {"--exit-when-drawn"});
    constexpr int longestStart = 60000; // under Wine, while other tests run
    QVERIFY2(program.waitForFinished(longestStart), qPrintable(program.errorString()));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    const QByteArray errors = program.readAllStandardError();
    QVERIFY2(program.exitCode() == 0, errors.constData());
    const QString output = QString::fromLocal8Bit(program.readAllStandardOutput()).trimmed();
    QVERIFY2(QRegularExpression("^drawn after \\d+ ms$").match(output).hasMatch(), qPrintable(output + errors));
}

QTEST_GUILESS_MAIN(ExplorerStartTest)
#include "tst_explorerstart.moc"
