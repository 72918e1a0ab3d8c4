#pragma once
// The report of the `info` command for one scene: a visitor that prints each
// entity the flags ask for, and the UV tiles of the whole scene.

#include "program/IndentingPrinter.h"
#include "scene/graph/ISceneVisitor.h"

namespace Ond::SceneGraph {
class Entity;
class Scene;
}

namespace ProgramCommand {

class SceneInfoPrinter : public Ond::SceneGraph::ISceneVisitor
{
public:
    struct Options
    {
        bool printCamera = false;
        bool printLighting = false;
        bool hideMesh = false;
        bool hideLocation = false;
        bool hideBoundingBox = false;
        bool listUvTiles = false;
        bool listAll = false;
    };

    SceneInfoPrinter(Ond::Program::IndentingPrinter& printer, const Options& options);

    // Every entity, at the printer's present indentation.
    void printEntities(Ond::SceneGraph::Scene& scene);
    // "UV set" lines for each UV set index of the scene's meshes.
    void printUvSets(const Ond::SceneGraph::Scene& scene);

    bool visitEntity(Ond::SceneGraph::Entity& entity) override;
    bool visitScene(Ond::SceneGraph::Scene&) override { return true; }
    void endVisitEntity(Ond::SceneGraph::Entity&) override {}
    void endVisitScene(Ond::SceneGraph::Scene&) override {}
    void visit(const Ond::SceneGraph::MeshDisplayComponent*) override {}

private:
    void printEntity(Ond::SceneGraph::Entity& entity);
    void printMesh(const Ond::SceneGraph::MeshDisplayComponent& display);

    Ond::Program::IndentingPrinter& m_printer;
    Options m_options;
};

} // namespace ProgramCommand
