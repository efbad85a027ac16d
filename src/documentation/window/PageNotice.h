#pragma once

#include <QWidget>

/// What stands in the place of a page that cannot be shown: one sentence, and a way out where there is one.
class PageNotice : public QWidget {
    Q_OBJECT

public:
    /// With `canOpenInBrowser` there is a button that does.
    PageNotice(const QString& sentence, bool canOpenInBrowser, QWidget* parent = nullptr);

Q_SIGNALS:
    void browserRequested();
};
