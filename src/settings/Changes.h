#pragma once

#include <QObject>

namespace settings {

/// Reports changes of all settings; Row::onChange() uses it. One instance for the process. The signal is
/// emitted in the thread that wrote the value, so connections to objects of other threads are queued.
class Changes : public QObject {
    Q_OBJECT

public:
    static Changes& shared();

Q_SIGNALS:
    /// The stored value of a known setting has changed: it was written here, or another instance wrote it and
    /// the file was read again.
    void changed(const QString& key);
};

}  // namespace settings
