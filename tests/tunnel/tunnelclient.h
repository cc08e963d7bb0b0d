// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QHostAddress>
#include <QTcpSocket>
#include <QUrl>

#if defined(Q_OS_WIN)
#    include <winsock2.h>
#else
#    include <sys/socket.h>
#endif

/// A client of the tunnel that sends exactly the given bytes.
class TunnelClient
{
public:
    explicit TunnelClient(const QUrl &url)
    {
        socket.connectToHost(QHostAddress(url.host()), quint16(url.port()));
        socket.waitForConnected(timeLimitMs);
    }

    bool isConnected() const { return socket.state() == QAbstractSocket::ConnectedState; }

    /// Returns when all bytes are passed to the system. The tunnel may receive them in several parts.
    void send(const QByteArray &bytes)
    {
        socket.write(bytes);
        while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(timeLimitMs)) {
        }
    }

    /// The next response, complete according to its Content-Length; after the time limit the bytes received so
    /// far.
    QByteArray response(int timeLimit = timeLimitMs)
    {
        QElapsedTimer time;
        time.start();
        int size = -1;
        while ((size = responseSize()) < 0 && receive(timeLimit - int(time.elapsed()))) {
        }
        const QByteArray bytes = size < 0 ? received : received.left(size);
        received.remove(0, bytes.size());
        return bytes;
    }

    /// All bytes until the tunnel closes the connection; with "..." at the end if it does not close it in time.
    QByteArray everything(int timeLimit = timeLimitMs)
    {
        QElapsedTimer time;
        time.start();
        while (receive(timeLimit - int(time.elapsed()))) {
        }
        return socket.state() == QAbstractSocket::UnconnectedState ? received : received + "...";
    }

    /// Stops reading. The buffers of the system still accept some bytes.
    void fetchNothing() { socket.setReadBufferSize(1); }
    void fetchEverything() { socket.setReadBufferSize(0); }

    /// Waits until the tunnel has sent something.
    bool waitForInput() { return socket.bytesAvailable() > 0 || socket.waitForReadyRead(timeLimitMs); }

    void hangUp() { socket.abort(); }

    /// Shuts down the write side and goes on reading.
    void endSending()
    {
#if defined(Q_OS_WIN)
        ::shutdown(static_cast<SOCKET>(socket.socketDescriptor()), SD_SEND);
#else
        ::shutdown(static_cast<int>(socket.socketDescriptor()), SHUT_WR);
#endif
    }

    static constexpr int timeLimitMs = 60000;

private:
    bool receive(int timeLimit)
    {
        if (timeLimit <= 0)
            return false;
        const bool more = socket.bytesAvailable() > 0 || socket.waitForReadyRead(timeLimit);
        received += socket.readAll();
        return more;
    }

    int responseSize() const
    {
        const int end = received.indexOf("\r\n\r\n");
        if (end < 0)
            return -1;
        const QByteArray head = received.left(end + 2).toLower();
        const int begin = head.indexOf("\r\ncontent-length:");
        int length = 0;
        if (begin >= 0 && !head.startsWith("http/1.1 304"))
            length = head.mid(begin + 17, head.indexOf("\r\n", begin + 2) - begin - 17).trimmed().toInt();
        return received.size() < end + 4 + length ? -1 : end + 4 + length;
    }

    QTcpSocket socket;
    QByteArray received;
};

/// The status in the first line of \a response; 0 if there is none.
inline int statusOf(const QByteArray &response)
{
    return response.startsWith("HTTP/1.1 ") ? response.mid(9, 3).toInt() : 0;
}

inline QByteArray bodyOf(const QByteArray &response)
{
    const int end = response.indexOf("\r\n\r\n");
    return end < 0 ? QByteArray() : response.mid(end + 4);
}

/// A GET request with the Host header that a browser sends.
inline QByteArray getRequest(const QByteArray &target, const QByteArray &headers = QByteArray())
{
    return "GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\n" + headers + "\r\n";
}

inline QByteArray postRequest(const QByteArray &body, const QByteArray &headers = QByteArray())
{
    return "POST /command HTTP/1.1\r\nHost: 127.0.0.1\r\n" + headers +
           "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}
