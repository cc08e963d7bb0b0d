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
    // The 8-bit environment lacks most of the world's letters.
    SetEnvironmentVariableW(L"SONDIX_BENCH", reinterpret_cast<LPCWSTR>(file.utf16()));
#else
    qputenv("SONDIX_BENCH", QFile::encodeName(file));
#endif
}

} // namespace SondixApp
