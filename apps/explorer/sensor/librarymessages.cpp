// SPDX-License-Identifier: MIT
#include "librarymessages.h"

#include <QLoggingCategory>

#include <atomic>
#include <mutex>
#include <utility>

namespace Explorer {

namespace {

constexpr int maxWaiting = 5000;

struct LibraryMessage
{
    QString category;
    QString text;
    bool isWarning = false;
};

std::mutex messageMutex;
QVector<LibraryMessage> waitingMessages;
int droppedMessages = 0;
QObject *messageReceiver = nullptr;
QtMessageHandler previousHandler = nullptr;
std::atomic<bool> showsDetails{false};

void collectMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const bool isDetail = type == QtDebugMsg || type == QtInfoMsg;
    if (qstrncmp(context.category, "SondixQt", 8) == 0 && (!isDetail || showsDetails)) {
        const std::lock_guard<std::mutex> lock(messageMutex);
        if (waitingMessages.size() >= maxWaiting)
            ++droppedMessages;
        else
            waitingMessages.append({QString::fromLatin1(context.category), text, !isDetail});
        if (messageReceiver && waitingMessages.size() == 1)
            QMetaObject::invokeMethod(messageReceiver, "deliver", Qt::QueuedConnection);
        if (isDetail)
            return; // details are shown in the window only, not on the terminal
    }
    if (previousHandler)
        previousHandler(type, context, text);
}

} // namespace

LibraryMessages::LibraryMessages(QObject *parent)
    : QObject(parent)
{
    {
        const std::lock_guard<std::mutex> lock(messageMutex);
        messageReceiver = this;
    }
    previousHandler = qInstallMessageHandler(collectMessage);
}

LibraryMessages::~LibraryMessages()
{
    setDetailed(false);
    qInstallMessageHandler(previousHandler);
    const std::lock_guard<std::mutex> lock(messageMutex);
    messageReceiver = nullptr;
    waitingMessages.clear();
}

void LibraryMessages::setDetailed(bool detailed)
{
    if (m_isDetailed == detailed)
        return;
    m_isDetailed = detailed;
    showsDetails = detailed;
    QLoggingCategory::setFilterRules(detailed ? QStringLiteral("SondixQt.*=true") : QString());
}

void LibraryMessages::deliver()
{
    QVector<LibraryMessage> messages;
    int dropped = 0;
    {
        const std::lock_guard<std::mutex> lock(messageMutex);
        messages.swap(waitingMessages);
        std::swap(dropped, droppedMessages);
    }
    for (const LibraryMessage &message : qAsConst(messages))
        Q_EMIT messageReceived(message.category, message.text, message.isWarning);
    if (dropped > 0)
        Q_EMIT messageReceived(QStringLiteral("SondixQt"), tr("dropped messages: %1").arg(dropped), true);
}

} // namespace Explorer
