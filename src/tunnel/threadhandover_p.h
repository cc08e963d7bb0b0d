// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Qt carries calls from thread to thread with locks that the thread sanitizer does not see, because Qt itself is
/// built without it. This tells it what happens before what. Without the sanitizer it is nothing.

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

/// Lives around what the thread of \a callee is given to do, or after what it has done.
class HandOver
{
public:
    explicit HandOver([[maybe_unused]] void *callee)
        : place(callee)
    {
#if defined(SONDIXQT_THREAD_SANITIZER)
        __tsan_release(place);
#endif
    }
    ~HandOver()
    {
#if defined(SONDIXQT_THREAD_SANITIZER)
        __tsan_acquire(place);
#endif
    }
    HandOver(const HandOver &) = delete;
    HandOver &operator=(const HandOver &) = delete;

private:
    [[maybe_unused]] void *place;
};

/// Lives while the callee serves it.
class TakeOver
{
public:
    explicit TakeOver([[maybe_unused]] void *callee)
        : place(callee)
    {
#if defined(SONDIXQT_THREAD_SANITIZER)
        __tsan_acquire(place);
#endif
    }
    ~TakeOver()
    {
#if defined(SONDIXQT_THREAD_SANITIZER)
        __tsan_release(place);
#endif
    }
    TakeOver(const TakeOver &) = delete;
    TakeOver &operator=(const TakeOver &) = delete;

private:
    [[maybe_unused]] void *place;
};

} // namespace SondixQt
