#pragma once
// A shared mesh resource. Its geometry lives in a Mesh::Data that is treated
// as immutable once published: derived data is built into a new Data which
// replaces the old one by atomic store, so readers on other threads finish
// on the Data they loaded.

#include "scene/graph/BinaryBuffer.h"
#include "scene/graph/BitField.h"
#include "scene/graph/BoundingBox.h"
#include "scene/graph/Resource.h"
#include "scene/graph/SubMesh.h"
#include "scene/graph/UvTile.h"

#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace Ond::SceneGraph {

class Mesh : public Resource
{
public:
    class Data
    {
    public:
        Data();
        // Everything is moved in. The box may be empty; it is then computed
        // from the positions when first asked for.
        Data(Vec3BufferUPtr positions, Vec3BufferUPtr normals, Vec3BufferUPtr tangents,
             Vec3BufferUPtr binormals, Vec4BufferUPtr colors, std::vector<Vec2BufferUPtr> uvSets,
             std::vector<SubMesh> subMeshes, const BoundingBox& boundingBox = BoundingBox());

        Data(const Data&) = delete;
        Data& operator=(const Data&) = delete;

        // Deep copy of every buffer, with a new revision. Materials are shared.
        std::shared_ptr<Data> clone() const;

        // --- Buffers
        // positions define the vertex count; the others are null when absent.
        const Vec3Buffer* getPositions() const { return m_positions.get(); }
        Vec3Buffer* getPositions() { return m_positions.get(); }
        const Vec3Buffer* getNormals() const { return m_normals.get(); }
        Vec3Buffer* getNormals() { return m_normals.get(); }
        const Vec3Buffer* getTangents() const { return m_tangents.get(); }
        Vec3Buffer* getTangents() { return m_tangents.get(); }
        const Vec3Buffer* getBinormals() const { return m_binormals.get(); }
        Vec3Buffer* getBinormals() { return m_binormals.get(); }
        const Vec4Buffer* getColors() const { return m_colors.get(); }
        Vec4Buffer* getColors() { return m_colors.get(); }
        size_t getVertexCount() const { return m_positions ? m_positions->size() : 0; }

        // UV sets in file order; an index out of range gives null.
        size_t getUvSetCount() const { return m_uvSets.size(); }
        const Vec2Buffer* getUvSet(size_t index) const;
        Vec2Buffer* getUvSet(size_t index);
        const std::vector<Vec2BufferUPtr>& getUvSets() const { return m_uvSets; }

        // Replaces all buffers. The stored box is left as it was: a caller
        // that changes positions resets it.
        void setBuffers(Vec3BufferUPtr positions, Vec3BufferUPtr normals, Vec3BufferUPtr tangents,
                        Vec3BufferUPtr binormals, Vec4BufferUPtr colors, std::vector<Vec2BufferUPtr> uvSets,
                        std::vector<SubMesh> subMeshes);
        void setNormals(Vec3BufferUPtr normals);
        void setTangents(Vec3BufferUPtr tangents, Vec3BufferUPtr binormals);
        void setColors(Vec4BufferUPtr colors);

        // A null or empty buffer is ignored. Otherwise it is appended and its
        // index is registered under each of the channel ids.
        void addUvSet(Vec2BufferUPtr uvSet, const std::vector<int32_t>& channelIds = {});
        // Sorted source channel ids.
        std::vector<int32_t> getUvChannelIds() const;
        const std::map<int32_t, std::vector<size_t>>& getUvChannels() const { return m_uvChannels; }

        // --- SubMeshes
        size_t getSubMeshCount() const { return m_subMeshes.size(); }
        const SubMesh* getSubMesh(size_t index) const;
        SubMesh* getSubMesh(size_t index);
        const std::vector<SubMesh>& getSubMeshes() const { return m_subMeshes; }
        void setSubMeshes(std::vector<SubMesh> subMeshes);
        void addSubMesh(SubMesh subMesh);

        // Out of range: a shared default value (0), and setters do nothing.
        BitField<int> getSubMeshFlags(size_t index) const;
        void setSubMeshFlags(size_t index, BitField<int> flags);
        void setSubMeshColor(size_t index, const Eigen::Vector4f& color);
        void setSubMeshLabel(size_t index, const QString& label);
        // Only a UserMaterialDefinition has a name.
        void setSubMeshName(size_t index, const QString& name);
        // First SubMesh whose UserMaterialDefinition has that name, or -1.
        int findSubMeshByMaterialName(const QString& name) const;

        // Stops at the first false and returns false then.
        bool forAllSubMeshes(const std::function<bool(SubMesh&)>& function);
        bool forAllSubMeshes(const std::function<bool(const SubMesh&)>& function) const;

        // --- Derived values
        // The stored box if not empty, else computed from the positions and
        // stored. Not thread-safe on first use.
        const BoundingBox& getBoundingBox() const;
        void setBoundingBox(const BoundingBox& box);
        void resetBoundingBox();

        uint64_t getRevision() const { return m_revision; }
        // Marks the data changed by a caller that edited a buffer in place.
        void touch();

        // Adds the tiles touched by a UV set: by every point without a
        // SubMesh, else by the edges and points of its primitives. Interiors
        // are not scanned. False if the UV set does not exist.
        bool collectUvTiles(UvTileSet& tiles, size_t uvSetIndex, const SubMesh* subMesh = nullptr) const;

    private:
        Vec3BufferUPtr m_positions;
        Vec3BufferUPtr m_normals;
        Vec3BufferUPtr m_tangents;
        Vec3BufferUPtr m_binormals;
        Vec4BufferUPtr m_colors;
        std::vector<Vec2BufferUPtr> m_uvSets;
        std::map<int32_t, std::vector<size_t>> m_uvChannels;
        std::vector<SubMesh> m_subMeshes;
        uint64_t m_revision = 0;
        mutable BoundingBox m_boundingBox;
    };

    using SPtr = std::shared_ptr<Mesh>;
    using DataSPtr = std::shared_ptr<Data>;

    Mesh();
    explicit Mesh(DataSPtr data, const QString& name = QString());
    ~Mesh() override;

    Mesh(const Mesh&) = delete;
    Mesh& operator=(const Mesh&) = delete;

    // Atomic load: the caller keeps the Data alive while it reads.
    DataSPtr getData() const;
    // Atomic store: readers of the previous Data are unaffected.
    void setData(DataSPtr data);

    QString getName() const;
    void setName(const QString& name);

    bool isUdim() const { return m_udim.load(); }
    void setUdim(bool udim) { m_udim.store(udim); }

private:
    DataSPtr m_data;
    std::shared_ptr<QString> m_name;
    std::atomic<bool> m_udim{false};
};

using MeshSPtr = Mesh::SPtr;

} // namespace Ond::SceneGraph
