#include "settings/Changes.h"

#include "settings/Setting.h"

namespace settings {

// Not destroyed at exit: other threads may still write then.
Changes& Changes::shared() {
    static auto& changes = *new Changes;
    return changes;
}

void Row::onChange(QObject* context, const std::function<void()>& action) const {
    QObject::connect(&Changes::shared(), &Changes::changed, context,
                     [row = key, action](const QString& changed) {
                         if (changed == row) action();
                     });
}

}  // namespace settings
