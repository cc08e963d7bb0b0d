// SPDX-License-Identifier: MIT
#include "numberscale.h"

#include <QLocale>

namespace Explorer {

QwtText NumberScaleDraw::label(double value) const
{
    QLocale locale;
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale.toString(value);
}

} // namespace Explorer
