// SPDX-License-Identifier: MIT
#include "newerrortexts.h"

#include <SondixQt/errorvalue.h>

using namespace SondixQt;

namespace Explorer {

QHash<int, QString> NewErrorTexts::of(const DataBlock &block, const std::function<QString(double)> &text)
{
    QHash<int, QString> texts;
    for (const double value : block.scaledData()) {
        if (!isErrorValue(value) || m_known.contains(errorValueKey(value)))
            continue;
        const QString found = text(value);
        if (found.isEmpty())
            continue;
        m_known.insert(errorValueKey(value));
        texts.insert(errorValueKey(value), found);
    }
    return texts;
}

} // namespace Explorer
