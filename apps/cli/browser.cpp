// SPDX-License-Identifier: MIT
#include "browser.h"

#ifdef Q_OS_WIN
#    include <windows.h>

#    include <shellapi.h>
#else
#    include <QProcess>
#endif

#ifdef Q_OS_WIN

bool openBrowser(const QUrl &url)
{
    constexpr quintptr maxErrorCode = 32;
    const std::wstring address = url.toString(QUrl::FullyEncoded).toStdWString();
    return reinterpret_cast<quintptr>(
               ShellExecuteW(nullptr, L"open", address.c_str(), nullptr, nullptr, SW_SHOWNORMAL)) > maxErrorCode;
}

#else

bool openBrowser(const QUrl &url)
{
#    ifdef Q_OS_MACOS
    const QString program = QStringLiteral("open");
#    else
    const QString program = QStringLiteral("xdg-open");
#    endif
    // The browser's own messages must not appear in the output of the tool.
    QProcess process;
    process.setProgram(program);
    process.setArguments({url.toString(QUrl::FullyEncoded)});
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    return process.startDetached();
}

#endif
