// The peer of the row `start`: an empty window. Ends when it is exposed.

#include <cstdlib>

#include <QApplication>
#include <QMainWindow>
#include <QTimer>
#include <QWindow>

int main(int count, char** arguments) {
    const QApplication application(count, arguments);
    QMainWindow window;
    window.resize(1120, 660);
    window.show();
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&window] {
        if (window.windowHandle()->isExposed()) {
            std::_Exit(0);
        }
    });
    look.start(1);
    return QApplication::exec();
}
