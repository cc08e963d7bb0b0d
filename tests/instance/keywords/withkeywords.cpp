// SPDX-License-Identifier: MIT
#include "consumer.h"

#include <SondixQt/SondixQt>

#include <QDebug>
#include <QObject>

#ifndef signals
#    error "The header took Qt's keyword away from its user"
#endif

class Announcer : public QObject
{
    Q_OBJECT
public:
    void announce() { emit announced(); }
signals:
    void announced();
};

QStringList signalNamesWithKeywords()
{
    SondixQt::SignalInfo distance;
    distance.scaledName = QStringLiteral("Distance");
    const SondixQt::TransmittedDataInfo info(2500.0, 1, 1, 0, {distance}, {});
    QStringList names;
    foreach (const SondixQt::SignalInfo &signal, info.signalList())
        names.append(signal.scaledName);
    return names;
}

bool keywordStillDeclaresSignals()
{
    Announcer announcer;
    bool heard = false;
    QObject::connect(&announcer, &Announcer::announced, &announcer, [&heard] { heard = true; });
    announcer.announce();
    return heard;
}

QString printedWithKeywords()
{
    QString text;
    QDebug(&text) << SondixQt::TX270 << SondixQt::SensorInterfaces(SondixQt::RS232)
                  << QVariant::fromValue(SondixQt::TransmittedDataInfo()).typeName();
    return text;
}

#include "withkeywords.moc"
