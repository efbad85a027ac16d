#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

std::string joinedPath(std::string_view folder, std::string_view name);

/// Which folder each watch descriptor stands for. A folder is kept as its name and its parent's watch, so a
/// folder that moves takes everything below it along at no cost; 20,000 folders take about 3 MiB.
class PathTree {
public:
    static constexpr int kNone = 0;  ///< The kernel counts watches from 1.

    void setRoot(int watch, const std::string& path) { place(watch, kNone, path); }

    bool contains(int watch) const { return m_places.contains(watch); }
    size_t size() const { return m_places.size(); }

    /// Absolute; empty for a watch that is not there.
    std::string path(int watch) const;
    int parent(int watch) const;
    std::string name(int watch) const;
    /// kNone: no watched folder has this place.
    int child(int parent, std::string_view name) const;
    std::vector<std::string> childNames(int parent) const;
    /// `folder` is `ancestor` or somewhere below it.
    bool isWithin(int folder, int ancestor) const;

    /// A new folder, or one that moves here. The place is free, and not within the folder itself.
    void place(int watch, int parent, std::string_view name);
    /// With everything below: all the watches that are gone now.
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
