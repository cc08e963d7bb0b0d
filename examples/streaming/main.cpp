// SPDX-License-Identifier: MIT
// Prints the mean of the first signal twice a second and survives a pulled cable: what is missing is printed, too.
#include <SondixQt/SondixQt>

#include <QCoreApplication>
#include <QTextStream>

using namespace SondixQt;
using namespace std::chrono_literals;

static QString meanText(const QVector<double> &values)
{
    double sum = 0.0;
    int count = 0;
    for (const double value : values) {
        if (!isErrorValue(value)) {
            sum += value;
            ++count;
        }
    }
    return count > 0 ? QString::number(sum / count, 'f', 4) : QStringLiteral("no measured value");
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QTextStream out(stdout);
    const auto address = SensorAddress::parse(application.arguments().value(1));
    if (!address) {
        out << "Usage: streaming ADDRESS, such as TX270@RS232,port=COM3" << Qt::endl;
        return 2;
    }

    SensorReader reader(*address);
    reader.setDeliveryInterval(500ms);
    reader.setReconnect(Reconnect());
    QObject::connect(&reader, &SensorReader::blockReady, &reader, [&out](const DataBlock &block) {
        out << "run " << block.run() << ", frame " << block.firstFrame() << ": " << block.frameCount()
            << " frames, mean " << meanText(block.scaledValues(0)) << Qt::endl;
    });
    QObject::connect(&reader, &SensorReader::gapDetected, &reader, [&out](const DataGap &gap) {
        const QString frames = gap.frames ? QString::number(*gap.frames) : QStringLiteral("an unknown number of");
        out << "missing: " << frames << " frames, " << gapReasonText(gap.reason) << Qt::endl;
    });
    QObject::connect(&reader, &SensorReader::errorOccurred, &reader,
                     [&out](ErrorCode, const QString &text) { out << "error: " << text << Qt::endl; });
    QObject::connect(&reader, &SensorReader::stateChanged, &reader, [&out](SensorReader::State state) {
        out << "state: " << QVariant::fromValue(state).toString() << Qt::endl;
        if (state == SensorReader::Failed)
            QCoreApplication::exit(1);
    });
    reader.start();
    return QCoreApplication::exec();
}
