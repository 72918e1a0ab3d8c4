#include "scene/load/SceneExporter.h"

namespace Ond::SceneLoad {

SceneExporter::~SceneExporter() = default;

} // namespace Ond::SceneLoad
