// SPDX-License-Identifier: MIT
#include "outputfile.h"

#include <QFileInfo>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <utility>

#ifdef Q_OS_WIN
#    include <io.h>
#else
#    include <unistd.h>
#endif

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

QString systemErrorText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

// Returns 0 or the error number.
int sendToDisk(int descriptor)
{
#ifdef Q_OS_WIN
    const int result = ::_commit(descriptor);
#else
    const int result = ::fsync(descriptor);
#endif
    // File systems without this function report EINVAL.
    return result == 0 || errno == EINVAL ? 0 : errno;
}

} // namespace

OutputFile::OutputFile(const QString &path, SendToDisk sender)
    : m_path(path)
    , m_sendToDisk(sender ? std::move(sender) : SendToDisk(sendToDisk))
{
    const QFileInfo info(path);
    if (info.isSymLink() && info.exists())
        m_path = info.canonicalFilePath();
    m_currentName = m_path;
}

OutputFile::~OutputFile()
{
    close();
}

bool OutputFile::open()
{
    errno = 0;
    const QFileInfo info(m_path);
    if (info.isDir()) {
        m_error = QStringLiteral("it is a directory");
        return false;
    }
    m_isDirect = info.exists() && !info.isFile();
    if (m_isDirect) {
        m_file.setFileName(m_path);
        return m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || fail();
    }
    if (info.exists() && !info.isWritable()) {
        m_error = QStringLiteral("it is write-protected");
        return false;
    }
    m_sinceSync.start();
    for (int number = 1;; ++number) {
        m_currentName = m_path + QStringLiteral(".partial") + (number == 1 ? QString() : QString::number(number));
        m_file.setFileName(m_currentName);
        if (m_file.open(QIODevice::ReadWrite | QIODevice::NewOnly | QIODevice::Unbuffered))
            return true;
        if (!QFileInfo::exists(m_currentName))
            return fail();
    }
}

bool OutputFile::openToAppend(qint64 end)
{
    errno = 0;
    m_lock = std::make_unique<QLockFile>(m_path + QStringLiteral(".lock"));
    m_lock->setStaleLockTime(0);
    if (!m_lock->tryLock(0)) {
        m_error = m_lock->error() == QLockFile::LockFailedError
                      ? QStringLiteral("another program is appending to it")
                      : QStringLiteral("its lock file '%1.lock' cannot be created").arg(m_path);
        m_lock.reset();
        return false;
    }
    m_sinceSync.start();
    m_file.setFileName(m_path);
    if (!m_file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered))
        return fail();
    m_size = end;
    return (m_file.size() == end || m_file.resize(end)) && m_file.seek(end) ? true : fail();
}

bool OutputFile::write(const QByteArray &data)
{
    errno = 0;
    if (m_file.write(data) == data.size()) {
        m_size += data.size();
        m_isChanged = true;
        flush();
        return true;
    }
    fail();
    if (!m_isDirect && m_file.isOpen() && m_file.resize(m_size))
        m_file.seek(m_size);
    return false;
}

bool OutputFile::overwrite(qint64 position, const QByteArray &data)
{
    errno = 0;
    if (m_isDirect)
        return true;
    m_isChanged = true;
    const bool written = m_file.seek(position) && m_file.write(data) == data.size();
    return (m_file.seek(m_size) && written) || fail();
}

// The disk may take seconds, and new values must not wait for it.
void OutputFile::flush()
{
    constexpr int interval = 1000;
    const bool isBusy = m_sync.valid() && m_sync.wait_for(std::chrono::seconds(0)) != std::future_status::ready;
    if (m_isDirect || isBusy || !m_file.isOpen())
        return;
    collectSync();
    if (m_diskError != 0 || !m_isChanged || m_sinceSync.elapsed() < interval)
        return;
    m_sinceSync.start();
    m_syncing = m_size;
    m_isChanged = false;
    m_sync = std::async(std::launch::async, m_sendToDisk, m_file.handle());
}

void OutputFile::collectSync()
{
    if (!m_sync.valid())
        return;
    const int error = m_sync.get();
    if (error == 0)
        m_synced = m_syncing;
    else if (m_diskError == 0)
        m_diskError = error;
}

QString OutputFile::diskProblem() const
{
    return m_diskError != 0 ? systemErrorText(m_diskError) : QString();
}

bool OutputFile::close()
{
    if (!m_file.isOpen())
        return true;
    collectSync();
    if (!m_isDirect && m_diskError == 0)
        m_diskError = m_sendToDisk(m_file.handle());
    errno = 0;
    m_file.close();
    m_lock.reset();
    if (m_file.error() != QFileDevice::NoError)
        return fail();
    m_error = diskProblem();
    return m_diskError == 0;
}

bool OutputFile::commit()
{
    if (!close())
        return false;
    if (m_currentName == m_path)
        return true;
    std::error_code error;
    std::filesystem::rename(nativePath(m_currentName), nativePath(m_path), error);
    if (!error) {
        m_currentName = m_path;
        return true;
    }
    // Windows does not replace a file that another program has open. Keep the data: it cannot be measured again.
    m_error = QStringLiteral("%1; all of it is in '%2'")
                  .arg(QString::fromLocal8Bit(error.message().c_str()), m_currentName);
    return false;
}

void OutputFile::discard()
{
    close();
    if (m_currentName != m_path)
        QFile::remove(m_currentName);
}

bool OutputFile::fail()
{
    // After a partial write QFile has no error text, but errno is set.
    m_error = errno != 0 ? systemErrorText(errno) : m_file.errorString();
    return false;
}

} // namespace SondixApp
