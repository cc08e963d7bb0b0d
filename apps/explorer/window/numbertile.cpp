// SPDX-License-Identifier: MIT
#include "numbertile.h"

#include "look.h"

#include <QApplication>
#include <QClipboard>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QPainter>
#include <QToolButton>
#include <QWidgetAction>

#include <algorithm>

namespace Explorer {

namespace {

constexpr int tilePadding = 8;
constexpr int smallestDigits = 9; // pixels
constexpr int largestDigits = 220;

std::optional<double> typedNumber(const QString &text)
{
    bool isNumber = false;
    double value = QLocale().toDouble(text.trimmed(), &isNumber);
    if (!isNumber)
        value = QLocale::c().toDouble(text.trimmed(), &isNumber);
    return isNumber ? std::optional<double>(value) : std::nullopt;
}

QString typedText(const std::optional<double> &value)
{
    QLocale locale;
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return value ? locale.toString(*value, 'g', QLocale::FloatingPointShortest) : QString();
}

} // namespace

NumberTile::NumberTile(const SondixQt::SignalInfo &info, QWidget *parent)
    : QFrame(parent)
    , m_info(info)
    , m_decimals(decimalPlaces(info))
    , m_button(new QToolButton(this))
{
    setFrameShape(QFrame::StyledPanel);
    setFocusPolicy(Qt::StrongFocus);
    setObjectName(QStringLiteral("numberTile"));
    setAccessibleName(info.scaledName);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_button->setText(QStringLiteral("\u2630"));
    m_button->setAutoRaise(true);
    m_button->setToolTip(tr("Limits, zero and reset of %1").arg(info.scaledName));
    m_button->setAccessibleName(m_button->toolTip());
    makeMenu();
}

NumberTile::~NumberTile()
{
    // A field that has the focus loses it when the menu is destroyed, after this object.
    for (QLineEdit *field : {m_lower, m_upper, m_offset})
        field->disconnect(this);
}

void NumberTile::makeMenu()
{
    m_menu = new QMenu(this);
    auto *fields = new QWidget;
    auto *form = new QFormLayout(fields);
    m_lower = new QLineEdit;
    m_upper = new QLineEdit;
    m_offset = new QLineEdit;
    const QString unit = m_info.scaledUnit;
    const auto add = [&](const QString &label, QLineEdit *field, const char *name) {
        field->setObjectName(QLatin1String(name));
        field->setPlaceholderText(tr("none"));
        field->setAccessibleName(label);
        form->addRow(unit.isEmpty() ? label : tr("%1 (%2)").arg(label, unit), field);
        connect(field, &QLineEdit::editingFinished, this, &NumberTile::takeMenu);
    };
    add(tr("Lower limit"), m_lower, "lowerLimit");
    add(tr("Upper limit"), m_upper, "upperLimit");
    add(tr("Zero at"), m_offset, "zeroAt");
    auto *action = new QWidgetAction(m_menu);
    action->setDefaultWidget(fields);
    m_menu->addAction(action);
    m_menu->addSeparator();
    m_menu->addAction(tr("Zero here"), this, &NumberTile::setZero);
    m_menu->addAction(tr("Reset minimum and maximum"), this, &NumberTile::resetRequested);
    m_menu->addAction(tr("Copy value"), this, [this] { QApplication::clipboard()->setText(exactText()); });
    connect(m_menu, &QMenu::aboutToShow, this, &NumberTile::fillMenu);
    // Without setMenu(), which would draw an arrow over the symbol.
    connect(m_button, &QToolButton::clicked, this, &NumberTile::showMenu);
}

void NumberTile::showMenu()
{
    m_menu->popup(m_button->mapToGlobal(m_button->rect().bottomLeft()));
}

void NumberTile::fillMenu()
{
    m_lower->setText(typedText(m_limits.lower));
    m_upper->setText(typedText(m_limits.upper));
    m_offset->setText(typedText(
        m_limits.offset < 0.0 || m_limits.offset > 0.0 ? std::optional<double>(m_limits.offset) : std::nullopt));
}

void NumberTile::takeMenu()
{
    DisplayLimits limits;
    limits.lower = typedNumber(m_lower->text());
    limits.upper = typedNumber(m_upper->text());
    limits.offset = typedNumber(m_offset->text()).value_or(0.0);
    if (limits == m_limits)
        return;
    setLimits(limits);
    Q_EMIT limitsChanged();
}

void NumberTile::setLimits(const DisplayLimits &limits)
{
    m_limits = limits;
    showAgain();
}

void NumberTile::setZero()
{
    if (!m_value.present || m_value.isError())
        return;
    m_limits.offset = *m_value.present;
    showAgain();
    Q_EMIT limitsChanged();
}

QString NumberTile::numberText(double value) const
{
    return shownNumber(value - m_limits.offset, m_decimals);
}

QString NumberTile::exactText() const
{
    if (!m_value.present)
        return {};
    return m_value.isError() ? m_errorText : exactNumber(*m_value.present - m_limits.offset);
}

void NumberTile::setValue(const SignalValue &value, const QString &errorText)
{
    m_value = value;
    m_errorText = errorText;
    showAgain();
}

void NumberTile::showAgain()
{
    m_limitText.clear();
    if (!m_value.present) {
        m_text = QStringLiteral("\u2013");
    } else if (m_value.isError()) {
        m_text = m_errorText;
    } else {
        m_text = numberText(*m_value.present);
        const DisplayLimits::Result result = m_limits.check(*m_value.present);
        if (result == DisplayLimits::Below)
            m_limitText = tr("\u25bc below the limit");
        else if (result == DisplayLimits::Above)
            m_limitText = tr("\u25b2 above the limit");
        else if (m_limits.lower || m_limits.upper)
            m_limitText = tr("\u2713 within the limits");
    }
    const bool hasZero = m_limits.offset < 0.0 || m_limits.offset > 0.0;
    m_zeroText = hasZero ? tr("zero at %1").arg(typedText(m_limits.offset)) : QString();
    setAccessibleDescription(
        QStringLiteral("%1 %2 %3 %4").arg(m_text, m_info.scaledUnit, m_limitText, m_zeroText).simplified());
    update();
}

QStringList NumberTile::extremesParts() const
{
    if (!m_value.minimum || !m_value.maximum)
        return {};
    QStringList parts{tr("min %1").arg(numberText(*m_value.minimum)),
                      tr("max %1").arg(numberText(*m_value.maximum))};
    if (m_value.errors > 0)
        parts += tr("%1 errors").arg(QLocale().toString(m_value.errors));
    return parts;
}

QStringList NumberTile::extremesLines(int width, int maxLines) const
{
    const QFontMetrics metrics(font());
    QStringList lines;
    QStringList parts = extremesParts();
    int needed = 0;
    for (const QString &part : qAsConst(parts))
        needed += metrics.horizontalAdvance(QStringLiteral("   ") + part);
    // Without the words where there is no room for them.
    if (maxLines < parts.size() && needed > width) {
        const QString both =
            QStringLiteral("%1 \u2026 %2").arg(numberText(*m_value.minimum), numberText(*m_value.maximum));
        if (metrics.horizontalAdvance(both) <= width) {
            parts.removeFirst();
            parts.first() = both;
        }
    }
    for (const QString &part : parts) {
        const QString longer = lines.isEmpty() ? QString() : QStringLiteral("%1   %2").arg(lines.last(), part);
        if (!lines.isEmpty() && metrics.horizontalAdvance(longer) <= width)
            lines.last() = longer;
        else if (lines.size() < maxLines && metrics.horizontalAdvance(part) <= width)
            lines += part;
        else
            break;
    }
    return lines;
}

// The tool tip shows the texts that do not fit into the tile.
bool NumberTile::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        QStringList lines = QStringList{m_info.scaledName, m_zeroText} + extremesParts();
        lines.removeAll(QString());
        setToolTip(lines.join(QLatin1Char('\n')).toHtmlEscaped());
    }
    return QFrame::event(event);
}

QSize NumberTile::minimumSizeHint() const
{
    const QFontMetrics metrics(font());
    return {metrics.averageCharWidth() * 22 + 2 * tilePadding, metrics.height() * 5 + 2 * tilePadding};
}

QSize NumberTile::sizeHint() const
{
    const QFontMetrics metrics(font());
    return {metrics.averageCharWidth() * 34, metrics.height() * 6 + 2 * tilePadding};
}

void NumberTile::resizeEvent(QResizeEvent *event)
{
    QFrame::resizeEvent(event);
    const QSize size = m_button->sizeHint();
    m_button->setGeometry(width() - size.width() - 3, 3, size.width(), size.height());
}

// The same size of digits for all values of a length, so that the number does not jump.
QFont NumberTile::valueFont(const QString &text, const QRect &area) const
{
    QFont font = this->font();
    font.setBold(true);
    font.setPixelSize(std::clamp(area.height(), smallestDigits, largestDigits));
    QString wide = text;
    for (QChar &c : wide)
        c = c.isDigit() ? QLatin1Char('8') : c;
    const int needed = QFontMetrics(font).horizontalAdvance(wide);
    if (needed > area.width() && needed > 0)
        font.setPixelSize(std::max(font.pixelSize() * area.width() / needed, smallestDigits));
    return font;
}

void NumberTile::paintEvent(QPaintEvent *event)
{
    QFrame::paintEvent(event);
    QPainter painter(this);
    const QFontMetrics metrics(font());
    const QRect area = rect().adjusted(tilePadding, tilePadding, -tilePadding, -tilePadding);
    const int line = metrics.height();
    const QColor text = palette().color(QPalette::WindowText);
    QColor weak = text;
    weak.setAlphaF(0.75);

    // Name and limits above, extremes below, the value between.
    painter.setPen(weak);
    const int titleWidth = area.width() - m_button->width();
    // Where there is no room for its words, the symbol of the limits stands alone.
    const int nameWidth = metrics.horizontalAdvance(m_info.scaledName);
    QString limits = m_limitText;
    if (nameWidth + tilePadding + metrics.horizontalAdvance(limits) > titleWidth)
        limits = limits.left(1);
    // In a narrow tile a symbol alone stands for the zero, the one that scales have for it.
    QString zero = m_zeroText;
    if (nameWidth + 2 * tilePadding + metrics.horizontalAdvance(limits + zero) > titleWidth && !zero.isEmpty())
        zero = QStringLiteral("\u21920\u2190");
    if (!zero.isEmpty())
        limits = limits.isEmpty() ? zero : QStringLiteral("%1  %2").arg(zero, limits);
    const int limitWidth = metrics.horizontalAdvance(limits);
    painter.drawText(
        QRect(area.left(), area.top(), titleWidth, line), Qt::AlignLeft | Qt::AlignVCenter,
        metrics.elidedText(m_info.scaledName, Qt::ElideMiddle, titleWidth - limitWidth - tilePadding));
    const bool isOutside = m_limits.check(m_value.present.value_or(0.0)) != DisplayLimits::Within;
    const bool hasLimits = m_limits.lower || m_limits.upper;
    if (!limits.isEmpty()) {
        if (!m_limitText.isEmpty())
            painter.setPen(colourOf(isOutside ? Meaning::Problem : Meaning::Good, palette()));
        painter.drawText(QRect(area.left(), area.top(), titleWidth, line), Qt::AlignRight | Qt::AlignVCenter,
                         limits);
    }
    painter.setPen(weak);
    // The value is never smaller than the lines around it.
    const int maxLines = std::max(1, (area.height() - line - 4) / line - 1);
    const QStringList extremes = extremesLines(area.width(), maxLines);
    const int below = std::max(1, extremes.size()) * line;
    painter.drawText(QRect(area.left(), area.bottom() - below + 1, area.width(), below),
                     Qt::AlignLeft | Qt::AlignTop, extremes.join(QLatin1Char('\n')));

    const QRect middle = area.adjusted(0, line + 2, 0, -below - 2);
    const bool isError = m_value.isError();
    const QString shown = isError ? QStringLiteral("\u2715 ") + m_text : m_text;
    const QString unit = isError ? QString() : m_info.scaledUnit;
    QRect valueArea = middle;
    const QFont digits = valueFont(unit.isEmpty() ? shown : shown + QStringLiteral("  ") + unit, valueArea);
    painter.setFont(digits);
    if (isError || (hasLimits && m_value.present && isOutside))
        painter.setPen(colourOf(Meaning::Problem, palette()));
    else
        painter.setPen(hasLimits && m_value.present ? colourOf(Meaning::Good, palette()) : text);
    painter.drawText(valueArea, Qt::AlignLeft | Qt::AlignVCenter, shown);
    valueArea.setLeft(valueArea.left() + QFontMetrics(digits).horizontalAdvance(shown + QLatin1Char(' ')));
    QFont unitFont = digits;
    unitFont.setBold(false);
    painter.setFont(unitFont);
    painter.drawText(valueArea, Qt::AlignLeft | Qt::AlignVCenter, unit);
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    }
}

void NumberTile::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Copy))
        QApplication::clipboard()->setText(exactText());
    else if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Menu)
        showMenu();
    else
        QFrame::keyPressEvent(event);
}

} // namespace Explorer
