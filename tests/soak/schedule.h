// SPDX-License-Identifier: MIT
#pragma once

#include "readerstand.h"

#include <random>

/// A random sequence of faults, commands and losses that happen to a reader. The same seed gives the same sequence.
class Schedule
{
public:
    explicit Schedule(quint64 seed);

    bool play();                ///< true if the reader has passed all checks
    QStringList report() const; ///< what was done, and what was wrong

private:
    struct Action
    {
        const char *name;
        void (Schedule::*play)();
        bool settles; ///< waits afterwards until the reader has delivered what was sent
    };
    static const QVector<Action> &actions();

    void letSomeTimePass();
    void letFramesArrive();
    void letMuchTimePass();
    void pullCable();
    void pullCableForAMoment();
    void fallSilent();
    void failTransfer();
    void failOpening();
    void hang();
    void changeRate();
    void changeFrame();
    void changeFrameOfWaitingValues();
    void garbleAnswer();
    void failForGood();
    void clearBuffers();
    void triggerFrames();
    void sendCommand();
    void blockConsumer();
    void stopAndStart();
    void stopInSlot();
    void restartInSlot();
    void deleteInSlot();

    std::chrono::milliseconds randomInterval();
    int random(int low, int high);          ///< both included
    double random(double low, double high); ///< each order of magnitude is equally probable

    const quint64 m_seed;
    std::mt19937_64 m_random;
    ReaderStand m_stand;
    QStringList m_log;
};
