// SPDX-License-Identifier: MIT
#include "benches.h"
#include "interruptible.h"
#include "toolrunner.h"

/// A laser that is so slow that only the line of headings appears on the screen.
QByteArray slowBench(const QByteArray &more = QByteArray())
{
    return R"({ "clock": { "speed": 0.001 }, "sensors": [ {
        "model": "TX270", "serialNumber": "1", "place": { "interface": "RS232", "port": "COM3" }, "rate": 50,
        "signals": [ { "name": "Größe", "unit": "µm", "range": [0.0, 10.0] } ])" +
           more + "} ] }";
}

const QString heading = "Gr\u00f6\u00dfe [\u00b5m]";

/// A process whose output is its console, not a pipe.
class ConsoleProcess : public InterruptibleProcess
{
public:
    void start(const ToolRunner &runner, const QStringList &arguments)
    {
        setProcessEnvironment(runner.environment());
        const QStringList line{"/c", QStringLiteral(SONDIXQT_TOOL)};
        QProcess::start("cmd", line + arguments + QStringList(">CON"));
        QVERIFY(waitForStarted());
    }

    struct Screen
    {
        QString text;
        UINT codePage = 0;
    };

    /// Interrupts the process repeatedly until its console has the code page \a expected, for up to 20 seconds.
    bool hasCodePageOnceInterrupted(UINT expected)
    {
        FreeConsole();
        bool result = false;
        if (AttachConsole(static_cast<DWORD>(processId()))) {
            SetConsoleCtrlHandler(ignore, TRUE);
            for (int i = 0; i < 100 && !result; ++i) {
                GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
                result = QTest::qWaitFor([&] { return GetConsoleOutputCP() == expected; }, 200);
            }
            FreeConsole();
        }
        AttachConsole(ATTACH_PARENT_PROCESS);
        return result;
    }

    /// The present content of the console.
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

/// Tests of the tool on a Windows console.
class TestToolConsole : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void textIsShownInAnyAlphabet();
    void theSecondInterruptRestoresTheConsole();
};

void TestToolConsole::textIsShownInAnyAlphabet()
{
    const ToolRunner runner(slowBench());
    ConsoleProcess process;
    process.start(runner, words("read TX270@RS232,port=COM3"));
    ConsoleProcess::Screen screen;
    const auto shows = [&](const QString &text) {
        screen = process.screen();
        return screen.text.contains(text);
    };
    QTRY_VERIFY2_WITH_TIMEOUT(shows(heading), qPrintable(screen.text.simplified()), 20000);
    QCOMPARE(screen.codePage, UINT(CP_UTF8));
    process.interrupt();
    QVERIFY(process.waitForFinished(20000));
}

void TestToolConsole::theSecondInterruptRestoresTheConsole()
{
    if (GetOEMCP() == CP_UTF8)
        QSKIP("this system's consoles begin with the code page that the tool sets");
    const ToolRunner runner(slowBench(R"(, "faults": [ { "function": "CloseSensor", "delay": 3600 } ])"));
    ConsoleProcess process;
    process.start(runner, words("read TX270@RS232,port=COM3"));
    QTRY_VERIFY(process.screen().text.contains(heading));
    QCOMPARE(process.screen().codePage, UINT(CP_UTF8));
    QVERIFY(process.hasCodePageOnceInterrupted(GetOEMCP()));
}

QTEST_GUILESS_MAIN(TestToolConsole)
#include "tst_toolconsole.moc"
