// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Qt synchronises calls across threads with locks that the thread sanitizer does not see, because Qt itself is
/// built without it. These classes declare the order to it. Without the sanitizer they do nothing.

#if defined(__SANITIZE_THREAD__)
#    define SONDIXQT_THREAD_SANITIZER
#elif defined(__has_feature)
#    if __has_feature(thread_sanitizer)
#        define SONDIXQT_THREAD_SANITIZER
#    endif
#endif

#if defined(SONDIXQT_THREAD_SANITIZER)
extern "C" void __tsan_acquire(void *place);
extern "C" void __tsan_release(void *place);
#endif

namespace SondixQt {

/// Exists during a call into the thread of \a callee. An object that is created after that thread has ended
/// orders the thread's work before the code that follows it.
class CallerFence
{
public:
    explicit CallerFence([[maybe_unused]] void *callee)
        : place(callee)
    {
#if defined(SONDIXQT_THREAD_SANITIZER)
        __tsan_release(place);
#endif
    }
    ~CallerFence()
    {
#if defined(SONDIXQT_THREAD_SANITIZER)
        __tsan_acquire(place);
#endif
    }
    CallerFence(const CallerFence &) = delete;
    CallerFence &operator=(const CallerFence &) = delete;

private:
    [[maybe_unused]] void *place;
};

/// Exists in the thread of \a callee while it executes such a call.
class CalleeFence
{
public:
    explicit CalleeFence([[maybe_unused]] void *callee)
        : place(callee)
    {
#if defined(SONDIXQT_THREAD_SANITIZER)
        __tsan_acquire(place);
#endif
    }
    ~CalleeFence()
    {
#if defined(SONDIXQT_THREAD_SANITIZER)
        __tsan_release(place);
#endif
    }
    CalleeFence(const CalleeFence &) = delete;
    CalleeFence &operator=(const CalleeFence &) = delete;

private:
    [[maybe_unused]] void *place;
};

} // namespace SondixQt
