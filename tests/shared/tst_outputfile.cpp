// SPDX-License-Identifier: MIT
#include "shared/outputfile.h"

#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <cerrno>
#include <cstring>

#ifdef Q_OS_WIN
#    include <windows.h>
#else
#    include <csignal>
#    include <sys/resource.h>
#endif

using namespace SondixApp;

class TestOutputFile : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        m_path = m_dir->filePath("values of today.csv");
    }
    void growsInTheOpenUntilItIsCommitted();
    void replacesAnOlderFileAtOnce();
    void keepsWhatWasWrittenWhenItIsDropped();
    void removesOnlyThePartialFileWhenItIsDiscarded();
    void keepsEverythingWhenTheNameIsRefused();
    void keepsAPartUnderAnotherName();
    void reachesTheDiskWithinSeconds();
    void reachesTheDiskWhileNothingIsWritten();
    void writesAlthoughTheDiskHasFailed();
    void overwritesWhatIsThere();
    void isCutBackAfterAFailedWrite();
    void appendsToTheFileItself();
    void isAppendedToByOneProcessOnly();
    void leavesEarlierPartsAlone();
    void goesThroughALink();
    void refusesADirectoryAndAMissingOne();
    void reportsAFullDevice();

private:
    QStringList files() const { return QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }
    static QByteArray contentOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArrayLiteral("unreadable");
    }
    void writeOlderFile() const
    {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write("older\n"), 6);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_path;
};

/// Creates a symbolic link. On Windows QFile::link() would create a shortcut instead.
static bool makeLink(const QString &target, const QString &link)
{
#ifdef Q_OS_WIN
    const std::wstring name = QDir::toNativeSeparators(link).toStdWString();
    return CreateSymbolicLinkW(name.c_str(), QDir::toNativeSeparators(target).toStdWString().c_str(),
                               SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE) &&
           GetFileAttributesW(name.c_str()) != INVALID_FILE_ATTRIBUTES;
#else
    return QFile::link(target, link);
#endif
}

void TestOutputFile::growsInTheOpenUntilItIsCommitted()
{
    OutputFile file(m_path);
    QVERIFY2(file.open(), qPrintable(file.errorString()));
    QVERIFY(file.write("1\n"));
    QCOMPARE(contentOf(m_path + ".partial"), QByteArray("1\n"));
    QVERIFY(file.write("2\n"));
    QCOMPARE(contentOf(m_path + ".partial"), QByteArray("1\n2\n"));
    QCOMPARE(file.size(), 4);
    QVERIFY(!QFile::exists(m_path));
    QVERIFY2(file.commit(), qPrintable(file.errorString()));
    QCOMPARE(contentOf(m_path), QByteArray("1\n2\n"));
    QCOMPARE(files(), QStringList{"values of today.csv"});
}

void TestOutputFile::replacesAnOlderFileAtOnce()
{
    writeOlderFile();
    OutputFile file(m_path);
    QVERIFY(file.open());
    QVERIFY(file.write("newer\n"));
    QCOMPARE(contentOf(m_path), QByteArray("older\n"));
    QVERIFY(file.commit());
    QCOMPARE(contentOf(m_path), QByteArray("newer\n"));
}

void TestOutputFile::keepsWhatWasWrittenWhenItIsDropped()
{
    {
        OutputFile file(m_path);
        QVERIFY(file.open());
        QVERIFY(file.write("1\n"));
    }
    QCOMPARE(contentOf(m_path + ".partial"), QByteArray("1\n"));
}

void TestOutputFile::removesOnlyThePartialFileWhenItIsDiscarded()
{
    writeOlderFile();
    OutputFile file(m_path);
    QVERIFY(file.open());
    QVERIFY(file.write("1\n"));
    file.discard();
    QCOMPARE(files(), QStringList{"values of today.csv"});
    OutputFile appended(m_path);
    QVERIFY(appended.openToAppend(6));
    appended.discard();
    QCOMPARE(contentOf(m_path), QByteArray("older\n"));
}

void TestOutputFile::keepsEverythingWhenTheNameIsRefused()
{
    OutputFile file(m_path);
    QVERIFY(file.open());
    QVERIFY(file.write("1\n"));
    QVERIFY(QDir().mkdir(m_path));
    QVERIFY(!file.commit());
    QVERIFY2(file.errorString().endsWith(QStringLiteral("; all of it is in '%1'").arg(file.currentName())),
             qPrintable(file.errorString()));
    QCOMPARE(contentOf(file.currentName()), QByteArray("1\n"));
}

void TestOutputFile::keepsAPartUnderAnotherName()
{
    writeOlderFile();
    OutputFile file(m_path);
    QVERIFY(file.open());
    QVERIFY(file.write("1\n"));
    QVERIFY(file.close());
    QCOMPARE(contentOf(m_path), QByteArray("older\n"));
    QCOMPARE(contentOf(file.currentName()), QByteArray("1\n"));
}

void TestOutputFile::reachesTheDiskWithinSeconds()
{
    OutputFile file(m_path);
    QVERIFY(file.open());
    QVERIFY(file.write("1\n"));
    QTRY_VERIFY(file.write("2\n") && file.sizeOnDisk() > 0);
    QVERIFY(file.sizeOnDisk() <= file.size());
}

void TestOutputFile::reachesTheDiskWhileNothingIsWritten()
{
    std::atomic<int> sent{0};
    OutputFile file(m_path, [&sent](int) {
        ++sent;
        return 0;
    });
    const auto isOnDisk = [&file] {
        file.flush();
        return file.sizeOnDisk() == file.size();
    };
    QVERIFY(file.open());
    QVERIFY(file.write("1\n"));
    QTRY_VERIFY(isOnDisk());
    QCOMPARE(sent.load(), 1);
    // What has not changed is not sent again.
    QElapsedTimer clock;
    clock.start();
    QTRY_VERIFY(isOnDisk() && clock.elapsed() > 1200);
    QCOMPARE(sent.load(), 1);
    QVERIFY(file.overwrite(0, "2"));
    const auto isSentAgain = [&] {
        file.flush();
        return sent == 2;
    };
    QTRY_VERIFY(isSentAgain());
}

void TestOutputFile::writesAlthoughTheDiskHasFailed()
{
    std::atomic<int> result{EIO};
    OutputFile file(m_path, [&result](int) { return result.load(); });
    QVERIFY(file.open());
    int lines = 0;
    const auto hasFailed = [&] {
        ++lines;
        return !file.write("1\n") || file.hasDiskFailed();
    };
    QTRY_VERIFY(hasFailed());
    QVERIFY(file.hasDiskFailed());
    QCOMPARE(file.diskProblem(), QString::fromLocal8Bit(std::strerror(EIO)));
    // The next attempt of the operating system would succeed, because it has discarded the data.
    result = 0;
    ++lines;
    QVERIFY(file.write("1\n"));
    QCOMPARE(file.sizeOnDisk(), 0);
    QVERIFY(!file.commit());
    QCOMPARE(file.errorString(), QString::fromLocal8Bit(std::strerror(EIO)));
    QCOMPARE(contentOf(file.currentName()), QByteArray("1\n").repeated(lines));
    QCOMPARE(file.currentName(), m_path + ".partial");
}

void TestOutputFile::overwritesWhatIsThere()
{
    OutputFile file(m_path);
    QVERIFY(file.open());
    QVERIFY(file.write("head\n"));
    QVERIFY(file.overwrite(1, "EA"));
    QVERIFY(file.write("1\n"));
    QCOMPARE(contentOf(file.currentName()), QByteArray("hEAd\n1\n"));
}

void TestOutputFile::isCutBackAfterAFailedWrite()
{
#ifdef Q_OS_UNIX
    // A limit on the file size replaces a full disk: both let the beginning of a write succeed.
    rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit limited{10, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    OutputFile file(m_path);
    QVERIFY(file.open());
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &limited), 0);
    const bool first = file.write("12345\n");
    const bool second = file.write("67890\n");
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    QVERIFY(first);
    QVERIFY(!second);
    QCOMPARE(file.errorString(), QStringLiteral("File too large"));
    QCOMPARE(contentOf(file.currentName()), QByteArray("12345\n"));
    QVERIFY(file.write("67890\n"));
    QCOMPARE(contentOf(file.currentName()), QByteArray("12345\n67890\n"));
#else
    QSKIP("there is no limit on the size of files here");
#endif
}

void TestOutputFile::appendsToTheFileItself()
{
    writeOlderFile();
    OutputFile file(m_path);
    QVERIFY2(file.openToAppend(6), qPrintable(file.errorString()));
    QVERIFY(file.write("newer\n"));
    QCOMPARE(contentOf(m_path), QByteArray("older\nnewer\n"));
    QVERIFY(file.close());
    OutputFile again(m_path);
    QVERIFY(again.openToAppend(8)); // a part of the second line is cut off
    QVERIFY(again.write("\n"));
    QVERIFY(again.commit());
    QCOMPARE(contentOf(m_path), QByteArray("older\nne\n"));
    QCOMPARE(files(), QStringList{"values of today.csv"});
}

void TestOutputFile::isAppendedToByOneProcessOnly()
{
    writeOlderFile();
    OutputFile first(m_path);
    QVERIFY(first.openToAppend(6));
    OutputFile second(m_path);
    QVERIFY(!second.openToAppend(6));
    QCOMPARE(second.errorString(), QStringLiteral("another program is appending to it"));
    QVERIFY(first.commit());
    QVERIFY2(second.openToAppend(6), qPrintable(second.errorString()));
}

void TestOutputFile::leavesEarlierPartsAlone()
{
    const QStringList names{m_path + ".partial", m_path + ".partial2", m_path + ".partial3"};
    for (int i = 0; i < names.size(); ++i) {
        OutputFile file(m_path);
        QVERIFY(file.open());
        QVERIFY(file.write(QByteArray::number(i)));
        QVERIFY(file.close());
        QCOMPARE(file.currentName(), names[i]);
    }
    OutputFile whole(m_path);
    QVERIFY(whole.open());
    QVERIFY(whole.write("whole"));
    QVERIFY(whole.commit());
    QCOMPARE(contentOf(m_path), QByteArray("whole"));
    for (int i = 0; i < names.size(); ++i)
        QCOMPARE(contentOf(names[i]), QByteArray::number(i));
    QCOMPARE(files().size(), 4);
}

void TestOutputFile::goesThroughALink()
{
    writeOlderFile();
    const QString link = m_dir->filePath("link.csv");
    if (!makeLink(m_path, link))
        QSKIP("there are no symbolic links here");
    OutputFile file(link);
    QVERIFY(file.open());
    QVERIFY(file.write("newer\n"));
    QVERIFY(file.commit());
    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(contentOf(m_path), QByteArray("newer\n"));
}

void TestOutputFile::refusesADirectoryAndAMissingOne()
{
    OutputFile directory(m_dir->path());
    QVERIFY(!directory.open());
    QCOMPARE(directory.errorString(), QStringLiteral("it is a directory"));
    OutputFile missing(m_dir->filePath("missing/values.csv"));
    QVERIFY(!missing.open());
    QVERIFY(!missing.errorString().isEmpty());
}

void TestOutputFile::reportsAFullDevice()
{
    if (!QFile::exists("/dev/full"))
        QSKIP("there is no /dev/full here");
    OutputFile file("/dev/full");
    QVERIFY(file.open());
    QVERIFY(!file.write("1\n"));
    QVERIFY(!file.errorString().isEmpty());
}

QTEST_GUILESS_MAIN(TestOutputFile)
#include "tst_outputfile.moc"
