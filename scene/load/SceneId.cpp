#include "scene/load/SceneId.h"

#include <QMetaType>

namespace Ond::SceneLoad {

void registerSceneIdMetaType()
{
    static const int id = qRegisterMetaType<SceneId>("Ond::SceneLoad::SceneId");
    (void)id;
}

} // namespace Ond::SceneLoad
