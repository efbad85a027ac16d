#pragma once

#include <QHash>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

/// Which files were added together, and from which folders. Main thread only.
class Drops {
public:
    enum class Origin { User, WatchFolder };

    /// `files` came with these folders, which were searched for them. Returns the drop's number, from 1 on.
    int add(const QStringList& files, const QStringList& folders, Origin origin = Origin::User);
    void clear();

    /// The folders of all drops.
    QStringList folders() const;

    /// The last drop that the file came with; 0: none.
    int numberOf(const QString& file) const { return m_numbers.value(file); }
    /// Whence it came with that drop.
    Origin originOf(const QString& file) const;
    /// The file's folder, relative to where the added folder is: "Series/Season 1" for
    /// "/x/Series/Season 1/1.mkv" that came with "/x/Series". Empty for a file that was added by itself.
    QString folderOf(const QString& file) const;

private:
    QMap<int, QStringList> m_folders;  ///< Of each drop.
    int m_lastNumber = 0;              ///< Numbers are not used again.
    QHash<QString, int> m_numbers;
    QSet<int> m_arrivals;  ///< Those that came from the watch folder.
};
