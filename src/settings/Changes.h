#pragma once

#include <QObject>

namespace settings {

/// The source of Row::onChange(), for those who listen to every setting. One for the process; the signal
/// comes in the thread that wrote, so connections of other threads are queued.
class Changes : public QObject {
    Q_OBJECT

public:
    static Changes& shared();

Q_SIGNALS:
    /// The stored value of a setting of the table is another one now: somebody wrote it, or another instance
    /// did and the file was read again.
    void changed(const QString& key);
};

}  // namespace settings
