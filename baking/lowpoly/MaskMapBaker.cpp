#include "baking/lowpoly/MaskMapBaker.h"

#include "baking/lowpoly/GLBakeParameters.h"
#include "baking/lowpoly/GLTileTarget.h"
#include "baking/lowpoly/LowPolyProperties.h"
#include "baking/lowpoly/LowPolyTileLoop.h"
#include "baking/lowpoly/SceneVisitor.h"
#include "opengl/QGLManager.h"

#include <GL/glew.h>

#include <vector>

namespace Ond::Baking {

namespace {

// The selected meshes' UV triangles through the fixed-function pipeline,
// in the current colour, UV 0..1 filling the viewport.
class GLDrawTexCoordsVisitor : public SceneVisitor
{
public:
    explicit GLDrawTexCoordsVisitor(uint32_t uvSet) : SceneVisitor(2, uvSet)
    {
        glPushAttrib(0xfffff);
        glPushClientAttrib(0xfffff);
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        glLoadIdentity();
        glOrtho(0.0, 1.0, 0.0, 1.0, -1.0, 1.0);
        glMatrixMode(GL_MODELVIEW);
        glPushMatrix();
        glLoadIdentity();
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_CULL_FACE);
    }

    ~GLDrawTexCoordsVisitor() override
    {
        glMatrixMode(GL_PROJECTION);
        glPopMatrix();
        glMatrixMode(GL_MODELVIEW);
        glPopMatrix();
        glPopClientAttrib();
        glPopAttrib();
    }

    bool visitMesh(const MeshItem& item) override
    {
        const SceneGraph::Mesh::Data& data = *item.data;
        const SceneGraph::Vec2Buffer* uvs = data.getUvSet(m_uvSet);
        if (!uvs)
            uvs = data.getUvSet(0);
        const size_t n = data.getVertexCount();
        if (!uvs || uvs->size() < n)
            return true;
        m_indices.clear();
        for (const SceneGraph::SubMesh& sub : data.getSubMeshes()) {
            if (sub.primitiveType != SceneGraph::PrimitiveType::Triangles || sub.indicesPerPrimitive != 3
                || !sub.indices || !passesMeshMask(selectionMaskFromRenderFlags(sub.renderFlags.value()), m_meshMask))
                continue;
            for (size_t i = 0; i < sub.indices->size() / 3 * 3; ++i) {
                const uint32_t index = (*sub.indices)[i];
                m_indices.push_back(index < n ? index : 0);
            }
        }
        if (m_indices.empty())
            return true;
        glEnableClientState(GL_VERTEX_ARRAY);
        glVertexPointer(2, GL_FLOAT, 0, uvs->data());
        glDrawElements(GL_TRIANGLES, GLsizei(m_indices.size()), GL_UNSIGNED_INT, m_indices.data());
        glDisableClientState(GL_VERTEX_ARRAY);
        return true;
    }

private:
    std::vector<uint32_t> m_indices;
};

float channel(int v)
{
    return float(v) / 255.0f;
}

} // namespace

QString MaskMapBaker::label() const
{
    return trBaking("UV Mask");
}

QString MaskMapBaker::description() const
{
    return trBaking("");
}

std::string MaskMapBaker::identifier() const
{
    return "uvmask";
}

Surfaces::SurfaceSPtr MaskMapBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene)
{
    using namespace LowPolyProperties;
    const PropertyBag& bag = properties();
    const uint32_t uvSet = uint32_t(std::max(value<int>(bag, "Common.UVSet", 0), 0));
    const ComparableColorInt4 background = value<ComparableColorInt4>(bag, "Mask.BGColor", {0, 0, 0, 0});
    const ComparableColorInt4 foreground = value<ComparableColorInt4>(bag, "Mask.FGColor", {255, 0, 0, 255});
    const QSize size = outputSize();
    Surfaces::SurfaceSPtr output = makeLowPolyOutput(size);

    auto* manager = OpenGLUtils::QGLManager::instance();
    if (manager && scene && !output->isEmpty()) {
        // A context of its own: the core profile has no fixed-function calls.
        manager->runInCompatibilityContext([&] {
            GLuint texture = 0, framebuffer = 0;
            glGenTextures(1, &texture);
            glBindTexture(GL_TEXTURE_2D, texture);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
            glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, size.width(), size.height(), 0, GL_RGBA, GL_UNSIGNED_BYTE,
                         nullptr);
            glBindTexture(GL_TEXTURE_2D, 0);
            glGenFramebuffers(1, &framebuffer);
            glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
            glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
            if (glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE) {
                glViewport(0, 0, size.width(), size.height());
                glClearColor(channel(background.r), channel(background.g), channel(background.b),
                             channel(background.a));
                glClear(GL_COLOR_BUFFER_BIT);
                glColor4f(channel(foreground.r), channel(foreground.g), channel(foreground.b),
                          channel(foreground.a));
                {
                    GLDrawTexCoordsVisitor draw(uvSet);
                    draw.walk(*scene);
                }
                if (readBack(framebuffer, *output))
                    output->flipVertical(); // GL rows run from the bottom
            }
            glBindFramebuffer(GL_FRAMEBUFFER, 0);
            glDeleteFramebuffers(1, &framebuffer);
            glDeleteTextures(1, &texture);
            return 0;
        });
    }
    finishLowPolyMap(context, output, value<int>(bag, "Common.DilationWidth", 1),
                     value<bool>(bag, "Common.ApplyDiffusion", true));
    return output;
}

} // namespace Ond::Baking
