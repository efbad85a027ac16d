#pragma once

#include "convert/JobState.h"
#include "ui/window/JobRow.h"

#include <QPersistentModelIndex>
#include <QStyledItemDelegate>

#include <optional>

/// Paints a job's row: its picture with the sign of its state, name, status, progress bar or note, and its
/// buttons. Main thread only.
class JobDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// The layout of the row when it is painted with `option`.
    static jobrow::Layout layoutOf(const QStyleOptionViewItem& option, const QModelIndex& index);
    /// What is painted of the note: a click on it shows the details. Null: there is none.
    static QRect noteOf(const QStyleOptionViewItem& option, const QModelIndex& index);
    /// In a few words, for tool tips and menus.
    static QString titleOf(jobrow::Button button, JobState state);
    static QString iconOf(jobrow::Button button, JobState state);

    /// What is under the pointer, or pressed.
    struct Hot {
        QPersistentModelIndex index;  ///< Invalid: nothing.
        std::optional<jobrow::Button> button;
        bool isNote = false;
        bool isPressed = false;
    };
    void setHot(const Hot& hot) { m_hot = hot; }

private:
    struct Row;
    static void paintPicture(const Row& row);
    void paintText(const Row& row) const;
    void paintNote(const Row& row, const QRect& rect) const;
    void paintButtons(const Row& row) const;

    Hot m_hot;
};
