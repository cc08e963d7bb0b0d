// SPDX-License-Identifier: MIT
#include <SondixQt/sensortypes.h>

#include <QtGlobal>

int main()
{
    const bool known = !SondixQt::sensorName(SondixQt::TX290).isEmpty();
    return known && qVersion()[0] == '5' ? 0 : 1;
}
