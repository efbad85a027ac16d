#pragma once

#include "convert/JobState.h"
#include "ui/window/JobRow.h"

#include <QPersistentModelIndex>
#include <QStyledItemDelegate>

#include <optional>

/// Paints a job's row: icon and text of its state, name, status, progress bar or its note, and the buttons if
/// the row is hovered or the current one. Main thread only.
class JobDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// The layout of a row that is painted with `option`.
    static jobrow::Layout layoutOf(const QStyleOptionViewItem& option);
    /// In one or two words, for tool tips and menus.
    static QString titleOf(jobrow::Button button, JobState state);
    static QString iconOf(jobrow::Button button, JobState state);

    /// The button under the pointer, or the pressed one; invalid index: none.
    void setHot(const QModelIndex& index, std::optional<jobrow::Button> button, bool isPressed);

private:
    void paintButtons(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index,
                      const jobrow::Layout& layout) const;

    QPersistentModelIndex m_hotIndex;
    std::optional<jobrow::Button> m_hotButton;
    bool m_isPressed = false;
};
