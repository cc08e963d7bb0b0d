// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/rs232tunnel.h>
#include <SondixQt/sensoraddress.h>
#include <SondixQt/sensorinstance.h>

#include <QObject>
#include <QUrl>

#include <memory>

namespace Explorer {

/// Owns a tunnel and its sensor. It lives in a thread of its own, because the calls of the tunnel wait for the sensor.
class TunnelWorker : public QObject
{
    Q_OBJECT
public:
    ~TunnelWorker() override;

    void open(const SondixQt::SensorAddress &address);
    void close();

Q_SIGNALS:
    void opened(const QUrl &url);
    void failed(const QString &problem);
    /// The tunnel is closed. \a address leads to the sensor now: a browser may have changed the baud rate.
    void closed(const SondixQt::SensorAddress &address);
    /// The sensor does not answer any more, or answers again.
    void sensorLost(bool isLost);

private:
    SondixQt::SensorAddress m_address;
    std::unique_ptr<SondixQt::SensorInstance> m_instance;
    std::unique_ptr<SondixQt::RS232Tunnel> m_tunnel; // ends before its instance
};

} // namespace Explorer
