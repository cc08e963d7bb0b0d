// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QFile>
#include <QSaveFile>
#include <QString>

#include <memory>

namespace SondixApp {

/// A file that bears its name only when it is whole.
///
/// Everything is written beside the target and takes its name in commit(). What is left over when
/// something failed is either removed or, where the data are worth keeping, bears a name that says
/// that it is a part. Devices and pipes are written directly. Owned by one thread.
class OutputFile
{
public:
    explicit OutputFile(const QString &path);
    ~OutputFile();

    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;

    bool open();
    bool write(const QByteArray &data);
    /// Brings all that was written to the target; where that refuses its name, it stays under partialName().
    bool commit();
    /// Keeps all that was written under partialName() and leaves the target as it was.
    bool keepPartial();

    QString path() const { return m_path; }
    /// The target's name with ".partial" behind it, from open() on with a number where that is taken.
    QString partialName() const { return m_partialName; }
    /// Why the last operation failed.
    QString errorString() const { return m_error; }

private:
    bool fail(const QFileDevice &file);

    QString m_path;
    QString m_partialName;
    QString m_error;
    std::unique_ptr<QSaveFile> m_save;
    std::unique_ptr<QFile> m_direct;
};

} // namespace SondixApp
