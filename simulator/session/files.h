// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace sondixsim::session {

// Files that several processes use at the same time. Every function throws std::system_error if the file cannot be used.

/// A file of fixed size in memory. All processes that map it see the same bytes.
class MappedFile
{
public:
    enum class Missing { Create, Fail };
    /// With Missing::Create a file that is missing or shorter is created, filled with zeros.
    MappedFile(const std::filesystem::path &path, std::size_t size, Missing missing);
    ~MappedFile();
    MappedFile(const MappedFile &) = delete;
    MappedFile &operator=(const MappedFile &) = delete;

    void *data() const { return m_data; }

private:
    void *m_data = nullptr;
    [[maybe_unused]] std::size_t m_size = 0; // Windows does not ask for it
};

/// A file whose bytes can be locked one by one. The operating system unlocks what a process has locked when it ends,
/// however it ends. The locks say nothing between threads of one process.
class LockFile
{
public:
    explicit LockFile(const std::filesystem::path &path); ///< creates it if it is missing
    ~LockFile();
    LockFile(const LockFile &) = delete;
    LockFile &operator=(const LockFile &) = delete;

    void lock(std::uint64_t byte); ///< waits until no other process has locked it
    bool tryLock(std::uint64_t byte);
    void unlock(std::uint64_t byte);
    bool isLockedByOther(std::uint64_t byte); ///< not for a byte that this process has locked

private:
    std::intptr_t m_file;
};

/// Opens a file for one operation: other processes may replace or remove it at any time.
/// \{
std::string readFrom(const std::filesystem::path &path, std::uint64_t offset,
                     std::uint64_t size); ///< less at the end
void writeAt(const std::filesystem::path &path, std::uint64_t offset, const std::string &bytes);
/// Appends in one piece, also while others append. Returns the size of the file afterwards.
std::uint64_t append(const std::filesystem::path &path, const std::string &bytes);
/// \}

std::uint64_t processNumber();
std::string programName(); ///< of this process, without folder, in UTF-8

} // namespace sondixsim::session
