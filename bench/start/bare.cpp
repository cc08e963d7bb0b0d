// SPDX-License-Identifier: MIT
#include <QtGlobal>

int main()
{
    return qVersion()[0] == '5' ? 0 : 1;
}
