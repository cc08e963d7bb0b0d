// SPDX-License-Identifier: MIT
#include "serialline.h"

#include <utility>

namespace sondixsim::model {

SerialLine::SerialLine(const Place &place, std::shared_ptr<LineTime> time)
    : m_place(place)
    , m_time(std::move(time))
    , m_user(m_time->join())
    , m_baudrate(baudrateIn({}))
    , m_openedBaudrate(m_baudrate)
{
}

std::int32_t SerialLine::baudrate() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_baudrate;
}

void SerialLine::setBaudrate(std::int32_t baudrate)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_baudrate = baudrate;
}

std::int32_t SerialLine::baudrateIn(const ParameterList &staged) const
{
    const Value *const own = m_place.parameters.find("IP_Baudrate");
    if (own == nullptr)
        return 0;
    const Value *const wanted = staged.find("IP_Baudrate");
    const auto baudrate = convertedLike(wanted != nullptr ? *wanted : *own, *own);
    return baudrate ? toInt(*baudrate).value_or(-1) : -1;
}

void SerialLine::open(std::int32_t baudrate)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_openedBaudrate = baudrate;
}

std::int32_t SerialLine::openedBaudrate() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_openedBaudrate;
}

bool SerialLine::isAtSensorsRate() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_openedBaudrate == m_baudrate;
}

double SerialLine::secondsPerByte(bool sendsValues) const
{
    const std::int32_t rate = baudrate();
    if (rate <= 0)
        return 0.0;
    constexpr double bits = 10.0; // with start and stop bit
    const double share = sendsValues ? 0.5 : 1.0;
    return bits / (rate * share);
}

void SerialLine::addUse(double seconds)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_used += seconds;
}

double SerialLine::usedSeconds() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_used;
}

Outcome noAnswerAt(const std::string &model, const Place &place, std::int32_t baudrate)
{
    constexpr double timeout = 0.5;
    return {TimedOut,
            "The " + model + " at " + place.text() + " does not answer at " + std::to_string(baudrate) +
                " baud: timed out",
            timeout};
}

} // namespace sondixsim::model
