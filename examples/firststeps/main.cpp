// SPDX-License-Identifier: MIT
#include <SondixQt/SondixQt>

#include <QCoreApplication>
#include <QDebug>
#include <QThread>

#include <memory>

using namespace SondixQt;

static void describeAndRead(const SensorInfo &info)
{
    const std::unique_ptr<SensorInstance> sensor = SensorInstance::create(info.sensorType());
    QString errorText;
    if (sensor->open(info.getInterfaceParameters(), &errorText) != NoError) {
        qWarning() << "cannot open it:" << errorText;
        return;
    }
    TransmittedDataInfo frame;
    if (sensor->transmittedDataInfo(frame, &errorText) != NoError)
        qWarning() << "cannot tell what it sends:" << errorText;
    for (const SignalInfo &signal : frame.signalList())
        qInfo() << "  sends" << signal.scaledName << "in" << signal.scaledUnit;

    QThread::sleep(1); // the sensor goes on measuring meanwhile
    QVector<double> values;
    double timestamp = 0.0;
    if (sensor->transferDataScaled(values, timestamp, &errorText) != NoError)
        qWarning() << "cannot read all values:" << errorText;
    qInfo() << "  and sent" << values.size() << "values in a second, the first" << values.value(0);
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    SensorFinder finder;
    QList<SensorInfo> found;
    finder.setSearchInterface(RS232, true);
    QObject::connect(&finder, &SensorFinder::sensorFound, [&found](const SensorInfo &info) { found += info; });
    const auto useThem = [&found] {
        for (const SensorInfo &info : qAsConst(found)) {
            qInfo() << "found" << sensorName(info.sensorType());
            describeAndRead(info);
        }
        QCoreApplication::quit();
    };
    QObject::connect(&finder, &SensorFinder::searchFinished, &finder, useThem, Qt::QueuedConnection);
    const auto giveUp = [](ErrorCode, const QString &text) {
        qWarning().noquote() << text;
        QCoreApplication::exit(1);
    };
    QObject::connect(&finder, &SensorFinder::errorOccurred, &finder, giveUp, Qt::QueuedConnection);
    finder.startSearch(TX270);
    return QCoreApplication::exec();
}
