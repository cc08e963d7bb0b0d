// SPDX-License-Identifier: MIT
#pragma once

#include <SondixSimulator/control.h>

#include <QFile>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <limits>
#include <thread>
#include <vector>

/// The functions of the sensor-access library, according to the list from which its import library is made.
inline QStringList exportedFunctions(const char *definitionFile)
{
    QFile file(QString::fromLatin1(definitionFile));
    QStringList names;
    bool areExports = false;
    if (!file.open(QIODevice::ReadOnly))
        return names;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (areExports && !line.trimmed().isEmpty())
            names += QString::fromLatin1(line.trimmed());
        areExports = areExports || line.trimmed() == "EXPORTS";
    }
    return names;
}

/// What a fault can do to a call, one effect each.
struct FaultKind
{
    enum Effect {
        Delays,       ///< the call has its own result
        Fails,        ///< the call is not executed
        ChangesAnswer ///< of a command or an open
    };

    const char *name;
    Effect effect;
    sondixsim::Fault fault;
};

inline const std::vector<FaultKind> &faultKinds()
{
    using sondixsim::Damage;
    static const std::vector<FaultKind> all = [] {
        std::vector<FaultKind> kinds;
        const auto add = [&kinds](const char *name, FaultKind::Effect effect) -> sondixsim::Fault & {
            kinds.push_back({name, effect, {}});
            return kinds.back().fault;
        };
        add("delay", FaultKind::Delays).delay = 1e-6;
        add("hang", FaultKind::Delays).hang = true;
        for (const auto &[name, code] : {std::pair("code", -40), std::pair("partial failure", -26),
                                         std::pair("smallest code", std::numeric_limits<std::int32_t>::min()),
                                         std::pair("positive code", 7)}) {
            sondixsim::Fault &fault = add(name, FaultKind::Fails);
            fault.code = code;
            fault.text = "told to fail";
        }
        sondixsim::Fault &silent = add("silent code", FaultKind::Fails);
        silent.code = -40;
        silent.silent = true;
        add("no answer", FaultKind::ChangesAnswer).answer = "";
        add("other answer", FaultKind::ChangesAnswer).answer = "IA_Progress=1e400 SA_Measrate=\"x SA_Serial";
        add("cut", FaultKind::ChangesAnswer).damage = Damage::Cut;
        add("garbled", FaultKind::ChangesAnswer).damage = Damage::Garbled;
        add("empty", FaultKind::ChangesAnswer).damage = Damage::Empty;
        return kinds;
    }();
    return all;
}

/// Whether a fault of this kind can have an effect on calls of \a function.
inline bool canAffect(const FaultKind &kind, const QString &function)
{
    const bool isAnswered = function == QLatin1String("SensorCommand") || function == QLatin1String("OpenSensor");
    return kind.effect != FaultKind::ChangesAnswer || isAnswered;
}

/// Ends hanging calls, again and again.
class HangReleaser
{
public:
    HangReleaser()
        : m_thread([this] {
            while (!m_isDone) {
                sondixsim::releaseHangs();
                std::this_thread::sleep_for(std::chrono::milliseconds(1)); // a session writes down each release
            }
        })
    {
    }
    ~HangReleaser()
    {
        m_isDone = true;
        m_thread.join();
    }
    HangReleaser(const HangReleaser &) = delete;
    HangReleaser &operator=(const HangReleaser &) = delete;

private:
    std::atomic<bool> m_isDone{false};
    std::thread m_thread;
};
