// SPDX-License-Identifier: MIT
// What the monkey does with keyboard and mouse.
#include "monkey.h"

#include <QMenu>

using namespace Explorer;

void Monkey::pressKey()
{
    static const QVector<int> keys{
        Qt::Key_Tab,      Qt::Key_Backtab, Qt::Key_Return, Qt::Key_Escape, Qt::Key_Space,     Qt::Key_Left,
        Qt::Key_Right,    Qt::Key_Up,      Qt::Key_Down,   Qt::Key_Home,   Qt::Key_End,       Qt::Key_PageUp,
        Qt::Key_PageDown, Qt::Key_Plus,    Qt::Key_Minus,  Qt::Key_0,      Qt::Key_1,         Qt::Key_5,
        Qt::Key_A,        Qt::Key_S,       Qt::Key_Z,      Qt::Key_Delete, Qt::Key_Backspace, Qt::Key_F1,
        Qt::Key_F2,       Qt::Key_F4,      Qt::Key_F5,     Qt::Key_F7,     Qt::Key_F8,        Qt::Key_F9,
        Qt::Key_B,        Qt::Key_N,       Qt::Key_R,      Qt::Key_W,      Qt::Key_O,         Qt::Key_Menu,
        Qt::Key_F10,      Qt::Key_C,       Qt::Key_V,      Qt::Key_X,      Qt::Key_L};
    static const QVector<Qt::KeyboardModifiers> modifiers{
        Qt::NoModifier,      Qt::NoModifier,    Qt::NoModifier,  Qt::NoModifier,
        Qt::ControlModifier, Qt::ShiftModifier, Qt::AltModifier, Qt::ControlModifier | Qt::ShiftModifier};
    QWidget *widget = QApplication::focusWidget();
    QWidget *const window = usableWindow();
    if (window && (!widget || widget->window() != window))
        widget = window;
    if (!widget || chance(20))
        widget = randomWidget();
    if (!widget)
        return;
    const auto key = static_cast<Qt::Key>(oneOf(keys));
    const Qt::KeyboardModifiers modifier = oneOf(modifiers);
    note(QString("key %1 in %2 %3")
             .arg(QKeySequence(static_cast<int>(modifier) | key).toString(), widget->metaObject()->className(),
                  widget->objectName()));
    QTest::keyClick(widget, key, modifier);
}

void Monkey::typeText()
{
    static const QStringList texts{"1",
                                   "-3.25",
                                   "1e300",
                                   "nan",
                                   "TX270@RS232,port=COM3",
                                   "CC430@TCP/IP",
                                   "@@,,==",
                                   "Get_Info",
                                   "Set_Samplerate SP_Measrate=2.5",
                                   "\u00e4\u00f6\u00fc \u4e2d \u202e",
                                   "2.5",
                                   "SP_",
                                   "Set_",
                                   "0",
                                   " ",
                                   "999999999999999999999"};
    const QString text = oneOf(texts);
    const QPointer<QWidget> widget = QApplication::focusWidget();
    if (!widget || widget->window() != usableWindow())
        return;
    note(QString("type '%1' in %2 %3").arg(text, widget->metaObject()->className(), widget->objectName()));
    for (const QChar character : text) {
        if (!widget)
            return;
        QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(character));
        QApplication::sendEvent(widget, &press);
    }
    if (widget && chance(50))
        QTest::keyClick(widget, Qt::Key_Return);
}

void Monkey::clickMouse()
{
    const QPointer<QWidget> widget = randomWidget();
    if (!widget)
        return;
    const Qt::MouseButton button = chance(15) ? Qt::RightButton : Qt::LeftButton;
    const QPoint point = randomPoint(*widget);
    note(QString("click %1 in %2 %3").arg(button).arg(widget->metaObject()->className(), widget->objectName()));
    QTest::mouseMove(widget, point);
    if (widget)
        QTest::mousePress(widget, button, {}, point);
    if (widget)
        QTest::mouseRelease(widget, button, {}, point);
    if (widget && chance(15))
        QTest::mouseDClick(widget, button, {}, point);
    if (widget && button == Qt::RightButton) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, point, widget->mapToGlobal(point));
        QApplication::sendEvent(widget, &event);
    }
}

void Monkey::dragMouse()
{
    const QPointer<QWidget> widget = randomWidget();
    if (!widget)
        return;
    static const QVector<Qt::KeyboardModifiers> modifiers{Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier};
    const Qt::KeyboardModifiers modifier = oneOf(modifiers);
    const Qt::MouseButton button = chance(70) ? Qt::LeftButton : chance(50) ? Qt::RightButton : Qt::MiddleButton;
    note(QString("drag %1 in %2 %3").arg(button).arg(widget->metaObject()->className(), widget->objectName()));
    QTest::mousePress(widget, button, modifier, randomPoint(*widget));
    for (int i = 0; i < 4 && widget; ++i) {
        const QPoint point = randomPoint(*widget);
        QMouseEvent move(QEvent::MouseMove, point, widget->mapToGlobal(point), Qt::NoButton, button, modifier);
        QApplication::sendEvent(widget, &move);
    }
    if (widget)
        QTest::mouseRelease(widget, button, modifier, randomPoint(*widget));
}

void Monkey::turnWheel()
{
    const QPointer<QWidget> widget = randomWidget();
    if (!widget)
        return;
    const QPoint point = randomPoint(*widget);
    const int turn = (chance(50) ? 120 : -120) * (1 + random(3));
    static const QVector<Qt::KeyboardModifiers> modifiers{Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier};
    note(QString("wheel in %1 %2").arg(widget->metaObject()->className(), widget->objectName()));
    QWheelEvent event(point, widget->mapToGlobal(point), {}, {0, turn}, Qt::NoButton, oneOf(modifiers),
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget, &event);
}

void Monkey::triggerAction()
{
    const QList<QMenu *> menus = m_window->findChildren<QMenu *>();
    if (!menus.isEmpty() && chance(20))
        Q_EMIT oneOf(menus)->aboutToShow(); // some fill themselves
    QList<QPointer<QAction>> actions;
    for (QAction *action : m_window->findChildren<QAction *>()) {
        const bool isQuit = action->objectName() == "quitAction";
        if (action->isEnabled() && action->isVisible() && !action->isSeparator() && (!isQuit || chance(5)))
            actions.append(action);
    }
    if (actions.isEmpty())
        return;
    const QPointer<QAction> action = oneOf(actions);
    note(QString("action %1 %2").arg(action->objectName(), action->text()));
    action->trigger();
}

void Monkey::changeSize()
{
    note("size");
    if (chance(10))
        m_window->setWindowState(m_window->windowState() ^ Qt::WindowMaximized);
    else
        m_window->resize(200 + random(1900), 150 + random(1200));
}
