// SPDX-License-Identifier: MIT
#include "recordedprogram.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QThread>

namespace {

#ifdef Q_OS_WIN
const QString libraryName = QStringLiteral("Sondix.dll");
const QStringList recorderFolders = {QStringLiteral("recorder")};
#else
const QString libraryName = QStringLiteral("libSondix.so");
// In the build, and where it is installed.
const QStringList recorderFolders = {QStringLiteral("../lib/SondixQt/recorder"),
                                     QStringLiteral("../" SONDIXQT_LIBRARY_FOLDER "/SondixQt/recorder")};
#endif

/// The recorder; empty if it is not there.
QString findRecorder()
{
    const QDir own(QCoreApplication::applicationDirPath());
    for (const QString &folder : recorderFolders) {
        const QFileInfo file(own.filePath(folder + QLatin1Char('/') + libraryName));
        if (file.exists())
            return file.canonicalFilePath();
    }
    return {};
}

void putFirst(QProcessEnvironment &environment, const QString &name, const QStringList &folders)
{
    QStringList all = folders;
    if (!environment.value(name).isEmpty())
        all += environment.value(name);
    environment.insert(name, all.join(QDir::listSeparator()));
}

} // namespace

#ifdef Q_OS_WIN

/// The file of a program that has just ended can still be in use.
RecordedProgram::~RecordedProgram()
{
    constexpr int attempts = 50;
    m_process.close();
    for (int i = 0; i < attempts && !m_folder.remove(); ++i)
        QThread::msleep(100);
}

namespace {

/// A link would be a file in use as long as the program runs anywhere, and could not be removed.
bool copy(const QString &from, const QString &to)
{
    return QFile::copy(from, to) &&
           QFile::setPermissions(to, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

} // namespace

/// Windows looks for a DLL in the folder of the program first: the program is started from a folder that has only the
/// program and the recorder. It finds all other DLLs in its own folder, which comes first in PATH.
bool RecordedProgram::prepareFor(const QString &recorder, QString &problem)
{
    const QString found = QStandardPaths::findExecutable(m_command.first());
    const QFileInfo program(found.isEmpty() ? m_command.first() : found);
    if (!program.exists()) {
        problem = QStringLiteral("there is no such program");
        return false;
    }
    const QString started = m_folder.filePath(program.fileName());
    if (!m_folder.isValid() || !copy(program.absoluteFilePath(), started) ||
        !copy(recorder, m_folder.filePath(libraryName))) {
        problem = QStringLiteral("cannot copy it to %1").arg(m_folder.path());
        return false;
    }
    const QString folder = QDir::toNativeSeparators(program.absolutePath());
    putFirst(m_environment, QStringLiteral("PATH"), {folder});
    putFirst(m_environment, QStringLiteral("QT_PLUGIN_PATH"), {folder, folder + QStringLiteral("\\plugins")});
    setVariable(QStringLiteral("SONDIX_RECORD_PROGRAM"), QDir::toNativeSeparators(program.absoluteFilePath()));
    m_command.first() = started;
    return true;
}

#else

RecordedProgram::~RecordedProgram() = default;

bool RecordedProgram::prepareFor(const QString &recorder, QString &)
{
    putFirst(m_environment, QStringLiteral("LD_LIBRARY_PATH"), {QFileInfo(recorder).path()});
    return true;
}

#endif

bool RecordedProgram::prepare(QString &problem)
{
    const QString recorder = findRecorder();
    if (!recorder.isEmpty())
        return prepareFor(recorder, problem);
    problem = QStringLiteral("the recorder %1 is not installed").arg(libraryName);
    return false;
}
