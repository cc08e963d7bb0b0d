// SPDX-License-Identifier: MIT
#include "files.h"

#include <cerrno>
#include <system_error>
#include <utility>

#if defined(_WIN32)
#    include <windows.h>
#else
#    include <fcntl.h>
#    include <sys/mman.h>
#    include <sys/stat.h>
#    include <unistd.h>
#endif

namespace sondixsim::session {

namespace fs = std::filesystem;

#if defined(_WIN32)

namespace {

[[noreturn]] void fail(const fs::path &path)
{
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), path.u8string());
}

/// An open file, closed at the end of its life.
class File
{
public:
    File(const fs::path &path, DWORD access, DWORD creation)
        : m_path(path)
        , m_handle(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                               nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr))
    {
        if (m_handle == INVALID_HANDLE_VALUE)
            fail(path);
    }
    ~File()
    {
        if (m_handle != INVALID_HANDLE_VALUE)
            CloseHandle(m_handle);
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    HANDLE get() const { return m_handle; }
    HANDLE release() { return std::exchange(m_handle, INVALID_HANDLE_VALUE); }
    void seek(std::uint64_t offset) const
    {
        LARGE_INTEGER position{};
        position.QuadPart = static_cast<LONGLONG>(offset);
        if (!SetFilePointerEx(m_handle, position, nullptr, FILE_BEGIN))
            fail(m_path);
    }
    void write(const std::string &bytes) const
    {
        DWORD written = 0;
        if (!WriteFile(m_handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
            written != bytes.size())
            fail(m_path);
    }

private:
    fs::path m_path;
    HANDLE m_handle;
};

// Locked bytes cannot be read by others, so they lie behind the end of every file.
OVERLAPPED position(std::uint64_t byte)
{
    OVERLAPPED overlapped{};
    overlapped.Offset = static_cast<DWORD>(byte);
    overlapped.OffsetHigh = static_cast<DWORD>(byte >> 32) + 1;
    return overlapped;
}

bool lockByte(std::intptr_t file, std::uint64_t byte, DWORD flags)
{
    OVERLAPPED overlapped = position(byte);
    return LockFileEx(reinterpret_cast<HANDLE>(file), flags, 0, 1, 0, &overlapped) != 0;
}

} // namespace

MappedFile::MappedFile(const fs::path &path, std::size_t size, Missing missing)
    : m_size(size)
{
    const bool creates = missing == Missing::Create;
    const File file(path, GENERIC_READ | GENERIC_WRITE, creates ? OPEN_ALWAYS : OPEN_EXISTING);
    LARGE_INTEGER present{};
    if (!GetFileSizeEx(file.get(), &present))
        fail(path);
    if (!creates && static_cast<std::uint64_t>(present.QuadPart) < size)
        throw std::system_error(std::make_error_code(std::errc::io_error), path.u8string());
    // The mapping extends the file.
    const HANDLE mapping =
        CreateFileMappingW(file.get(), nullptr, PAGE_READWRITE, 0, static_cast<DWORD>(size), nullptr);
    if (mapping == nullptr)
        fail(path);
    m_data = MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, size);
    const DWORD error = GetLastError();
    CloseHandle(mapping);
    SetLastError(error);
    if (m_data == nullptr)
        fail(path);
}

MappedFile::~MappedFile()
{
    UnmapViewOfFile(m_data);
}

LockFile::LockFile(const fs::path &path)
{
    File file(path, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
    m_file = reinterpret_cast<std::intptr_t>(file.release());
}

LockFile::~LockFile()
{
    CloseHandle(reinterpret_cast<HANDLE>(m_file));
}

void LockFile::lock(std::uint64_t byte)
{
    if (!lockByte(m_file, byte, LOCKFILE_EXCLUSIVE_LOCK))
        fail("lock");
}

bool LockFile::tryLock(std::uint64_t byte)
{
    // Another process may just be looking whether the byte is locked.
    constexpr int attempts = 5;
    for (int i = 0; i < attempts; ++i) {
        if (lockByte(m_file, byte, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY))
            return true;
        Sleep(2);
    }
    return false;
}

void LockFile::unlock(std::uint64_t byte)
{
    OVERLAPPED overlapped = position(byte);
    UnlockFileEx(reinterpret_cast<HANDLE>(m_file), 0, 1, 0, &overlapped);
}

bool LockFile::isLockedByOther(std::uint64_t byte)
{
    if (!lockByte(m_file, byte, LOCKFILE_FAIL_IMMEDIATELY))
        return true;
    unlock(byte);
    return false;
}

std::string readFrom(const fs::path &path, std::uint64_t offset, std::uint64_t size)
{
    const File file(path, GENERIC_READ, OPEN_EXISTING);
    file.seek(offset);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    DWORD read = 0;
    if (!ReadFile(file.get(), bytes.data(), static_cast<DWORD>(size), &read, nullptr))
        fail(path);
    bytes.resize(read);
    return bytes;
}

void writeAt(const fs::path &path, std::uint64_t offset, const std::string &bytes)
{
    const File file(path, GENERIC_WRITE, OPEN_ALWAYS);
    file.seek(offset);
    file.write(bytes);
}

std::uint64_t append(const fs::path &path, const std::string &bytes)
{
    const File file(path, FILE_APPEND_DATA | FILE_READ_ATTRIBUTES, OPEN_ALWAYS);
    file.write(bytes);
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(file.get(), &size))
        fail(path);
    return static_cast<std::uint64_t>(size.QuadPart);
}

std::uint64_t processNumber()
{
    return GetCurrentProcessId();
}

std::string programName()
{
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return fs::path(path).filename().u8string();
}

#else

namespace {

[[noreturn]] void fail(const fs::path &path)
{
    throw std::system_error(errno, std::generic_category(), path.string());
}

/// An open file, closed at the end of its life.
class File
{
public:
    File(const fs::path &path, int flags)
        : m_path(path)
        , m_file(open(path.c_str(), flags | O_CLOEXEC, 0600))
    {
        if (m_file < 0)
            fail(path);
    }
    ~File()
    {
        if (m_file >= 0)
            close(m_file);
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    int get() const { return m_file; }
    int release() { return std::exchange(m_file, -1); }
    void write(const std::string &bytes) const
    {
        if (::write(m_file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
            fail(m_path);
    }
    std::uint64_t size() const
    {
        struct stat status
        {
        };
        if (fstat(m_file, &status) != 0)
            fail(m_path);
        return static_cast<std::uint64_t>(status.st_size);
    }

private:
    fs::path m_path;
    int m_file;
};

// Locks that belong to the open file, not to the process: they stay when another copy of the file is closed.
int control(std::intptr_t file, int command, std::uint64_t byte, short type, struct flock *answer = nullptr)
{
    struct flock range
    {
    };
    range.l_type = type;
    range.l_whence = SEEK_SET;
    range.l_start = static_cast<off_t>(byte);
    range.l_len = 1;
    int result = 0;
    do {
        result = fcntl(static_cast<int>(file), command, &range);
    } while (result != 0 && errno == EINTR);
    if (answer != nullptr)
        *answer = range;
    return result;
}

} // namespace

MappedFile::MappedFile(const fs::path &path, std::size_t size, Missing missing)
    : m_size(size)
{
    const bool creates = missing == Missing::Create;
    const File file(path, creates ? O_RDWR | O_CREAT : O_RDWR);
    if (!creates && file.size() < size)
        throw std::system_error(std::make_error_code(std::errc::io_error), path.string());
    // Not ftruncate(): writing to a hole in memory would end the program when the disk is full.
    if (file.size() < size && (errno = posix_fallocate(file.get(), 0, static_cast<off_t>(size))) != 0)
        fail(path);
    m_data = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    if (m_data == MAP_FAILED)
        fail(path);
}

MappedFile::~MappedFile()
{
    munmap(m_data, m_size);
}

LockFile::LockFile(const fs::path &path)
{
    File file(path, O_RDWR | O_CREAT);
    m_file = file.release();
}

LockFile::~LockFile()
{
    close(static_cast<int>(m_file));
}

void LockFile::lock(std::uint64_t byte)
{
    if (control(m_file, F_OFD_SETLKW, byte, F_WRLCK) != 0)
        fail("lock");
}

bool LockFile::tryLock(std::uint64_t byte)
{
    return control(m_file, F_OFD_SETLK, byte, F_WRLCK) == 0;
}

void LockFile::unlock(std::uint64_t byte)
{
    control(m_file, F_OFD_SETLK, byte, F_UNLCK);
}

bool LockFile::isLockedByOther(std::uint64_t byte)
{
    struct flock found
    {
    };
    return control(m_file, F_OFD_GETLK, byte, F_WRLCK, &found) == 0 && found.l_type != F_UNLCK;
}

std::string readFrom(const fs::path &path, std::uint64_t offset, std::uint64_t size)
{
    const File file(path, O_RDONLY);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    const ssize_t read = pread(file.get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (read < 0)
        fail(path);
    bytes.resize(static_cast<std::size_t>(read));
    return bytes;
}

void writeAt(const fs::path &path, std::uint64_t offset, const std::string &bytes)
{
    const File file(path, O_WRONLY | O_CREAT);
    if (pwrite(file.get(), bytes.data(), bytes.size(), static_cast<off_t>(offset)) !=
        static_cast<ssize_t>(bytes.size()))
        fail(path);
}

std::uint64_t append(const fs::path &path, const std::string &bytes)
{
    const File file(path, O_WRONLY | O_CREAT | O_APPEND);
    file.write(bytes);
    return file.size();
}

std::uint64_t processNumber()
{
    return static_cast<std::uint64_t>(getpid());
}

std::string programName()
{
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).filename().string();
}

#endif

} // namespace sondixsim::session
