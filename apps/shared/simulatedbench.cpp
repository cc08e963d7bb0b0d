// SPDX-License-Identifier: MIT
#include "simulatedbench.h"

#include <QFile>
#include <QJsonDocument>
#include <QLibrary>

#include <cstdint>

#ifdef Q_OS_WIN
#    include <windows.h>
#endif

namespace SondixApp {

namespace {

using ControlFunction = std::uint32_t (*)(const char *request, char *answer, std::uint32_t size);

QJsonObject failure(const QString &text)
{
    return {{QStringLiteral("error"), text}};
}

QJsonObject carryOut(ControlFunction function, const QJsonObject &request)
{
    constexpr int usualSize = 1 << 16;
    QByteArray answer(usualSize, '\0');
    std::uint32_t needed = function(QJsonDocument(request).toJson(QJsonDocument::Compact).constData(),
                                    answer.data(), static_cast<std::uint32_t>(answer.size()));
    constexpr std::uint32_t tooLarge = 1U << 30;
    if (needed > static_cast<std::uint32_t>(answer.size()) && needed < tooLarge) {
        answer.resize(static_cast<int>(needed));
        needed = function(nullptr, answer.data(), needed);
    }
    if (needed == 0 || needed > static_cast<std::uint32_t>(answer.size()))
        return failure(QStringLiteral("the simulator does not answer"));
    return QJsonDocument::fromJson(answer.left(static_cast<int>(needed) - 1)).object();
}

ControlFunction controlFunction()
{
    // The library is loaded already, because the application is linked to it: this finds that copy.
    static const auto function = [] {
        const auto found =
            reinterpret_cast<ControlFunction>(QLibrary(QStringLiteral("Sondix")).resolve("SondixSimControl"));
        // The recorder always has the function, and reports when the library behind it is not the simulator.
        return found && carryOut(found, {}).value(QLatin1String("simulator")) != false ? found : nullptr;
    }();
    return function;
}

} // namespace

void useBench(const QString &file)
{
#ifdef Q_OS_WIN
    // The 8-bit environment has only the characters of the system's code page.
    SetEnvironmentVariableW(L"SONDIX_BENCH", reinterpret_cast<LPCWSTR>(file.utf16()));
#else
    qputenv("SONDIX_BENCH", QFile::encodeName(file));
#endif
}

QString usedBench()
{
#ifdef Q_OS_WIN
    return qEnvironmentVariable("SONDIX_BENCH"); // reads the wide environment
#else
    return QFile::decodeName(qgetenv("SONDIX_BENCH"));
#endif
}

bool isSimulated()
{
    return controlFunction() != nullptr;
}

QJsonObject controlBench(const QJsonObject &request)
{
    const ControlFunction function = controlFunction();
    if (!function)
        return failure(QStringLiteral("the sensor-access library is not the bench simulator"));
    return carryOut(function, request);
}

} // namespace SondixApp
