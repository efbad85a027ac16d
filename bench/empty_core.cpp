#include <QCoreApplication>

/// What a program costs that does nothing but to start Qt.
int main(int argc, char* argv[]) {
    const QCoreApplication application(argc, argv);
    return 0;
}
