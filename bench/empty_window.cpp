// The smallest Qt program with a window, for comparison.
#include <QApplication>
#include <QMainWindow>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QMainWindow window;
    window.resize(760, 560);
    window.show();
    return QApplication::exec();
}
