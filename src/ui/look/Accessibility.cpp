#include "ui/look/Accessibility.h"

#include <QAccessibleWidget>
#include <QVariant>
#include <QWidget>

namespace accessibility {

namespace {

constexpr const char* kRole = "accessibleRole";

QAccessibleInterface* makeWithRole(const QString&, QObject* object) {
    const QVariant role = object->property(kRole);
    auto* widget = qobject_cast<QWidget*>(object);
    if (!widget || !role.isValid()) return nullptr;
    return new QAccessibleWidget(widget, static_cast<QAccessible::Role>(role.toInt()));
}

#if QT_VERSION < QT_VERSION_CHECK(6, 8, 0)
/// A widget with the role of a notification, which screen readers read when it is reported as shown. It is
/// in the tree of accessible objects, and cannot be seen.
QWidget& notificationOf(QWidget& window) {
    const QString name = QStringLiteral("announcement");
    if (auto* known = window.findChild<QWidget*>(name, Qt::FindDirectChildrenOnly)) return *known;
    auto* made = new QWidget(&window);
    made->setObjectName(name);
    made->setAttribute(Qt::WA_TransparentForMouseEvents);
    made->setGeometry(0, 0, 1, 1);
    setRole(*made, QAccessible::Notification);
    made->show();
    return *made;
}
#endif

}  // namespace

void setRole(QWidget& widget, QAccessible::Role role) {
    [[maybe_unused]] static const bool isInstalled = [] {
        QAccessible::installFactory(makeWithRole);
        return true;
    }();
    widget.setProperty(kRole, static_cast<int>(role));
}

void announce(QWidget& origin, const QString& text) {
    if (!QAccessible::isActive() || text.isEmpty()) return;
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    QAccessibleAnnouncementEvent event(&origin, text);
#else
    QWidget& notification = notificationOf(*origin.window());
    notification.setAccessibleName(text);
    QAccessibleEvent event(&notification, QAccessible::ObjectShow);
#endif
    QAccessible::updateAccessibility(&event);
}

}  // namespace accessibility
