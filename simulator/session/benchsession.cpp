// SPDX-License-Identifier: MIT
#include "benchsession.h"

#include "fold.h"
#include "model/platform.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace sondixsim::session {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t journalLock = 0;
constexpr std::uint64_t logLock = 1;
constexpr std::uint64_t firstSensorLock = 2;
constexpr std::size_t claimerSize = 64; // bytes of each sensor in the file of the claimers
constexpr const char *descriptionFile = "session.json";
constexpr const char *stateFile = "state";
constexpr const char *draftPrefix = ".draft-";     // of the folder of a session that is being started
constexpr const char *stoppedPrefix = ".stopped-"; // and of one that is being removed

std::int64_t milliseconds()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

/// Locks a byte for the life of this object.
class ByteLock
{
public:
    ByteLock(LockFile &file, std::uint64_t byte)
        : m_file(file)
        , m_byte(byte)
    {
        m_file.lock(m_byte);
    }
    ~ByteLock() { m_file.unlock(m_byte); }
    ByteLock(const ByteLock &) = delete;
    ByteLock &operator=(const ByteLock &) = delete;

private:
    LockFile &m_file;
    std::uint64_t m_byte;
};

void checkName(const std::string &name)
{
    constexpr std::size_t longest = 64;
    const bool isPlain = std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
    });
    if (name.empty() || name.size() > longest || !isPlain)
        throw SessionError("\"" + name + "\" is no name of a bench session: it has letters, digits, '-' and '_'");
}

nlohmann::json readDescription(const fs::path &folder)
{
    const fs::path file = folder / descriptionFile;
    const std::string text = readFrom(file, 0, fs::file_size(file));
    nlohmann::json description = nlohmann::json::parse(text, nullptr, false);
    const auto isText = [&description](const char *key) {
        return description.contains(key) && description[key].is_string();
    };
    if (!description.is_object() || !isText("name") || !isText("folder") || !description.contains("started") ||
        !description["started"].is_number_integer())
        throw SessionError("the file \"" + file.u8string() +
                           "\" of the bench session is damaged: stop the session");
    return description;
}

/// Whether a folder is that of a session that has been started.
bool isSession(const fs::path &folder)
{
    std::error_code error;
    return folder.filename().u8string().front() != '.' && fs::exists(folder / descriptionFile, error);
}

bool hasPrefix(const fs::path &folder, std::string_view prefix)
{
    return folder.filename().u8string().compare(0, prefix.size(), prefix) == 0;
}

/// Removes the folder of a stopped session. It gets another name first: a program that is just attaching would create
/// files in it again. Windows does not rename it while a program uses it: a later start removes it then.
void removeStopped(const fs::path &folder)
{
    std::error_code error;
    const fs::path renamed = folder.parent_path() / (stoppedPrefix + folder.filename().u8string());
    fs::rename(folder, renamed, error);
    if (!error)
        fs::remove_all(renamed, error);
}

} // namespace

fs::path BenchSession::folderOfAll()
{
    if (const auto folder = model::environmentVariable("SONDIX_BENCH_SESSIONS"); folder && !folder->empty())
        return model::pathFromUtf8(*folder);
#if defined(_WIN32)
    if (const auto local = model::environmentVariable("LOCALAPPDATA"))
        return model::pathFromUtf8(*local) / "sondix-bench";
#else
    if (const auto state = model::environmentVariable("XDG_STATE_HOME"); state && !state->empty())
        return fs::path(*state) / "sondix-bench";
    if (const auto home = model::environmentVariable("HOME"); home && !home->empty())
        return fs::path(*home) / ".local" / "state" / "sondix-bench";
#endif
    throw SessionError("there is no folder for bench sessions: set SONDIX_BENCH_SESSIONS");
}

// The folders of a name have numbers, each only once: programs may still use files of a stopped session.
BenchSession::Folders BenchSession::foldersOf(const std::string &name)
{
    checkName(name);
    Folders folders;
    std::error_code error;
    for (const fs::directory_entry &entry : fs::directory_iterator(folderOfAll(), error)) {
        if (entry.path().stem() != name)
            continue;
        folders.last = std::max(folders.last, std::atoll(entry.path().extension().u8string().c_str() + 1));
        if (!isSession(entry.path()))
            continue;
        if (isRunning(entry.path()))
            folders.running = entry.path();
        else
            removeStopped(entry.path());
    }
    return folders;
}

void BenchSession::removeLeftovers()
{
    std::vector<fs::path> all;
    for (const fs::directory_entry &entry : fs::directory_iterator(folderOfAll()))
        all.push_back(entry.path());
    for (const fs::path &folder : all) {
        std::error_code error; // other programs remove them as well
        if (hasPrefix(folder, draftPrefix)) {
            fs::remove_all(folder);
        } else if (hasPrefix(folder, stoppedPrefix)) {
            fs::remove_all(folder, error);
        } else if (isSession(folder) && isStopped(folder)) {
            removeStopped(folder);
        }
    }
}

bool BenchSession::isStopped(const fs::path &folder)
{
    try {
        return !isRunning(folder);
    } catch (const std::system_error &) {
        return false; // something else lies there
    }
}

bool BenchSession::isRunning(const fs::path &folder)
{
    const fs::path state = folder / stateFile;
    try {
        const MappedFile memory(state, sizeof(State), MappedFile::Missing::Fail);
        return static_cast<State *>(memory.data())->isStopped.load() == 0;
    } catch (const std::system_error &) {
        std::error_code error;
        if (fs::status(state, error).type() == fs::file_type::not_found)
            return false; // another process is removing it
        throw;
    }
}

std::vector<std::string> BenchSession::names()
{
    std::vector<std::string> names;
    std::error_code error;
    for (const fs::directory_entry &entry : fs::directory_iterator(folderOfAll(), error)) {
        try {
            if (isSession(entry.path()) && isRunning(entry.path()))
                names.push_back(entry.path().stem().u8string());
        } catch (const std::exception &) {
            continue; // something else lies there
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

void BenchSession::start(const std::string &name, const BenchText &bench, std::size_t counters, Event clock,
                         bool isLogged)
{
    if (counters > maxFaults)
        throw SessionError("a bench session can have " + std::to_string(maxFaults) + " faults and expectations");
    checkName(name);
    fs::create_directories(folderOfAll());
    LockFile starters(folderOfAll() / ".lock");
    const ByteLock onlyStarter(starters, 0);
    const Folders folders = foldersOf(name);
    if (folders.running)
        throw SessionError("the bench session \"" + name + "\" is already running");
    removeLeftovers();
    // Complete before it gets its name, so that it is never seen in part.
    const fs::path draft = folderOfAll() / (draftPrefix + name);
    fs::create_directories(draft);
    const nlohmann::json description{{"name", bench.name}, {"folder", bench.folder}, {"started", milliseconds()}};
    writeAt(draft / descriptionFile, 0, description.dump(1, ' ', false, nlohmann::json::error_handler_t::replace));
    writeAt(draft / "bench.json", 0, bench.text);
    writeAt(draft / "claimers", 0, {});
    {
        const MappedFile memory(draft / stateFile, sizeof(State), MappedFile::Missing::Create);
        State &state = *static_cast<State *>(memory.data());
        state.isLogged.store(isLogged ? 1 : 0);
        state.lastFault.store(counters);
        Journal(draft, state.journalEnd, folded).append(std::move(clock));
    }
    // The time makes the number a new one when the folders before are gone.
    const long long number = std::max<long long>(folders.last + 1, milliseconds());
    std::error_code error;
    fs::rename(draft, folderOfAll() / (name + '.' + std::to_string(number)), error);
    if (error)
        throw SessionError("the bench session \"" + name + "\" cannot be started: " + error.message());
}

void BenchSession::stop(const std::string &name)
{
    {
        BenchSession session(name);
        session.publish({{"do", "stop"}}, 0.0, [](const Event &) {});
        session.m_state->isStopped.store(1);
    }
    foldersOf(name); // removes it, if no program uses it
}

BenchSession::BenchSession(const std::string &name)
    : m_name(name)
    , m_folder([&name] {
        if (const auto folder = foldersOf(name).running)
            return *folder;
        throw SessionError("there is no bench session \"" + name +
                           "\"; 'sondixqt bench start' starts one and 'sondixqt bench list' lists them");
    }())
    , m_memory(m_folder / stateFile, sizeof(State), MappedFile::Missing::Fail)
    , m_state(static_cast<State *>(m_memory.data()))
    , m_locks(m_folder / "locks")
    , m_journal(m_folder, m_state->journalEnd, folded)
{
}

BenchText BenchSession::bench() const
{
    const nlohmann::json description = readDescription(m_folder);
    const fs::path file = m_folder / "bench.json";
    return {description.at("name").get<std::string>(), readFrom(file, 0, fs::file_size(file)),
            description.at("folder").get<std::string>()};
}

double BenchSession::age() const
{
    const auto started = readDescription(m_folder).at("started").get<std::int64_t>();
    return static_cast<double>(milliseconds() - started) * 1.0e-3;
}

void BenchSession::readNew(const Apply &apply)
{
    std::vector<Event> events;
    try {
        events = m_journal.read();
    } catch (const std::system_error &) {
        if (m_state->isStopped.load() == 0)
            throw;
        m_journal.skip(); // it has been removed
        events.push_back({{"do", "stop"}});
    }
    for (Event &event : events)
        m_unapplied.push_back(std::move(event));
    while (!m_unapplied.empty()) {
        m_isUnapplied.store(true);
        try {
            apply(m_unapplied.front());
        } catch (const std::bad_alloc &) {
            throw; // tried again later
        } catch (...) {
            m_unapplied.pop_front(); // it would fail again; those behind it are applied later
            throw;
        }
        m_unapplied.pop_front();
    }
    m_isUnapplied.store(false);
}

void BenchSession::follow(const Apply &apply)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    readNew(apply);
}

void BenchSession::checkIsRunning() const
{
    if (m_state->isStopped.load() != 0)
        throw SessionError("the bench session \"" + m_name + "\" was stopped");
}

void BenchSession::publish(Event event, double now, const Apply &apply)
{
    checkIsRunning();
    event["t"] = now;
    const std::lock_guard<std::mutex> lock(m_mutex);
    try {
        const ByteLock journal(m_locks, journalLock);
        readNew(apply);
        m_journal.append(event);
    } catch (const std::system_error &) {
        checkIsRunning(); // it may have been stopped since
        throw;
    }
    apply(event);
}

bool BenchSession::claim(std::size_t sensor)
{
    if (m_state->isStopped.load() != 0 || !m_locks.tryLock(firstSensorLock + sensor))
        return false;
    std::string text = std::to_string(processNumber()) + ' ' + programName();
    text.resize(claimerSize, '\0');
    try {
        writeAt(m_folder / "claimers", sensor * claimerSize, text);
    } catch (const std::system_error &) {
        return true; // a full disk: only 'bench show' cannot tell whose it is
    }
    return true;
}

void BenchSession::release(std::size_t sensor)
{
    m_locks.unlock(firstSensorLock + sensor);
}

bool BenchSession::isClaimedByOther(std::size_t sensor)
{
    return m_locks.isLockedByOther(firstSensorLock + sensor);
}

std::string BenchSession::claimer(std::size_t sensor)
{
    const std::string text = readFrom(m_folder / "claimers", sensor * claimerSize, claimerSize);
    return text.substr(0, text.find('\0'));
}

void BenchSession::setVirtualTime(double seconds)
{
    m_state->virtualTime.store(std::llround(seconds * 1e9));
}

int BenchSession::newFault()
{
    const std::uint64_t number = ++m_state->lastFault;
    if (number > maxFaults)
        throw SessionError("a bench session can have " + std::to_string(maxFaults) +
                           " faults, counted from its start");
    return static_cast<int>(number);
}

bool BenchSession::isFollowed() const
{
    const std::int64_t until = m_state->followedUntil.load(std::memory_order_relaxed);
    return until != 0 && milliseconds() < until;
}

bool BenchSession::isLogged(const char *function) const
{
    const std::string_view name(function);
    const bool isTransfer = name == "DataAvail" || name.substr(0, 8) == "Transfer";
    return (m_state->isLogged.load(std::memory_order_relaxed) != 0 && !isTransfer) || isFollowed();
}

void BenchSession::keepFollowing()
{
    checkIsRunning();
    constexpr std::int64_t duration = 3000;
    m_state->followedUntil.store(milliseconds() + duration);
}

void BenchSession::log(const std::string &line)
{
    constexpr std::uint64_t longest = 16 << 20;
    if (append(logFile(), line) < longest)
        return;
    const std::lock_guard<std::mutex> lock(m_logMutex);
    const ByteLock otherProcesses(m_locks, logLock);
    std::error_code ignored;
    if (fs::file_size(logFile(), ignored) >= longest)
        fs::rename(logFile(), m_folder / "calls.old.log", ignored);
}

} // namespace sondixsim::session
