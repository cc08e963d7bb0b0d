// SPDX-License-Identifier: MIT
#include "accesslibrary.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_WIN
#    include <windows.h>
#endif

namespace Explorer {

QString accessLibraryFile()
{
#ifdef Q_OS_WIN
    wchar_t path[4096] = {};
    const HMODULE module = GetModuleHandleW(L"Sondix");
    const DWORD length = module ? GetModuleFileNameW(module, path, 4096) : 0;
    return QDir::toNativeSeparators(QString::fromWCharArray(path, static_cast<int>(length)));
#else
    QFile maps(QStringLiteral("/proc/self/maps"));
    if (!maps.open(QIODevice::ReadOnly))
        return {};
    const QList<QByteArray> lines = maps.readAll().split('\n');
    for (const QByteArray &line : lines) {
        const int slash = line.indexOf('/');
        QString path = slash < 0 ? QString() : QFile::decodeName(line.mid(slash));
        if (QFileInfo(path).fileName().startsWith(QLatin1String("libSondix.so")))
            return path;
    }
    return {};
#endif
}

} // namespace Explorer
