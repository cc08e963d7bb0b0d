// SPDX-License-Identifier: MIT
#include "livevalue.h"

#include <SondixQt/SondixQt>

#include <QApplication>
#include <QDebug>

using namespace SondixQt;

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const auto address = SensorAddress::parse(application.arguments().value(1));
    if (!address) {
        qWarning() << "Usage: livevalue ADDRESS, such as TX270@RS232,port=COM3";
        return 2;
    }
    SensorReader reader(*address);
    reader.setReconnect(Reconnect());
    LiveValue value(reader);
    value.resize(400, 150);
    value.show();
    QObject::connect(&reader, &SensorReader::stateChanged, &value, [&value](SensorReader::State state) {
        value.setWindowTitle(QVariant::fromValue(state).toString());
    });
    reader.start();
    return QApplication::exec();
}
