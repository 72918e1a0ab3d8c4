#pragma once
// A small map from a key to a shared object. Not locked: its owner guards it.

#include <map>
#include <memory>

namespace Ond::SceneGraph::MeshProcessing {

template <typename Key, typename T>
class SPtrCacheT
{
public:
    std::shared_ptr<T> find(const Key& key) const
    {
        auto it = entries.find(key);
        return it == entries.end() ? nullptr : it->second;
    }
    void insert(const Key& key, std::shared_ptr<T> value) { entries[key] = std::move(value); }
    void remove(const Key& key) { entries.erase(key); }
    void clear() { entries.clear(); }
    size_t size() const { return entries.size(); }

private:
    std::map<Key, std::shared_ptr<T>> entries;
};

} // namespace Ond::SceneGraph::MeshProcessing
