// SPDX-License-Identifier: MIT
#include "calllog.h"

namespace sondixsim {

std::string Call::text() const
{
    std::string text = function + '(';
    for (std::size_t i = 0; i < arguments.size(); ++i)
        text += (i == 0 ? "" : ", ") + arguments[i];
    return text + ')';
}

namespace capi {

unsigned threadNumber()
{
    static std::atomic<unsigned> next{0};
    thread_local const unsigned number = next++;
    return number;
}

CallLog::Ticket CallLog::begin(Call call)
{
    call.thread = threadNumber();
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.push_back(std::move(call));
    return {m_calls.size() - 1, m_generation};
}

void CallLog::end(Ticket ticket, std::int32_t result, std::uint32_t handle)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (ticket.generation != m_generation)
        return;
    m_calls[ticket.index].result = result;
    m_calls[ticket.index].handle = handle;
}

std::vector<Call> CallLog::calls() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_calls;
}

void CallLog::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.clear();
    ++m_generation;
}

} // namespace capi
} // namespace sondixsim
