#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

/// One item of a destination pop-up.
struct DestinationItem {
    enum class Kind {
        Ask,           ///< Ask with a save panel for each movie.
        NextToSource,  ///< The folder of the movie.
        Folder,        ///< A stored folder.
        Separator,
        Choose,  ///< Command: choose a new folder.
        Clear    ///< Command: forget all stored folders.
    };
    Kind kind = Kind::Ask;
    QString title;  ///< Empty for a separator.
};

/// The items of a destination pop-up and the selected one: ask, next to the source, a separator, the stored
/// folders, and the commands at the end. Stored folder number k has index k + 3. Main thread only.
class DestinationPopUp : public QObject {
    Q_OBJECT

public:
    /// The pop-up of the add sheet ends with the command to choose a folder; the one of the preferences has
    /// the command to clear the list, too.
    enum class Place { AddSheet, Preferences };

    static constexpr qsizetype kFirstFolder = 3;

    explicit DestinationPopUp(Place place, QObject* parent = nullptr);

    Place place() const { return m_place; }
    const QList<DestinationItem>& items() const { return m_items; }
    qsizetype selected() const { return m_selected; }
    /// The index of a separator, or one past the last item, is accepted: nothing is selected then.
    void select(qsizetype index);
    /// The user selects it.
    void choose(qsizetype index);
    /// Whether the user has selected something since rebuild().
    bool isChosen() const { return m_isChosen; }
    /// Sets the stored folders to `names` and selects `index`.
    void rebuild(const QStringList& names, qsizetype index);

Q_SIGNALS:
    /// The items or the selection changed.
    void changed();

private:
    const Place m_place;
    QList<DestinationItem> m_items;
    qsizetype m_selected = 0;
    bool m_isChosen = false;
};
