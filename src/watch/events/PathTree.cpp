#include "watch/events/PathTree.h"

std::string joinedPath(std::string_view folder, std::string_view name) {
    std::string path;
    path.reserve(folder.size() + 1 + name.size());
    path += folder;
    if (!folder.ends_with('/')) path += '/';
    path += name;
    return path;
}

std::string PathTree::path(int watch) const {
    const auto found = m_places.find(watch);
    if (found == m_places.end()) return {};
    const Place& place = found->second->first;
    return place.parent == kNone ? place.name : joinedPath(path(place.parent), place.name);
}

int PathTree::parent(int watch) const {
    const auto found = m_places.find(watch);
    return found == m_places.end() ? kNone : found->second->first.parent;
}

std::string PathTree::name(int watch) const {
    const auto found = m_places.find(watch);
    return found == m_places.end() ? std::string() : found->second->first.name;
}

int PathTree::child(int parent, std::string_view name) const {
    const auto found = m_watches.find(PlaceView{parent, name});
    return found == m_watches.end() ? kNone : found->second;
}

std::vector<std::string> PathTree::childNames(int parent) const {
    std::vector<std::string> names;
    for (auto at = m_watches.lower_bound(PlaceView{parent, {}});
         at != m_watches.end() && at->first.parent == parent; ++at)
        names.push_back(at->first.name);
    return names;
}

bool PathTree::isWithin(int folder, int ancestor) const {
    for (int at = folder; at != kNone; at = parent(at)) {
        if (at == ancestor) return true;
    }
    return false;
}

void PathTree::place(int watch, int parent, std::string_view name) {
    const auto found = m_places.find(watch);
    if (found != m_places.end()) m_watches.erase(found->second);
    m_places[watch] = m_watches.emplace(Place{parent, std::string(name)}, watch).first;
}

std::vector<int> PathTree::remove(int watch) {
    std::vector<int> gone;
    const auto found = m_places.find(watch);
    if (found == m_places.end()) return gone;
    m_watches.erase(found->second);
    m_places.erase(found);
    gone.push_back(watch);
    for (size_t i = 0; i < gone.size(); ++i) {
        auto at = m_watches.lower_bound(PlaceView{gone[i], {}});
        while (at != m_watches.end() && at->first.parent == gone[i]) {
            gone.push_back(at->second);
            m_places.erase(at->second);
            at = m_watches.erase(at);
        }
    }
    return gone;
}
