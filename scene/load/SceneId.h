#pragma once
// A scene's name in a SceneMgr: "file:" URLs for files.

#include <QMetaType>

#include <string>

namespace Ond::SceneLoad {

using SceneId = std::string;

} // namespace Ond::SceneLoad

Q_DECLARE_METATYPE(Ond::SceneLoad::SceneId)
