#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

std::string joinedPath(std::string_view folder, std::string_view name);

/// Maps watch descriptors to folders. A folder is stored as its name and its parent's watch, so moving a
/// folder with everything below it is cheap; 20,000 folders use about 3 MiB. Each instance is for one thread.
class PathTree {
public:
    static constexpr int kNone = 0;  ///< The kernel counts watches from 1.

    void setRoot(int watch, const std::string& path) { place(watch, kNone, path); }

    bool contains(int watch) const { return m_places.contains(watch); }
    size_t size() const { return m_places.size(); }

    /// The absolute path; empty for an unknown watch.
    std::string path(int watch) const;
    int parent(int watch) const;
    std::string name(int watch) const;
    /// kNone if there is no watched folder of this name.
    int child(int parent, std::string_view name) const;
    std::vector<std::string> childNames(int parent) const;
    /// Whether `folder` is `ancestor` or below it.
    bool isWithin(int folder, int ancestor) const;

    /// Adds a folder or moves it here. The place must be free, and not inside the folder itself.
    void place(int watch, int parent, std::string_view name);
    /// Removes a folder and everything below it; returns all removed watches.
    std::vector<int> remove(int watch);

private:
    struct Place {
        int parent;
        std::string name;
    };
    struct PlaceView {
        int parent;
        std::string_view name;
    };
    struct Less {
        using is_transparent = void;
        template <typename A, typename B>
        bool operator()(const A& a, const B& b) const {
            return a.parent != b.parent ? a.parent < b.parent : a.name < b.name;
        }
    };
    using Watches = std::map<Place, int, Less>;

    Watches m_watches;
    std::unordered_map<int, Watches::iterator> m_places;
};
