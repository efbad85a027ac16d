// Prints every text that the windows show, in the language of the environment: a JSON array of texts.
#include "fakes/WindowedApplication.h"
#include "feedback/PXRatingWindowController.h"
#include "support/base/Translations.h"
#include "ui/help/RatingWindow.h"
#include "ui/preferences/PreferencesWindow.h"

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
        for (const auto* items : widget->findChildren<QAbstractItemModel*>(Qt::FindDirectChildrenOnly)) {
            for (int i = 0; i < items->rowCount(); ++i)
                texts.insert(items->index(i, 0).data().toString());
        }
        for (const QAction* action : widget->actions())
            add(*action, {"text", "toolTip"});
    }
    return texts;
}

}  // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    installTranslations();
    WindowedApplication app;
    const ConversionJob* job = app.add("1.mkv");
    if (!QTest::qWaitFor([&] { return job->state() == JobState::Finished; }, 60000)) return 1;
    if (!app.open({"2.mkv"})) return 1;
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
