#pragma once

#include <QWidget>

/// Placeholder for a page that cannot be shown: one sentence and an optional button. Main thread only.
class PageNotice : public QWidget {
    Q_OBJECT

public:
    /// `canOpenInBrowser` adds a button that emits browserRequested().
    PageNotice(const QString& sentence, bool canOpenInBrowser, QWidget* parent = nullptr);

Q_SIGNALS:
    void browserRequested();
};
