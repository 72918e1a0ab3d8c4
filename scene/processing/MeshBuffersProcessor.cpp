#include "scene/processing/MeshBuffersProcessor.h"

#include <cstring>
#include <numeric>
#include <unordered_map>

namespace Ond::SceneGraph::MeshProcessing {

namespace {

// values[i] = buffer[map[i]]; null stays null.
template <typename T>
std::unique_ptr<BinaryBuffer<T>> gather(const BinaryBuffer<T>* buffer, const std::vector<uint32_t>& map)
{
    if (!buffer)
        return nullptr;
    const size_t size = buffer->size();
    std::vector<T> values(map.size(), T::Zero());
    for (size_t i = 0; i < map.size(); ++i)
        if (map[i] < size)
            values[i] = (*buffer)[map[i]];
    return makeBuffer(std::move(values));
}

std::vector<Vec2BufferUPtr> gatherUvSets(const Mesh::Data& data, const std::vector<uint32_t>& map)
{
    std::vector<Vec2BufferUPtr> uvSets;
    for (size_t i = 0; i < data.getUvSetCount(); ++i)
        uvSets.push_back(gather(data.getUvSet(i), map));
    return uvSets;
}

template <typename T>
void appendWords(std::vector<uint32_t>& words, const BinaryBuffer<T>* buffer, size_t vertex)
{
    if (!buffer)
        return;
    uint32_t w[sizeof(T) / 4];
    if (vertex < buffer->size())
        std::memcpy(w, buffer->at(vertex), sizeof(T));
    else
        std::memset(w, 0, sizeof(T));
    words.insert(words.end(), w, w + sizeof(T) / 4);
}

} // namespace

std::shared_ptr<Mesh::Data> MeshBuffersProcessor::makeData(Vec3BufferUPtr positions, Vec3BufferUPtr normals,
                                                           Vec3BufferUPtr tangents, Vec3BufferUPtr binormals,
                                                           Vec4BufferUPtr colors,
                                                           std::vector<Vec2BufferUPtr> uvSets,
                                                           std::vector<SubMesh> subMeshes) const
{
    auto data = std::make_shared<Mesh::Data>(std::move(positions), std::move(normals), std::move(tangents),
                                             std::move(binormals), std::move(colors),
                                             std::vector<Vec2BufferUPtr>(), std::move(subMeshes));
    const auto& channels = source->getUvChannels();
    for (size_t i = 0; i < uvSets.size(); ++i) {
        std::vector<int32_t> ids;
        for (const auto& [id, sets] : channels)
            for (size_t set : sets)
                if (set == i)
                    ids.push_back(id);
        data->addUvSet(std::move(uvSets[i]), ids);
    }
    return data;
}

std::shared_ptr<Mesh::Data> MeshDeindexer::process() const
{
    size_t total = 0;
    for (const SubMesh& s : source->getSubMeshes())
        total += s.indices ? s.indices->size() : 0;
    if (total == 0 || source->getVertexCount() == 0)
        return std::const_pointer_cast<Mesh::Data>(source);

    std::vector<uint32_t> map;
    map.reserve(total);
    std::vector<SubMesh> subMeshes;
    for (const SubMesh& s : source->getSubMeshes()) {
        std::vector<uint32_t> indices;
        if (s.indices) {
            indices.resize(s.indices->size());
            std::iota(indices.begin(), indices.end(), uint32_t(map.size()));
            map.insert(map.end(), s.indices->begin(), s.indices->end());
        }
        subMeshes.emplace_back(s.indices ? makeBuffer(std::move(indices)) : nullptr, s.primitiveType,
                               s.indicesPerPrimitive, s.material, s.renderFlags);
    }
    const Mesh::Data& d = *source;
    return makeData(gather(d.getPositions(), map), gather(d.getNormals(), map), gather(d.getTangents(), map),
                    gather(d.getBinormals(), map), gather(d.getColors(), map), gatherUvSets(d, map),
                    std::move(subMeshes));
}

std::shared_ptr<Mesh::Data> MeshReindexer::process() const
{
    const Mesh::Data& d = *source;
    const size_t vertexCount = d.getVertexCount();
    if (vertexCount == 0)
        return std::const_pointer_cast<Mesh::Data>(source);

    // One row of words per vertex: all its values, bit for bit.
    std::vector<uint32_t> words;
    for (size_t v = 0; v < vertexCount; ++v) {
        appendWords(words, d.getPositions(), v);
        appendWords(words, d.getNormals(), v);
        appendWords(words, d.getTangents(), v);
        appendWords(words, d.getBinormals(), v);
        appendWords(words, d.getColors(), v);
        for (size_t i = 0; i < d.getUvSetCount(); ++i)
            appendWords(words, d.getUvSet(i), v);
    }
    const size_t stride = words.size() / vertexCount;
    const uint32_t* rows = words.data();
    auto hash = [rows, stride](uint32_t v) {
        uint64_t h = 1469598103934665603ull;
        for (size_t k = 0; k < stride; ++k)
            h = (h ^ rows[v * stride + k]) * 1099511628211ull;
        // The low bits of float words are often zero: mix before bucketing.
        h ^= h >> 31;
        h *= 0x7fb5d329728ea185ull;
        h ^= h >> 27;
        return size_t(h);
    };
    auto equal = [rows, stride](uint32_t a, uint32_t b) {
        return std::memcmp(rows + a * stride, rows + b * stride, stride * 4) == 0;
    };
    std::unordered_map<uint32_t, uint32_t, decltype(hash), decltype(equal)> firstOf(vertexCount, hash, equal);

    std::vector<uint32_t> newIndexOf(vertexCount);
    std::vector<uint32_t> kept; // source vertex of each new vertex
    for (uint32_t v = 0; v < vertexCount; ++v) {
        auto [it, inserted] = firstOf.emplace(v, uint32_t(kept.size()));
        if (inserted)
            kept.push_back(v);
        newIndexOf[v] = it->second;
    }
    if (kept.size() == vertexCount)
        return std::const_pointer_cast<Mesh::Data>(source);

    std::vector<SubMesh> subMeshes;
    for (const SubMesh& s : d.getSubMeshes()) {
        std::vector<uint32_t> indices;
        if (s.indices) {
            indices.reserve(s.indices->size());
            for (uint32_t i : *s.indices)
                indices.push_back(i < vertexCount ? newIndexOf[i] : i);
        }
        subMeshes.emplace_back(s.indices ? makeBuffer(std::move(indices)) : nullptr, s.primitiveType,
                               s.indicesPerPrimitive, s.material, s.renderFlags);
    }
    return makeData(gather(d.getPositions(), kept), gather(d.getNormals(), kept), gather(d.getTangents(), kept),
                    gather(d.getBinormals(), kept), gather(d.getColors(), kept), gatherUvSets(d, kept),
                    std::move(subMeshes));
}

} // namespace Ond::SceneGraph::MeshProcessing
