#include "baking/detail/GrabbedMesh.h"

#include "baking/detail/MeshNameId.h"
#include "program/LogChannel.h"
#include "scene/graph/AbstractFilteredSceneVisitor.h"
#include "scene/graph/Entity.h"
#include "scene/graph/MeshDisplayComponent.h"

#include "program/ThreadLimit.h"

#include <QStringList>
#include <QtConcurrent/QtConcurrentMap>

#include <Eigen/Dense>
#include <Eigen/Geometry>

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

namespace Ond::Baking {

using namespace SceneGraph;

namespace {

// Runs body(begin, end) over [0, count) in one range per thread of the pool;
// each element is written by one range only, so the result is the same as
// in one loop. Small counts stay on this thread.
template <typename Body>
void forRanges(size_t count, const Body& body)
{
    constexpr size_t MinimumPerRange = 1u << 16;
    const size_t ranges = std::min<size_t>(Core::threadCount(), count / MinimumPerRange);
    if (ranges <= 1) {
        body(size_t(0), count);
        return;
    }
    std::vector<std::pair<size_t, size_t>> bounds(ranges);
    for (size_t r = 0; r < ranges; ++r)
        bounds[r] = {count * r / ranges, count * (r + 1) / ranges};
    QtConcurrent::blockingMap(bounds, [&body](const std::pair<size_t, size_t>& range) {
        body(range.first, range.second);
    });
}

bool isTriangleList(const SubMesh& subMesh)
{
    return subMesh.indices && subMesh.primitiveType == PrimitiveType::Triangles && subMesh.indicesPerPrimitive == 3;
}

size_t triangleCountOf(const Mesh::Data& data)
{
    size_t count = 0;
    for (const SubMesh& subMesh : data.getSubMeshes())
        if (isTriangleList(subMesh))
            count += subMesh.indices->size() / 3;
    return count;
}

QString entityNameOf(const MeshDisplayComponent* component)
{
    if (component->getEntity())
        return component->getEntity()->getName();
    return component->getMesh() ? component->getMesh()->getName() : QString();
}

// First walk: sizes of the flat arrays.
class CounterVisitor : public AbstractFilteredSceneVisitor
{
public:
    CounterVisitor() : AbstractFilteredSceneVisitor(BitField<int>(AllRenderFlags), 0) {}

    void visit(const MeshDisplayComponent* component) override
    {
        if (!component || !component->getMesh())
            return;
        const Mesh::DataSPtr data = component->getMesh()->getData();
        if (!data || data->getVertexCount() == 0)
            return;
        vertices += data->getVertexCount();
        triangles += triangleCountOf(*data);
        ++meshes;
    }

    size_t vertices = 0;
    size_t triangles = 0;
    size_t meshes = 0;
};

// Second walk: every part in world space into the flat arrays.
class GeometryGrabVisitor : public AbstractFilteredSceneVisitor
{
public:
    GeometryGrabVisitor(GrabbedMesh& mesh, uint32_t flags, BakeJobKind kind, int32_t colorSource, int32_t uvSet)
        : AbstractFilteredSceneVisitor(BitField<int>(AllRenderFlags), 0)
        , m_mesh(mesh)
        , m_flags(flags)
        , m_uvSet(uvSet)
        , m_vertexColors((flags & BakeJobFlags::GrabColors) && colorSource == 0)
        , m_colorsRequired((flags & BakeJobFlags::GrabColors)
                           && !(kind == BakeJobKind::TriangleColor && colorSource == 1))
    {
    }

    void visit(const MeshDisplayComponent* component) override
    {
        if (!component || !component->getMesh())
            return;
        const Mesh::DataSPtr data = component->getMesh()->getData();
        if (!data || data->getVertexCount() == 0)
            return;
        const QString name = entityNameOf(component);
        const size_t vertexCount = std::min<size_t>(data->getVertexCount(), m_mesh.vertexCount - m_vertex);

        const Eigen::Matrix4f model = component->getGlobalTransform();
        const Eigen::Matrix3f normalMatrix = model.topLeftCorner<3, 3>().inverse().transpose();

        const Vec3Buffer* positions = data->getPositions();
        forRanges(vertexCount, [&](size_t begin, size_t end) {
            for (size_t i = begin; i < end; ++i) {
                const Eigen::Vector4f p = model * (*positions)[i].homogeneous();
                float* out = &m_mesh.positions[(m_vertex + i) * 4];
                out[0] = p.x();
                out[1] = p.y();
                out[2] = p.z();
                out[3] = 1.0f;
            }
        });

        writeDirections(data->getNormals(), normalMatrix, m_mesh.normals.data(), 3, vertexCount, name, m_noNormals);
        if (m_flags & BakeJobFlags::GrabTangents) {
            writeDirections(data->getTangents(), normalMatrix, m_mesh.tangents.data(), 4, vertexCount, name,
                            m_noTangents);
            writeDirections(data->getBinormals(), normalMatrix, m_mesh.binormals.data(), 4, vertexCount, name,
                            m_noBinormals);
        }
        if (m_flags & BakeJobFlags::GrabUvs) {
            const Vec2Buffer* uvs = data->getUvSet(size_t(std::max(m_uvSet, 0)));
            if (!uvs || uvs->empty())
                m_noUvs << name;
            for (size_t i = 0; i < vertexCount; ++i) {
                float* out = &m_mesh.uvs[(m_vertex + i) * 2];
                const bool has = uvs && i < uvs->size();
                out[0] = has ? (*uvs)[i].x() : 0.0f;
                out[1] = has ? (*uvs)[i].y() : 0.0f;
            }
        }
        if (m_vertexColors) {
            const Vec4Buffer* colors = data->getColors();
            if (!colors || colors->empty())
                m_noColors << name;
            for (size_t i = 0; i < vertexCount; ++i) {
                float* out = &m_mesh.colors[(m_vertex + i) * 3];
                const bool has = colors && i < colors->size();
                for (int c = 0; c < 3; ++c)
                    out[c] = has ? (*colors)[i][c] : 0.0f;
            }
        } else if (m_flags & BakeJobFlags::GrabColors) {
            // Per-triangle colours are the part's material colour here; the
            // colour generators overwrite them for the keyed sources.
            if (m_colorsRequired && (!data->getColors() || data->getColors()->empty()))
                m_noColors << name;
        }

        const uint32_t id = meshNameId(name);
        const uint32_t cull = meshIgnoresBackfaces(name) ? 1u : 0u;
        for (const SubMesh& subMesh : data->getSubMeshes()) {
            if (!isTriangleList(subMesh))
                continue;
            const Eigen::Vector4f color =
                subMesh.material ? subMesh.material->color : Eigen::Vector4f(1.0f, 1.0f, 1.0f, 1.0f);
            const size_t count = std::min(subMesh.indices->size() / 3, m_mesh.triangleCount - m_triangle);
            const size_t first = m_triangle;
            const bool triangleColors = (m_flags & BakeJobFlags::GrabColors) && !m_vertexColors;
            forRanges(count, [&](size_t begin, size_t end) {
                for (size_t t = begin; t < end; ++t) {
                    const size_t triangle = first + t;
                    for (int k = 0; k < 3; ++k) {
                        uint32_t index = (*subMesh.indices)[t * 3 + k];
                        if (index >= vertexCount)
                            index = 0;
                        m_mesh.indices[triangle * 3 + k] = uint32_t(m_vertex + index);
                    }
                    m_mesh.ids[triangle] = id;
                    m_mesh.culling[triangle] = cull;
                    if (triangleColors)
                        for (int c = 0; c < 3; ++c)
                            m_mesh.colors[triangle * 3 + c] = color[c];
                }
            });
            m_triangle += count;
        }
        m_vertex += vertexCount;
    }

    // Logs what was missing; true if anything the job needs was.
    bool reportMissing() const
    {
        bool missing = false;
        auto report = [&missing](const char* attribute, const QStringList& names) {
            if (names.isEmpty())
                return;
            missing = true;
            Core::bakersChannel().warning(QStringLiteral("Could not find ") + QLatin1String(attribute)
                                        + QStringLiteral(" in mesh : ") + names.join(QStringLiteral(", ")));
        };
        report("normals", m_noNormals);
        report("tangents", m_noTangents);
        report("binormals", m_noBinormals);
        if (m_colorsRequired)
            report("vertex colors", m_noColors);
        report("UVs", m_noUvs);
        return missing;
    }

private:
    void writeDirections(const Vec3Buffer* source, const Eigen::Matrix3f& matrix, float* target, int stride,
                         size_t count, const QString& name, QStringList& missing)
    {
        if (!source || source->size() < count)
            missing << name;
        forRanges(count, [&](size_t begin, size_t end) {
            for (size_t i = begin; i < end; ++i) {
                Eigen::Vector3f v = Eigen::Vector3f::Zero();
                if (source && i < source->size()) {
                    v = matrix * (*source)[i];
                    const float length = v.norm();
                    if (length > 0.0f)
                        v /= length;
                }
                float* out = target + (m_vertex + i) * size_t(stride);
                out[0] = v.x();
                out[1] = v.y();
                out[2] = v.z();
                if (stride == 4)
                    out[3] = 0.0f;
            }
        });
    }

    GrabbedMesh& m_mesh;
    uint32_t m_flags;
    int32_t m_uvSet;
    bool m_vertexColors;
    bool m_colorsRequired;
    size_t m_vertex = 0;
    size_t m_triangle = 0;
    QStringList m_noNormals, m_noTangents, m_noBinormals, m_noColors, m_noUvs;
};

} // namespace

std::unique_ptr<GrabbedMesh> grabMesh(Scene& scene, uint32_t flags, BakeJobKind kind, int32_t colorSource,
                                      int32_t highUvSet)
{
    CounterVisitor counter;
    scene.accept(counter);
    if (counter.vertices > 0xFFFFFFFFull || counter.triangles > 0xFFFFFFFFull)
        throw ErrorCode::OutOfMemory;

    std::unique_ptr<GrabbedMesh> mesh(new (std::nothrow) GrabbedMesh);
    if (!mesh)
        throw ErrorCode::OutOfMemory;
    mesh->vertexCount = unsigned(counter.vertices);
    mesh->triangleCount = unsigned(counter.triangles);
    const size_t v = counter.vertices;
    const size_t t = counter.triangles;
    mesh->indices.allocate(t * 3);
    mesh->positions.allocate(v * 4);
    mesh->ids.allocate(t);
    mesh->culling.allocate(t);
    mesh->normals.allocate(v * 3);
    if (flags & BakeJobFlags::GrabColors)
        mesh->colors.allocate((colorSource == 0 ? v : t) * 3);
    if (flags & BakeJobFlags::GrabTangents) {
        mesh->tangents.allocate(v * 4);
        mesh->binormals.allocate(v * 4);
    }
    if (flags & BakeJobFlags::GrabUvs)
        mesh->uvs.allocate(v * 2);

    GeometryGrabVisitor grab(*mesh, flags, kind, colorSource, highUvSet);
    scene.accept(grab);
    if (grab.reportMissing())
        throw ErrorCode::MissingInputData;
    fixWinding(*mesh);
    return mesh;
}

void fixWinding(GrabbedMesh& mesh)
{
    const float* p = mesh.positions.data();
    const float* n = mesh.normals.data();
    forRanges(mesh.triangleCount, [&](size_t begin, size_t end) {
        for (size_t t = begin; t < end; ++t) {
            uint32_t* tri = &mesh.indices[t * 3];
            const Eigen::Map<const Eigen::Vector3f> p0(p + size_t(tri[0]) * 4), p1(p + size_t(tri[1]) * 4),
                p2(p + size_t(tri[2]) * 4);
            const Eigen::Vector3f s = Eigen::Map<const Eigen::Vector3f>(n + size_t(tri[0]) * 3)
                                      + Eigen::Map<const Eigen::Vector3f>(n + size_t(tri[1]) * 3)
                                      + Eigen::Map<const Eigen::Vector3f>(n + size_t(tri[2]) * 3);
            const Eigen::Vector3f c = (p0 - p1).cross(p2 - p0);
            if (c.dot(s) > 0.0f)
                std::swap(tri[1], tri[2]);
        }
    });
}

} // namespace Ond::Baking
