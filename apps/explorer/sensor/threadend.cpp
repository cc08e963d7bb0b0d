// SPDX-License-Identifier: MIT
#include "threadend.h"

#include <QThread>

namespace Explorer {

void finishThread(QThread *thread, unsigned long longestMs)
{
    if (thread->wait(longestMs)) {
        delete thread;
        return;
    }
    QObject::connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    // It may have ended before the connection.
    if (thread->isFinished())
        thread->deleteLater();
}

} // namespace Explorer
