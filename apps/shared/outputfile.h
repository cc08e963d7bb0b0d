// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QFile>
#include <QSaveFile>
#include <QString>

#include <memory>

namespace SondixApp {

/// A file that appears under its name only when it is complete.
///
/// Data are written to a partial file beside the target, which commit() renames. After a failure the partial file is
/// removed or, with keepPartial(), kept under its own name. Devices and pipes are written directly. Threads: one.
class OutputFile
{
public:
    explicit OutputFile(const QString &path);
    ~OutputFile();

    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;

    bool open();
    bool write(const QByteArray &data);
    /// Gives the written file the name of the target. If that fails, the data stay in partialName().
    bool commit();
    /// Keeps the written data in partialName() and does not change the target.
    bool keepPartial();

    QString path() const { return m_path; }
    /// The target's name with the suffix ".partial". open() appends a number if that file exists.
    QString partialName() const { return m_partialName; }
    /// The reason why the last operation failed.
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
