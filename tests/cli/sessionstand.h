// SPDX-License-Identifier: MIT
#pragma once

#include "benches.h"
#include "toolrunner.h"

#include "SondixSimulator/control.h"

#include <memory>

/// Session benches with the name "test", and what tests do with them: with runs of the tool, and in this process.
class SessionStand
{
public:
    static inline const char *const laser = R"({ "model": "TX270", "serialNumber": "1001", "rate": 1000,
        "place": { "interface": "RS232", "port": "COM3" } })";
    static inline const char *const otherLaser = R"({ "model": "TX270", "serialNumber": "1003", "rate": 1000,
        "place": { "interface": "WinUSB", "device": 0 } })";
    static inline const QString address = "TX270@RS232,port=COM3";

    SessionStand() { qputenv("SONDIX_BENCH_SESSIONS", m_sessions.path().toLocal8Bit()); }

    void start(const QByteArray &bench = Benches::of(laser), const QStringList &options = {})
    {
        m_tool = std::make_unique<ToolRunner>();
        const ToolResult result = m_tool->run(
            QStringList{"bench", "start", "--name", "test", m_tool->writeFile("test.json", bench)} + options);
        if (result.code != 0)
            qFatal("%s", result.err.constData());
        m_tool->setEnvironment("SONDIX_BENCH", "session:test");
    }
    /// Stops all sessions.
    static void stopAll()
    {
        sondixsim::loadBuiltInBench(); // this process leaves the session
        for (const std::string &name : sondixsim::sessions())
            sondixsim::stopSession(name);
        QVERIFY(sondixsim::sessions().empty());
    }

    const ToolRunner &tool() const { return *m_tool; }
    ToolResult run(const QStringList &arguments) const { return m_tool->run(arguments); }
    ToolResult bench(const QString &line) const { return m_tool->run(("bench " + line).split(' ')); }
    int getInfo() const { return m_tool->run({"get", address, "Get_Info"}).code; }
    QString measrate() const
    {
        return QString::fromUtf8(m_tool->run({"get", address, "Get_Samplerate", "SA_Measrate"}).out.trimmed());
    }
    ToolResult setMeasrate(double value) const
    {
        return m_tool->run({"set", address, "Set_Samplerate", QString("SP_Measrate=%1").arg(value)});
    }
    bool isOpen() const { return bench("show").out.contains("open in"); }
    /// Starts reading, and returns when the first values have come.
    void startReading(QProcess &process) const
    {
        m_tool->start(process, {"read", address, "--duration", "60"});
        while (process.waitForReadyRead(30000) && process.bytesAvailable() < 200)
            continue;
    }

    /// The folders of all sessions.
    QDir sessions() const { return QDir(m_sessions.path()); }
    /// The folder of the session that was started last.
    QDir folder() const
    {
        return QDir(sessions().filePath(sessions().entryList({"test.*"}, QDir::Dirs, QDir::Time).first()));
    }

    static QByteArray contentOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static void append(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        if (!file.open(QIODevice::Append) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(path));
    }

private:
    const QTemporaryDir m_sessions;
    std::unique_ptr<ToolRunner> m_tool;
};
