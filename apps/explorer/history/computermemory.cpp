// SPDX-License-Identifier: MIT
#include "computermemory.h"

#ifdef Q_OS_WIN
#    include <windows.h>
#else
#    include <unistd.h>
#endif

namespace Explorer {

qint64 computerMemory()
{
#ifdef Q_OS_WIN
    MEMORYSTATUSEX status = {};
    status.dwLength = sizeof(status);
    return GlobalMemoryStatusEx(&status) ? static_cast<qint64>(status.ullTotalPhys) : 0;
#else
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    return pages > 0 && pageSize > 0 ? static_cast<qint64>(pages) * pageSize : 0;
#endif
}

} // namespace Explorer
