// SPDX-License-Identifier: MIT
#include "outputfile.h"

#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace SondixApp {

namespace {

std::filesystem::path nativePath(const QString &path)
{
#ifdef Q_OS_WIN
    return path.toStdWString();
#else
    return QFile::encodeName(path).toStdString();
#endif
}

} // namespace

OutputFile::OutputFile(const QString &path)
    : m_path(path)
{
    const QFileInfo info(path);
    if (info.isSymLink() && info.exists())
        m_path = info.canonicalFilePath();
    m_partialName = m_path + QLatin1String(".partial");
}

OutputFile::~OutputFile() = default;

bool OutputFile::open()
{
    errno = 0;
    const QFileInfo info(m_path);
    if (info.isDir()) {
        m_error = QStringLiteral("it is a directory");
        return false;
    }
    if (info.exists() && !info.isFile()) {
        m_direct = std::make_unique<QFile>(m_path);
        return m_direct->open(QIODevice::WriteOnly | QIODevice::Unbuffered) || fail(*m_direct);
    }
    if (info.exists() && !info.isWritable()) {
        m_error = QStringLiteral("it is write-protected");
        return false;
    }
    // Never overwrite a partial file that an earlier run has kept.
    for (int number = 2; QFileInfo::exists(m_partialName); ++number)
        m_partialName = QStringLiteral("%1.partial%2").arg(m_path).arg(number);
    m_save = std::make_unique<QSaveFile>(m_partialName);
    return m_save->open(QIODevice::WriteOnly) || fail(*m_save);
}

bool OutputFile::write(const QByteArray &data)
{
    errno = 0;
    if (m_direct)
        return m_direct->write(data) == data.size() || fail(*m_direct);
    return m_save->write(data) == data.size() || fail(*m_save);
}

bool OutputFile::commit()
{
    errno = 0;
    if (m_direct) {
        m_direct->close();
        return m_direct->error() == QFileDevice::NoError || fail(*m_direct);
    }
    if (!keepPartial())
        return false;
    std::error_code error;
    std::filesystem::rename(nativePath(partialName()), nativePath(m_path), error);
    if (!error)
        return true;
    // Windows does not replace a file that another program has open. Keep the data: it cannot be measured again.
    m_error = QStringLiteral("%1; all of it is in '%2'")
                  .arg(QString::fromLocal8Bit(error.message().c_str()), partialName());
    return false;
}

bool OutputFile::keepPartial()
{
    errno = 0;
    if (m_direct)
        return commit();
    return m_save->commit() || fail(*m_save);
}

bool OutputFile::fail(const QFileDevice &file)
{
    // After a partial write QFileDevice has no error text, but errno is set.
    m_error = errno != 0 ? QString::fromLocal8Bit(std::strerror(errno)) : file.errorString();
    return false;
}

} // namespace SondixApp
