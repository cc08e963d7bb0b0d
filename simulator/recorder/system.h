// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace sondixrec {

// Functions that differ between operating systems.

std::uint32_t processNumber();
std::string platformName();
std::string programPath();       ///< of this process, in UTF-8
std::filesystem::path ownPath(); ///< of the library that contains this function
std::string utf8Of(const std::filesystem::path &path);
/// The date and time as ISO 8601 in UTC.
std::string presentDate();

/// Folders in which the loader looks for the sensor-access library, in its order.
std::vector<std::filesystem::path> libraryFolders();
/// Loads a library for the rest of the process. Returns null, with the reason in \a problem, if that fails.
void *loadLibrary(const std::filesystem::path &file, std::string &problem);
void *findSymbol(void *library, const char *name);

/// A file to which several processes append.
class AppendedFile
{
public:
    /// Returns false, with the reason in \a problem, if the file cannot be opened.
    bool open(const std::filesystem::path &file, std::string &problem);
    bool isOpen() const { return m_handle != -1; }
    /// Appends \a data in one write. If it fails, the file is truncated to its former size where that is possible.
    bool append(std::string_view data, std::string &problem);

private:
    std::intptr_t m_handle = -1;
};

} // namespace sondixrec
