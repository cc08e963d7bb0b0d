// SPDX-License-Identifier: MIT
#include "system.h"

#include "model/platform.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <system_error>

#if defined(_WIN32)
#    include <windows.h>
#else
#    include <cerrno>
#    include <cstring>
#    include <dlfcn.h>
#    include <fcntl.h>
#    include <link.h>
#    include <sys/utsname.h>
#    include <unistd.h>
#endif

namespace sondixrec {

namespace fs = std::filesystem;

namespace {

/// Splits a list of folders such as PATH. Empty parts are left out.
std::vector<fs::path> splitFolders(const std::string &list, char separator)
{
    std::vector<fs::path> folders;
    for (std::size_t begin = 0; begin <= list.size();) {
        const std::size_t end = std::min(list.find(separator, begin), list.size());
        if (end > begin)
            folders.push_back(sondixsim::model::pathFromUtf8(list.substr(begin, end - begin)));
        begin = end + 1;
    }
    return folders;
}

} // namespace

std::string presentDate()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
    const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
    std::tm utc{};
#if defined(_WIN32)
    gmtime_s(&utc, &seconds);
#else
    gmtime_r(&seconds, &utc);
#endif
    char date[32];
    const std::size_t length = std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &utc);
    std::snprintf(date + length, sizeof date - length, ".%03dZ", static_cast<int>(milliseconds % 1000));
    return date;
}

#if defined(_WIN32)

namespace {

fs::path pathOfModule(HMODULE module)
{
    std::wstring name(MAX_PATH, L'\0');
    while (true) {
        const DWORD length = GetModuleFileNameW(module, name.data(), static_cast<DWORD>(name.size()));
        if (length < name.size()) {
            name.resize(length);
            return name;
        }
        name.resize(2 * name.size());
    }
}

std::string problemText()
{
    return std::system_category().message(static_cast<int>(GetLastError()));
}

} // namespace

std::uint32_t processNumber()
{
    return GetCurrentProcessId();
}

std::string platformName()
{
    return sizeof(void *) == 8 ? "Windows x86_64" : "Windows x86";
}

std::string utf8Of(const fs::path &path)
{
    return path.u8string();
}

std::string programPath()
{
    return utf8Of(pathOfModule(nullptr));
}

fs::path ownPath()
{
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&ownPath), &module);
    return pathOfModule(module);
}

std::vector<fs::path> libraryFolders()
{
    std::vector<fs::path> folders{pathOfModule(nullptr).parent_path()};
    std::wstring system(MAX_PATH, L'\0');
    system.resize(GetSystemDirectoryW(system.data(), MAX_PATH));
    folders.emplace_back(system);
    const auto path = sondixsim::model::environmentVariable("PATH");
    for (const fs::path &folder : splitFolders(path.value_or(""), ';'))
        folders.push_back(folder);
    return folders;
}

void *loadLibrary(const fs::path &file, std::string &problem)
{
    // Its own DLLs are beside it.
    HMODULE library = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (library == nullptr)
        problem = problemText();
    return reinterpret_cast<void *>(library);
}

void *findSymbol(void *library, const char *name)
{
    return reinterpret_cast<void *>(GetProcAddress(static_cast<HMODULE>(library), name));
}

bool AppendedFile::open(const fs::path &file, std::string &problem)
{
    // With this access alone every write goes to the end of the file.
    HANDLE handle =
        CreateFileW(file.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        problem = problemText();
        return false;
    }
    m_handle = reinterpret_cast<std::intptr_t>(handle);
    return true;
}

bool AppendedFile::append(std::string_view data, std::string &problem)
{
    DWORD written = 0;
    if (WriteFile(reinterpret_cast<HANDLE>(m_handle), data.data(), static_cast<DWORD>(data.size()), &written,
                  nullptr) &&
        written == data.size())
        return true;
    problem = problemText();
    return false;
}

#else

std::uint32_t processNumber()
{
    return static_cast<std::uint32_t>(getpid());
}

std::string platformName()
{
    utsname name{};
    return uname(&name) == 0 ? std::string(name.sysname) + ' ' + name.machine : "Unix";
}

std::string utf8Of(const fs::path &path)
{
    return path.string();
}

std::string programPath()
{
    std::error_code error;
    return utf8Of(fs::read_symlink("/proc/self/exe", error));
}

fs::path ownPath()
{
    Dl_info info{};
    return dladdr(reinterpret_cast<void *>(&ownPath), &info) != 0 ? fs::path(info.dli_fname) : fs::path();
}

namespace {

constexpr const char *libraryName = "libSondix.so";

/// Adds the folders of the run path of each loaded object that needs the sensor-access library.
int addRunPath(dl_phdr_info *object, std::size_t, void *data)
{
    auto &folders = *static_cast<std::vector<fs::path> *>(data);
    const ElfW(Dyn) *entry = nullptr;
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        if (object->dlpi_phdr[i].p_type == PT_DYNAMIC)
            // NOLINTNEXTLINE(performance-no-int-to-ptr): the loader returns addresses as numbers
            entry = reinterpret_cast<const ElfW(Dyn) *>(object->dlpi_addr + object->dlpi_phdr[i].p_vaddr);
    }
    if (entry == nullptr)
        return 0;
    const char *strings = nullptr;
    std::vector<std::size_t> needed;
    std::vector<std::size_t> paths;
    for (; entry->d_tag != DT_NULL; ++entry) {
        if (entry->d_tag == DT_STRTAB) // the loader has made an address of it, except in the kernel's object
            strings = reinterpret_cast<const char *>(entry->d_un.d_ptr); // NOLINT(performance-no-int-to-ptr)
        else if (entry->d_tag == DT_NEEDED)
            needed.push_back(entry->d_un.d_val);
        else if (entry->d_tag == DT_RUNPATH || entry->d_tag == DT_RPATH)
            paths.push_back(entry->d_un.d_val);
    }
    if (strings == nullptr)
        return 0;
    bool needsLibrary = false;
    for (const std::size_t name : needed)
        needsLibrary = needsLibrary || std::strcmp(strings + name, libraryName) == 0;
    if (!needsLibrary)
        return 0;
    const bool isProgram = object->dlpi_name == nullptr || *object->dlpi_name == '\0';
    const std::string origin = fs::path(isProgram ? programPath() : object->dlpi_name).parent_path().string();
    for (const std::size_t path : paths) {
        std::string list = strings + path;
        for (const std::string variable : {"$ORIGIN", "${ORIGIN}"}) {
            for (std::size_t at = 0; (at = list.find(variable, at)) != std::string::npos; at += origin.size())
                list.replace(at, variable.size(), origin);
        }
        for (const fs::path &folder : splitFolders(list, ':'))
            folders.push_back(folder);
    }
    return 0;
}

} // namespace

std::vector<fs::path> libraryFolders()
{
    const auto variable = sondixsim::model::environmentVariable("LD_LIBRARY_PATH");
    std::vector<fs::path> folders = splitFolders(variable.value_or(""), ':');
    dl_iterate_phdr(addRunPath, &folders);
    for (const char *folder :
         {"/usr/local/lib", "/lib/x86_64-linux-gnu", "/usr/lib/x86_64-linux-gnu", "/lib/aarch64-linux-gnu",
          "/usr/lib/aarch64-linux-gnu", "/lib64", "/usr/lib64", "/lib", "/usr/lib"})
        folders.emplace_back(folder);
    return folders;
}

void *loadLibrary(const fs::path &file, std::string &problem)
{
    // Its further symbols are visible to the program, as if the program had loaded it.
    void *const library = dlopen(file.c_str(), RTLD_NOW | RTLD_GLOBAL);
    if (library == nullptr) {
        const char *const text = dlerror();
        problem = text != nullptr ? text : "unknown error";
    }
    return library;
}

void *findSymbol(void *library, const char *name)
{
    return dlsym(library, name);
}

bool AppendedFile::open(const fs::path &file, std::string &problem)
{
    m_handle = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    if (m_handle == -1)
        problem = std::strerror(errno);
    return m_handle != -1;
}

bool AppendedFile::append(std::string_view data, std::string &problem)
{
    const auto file = static_cast<int>(m_handle);
    std::size_t written = 0;
    while (written < data.size()) {
        const ssize_t count = ::write(file, data.data() + written, data.size() - written);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            problem = std::strerror(count < 0 ? errno : ENOSPC);
            // The position is the end of what this process has written.
            const off_t end = lseek(file, 0, SEEK_CUR);
            const auto part = static_cast<off_t>(written);
            if (written > 0 && end >= part && ftruncate(file, end - part) != 0)
                problem += ", the last line is not complete";
            return false;
        }
        written += static_cast<std::size_t>(count);
    }
    return true;
}

#endif

} // namespace sondixrec
