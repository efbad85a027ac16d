#include "ui/window/JobListAccessible.h"

#include "convert/ConversionJob.h"
#include "ui/window/JobDelegate.h"
#include "ui/window/JobListModel.h"
#include "ui/window/JobListView.h"

#include <QAccessibleWidget>
#include <QHash>
#include <QMetaObject>
#include <QPointer>

#include <algorithm>

namespace joblist {

namespace {

constexpr int kWholePercent = 100;

class Row : public QAccessibleInterface, public QAccessibleValueInterface, public QAccessibleActionInterface {
public:
    Row(JobListView& view, const QModelIndex& index) : m_view(&view), m_index(index) {}

    int row() const { return m_index.row(); }

    bool isValid() const override { return m_view && m_index.isValid(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return m_view ? m_view->window()->windowHandle() : nullptr; }
    QAccessibleInterface* parent() const override {
        return m_view ? QAccessible::queryAccessibleInterface(m_view) : nullptr;
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }

    QString text(QAccessible::Text text) const override {
        switch (text) {
            case QAccessible::Name:
                return m_index.data().toString();
            case QAccessible::Description:
                return m_index.data(Qt::AccessibleDescriptionRole).toString();
            default:
                return {};
        }
    }
    void setText(QAccessible::Text, const QString&) override {}

    QRect rect() const override {
        if (!isValid()) return {};
        const QRect row = m_view->visualRect(m_index);
        return {m_view->viewport()->mapToGlobal(row.topLeft()), row.size()};
    }

    QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        const bool isInView = m_view->visualRect(m_index).intersects(m_view->viewport()->rect());
        state.invisible = !m_view->isVisible();
        state.offscreen = !isInView;
        state.selectable = true;
        state.multiSelectable = true;
        state.selected = m_view->selectionModel()->isSelected(m_index);
        state.focusable = true;
        state.focused = m_view->hasFocus() && m_view->currentIndex() == m_index;
        state.busy = statusIsRunning(jobState());
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
        if (type == QAccessible::ActionInterface) return static_cast<QAccessibleActionInterface*>(this);
        return nullptr;
    }

    QVariant currentValue() const override { return m_index.data(JobListModel::ProgressRole).toDouble(); }
    void setCurrentValue(const QVariant&) override {}
    QVariant minimumValue() const override { return 0; }
    QVariant maximumValue() const override { return kWholePercent; }
    QVariant minimumStepSize() const override { return 0; }

    QStringList actionNames() const override {
        QStringList names;
        if (!isValid()) return names;
        const QList<jobrow::Button> buttons = jobrow::buttonsOf(jobState());
        for (const jobrow::Button button : buttons) {
            if (button != jobrow::Button::More) names.append(JobDelegate::titleOf(button, jobState()));
        }
        return names << showMenuAction() << setFocusAction();
    }
    QString localizedActionName(const QString& name) const override { return name; }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

    /// Later, since what is done may wait for the user.
    void doAction(const QString& name) override {
        if (!isValid()) return;
        QMetaObject::invokeMethod(
            m_view, [view = m_view.data(), index = m_index, name] { carryOut(*view, index, name); },
            Qt::QueuedConnection);
    }

private:
    JobState jobState() const { return static_cast<JobState>(m_index.data(JobListModel::StateRole).toInt()); }

    static void carryOut(JobListView& view, const QModelIndex& index, const QString& name) {
        if (!index.isValid()) return;
        const auto state = static_cast<JobState>(index.data(JobListModel::StateRole).toInt());
        if (name == setFocusAction()) {
            view.setCurrentIndex(index);
            view.setFocus();
        } else if (name == showMenuAction()) {
            view.showMenu(index);
        } else {
            const QList<jobrow::Button> buttons = jobrow::buttonsOf(state);
            const auto named = std::ranges::find_if(
                buttons, [&](jobrow::Button each) { return name == JobDelegate::titleOf(each, state); });
            if (named != buttons.end()) view.pressButton(index, *named);
        }
    }

    QPointer<JobListView> m_view;
    QPersistentModelIndex m_index;
};

class List : public QAccessibleWidget {
public:
    explicit List(JobListView* view) : QAccessibleWidget(view, QAccessible::List) {
        QObject::connect(view->model(), &QAbstractItemModel::rowsInserted, &m_context,
                         [this](const QModelIndex&, int first, int last) { onInserted(first, last); });
        QObject::connect(view->model(), &QAbstractItemModel::rowsAboutToBeRemoved, &m_context,
                         [this](const QModelIndex&, int first, int last) { forget(first, last); });
    }

    QAccessibleInterface* child(int row) const override {
        const QModelIndex index = model()->index(row, 0);
        const auto* job = index.data(JobListModel::JobRole).value<ConversionJob*>();
        if (!job) return nullptr;
        const auto known = m_rows.constFind(job);
        if (known != m_rows.constEnd()) return QAccessible::accessibleInterface(*known);
        auto* made = new Row(*view(), index);
        m_rows.insert(job, QAccessible::registerAccessibleInterface(made));
        return made;
    }
    int childCount() const override { return model()->rowCount(); }
    int indexOfChild(const QAccessibleInterface* child) const override {
        const auto* row = dynamic_cast<const Row*>(child);
        return row ? row->row() : -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        const QModelIndex index = view()->indexAt(view()->viewport()->mapFromGlobal(QPoint(x, y)));
        return index.isValid() ? child(index.row()) : nullptr;
    }
    QAccessibleInterface* focusChild() const override {
        const QModelIndex current = view()->currentIndex();
        return view()->hasFocus() && current.isValid() ? child(current.row()) : nullptr;
    }

protected:
    ~List() override {
        for (const QAccessible::Id id : std::as_const(m_rows))
            QAccessible::deleteAccessibleInterface(id);
    }

private:
    JobListView* view() const { return static_cast<JobListView*>(widget()); }
    QAbstractItemModel* model() const { return view()->model(); }

    /// Of more rows than anybody listens to, a screen reader learns when it looks at the list.
    void onInserted(int first, int last) {
        constexpr int kMany = 100;
        for (int row = first; row <= qMin(last, first + kMany); ++row) {
            QAccessibleEvent created(child(row), QAccessible::ObjectCreated);
            QAccessible::updateAccessibility(&created);
        }
    }

    void forget(int first, int last) {
        for (int row = first; row <= last && !m_rows.isEmpty(); ++row) {
            const auto* job = model()->index(row, 0).data(JobListModel::JobRole).value<ConversionJob*>();
            const auto known = m_rows.constFind(job);
            if (known == m_rows.constEnd()) continue;
            QAccessibleEvent destroyed(QAccessible::accessibleInterface(*known),
                                       QAccessible::ObjectDestroyed);
            QAccessible::updateAccessibility(&destroyed);
            QAccessible::deleteAccessibleInterface(*known);
            m_rows.erase(known);
        }
    }

    mutable QHash<const ConversionJob*, QAccessible::Id> m_rows;  ///< Those that were asked for.
    QObject m_context;
};

QAccessibleInterface* make(const QString& className, QObject* object) {
    if (className != u"JobListView") return nullptr;
    auto* view = qobject_cast<JobListView*>(object);
    return view && view->model() ? new List(view) : nullptr;
}

}  // namespace

void installAccessible() {
    [[maybe_unused]] static const bool isInstalled = [] {
        QAccessible::installFactory(make);
        return true;
    }();
}

void reportChange(JobListView& view, const QModelIndex& first, const QModelIndex& last,
                  const QList<int>& roles) {
    if (!QAccessible::isActive()) return;
    QAccessibleInterface* list = QAccessible::queryAccessibleInterface(&view);
    for (int row = first.row(); list && row <= last.row(); ++row) {
        const QModelIndex index = first.siblingAtRow(row);
        // What all rows learn, such as a setting, is news where it can be seen.
        if (first != last && !view.visualRect(index).intersects(view.viewport()->rect())) continue;
        QAccessibleInterface* item = list->child(row);
        if (!item) continue;
        if (roles.contains(JobListModel::ProgressRole)) {
            QAccessibleValueChangeEvent change(item, index.data(JobListModel::ProgressRole));
            QAccessible::updateAccessibility(&change);
            continue;
        }
        QAccessibleEvent described(item, QAccessible::DescriptionChanged);
        QAccessible::updateAccessibility(&described);
        QAccessible::State changed;
        changed.busy = true;
        QAccessibleStateChangeEvent state(item, changed);
        QAccessible::updateAccessibility(&state);
    }
}

}  // namespace joblist
