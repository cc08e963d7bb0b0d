// SPDX-License-Identifier: MIT
#include "simulatedbench.h"

#include <QFile>

#ifdef Q_OS_WIN
#    include <windows.h>
#endif

namespace SondixApp {

void useBench(const QString &file)
{
#ifdef Q_OS_WIN
    // The 8-bit environment has only the characters of the system's code page.
    SetEnvironmentVariableW(L"SONDIX_BENCH", reinterpret_cast<LPCWSTR>(file.utf16()));
#else
    qputenv("SONDIX_BENCH", QFile::encodeName(file));
#endif
}

} // namespace SondixApp
