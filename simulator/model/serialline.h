// SPDX-License-Identifier: MIT
#pragma once

#include "errors.h"
#include "linetime.h"
#include "place.h"

#include <memory>
#include <mutex>

namespace sondixsim::model {

/// The serial line of a sensor: its baud rate and the time that it takes. Sensors in the network have one without a
/// baud rate, which takes no time.
///
/// Every function may be called from any thread: searches read the baud rate, and calls wait for their turn, while the
/// sensor executes something else. Its mutex is never held while another one is locked.
class SerialLine
{
public:
    /// \a time is that of the line at this place, which other sensors may share.
    SerialLine(const Place &place, std::shared_ptr<LineTime> time);

    std::int32_t baudrate() const; ///< at which the sensor answers now; 0 without a baud rate
    void setBaudrate(std::int32_t baudrate);
    /// The baud rate in interface parameters, by default that of the sensor's place.
    std::int32_t baudrateIn(const ParameterList &staged) const;

    void open(std::int32_t baudrate);    ///< at the baud rate that the application uses
    std::int32_t openedBaudrate() const; ///< of the last open()
    bool isAtSensorsRate() const;        ///< whether that is the sensor's: at any other it does not answer

    /// Seconds for one byte; twice as many while measured values use the line as well.
    double secondsPerByte(bool sendsValues) const;
    void addUse(double seconds); ///< for usedSeconds()
    double usedSeconds() const;  ///< of pages and generic commands so far
    LineTime &time() const { return *m_time; }
    std::size_t user() const { return m_user; } ///< the number of this sensor at LineTime

private:
    const Place &m_place;
    const std::shared_ptr<LineTime> m_time;
    const std::size_t m_user;
    mutable std::mutex m_mutex;
    std::int32_t m_baudrate;
    std::int32_t m_openedBaudrate;
    double m_used = 0.0;
};

/// The outcome of a call to a sensor at a baud rate at which it does not answer.
Outcome noAnswerAt(const std::string &model, const Place &place, std::int32_t baudrate);

} // namespace sondixsim::model
