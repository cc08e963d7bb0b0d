// SPDX-License-Identifier: MIT
#pragma once

#include <SondixQt/datablock.h>

#include <QHash>
#include <QSet>
#include <QString>

#include <functional>

namespace Explorer {

/// Finds the texts of error values that have not occurred before. They are passed to another thread along with the
/// block.
class NewErrorTexts
{
public:
    /// The new texts for \a block, by errorValueKey(). \a text returns the text of an error value; if it is empty, it is
    /// asked for again with the next block.
    QHash<int, QString> of(const SondixQt::DataBlock &block, const std::function<QString(double)> &text);
    void clear() { m_known.clear(); }

private:
    QSet<int> m_known;
};

} // namespace Explorer
