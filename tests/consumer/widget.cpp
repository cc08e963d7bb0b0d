// SPDX-License-Identifier: MIT
#include <SondixQt/SondixQt>

#include <QApplication>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdio>

/// A window with the picture of a sensor, as in a desktop application.
class SensorWindow : public QWidget
{
    Q_OBJECT
public:
    SensorWindow()
        : picture(new QLabel(this))
    {
        auto *const layout = new QVBoxLayout(this);
        layout->addWidget(picture);
        picture->setPixmap(SondixQt::getSensorImage(SondixQt::TX270));
    }

    bool showsPicture() const { return picture->pixmap(Qt::ReturnByValue).width() > 0 && picture->isVisible(); }

private:
    QLabel *picture;
};

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    SensorWindow window;
    window.show();
    QTimer::singleShot(0, &window, [&] { QApplication::exit(window.showsPicture() ? 0 : 1); });
    const int result = QApplication::exec();
    std::printf("a window %s the picture of a TX270\n", result == 0 ? "shows" : "lacks");
    return result;
}

#include "widget.moc"
