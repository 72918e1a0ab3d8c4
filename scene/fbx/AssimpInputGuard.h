#pragma once
// Inputs on which Assimp's readers never return, refused before they reach
// them. Each rule answers a loop found by feeding broken files to the
// loader; the rest of the checking is Assimp's.

#include <QByteArray>
#include <QString>

#include <cstddef>

namespace Ond::SceneLoad {

// Empty when the bytes may go to Assimp; otherwise why not. `suffix` picks
// the rules; `data` is the whole file.
QString knownHangIn(const QByteArray& suffix, const char* data, size_t size);

} // namespace Ond::SceneLoad
