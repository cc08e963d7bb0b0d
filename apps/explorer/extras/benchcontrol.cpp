// SPDX-License-Identifier: MIT
#include "benchcontrol.h"

#include "explorer/sensor/threadend.h"
#include "shared/simulatedbench.h"

#include <QJsonArray>
#include <QStringList>
#include <QThread>

namespace Explorer {

namespace {

constexpr unsigned long endWaitMs = 1000;

} // namespace

BenchControl::BenchControl(QObject *parent)
    : QObject(parent)
{
    if (!isAvailable())
        return;
    m_thread = new QThread;
    m_worker = new QObject;
    m_worker->moveToThread(m_thread);
    connect(m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    m_thread->start();
}

BenchControl::~BenchControl()
{
    if (!m_thread)
        return;
    m_thread->quit();
    finishThread(m_thread, endWaitMs);
}

bool BenchControl::isAvailable() const
{
    return SondixApp::isSimulated();
}

void BenchControl::send(const QJsonObject &request, QObject *context, const Callback &callback)
{
    const QPointer<QObject> receiver(context);
    const auto deliver = [receiver, callback](const QJsonObject &answer) {
        if (receiver && callback)
            callback(answer);
    };
    if (!isAvailable()) {
        deliver({{QStringLiteral("error"), tr("The sensor-access library is not the simulator.")}});
        return;
    }
    const QPointer<BenchControl> self(this);
    QMetaObject::invokeMethod(m_worker, [this, self, request, deliver] {
        const QJsonObject answer = SondixApp::controlBench(request);
        // The destructor waits for this thread, unless a sensor hangs.
        if (self)
            QMetaObject::invokeMethod(this, [deliver, answer] { deliver(answer); });
    });
}

void BenchControl::load(const QString &file, QObject *context, const Callback &callback)
{
    QJsonObject request{{QStringLiteral("do"), QStringLiteral("load")}};
    if (!file.isEmpty())
        request.insert(QStringLiteral("file"), file);
    send(request, context, callback);
}

void BenchControl::setPlugged(const QString &serialNumber, bool isPlugged, QObject *context,
                              const Callback &callback)
{
    send({{QStringLiteral("do"), isPlugged ? QStringLiteral("plug") : QStringLiteral("unplug")},
          {QStringLiteral("sensor"), serialNumber}},
         context, callback);
}

void BenchControl::setSilent(const QString &serialNumber, bool isSilent, QObject *context,
                             const Callback &callback)
{
    send({{QStringLiteral("do"), QStringLiteral("silent")},
          {QStringLiteral("sensor"), serialNumber},
          {QStringLiteral("silent"), isSilent}},
         context, callback);
}

void BenchControl::trigger(const QString &serialNumber, QObject *context, const Callback &callback)
{
    send({{QStringLiteral("do"), QStringLiteral("trigger")}, {QStringLiteral("sensor"), serialNumber}}, context,
         callback);
}

QVector<BenchSensor> BenchControl::sensors(const QJsonObject &answer)
{
    QVector<BenchSensor> sensors;
    const QJsonArray array = answer.value(QLatin1String("sensors")).toArray();
    for (const QJsonValue &value : array) {
        const QJsonObject object = value.toObject();
        sensors.append(
            {object.value(QLatin1String("serialNumber")).toString(),
             object.value(QLatin1String("model")).toString(), object.value(QLatin1String("place")).toString(),
             object.value(QLatin1String("plugged")).toBool(true), object.value(QLatin1String("open")).toBool(),
             object.value(QLatin1String("silent")).toBool()});
    }
    return sensors;
}

QVector<BenchFault> BenchControl::faults(const QJsonObject &answer)
{
    QVector<BenchFault> faults;
    const QJsonArray array = answer.value(QLatin1String("faults")).toArray();
    for (const QJsonValue &value : array) {
        const QJsonObject object = value.toObject();
        QStringList words;
        for (const auto *key : {"function", "command", "parameter", "sensor", "text"})
            if (const QString word = object.value(QLatin1String(key)).toString(); !word.isEmpty())
                words += word;
        if (const int code = object.value(QLatin1String("code")).toInt(); code != 0)
            words += QString::number(code);
        faults.append({object.value(QLatin1String("fault")).toInt(), words.join(QStringLiteral(", "))});
    }
    return faults;
}

QString BenchControl::error(const QJsonObject &answer)
{
    return answer.value(QLatin1String("error")).toString();
}

} // namespace Explorer
