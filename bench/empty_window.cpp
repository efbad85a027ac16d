// The least that a program with a window can be.
#include <QApplication>
#include <QMainWindow>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QMainWindow window;
    window.resize(760, 560);
    window.show();
    return QApplication::exec();
}
