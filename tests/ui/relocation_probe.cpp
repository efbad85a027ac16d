// The window program with a simulated user who presses the first button of every alert as soon as it is
// shown. Writes a line to standard output for each: the message and the button. The same with the bar above
// the list, where the environment variable PRESSES names the button.
#include "support/base/Utf8Locale.h"
#include "ui/Application.h"
#include "ui/dialogs/AlertDialog.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

#include <cstdio>

namespace {

class User : public QObject {
public:
    using QObject::QObject;
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() != QEvent::Show) return false;
        if (const auto* alert = qobject_cast<AlertDialog*>(object)) {
            press(alert->accessibleDescription(),
                  alert->findChild<QDialogButtonBox*>()->buttons().constFirst());
        } else if (object->objectName() == "lastQueueBar") {
            press(static_cast<QWidget*>(object)->accessibleName(),
                  object->findChild<QAbstractButton*>(qEnvironmentVariable("PRESSES", "none")));
        }
        return false;
    }

private:
    /// `button` may be null.
    static void press(const QString& text, QAbstractButton* button) {
        std::printf("%s [%s]\n", qPrintable(text), button ? qPrintable(button->text()) : "");
        std::fflush(stdout);
        if (button) QTimer::singleShot(0, button, &QAbstractButton::click);
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
