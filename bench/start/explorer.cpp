// SPDX-License-Identifier: MIT
// The explorer up to its first drawn window, as its main() does it.
#include "explorer/application/extensions.h"
#include "explorer/application/translations.h"
#include "explorer/window/mainwindow.h"

#include <QApplication>
#include <QTimer>

namespace {

class UntilDrawn : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) // followed by what is drawn in it
            QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(0); });
        return false;
    }
};

} // namespace

int main(int argc, char *argv[])
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("SondixQt start benchmark"));
    QApplication::setOrganizationName(QStringLiteral("SondixQt"));
    Explorer::installTranslations(application, QStringLiteral("de"));
    Explorer::MainWindow window;
    new Explorer::Extensions(window);
    UntilDrawn drawn;
    window.installEventFilter(&drawn);
    window.show();
    return QApplication::exec();
}
