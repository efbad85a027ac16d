#pragma once

#include <QString>
#include <QStringList>

#include <utility>

/// The kernel's access rules for files, TCP and signals (Landlock, Linux 5.13 and later). There is no library
/// for them in the C library.
namespace landlock {

/// The version of the kernel's interface; 0: the kernel has none, or it is switched off.
int version();

/// A file or folder, held open: it stays the same when another one takes its name.
class Place {
public:
    /// Links are followed. Not valid: it cannot be opened.
    explicit Place(const QString& path);
    ~Place();
    Place(Place&& other) noexcept
        : m_file(std::exchange(other.m_file, -1)),
          m_isFolder(other.m_isFolder),
          m_device(other.m_device),
          m_inode(other.m_inode) {}
    Place& operator=(Place&&) = delete;

    bool isValid() const { return m_file >= 0; }
    bool isSameAs(const Place& other) const { return m_device == other.m_device && m_inode == other.m_inode; }

private:
    friend class Ruleset;

    int m_file = -1;
    bool m_isFolder = false;
    quint64 m_device = 0;
    quint64 m_inode = 0;
};

/// Denies every access that the interface of this kernel knows, but for what allow...() adds. Any thread.
class Ruleset {
public:
    /// isValid() is false where the kernel has no rules.
    Ruleset();
    ~Ruleset();
    Ruleset(Ruleset&& other) noexcept : m_file(std::exchange(other.m_file, -1)) {}
    Ruleset& operator=(Ruleset&&) = delete;

    bool isValid() const { return m_file >= 0; }

    /// A path that cannot be opened stays denied.
    void allowReading(const Place& fileOrFolder);
    /// Reading, writing and truncating of an existing file.
    void allowWriting(const Place& file);
    /// Reading and executing.
    void allowExecuting(const Place& fileOrFolder);

    /// Restricts the calling thread and what it starts, for good. Needs `no_new_privs`. System calls only.
    bool restrictThread() const noexcept;

private:
    void allow(const Place& place, quint64 rights);

    int m_file = -1;
};

}  // namespace landlock
