// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace SondixQt {
struct SensorAddress;
}

namespace Explorer {

/// \a text as a part of a file name: characters that no file name may have on Windows or Linux become "_".
QString fileNameOf(const QString &text);

/// The group of QSettings for a sensor at \a address. Different addresses have different groups, whatever characters they
/// consist of.
QString settingsGroupOf(const SondixQt::SensorAddress &address);

} // namespace Explorer
