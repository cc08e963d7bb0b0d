// SPDX-License-Identifier: MIT
#include "signalcolours.h"

#include <array>

namespace Explorer {

namespace {

// The first ones are those of Okabe and Ito. The others have the greatest distance to them for normal sight and for the
// two frequent kinds of colour blindness, with a contrast to the background of more than 3.
constexpr std::array<QRgb, 8> onLight = {0x0072b2, 0xd55e00, 0x008a65, 0xd154fc,
                                         0x170702, 0x5f08e8, 0x760154, 0x1c1e94};
constexpr std::array<QRgb, 8> onDark = {0x56b4e9, 0xe69f00, 0x5efe8a, 0xf00990,
                                        0xf0e442, 0xffeef2, 0xb62df8, 0xd55e00};

} // namespace

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

QColor signalColour(int signal, const QPalette &palette)
{
    const bool dark = isDark(palette);
    const auto &colours = dark ? onDark : onLight;
    const auto count = static_cast<int>(colours.size());
    QColor colour(colours[static_cast<std::size_t>(signal % count)]);
    const bool isFurther = signal / count % 2 != 0;
    if (!isFurther)
        return colour;
    return dark ? colour.darker(150) : colour.lighter(140);
}

} // namespace Explorer
