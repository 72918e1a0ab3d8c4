#pragma once
// Inputs on which Assimp's readers never return or claim memory far beyond
// the file, refused before they reach them. Each rule answers a case found
// by feeding broken files to the loader; the rest of the checking is
// Assimp's.

#include <QByteArray>
#include <QString>

#include <cstddef>

namespace Ond::SceneLoad {

// Empty when the bytes may go to Assimp; otherwise why not. `suffix` picks
// the rules; `data` is the whole file.
QString unsafeInputReason(const QByteArray& suffix, const char* data, size_t size);

} // namespace Ond::SceneLoad
