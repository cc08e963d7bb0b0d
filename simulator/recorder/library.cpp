// SPDX-License-Identifier: MIT
#include "library.h"

#include "player.h"
#include "system.h"

#include "model/platform.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace sondixrec {

namespace fs = std::filesystem;
using sondixsim::model::environmentVariable;

namespace {

#if defined(_WIN32)
constexpr const char *fileName = "Sondix.dll";
#else
constexpr const char *fileName = "libSondix.so";
#endif

constexpr std::int32_t noLibrary = -1000;

/// Why there is no library. Set before the functions below are called.
std::string &missingReason()
{
    static auto *const reason = new std::string;
    return *reason;
}

template<typename Function>
struct Refusing;

/// Answers every call of a function with a failure.
template<typename Result, typename... Arguments>
struct Refusing<Result (*)(Arguments...)>
{
    static Result call(Arguments...) { return static_cast<Result>(noLibrary); }
};

std::uint32_t refuseInstance(std::int32_t)
{
    return 0;
}

std::int32_t tellReason(std::uint32_t, char *text, std::uint32_t size)
{
    if (text != nullptr && size > 0) {
        const std::string &reason = missingReason();
        const std::size_t length = std::min<std::size_t>(reason.size(), size - 1);
        std::memcpy(text, reason.data(), length);
        text[length] = '\0';
    }
    return noLibrary;
}

Functions refusing()
{
    Functions functions;
#define SONDIX_REFUSE(name) functions.name = Refusing<decltype(functions.name)>::call;
    SONDIX_EACH_FUNCTION(SONDIX_REFUSE)
#undef SONDIX_REFUSE
    functions.CreateSensorInstance = refuseInstance;
    functions.GetError = tellReason;
    return functions;
}

class LibraryBehind
{
public:
    static LibraryBehind &get()
    {
        static auto *const library = new LibraryBehind;
        return *library;
    }

    Functions functions;
    SondixSimControlFunction control = nullptr;
    std::string name;

private:
    LibraryBehind()
    {
        std::string problem;
        if (const auto record = environmentVariable("SONDIX_REPLAY_FILE"); record && !record->empty()) {
            name = *record;
            if (playRecord(*record, functions, problem))
                return;
        } else if (load(problem)) {
            return;
        }
        name.clear();
        functions = refusing();
        missingReason() = problem;
        std::fprintf(stderr, "sondixqt: %s\n", problem.c_str());
    }

    bool load(std::string &problem)
    {
        const fs::path file = find();
        if (file.empty()) {
            problem = std::string("there is no other library ") + fileName +
                      " to record; SONDIX_RECORD_LIBRARY can name one";
            return false;
        }
        name = utf8Of(file);
        std::string reason;
        void *const library = loadLibrary(file, reason);
        if (library == nullptr) {
            problem = "cannot load " + name + ": " + reason;
            return false;
        }
        if (findSymbol(library, "SondixRecorderFormat") != nullptr) {
            problem = name + " is another copy of the recorder, which would look for this one in turn";
            return false;
        }
#define SONDIX_FIND(function)                                                                                     \
    functions.function = reinterpret_cast<decltype(functions.function)>(findSymbol(library, #function));          \
    if (functions.function == nullptr)                                                                            \
        problem = name + " has no function " #function;
        SONDIX_EACH_FUNCTION(SONDIX_FIND)
#undef SONDIX_FIND
        control = reinterpret_cast<SondixSimControlFunction>(findSymbol(library, "SondixSimControl"));
        return problem.empty();
    }

    static fs::path find()
    {
        if (const auto given = environmentVariable("SONDIX_RECORD_LIBRARY"); given && !given->empty())
            return sondixsim::model::pathFromUtf8(*given);
        // The loader itself would find this library again, by its name.
        const fs::path own = ownPath();
        for (const fs::path &folder : libraryFolders()) {
            std::error_code error;
            fs::path file = fs::absolute(folder / fileName, error);
            if (fs::is_regular_file(file, error) && !fs::equivalent(own, file, error))
                return file;
        }
        return {};
    }
};

} // namespace

const Functions &libraryBehind()
{
    return LibraryBehind::get().functions;
}

std::string libraryBehindName()
{
    return LibraryBehind::get().name;
}

SondixSimControlFunction controlBehind()
{
    return LibraryBehind::get().control;
}

} // namespace sondixrec
