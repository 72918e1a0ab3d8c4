#pragma once
// A scene's name in a SceneMgr: "file:" URLs for files.

#include <string>

namespace Ond::SceneLoad {

using SceneId = std::string;

// Makes "Ond::SceneLoad::SceneId" known to Qt, for queued signals; called by
// SceneMgr, safe to call again.
void registerSceneIdMetaType();

} // namespace Ond::SceneLoad
