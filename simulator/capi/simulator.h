// SPDX-License-Identifier: MIT
#pragma once

#include "callers.h"
#include "callevents.h"
#include "calllog.h"
#include "expectations.h"
#include "instances.h"
#include "model/clock.h"
#include "model/faults.h"
#include "session/benchsession.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace sondixsim::capi {

/// The state of the process. Never destroyed: applications may call the library from static destructors.
class Simulator
{
public:
    static Simulator &get();

    model::Clock clock;
    model::Faults faults;
    Expectations expectations;
    CallEvents callEvents;
    CallLog callLog;
    Instances instances;
    Callers callers;
    std::atomic<bool> lineSpeed{true}; ///< whether calls last as long as their bytes on a serial line

    /// The bench in use. The first call loads the one that SONDIX_BENCH names, else the built-in one. Null when that
    /// file has an error.
    std::shared_ptr<const model::Bench> bench();

    /// A program has asked for values or the progress of a search at the bench time \a time. If the answer is not
    /// \a complete, it has to ask again: steps a clock that steps itself. If the program waits for a clock that
    /// nobody steps, this is reported once, on the error output and in the log of the instance.
    void noteAnswer(Instance &instance, double time, bool complete);
    /// A call at the bench time \a time has failed, perhaps only for a while: steps a clock that steps itself.
    void noteFailure(const Instance &instance, double time);

    void load(std::string_view text, const std::string &name, const std::string &folder); ///< throws BenchError
    /// Loads a file, or attaches to the session NAME for "session:NAME". Throws BenchError.
    void loadFile(const std::string &path);
    void loadBuiltIn();
    /// Starts a session with a bench file, or with the built-in bench. Throws BenchError and SessionError.
    static void startSession(const std::string &name, const std::string &path, bool isLogged);

    /// \name The session to which the bench belongs, if there is one
    /// \{
    session::BenchSession *session() const { return m_session.load(std::memory_order_acquire); }
    /// Applies what other processes have done to the bench. Every call of the C interface begins with this.
    void follow()
    {
        session::BenchSession *const session = this->session();
        if (session != nullptr && session->isBehind())
            follow(*session);
    }
    /// Does something to the bench, see applyEvent(), in all processes of the session.
    void perform(const nlohmann::json &event);
    /// Tells the other processes of what a command has set.
    void publishChanges(model::Sensor &sensor);
    /// \}

    /// Keeps a failure without a handle for lastFailure(); returns its code.
    std::int32_t fail(const model::Outcome &outcome);
    model::Outcome lastFailure();

private:
    void use(const std::shared_ptr<const model::Bench> &bench, session::BenchSession *session = nullptr);
    /// Steps the clock when all wait; false if it does not step itself.
    bool stepClock(const Instance &instance, double time);
    void loadFirst();
    void useFile(const std::string &path);
    void attach(const std::string &name); ///< to a session
    void follow(session::BenchSession &session);

    std::atomic<session::BenchSession *> m_session{nullptr};
    std::vector<std::unique_ptr<session::BenchSession>>
        m_sessions;       ///< former ones, too: threads may be using them
    std::mutex m_loading; ///< locked while a bench is loaded
    std::mutex m_mutex;   ///< guards the members below
    std::shared_ptr<const model::Bench> m_bench;
    bool m_loaded = false;
    model::Outcome m_loadFailure;
    model::Outcome m_lastFailure;
};

/// A counter of a session, which the simulator keeps for ever, see Simulator::session().
std::shared_ptr<model::FaultCounter> counterOf(session::BenchSession &session, int number);

} // namespace sondixsim::capi
