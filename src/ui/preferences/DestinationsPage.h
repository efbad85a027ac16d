#pragma once

#include <QObject>

class Destinations;
class FolderList;
class QWidget;

/// Connects the page of the destinations with `destinations`: the page shows the default destination and the
/// folders, and passes the user's choices on. Main thread only.
class DestinationsPage : public QObject {
    Q_OBJECT

public:
    /// `page` becomes the parent; `destinations` must outlive it.
    DestinationsPage(QWidget& page, Destinations& destinations);

    /// Looks again which folders can be used.
    void refresh();

private:
    void refreshButtons();

    QWidget& m_page;
    Destinations& m_destinations;
    FolderList* m_list = nullptr;
};
