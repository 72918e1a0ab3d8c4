#include "scene/fbx/AssimpSceneConverter.h"

#include "scene/fbx/AssimpMeshBuilder.h"
#include "scene/graph/LocationComponent.h"
#include "scene/graph/MeshDisplayComponent.h"

#include <QCoreApplication>

#include <assimp/scene.h>

#include <algorithm>
#include <Eigen/Geometry>
#include <Eigen/LU>

#include <cmath>
#include <cstring>
#include <map>
#include <vector>

namespace Ond::SceneLoad {

using namespace Ond::SceneGraph;

namespace {

Eigen::Matrix4f toEigen(const aiMatrix4x4& m)
{
    Eigen::Matrix4f out;
    out << m.a1, m.a2, m.a3, m.a4, m.b1, m.b2, m.b3, m.b4, m.c1, m.c2, m.c3, m.c4, m.d1, m.d2, m.d3, m.d4;
    return out;
}

bool metadataNumber(const aiMetadata* metadata, const char* key, double& value)
{
    if (!metadata)
        return false;
    for (unsigned i = 0; i < metadata->mNumProperties; ++i) {
        if (std::strcmp(metadata->mKeys[i].C_Str(), key) != 0 || !metadata->mValues[i].mData)
            continue;
        const aiMetadataEntry& entry = metadata->mValues[i];
        switch (entry.mType) {
        case AI_BOOL: value = *static_cast<const bool*>(entry.mData) ? 1.0 : 0.0; return true;
        case AI_INT32: value = *static_cast<const int32_t*>(entry.mData); return true;
        case AI_UINT64: value = double(*static_cast<const uint64_t*>(entry.mData)); return true;
        case AI_FLOAT: value = *static_cast<const float*>(entry.mData); return true;
        case AI_DOUBLE: value = *static_cast<const double*>(entry.mData); return true;
        default: return false;
        }
    }
    return false;
}

// FBX: UnitScaleFactor is centimetres per file unit; the axis settings name
// the file axis (0..2) and sign that point right, up and to the front.
Eigen::Matrix4f fbxTransform(const aiMetadata* metadata)
{
    Eigen::Matrix4f out = Eigen::Matrix4f::Identity();
    double unit = 1.0;
    if (metadataNumber(metadata, "UnitScaleFactor", unit) && std::isfinite(unit) && unit > 0.0)
        out.topLeftCorner<3, 3>() *= float(unit * 0.01);

    double axis[3] = {0, 1, 2}, sign[3] = {1, 1, 1};
    const char* axisKeys[3] = {"CoordAxis", "UpAxis", "FrontAxis"};
    const char* signKeys[3] = {"CoordAxisSign", "UpAxisSign", "FrontAxisSign"};
    bool known = true;
    for (int i = 0; i < 3; ++i)
        known = known && metadataNumber(metadata, axisKeys[i], axis[i]) && metadataNumber(metadata, signKeys[i], sign[i]);
    if (!known)
        return out;
    Eigen::Matrix3f rotation = Eigen::Matrix3f::Zero();
    bool used[3] = {false, false, false};
    for (int row = 0; row < 3; ++row) {
        const int column = int(axis[row]);
        if (column < 0 || column > 2 || used[column] || (sign[row] != 1.0 && sign[row] != -1.0))
            return out;
        used[column] = true;
        rotation(row, column) = float(sign[row]);
    }
    // A left-handed axis system would mirror the geometry; it is left as is.
    if (rotation.determinant() < 0.0f)
        return out;
    out.topLeftCorner<3, 3>() = rotation * out.topLeftCorner<3, 3>();
    return out;
}

class NodeConverter
{
public:
    NodeConverter(const aiScene& scene, const SceneLoadOptions& options, const QString& fallbackName,
                  Core::ProgressInterface* progress)
        : m_scene(scene), m_options(options), m_fallbackName(fallbackName), m_progress(progress)
    {
        m_meshNodeCount = countMeshNodes(scene.mRootNode, 0);
    }

    // False on cancellation.
    bool convert(const aiNode& node, LocationComponent* parent, const Eigen::Matrix4f& local, int depth)
    {
        // Files with cycles or absurd depth are refused rather than recursed.
        if (depth > MaxDepth)
            return true;
        QString name = QString::fromUtf8(node.mName.C_Str(), int(node.mName.length));
        // Assimp names a root it makes up "<...>" (DXF, 3DS): the file gave
        // it no name.
        if (depth == 0 && name.startsWith(QLatin1Char('<')) && name.endsWith(QLatin1Char('>')))
            name.clear();

        std::unique_ptr<MeshDisplayComponent> display;
        if (node.mNumMeshes > 0 && node.mMeshes) {
            if (Mesh::SPtr mesh = meshFor(node, name.isEmpty() ? m_fallbackName : name))
                display = std::make_unique<MeshDisplayComponent>(std::move(mesh));
            ++m_meshNodesDone;
            if (m_progress) {
                m_progress->setValue(double(m_meshNodesDone) / double(std::max<size_t>(m_meshNodeCount, 1)));
                if (m_progress->isCancelled())
                    return false;
            }
        }
        if (display && name.isEmpty())
            name = m_fallbackName;

        auto location = std::make_unique<LocationComponent>(local);
        location->setParent(parent);
        LocationComponent* self = location.get();
        m_entities.push_back(std::make_shared<Entity>(name, std::move(location), std::move(display)));

        for (unsigned i = 0; i < node.mNumChildren && node.mChildren; ++i) {
            if (node.mChildren[i] && !convert(*node.mChildren[i], self, toEigen(node.mChildren[i]->mTransformation), depth + 1))
                return false;
        }
        return true;
    }

    bool convertChildren(const aiNode& node, LocationComponent* parent)
    {
        for (unsigned i = 0; i < node.mNumChildren && node.mChildren; ++i) {
            if (node.mChildren[i] && !convert(*node.mChildren[i], parent, toEigen(node.mChildren[i]->mTransformation), 1))
                return false;
        }
        return true;
    }

    std::vector<Entity::SPtr>& entities() { return m_entities; }
    bool hasMesh() const { return !m_meshes.empty(); }

private:
    static constexpr int MaxDepth = 1000;

    size_t countMeshNodes(const aiNode* node, int depth) const
    {
        if (!node || depth > MaxDepth)
            return 0;
        size_t count = node->mNumMeshes > 0 ? 1 : 0;
        for (unsigned i = 0; i < node->mNumChildren && node->mChildren; ++i)
            count += countMeshNodes(node->mChildren[i], depth + 1);
        return count;
    }

    // Nodes that reference the same meshes share one Mesh.
    Mesh::SPtr meshFor(const aiNode& node, const QString& entityName)
    {
        std::vector<unsigned> key(node.mMeshes, node.mMeshes + node.mNumMeshes);
        auto found = m_meshes.find(key);
        if (found != m_meshes.end())
            return found->second;
        std::shared_ptr<Mesh::Data> data = buildMeshData(m_scene, node.mMeshes, node.mNumMeshes, m_options);
        if (!data)
            return nullptr;
        QString meshName;
        const unsigned first = node.mMeshes[0];
        if (first < m_scene.mNumMeshes && m_scene.mMeshes[first])
            meshName = QString::fromUtf8(m_scene.mMeshes[first]->mName.C_Str(), int(m_scene.mMeshes[first]->mName.length));
        if (meshName.isEmpty())
            meshName = entityName;
        auto mesh = std::make_shared<Mesh>(std::move(data), meshName);
        m_meshes.emplace(std::move(key), mesh);
        return mesh;
    }

    const aiScene& m_scene;
    const SceneLoadOptions& m_options;
    QString m_fallbackName;
    Core::ProgressInterface* m_progress;
    size_t m_meshNodeCount = 0;
    size_t m_meshNodesDone = 0;
    std::vector<Entity::SPtr> m_entities;
    std::map<std::vector<unsigned>, Mesh::SPtr> m_meshes;
};

} // namespace

Eigen::Matrix4f fileToSceneTransform(const aiScene& scene, const QByteArray& suffix)
{
    if (suffix.compare("fbx", Qt::CaseInsensitive) == 0)
        return fbxTransform(scene.mMetaData);
    return Eigen::Matrix4f::Identity();
}

Scene* convertScene(const aiScene& scene, const Eigen::Matrix4f& rootTransform, const SceneLoadOptions& options,
                    const QString& fallbackName, Core::ProgressInterface* progress)
{
    if (!scene.mRootNode)
        return nullptr;
    const aiNode& top = *scene.mRootNode;
    NodeConverter converter(scene, options, fallbackName, progress);

    // The file's own root node becomes the program's root entity when it is
    // a bare container (FBX "RootNode", COLLADA "Scene"); a root that holds
    // a mesh (PLY, a one-node glTF) stays an entity of its own.
    const bool bareTop = top.mNumMeshes == 0;
    auto root = std::make_shared<Entity>(
        QStringLiteral("root"),
        std::make_unique<LocationComponent>(bareTop ? Eigen::Matrix4f(rootTransform * toEigen(top.mTransformation))
                                                    : rootTransform));
    root->setLabel(QCoreApplication::translate("Ond::SceneLoad::FBXSceneImporter", "Root"));
    converter.entities().push_back(root);

    const bool finished = bareTop ? converter.convertChildren(top, root->getLocation())
                                  : converter.convert(top, root->getLocation(), toEigen(top.mTransformation), 0);
    if (!finished || !converter.hasMesh())
        return nullptr;
    return new Scene(std::move(converter.entities()));
}

} // namespace Ond::SceneLoad
