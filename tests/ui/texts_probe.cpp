// Prints every text that the windows show, in the language of the environment: a JSON array of texts.
#include "fakes/WindowedApplication.h"
#include "feedback/PXRatingWindowController.h"
#include "support/base/Translations.h"
#include "ui/help/RatingWindow.h"
#include "ui/preferences/PreferencesWindow.h"

#include <QApplication>
#include <QComboBox>
#include <QJsonArray>
#include <QJsonDocument>
#include <QListWidget>

#include <cstdio>

namespace {

QSet<QString> shownTexts() {
    QSet<QString> texts;
    const auto add = [&](const QObject& object, std::initializer_list<const char*> properties) {
        for (const char* name : properties)
            texts.insert(object.property(name).toString());
    };
    const QWidgetList widgets = QApplication::allWidgets();
    for (const QWidget* widget : widgets) {
        add(*widget, {"windowTitle", "text", "title", "placeholderText", "toolTip", "accessibleName",
                      "accessibleDescription", "suffix"});
        if (const auto* box = qobject_cast<const QComboBox*>(widget)) {
            for (int i = 0; i < box->count(); ++i)
                texts.insert(box->itemText(i));
        }
        if (const auto* list = qobject_cast<const QListWidget*>(widget)) {
            for (int i = 0; i < list->count(); ++i)
                texts.insert(list->item(i)->text());
        }
        for (const QAction* action : widget->actions())
            add(*action, {"text", "toolTip"});
    }
    return texts;
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    installTranslations();
    WindowedApplication app;
    const ConversionJob* job = app.add("1.mkv");
    if (!QTest::qWaitFor([&] { return job->state() == JobState::Finished; }, 60000)) return 1;
    app.delegate.openFiles({app.write("2.mkv")});
    if (!QTest::qWaitFor([&] { return app.sheetIsReady(); }, 60000)) return 1;
    for (const char* command : {"preferencesAction", "aboutAction"})
        app.window->findChild<QAction*>(command)->trigger();
    PXRatingWindowController controller;
    RatingWindow rating(controller, app.window.get());
    rating.show();
    QSet<QString> texts = shownTexts();
    for (const JobState state : {JobState::Queued, JobState::Converting, JobState::Paused, JobState::Failed})
        texts.insert(nameOfState(state));
    texts.insert(job->stateInfoString());
    texts.remove({});
    std::puts(QJsonDocument(QJsonArray::fromStringList(texts.values())).toJson().constData());
    return 0;
}
