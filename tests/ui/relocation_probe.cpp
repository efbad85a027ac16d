// The window program with a simulated user who presses the first button of every alert as soon as it is
// shown. Writes a line to standard output for each: the message and the button.
#include "support/base/Utf8Locale.h"
#include "ui/Application.h"
#include "ui/dialogs/AlertDialog.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QTimer>

#include <cstdio>

namespace {

class User : public QObject {
public:
    using QObject::QObject;
    bool eventFilter(QObject* object, QEvent* event) override {
        const auto* alert = qobject_cast<AlertDialog*>(object);
        if (alert && event->type() == QEvent::Show) {
            QAbstractButton* first = alert->findChild<QDialogButtonBox*>()->buttons().constFirst();
            std::printf("%s [%s]\n", qPrintable(alert->accessibleDescription()), qPrintable(first->text()));
            std::fflush(stdout);
            QTimer::singleShot(0, first, &QAbstractButton::click);
        }
        return false;
    }
};

void sitDown() {
    QCoreApplication::instance()->installEventFilter(new User(QCoreApplication::instance()));
}

}  // namespace

Q_COREAPP_STARTUP_FUNCTION(sitDown)

int main(int argc, char** argv) {
    makeSureOfUtf8();
    return runApplication(argc, argv);
}
