// SPDX-License-Identifier: MIT
#include "benches.h"
#include "interruptible.h"
#include "toolrunner.h"

/// A program whose output is its console, not a pipe.
class ConsoleProcess : public InterruptibleProcess
{
public:
    void start(const ToolRunner &runner, const QStringList &arguments)
    {
        setProcessEnvironment(runner.environment());
        const QStringList line{QStringLiteral("/c"), QStringLiteral(SONDIXQT_TOOL)};
        QProcess::start(QStringLiteral("cmd"), line + arguments + QStringList(QStringLiteral(">CON")));
        QVERIFY(waitForStarted());
    }

    struct Screen
    {
        QString text;
        UINT codePage = 0;
    };

    /// What the console shows now.
    Screen screen() const
    {
        Screen result;
        FreeConsole();
        if (AttachConsole(static_cast<DWORD>(processId()))) {
            result.codePage = GetConsoleOutputCP();
            const HANDLE buffer =
                CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                            OPEN_EXISTING, 0, nullptr);
            CONSOLE_SCREEN_BUFFER_INFO info = {};
            GetConsoleScreenBufferInfo(buffer, &info);
            std::vector<wchar_t> line(static_cast<size_t>(info.dwSize.X));
            for (SHORT row = 0; row < info.dwSize.Y; ++row) {
                DWORD count = 0;
                ReadConsoleOutputCharacterW(buffer, line.data(), static_cast<DWORD>(line.size()), COORD{0, row},
                                            &count);
                result.text += QString::fromWCharArray(line.data(), static_cast<int>(count)) + QLatin1Char('\n');
            }
            CloseHandle(buffer);
            FreeConsole();
        }
        AttachConsole(ATTACH_PARENT_PROCESS);
        return result;
    }
};

/// The tool on a console of Windows.
class TestToolConsole : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void textIsShownInAnyAlphabet();
};

void TestToolConsole::textIsShownInAnyAlphabet()
{
    // So slow that the line of headings stays alone on the screen.
    const QByteArray bench = R"({ "clock": { "speed": 0.001 }, "sensors": [ {
        "model": "TX270", "serialNumber": "1", "place": { "interface": "RS232", "port": "COM3" }, "rate": 50,
        "signals": [ { "name": "Größe", "unit": "µm", "range": [0.0, 10.0] } ] } ] })";
    const ToolRunner runner(bench);
    ConsoleProcess process;
    process.start(runner, words("read TX270@RS232,port=COM3"));
    ConsoleProcess::Screen screen;
    const auto shows = [&](const QString &text) {
        screen = process.screen();
        return screen.text.contains(text);
    };
    QTRY_VERIFY2_WITH_TIMEOUT(shows(QStringLiteral("Gr\u00f6\u00dfe [\u00b5m]")),
                              qPrintable(screen.text.simplified()), 20000);
    QCOMPARE(screen.codePage, UINT(CP_UTF8));
    process.interrupt();
    QVERIFY(process.waitForFinished(20000));
}

QTEST_GUILESS_MAIN(TestToolConsole)
#include "tst_toolconsole.moc"
