// SPDX-License-Identifier: MIT
#include <SondixQt/SondixQt>

#include <QCoreApplication>

#include <cstdio>

// Consumers may use Qt with or without its keywords and moc: this program must build either way.
int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    SondixQt::TransmittedDataInfo frame;
    SondixQt::SensorInstance instance(SondixQt::SensorType::TX270);
    int finished = 0;
    SondixQt::SensorFinder finder;
    QObject::connect(&finder, &SondixQt::SensorFinder::searchFinished, &finder, [&finished] { ++finished; });
    finder.startSearch(SondixQt::SensorType::NoSensor);

    const bool ok = finished == 1 && instance.isValid() && frame.signalList().isEmpty() &&
                    SondixQt::getSensorFeatures().size() == 79 &&
                    SondixQt::interfaceName(SondixQt::SensorInterface::TCPIP) == QLatin1String("Ethernet");
    std::puts(ok ? "ok" : "the library does not answer as it should");
    return ok ? 0 : 1;
}
