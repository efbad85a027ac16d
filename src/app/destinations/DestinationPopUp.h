#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

/// One line of a destination pop-up.
struct DestinationItem {
    enum class Kind {
        Ask,           ///< Asks with a save panel.
        NextToSource,  ///< Beside the movie.
        Folder,        ///< A stored folder.
        Separator,
        Choose,  ///< Command: choose a new folder.
        Clear    ///< Command: forget all stored folders.
    };
    Kind kind = Kind::Ask;
    QString title;  ///< Empty for a separator.
};

/// The items of a destination pop-up and which is selected: ask, next to the source, a separator, the stored
/// folders, and the pop-up's commands at the end. Stored folder number k stands at index k + 3. Main thread
/// only.
class DestinationPopUp : public QObject {
    Q_OBJECT

public:
    /// The one on the add sheet ends with the command to choose a folder; the one in the preferences has the
    /// command to clear them, too.
    enum class Place { AddSheet, Preferences };

    static constexpr qsizetype kFirstFolder = 3;

    explicit DestinationPopUp(Place place, QObject* parent = nullptr);

    Place place() const { return m_place; }
    const QList<DestinationItem>& items() const { return m_items; }
    qsizetype selected() const { return m_selected; }
    /// An index of a separator or beyond the items is kept too: nothing is selected then.
    void select(qsizetype index);
    /// Puts `names` in as the stored folders and selects `index`.
    void rebuild(const QStringList& names, qsizetype index);

Q_SIGNALS:
    /// The items or the selection changed.
    void changed();

private:
    const Place m_place;
    QList<DestinationItem> m_items;
    qsizetype m_selected = 0;
};
