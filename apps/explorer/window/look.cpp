// SPDX-License-Identifier: MIT
#include "look.h"

#include "explorer/plot/signalcolours.h"

#include <QApplication>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOption>

using State = SondixQt::SensorReader::State;

namespace Explorer {

namespace {

QPalette darkPalette()
{
    const QColor ground(0x2b, 0x2f, 0x34);
    const QColor field(0x17, 0x19, 0x1c);
    const QColor raised(0x3b, 0x41, 0x48);
    const QColor text(0xe6, 0xe8, 0xea);
    const QColor weakText(0x90, 0x97, 0x9e);
    QPalette palette(raised, ground);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, field);
    palette.setColor(QPalette::AlternateBase, QColor(0x1e, 0x21, 0x25));
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::ToolTipBase, raised);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, weakText);
    palette.setColor(QPalette::Highlight, QColor(0x3d, 0x8e, 0xc9));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x6c, 0xb4, 0xe8));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, weakText);
    return palette;
}

QPalette lightPalette()
{
    QPalette palette(QColor(0xec, 0xee, 0xf0), QColor(0xf4, 0xf5, 0xf6));
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::AlternateBase, QColor(0xf6, 0xf7, 0xf9));
    palette.setColor(QPalette::Highlight, QColor(0x1f, 0x6f, 0xb2));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x1f, 0x6f, 0xb2));
    palette.setColor(QPalette::PlaceholderText, QColor(0x70, 0x76, 0x7c));
    return palette;
}

/// Buttons that are on have the accent colour: the style only darkens them a little.
class ExplorerStyle : public QProxyStyle
{
public:
    ExplorerStyle()
        : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion")))
    {
    }

    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override
    {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        if (element != PE_PanelButtonTool || !option->state.testFlag(State_On))
            return;
        constexpr double margin = 1.0;
        constexpr double radius = 2.0;
        const QColor accent = option->palette.color(QPalette::Highlight);
        QColor ground = accent;
        ground.setAlpha(70);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(accent, 1.5));
        painter->setBrush(ground);
        painter->drawRoundedRect(QRectF(option->rect).adjusted(margin, margin, -margin, -margin), radius, radius);
        painter->restore();
    }
};

} // namespace

void applyTheme(Theme theme)
{
    static const QPalette systemPalette = QApplication::palette();
    // The native styles of some systems do not follow a palette.
    QApplication::setStyle(new ExplorerStyle);
    switch (theme) {
    case Theme::System:
        QApplication::setPalette(isDark(systemPalette) ? darkPalette() : lightPalette());
        break;
    case Theme::Light:
        QApplication::setPalette(lightPalette());
        break;
    case Theme::Dark:
        QApplication::setPalette(darkPalette());
        break;
    }
}

QColor colourOf(Meaning meaning, const QPalette &palette)
{
    const bool dark = isDark(palette);
    switch (meaning) {
    case Meaning::Good:
        return dark ? QColor(0x4c, 0xc2, 0xa3) : QColor(0x00, 0x7a, 0x5e);
    case Meaning::Waiting:
        return dark ? QColor(0xf0, 0xc0, 0x4a) : QColor(0x8a, 0x5a, 0x00);
    case Meaning::Problem:
        return dark ? QColor(0xff, 0x8a, 0x5c) : QColor(0xb8, 0x3a, 0x00);
    }
    return palette.color(QPalette::WindowText);
}

QString symbolOf(State state)
{
    switch (state) {
    case State::Stopped:
        return QStringLiteral("\u25cb");
    case State::Opening:
        return QStringLiteral("\u2026");
    case State::Reading:
        return QStringLiteral("\u25cf");
    case State::WaitingForTrigger:
        return QStringLiteral("\u25d4");
    case State::Reconnecting:
        return QStringLiteral("\u21bb");
    case State::Failed:
        return QStringLiteral("\u2715");
    }
    return {};
}

QColor colourOf(State state, const QPalette &palette)
{
    switch (state) {
    case State::Reading:
        return colourOf(Meaning::Good, palette);
    case State::WaitingForTrigger:
    case State::Opening:
    case State::Reconnecting:
        return colourOf(Meaning::Waiting, palette);
    case State::Failed:
        return colourOf(Meaning::Problem, palette);
    case State::Stopped:
        break;
    }
    return palette.color(QPalette::WindowText);
}

QString shownDuration(double seconds)
{
    const qint64 whole = seconds > 0.0 ? static_cast<qint64>(seconds) : 0;
    const QLatin1Char zero('0');
    return QStringLiteral("%1:%2:%3")
        .arg(whole / 3600, 2, 10, zero)
        .arg(whole / 60 % 60, 2, 10, zero)
        .arg(whole % 60, 2, 10, zero);
}

void makePlaceholder(QLabel &label)
{
    constexpr int margin = 12;
    label.setAlignment(Qt::AlignCenter);
    label.setMargin(margin);
    label.setFrameStyle(QFrame::StyledPanel);
    label.setAutoFillBackground(true);
    label.setBackgroundRole(QPalette::Base);
    label.setForegroundRole(QPalette::PlaceholderText);
    label.setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
}

QString shownRate(double hertz)
{
    constexpr double minKilo = 999.95; // shown with four digits
    const bool isKilo = hertz >= minKilo;
    const QString number = QLocale().toString(isKilo ? hertz / 1000.0 : hertz, 'g', 4);
    return QStringLiteral("%1 %2").arg(number, isKilo ? QStringLiteral("kHz") : QStringLiteral("Hz"));
}

} // namespace Explorer
