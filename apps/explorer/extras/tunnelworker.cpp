// SPDX-License-Identifier: MIT
#include "tunnelworker.h"

using namespace SondixQt;

namespace Explorer {

TunnelWorker::~TunnelWorker()
{
    if (m_tunnel)
        m_tunnel->closeTunnel(); // returns when the sensor has answered
}

void TunnelWorker::open(const SensorAddress &address)
{
    m_address = address;
    m_instance = SensorInstance::create(address.type);
    QString text;
    if (!m_instance->isValid()) {
        m_instance->checkError(CreationError, &text, false);
        Q_EMIT failed(text.isEmpty() ? tr("the sensor-access library does not support the model") : text);
        return;
    }
    m_instance->storeInterfaceParameters(address.parameters);
    m_tunnel = std::make_unique<RS232Tunnel>(*m_instance);
    connect(m_tunnel.get(), &RS232Tunnel::forwardTunnelClosed, this, [this] { Q_EMIT sensorLost(true); });
    connect(m_tunnel.get(), &RS232Tunnel::forwardTunnelOpened, this, [this] { Q_EMIT sensorLost(false); });
    QUrl url;
    const ErrorCode code = m_tunnel->openTunnel(url);
    if (code == NoError && !url.isEmpty()) {
        Q_EMIT opened(url);
        return;
    }
    if (code == NoError)
        text = tr("there is no free TCP port on this computer");
    else
        m_instance->checkError(code, &text, false);
    m_tunnel->closeTunnel();
    m_tunnel.reset();
    m_instance.reset();
    Q_EMIT failed(text.isEmpty() ? tr("error %1").arg(int(code)) : text);
}

void TunnelWorker::close()
{
    if (m_tunnel) {
        m_tunnel->disconnect(this);
        m_tunnel->closeTunnel();
        m_address.parameters = m_instance->storedInterfaceParameters();
        m_tunnel.reset();
        m_instance->close();
        m_instance.reset();
    }
    Q_EMIT closed(m_address);
}

} // namespace Explorer
