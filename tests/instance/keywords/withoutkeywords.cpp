// SPDX-License-Identifier: MIT
#include "consumer.h"

#include <SondixQt/SondixQt>

#include <QDebug>

#if defined(signals) || !defined(QT_NO_KEYWORDS)
#    error "This file is to be compiled without Qt's keywords"
#endif

QStringList signalNamesWithoutKeywords()
{
    SondixQt::TransmittedDataInfo info;
    info.signals.resize(2);
    info.signals[0].scaledName = QStringLiteral("Distance");
    info.signals[1].scaledName = QStringLiteral("Intensity");
    QStringList names;
    for (const SondixQt::SignalInfo &signal : info.signalList())
        names.append(signal.scaledName);
    return names;
}

QString printedWithoutKeywords()
{
    QString text;
    QDebug(&text) << SondixQt::TX270 << SondixQt::SensorInterfaces(SondixQt::RS232)
                  << QVariant::fromValue(SondixQt::TransmittedDataInfo()).typeName();
    return text;
}
