// SPDX-License-Identifier: MIT
#pragma once

#include "explorer/sensor/signalvalues.h"

#include <SondixQt/transmitteddatainfo.h>

#include <QFrame>
#include <QStringList>

class QLineEdit;
class QMenu;
class QToolButton;

namespace Explorer {

/// One signal of the NumbersView.
class NumberTile : public QFrame
{
    Q_OBJECT
public:
    explicit NumberTile(const SondixQt::SignalInfo &info, QWidget *parent = nullptr);
    ~NumberTile() override;

    const SondixQt::SignalInfo &info() const { return m_info; }
    const DisplayLimits &limits() const { return m_limits; }
    void setLimits(const DisplayLimits &limits);

    /// Shows \a value; \a errorText is the text of the present value if that is an error value.
    void setValue(const SignalValue &value, const QString &errorText);

    /// The present value minus the offset, with all its digits; empty if there is no value.
    QString exactText() const;
    /// The present value as it is shown.
    QString shownText() const { return m_text; }
    /// What the limits say: a symbol with words, or nothing.
    QString limitText() const { return m_limitText; }
    /// Such as "zero at 1.5"; empty if no zero is set.
    QString zeroText() const { return m_zeroText; }
    /// Makes the present value the zero of the screen; does nothing if it is an error value.
    void setZero();

    /// Minimum, maximum and errors in lines that are at most \a width pixels wide: no number is cut. What does not fit
    /// into \a maxLines lines is left out.
    QStringList extremesLines(int width, int maxLines) const;

    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

Q_SIGNALS:
    void limitsChanged();
    void resetRequested();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool event(QEvent *event) override;

private:
    void makeMenu();
    void showMenu();
    void fillMenu();
    void takeMenu();
    void showAgain();
    QString numberText(double value) const;
    QStringList extremesParts() const;
    QFont valueFont(const QString &text, const QRect &area) const;

    const SondixQt::SignalInfo m_info;
    const int m_decimals;
    DisplayLimits m_limits;
    SignalValue m_value;
    QString m_errorText;
    QString m_text;
    QString m_limitText;
    QString m_zeroText;
    QToolButton *m_button;
    QMenu *m_menu = nullptr;
    QLineEdit *m_lower = nullptr;
    QLineEdit *m_upper = nullptr;
    QLineEdit *m_offset = nullptr;
};

} // namespace Explorer
