#include "baking/detail/MeshNameId.h"

#include "baking/MeshNameSuffixes.h"
#include "scene/graph/MurmurHash3.h"

#include <algorithm>

namespace Ond::Baking {

QString meshNameStem(const QString& name)
{
    QString stem = name;
    const QString ignore = MeshNameSuffixes::get(MeshNameSuffixes::IgnoreBackface);
    if (!ignore.isEmpty())
        stem.remove(ignore, Qt::CaseSensitive);
    auto firstOf = [&stem](const QString& suffix) {
        if (suffix.isEmpty())
            return stem.size();
        const qsizetype at = stem.indexOf(suffix, 0, Qt::CaseSensitive);
        return at < 0 ? stem.size() : at;
    };
    const qsizetype cut = std::min(firstOf(MeshNameSuffixes::get(MeshNameSuffixes::Low)),
                                   firstOf(MeshNameSuffixes::get(MeshNameSuffixes::High)));
    stem.truncate(cut);
    return stem;
}

uint32_t meshNameId(const QString& name)
{
    const QByteArray bytes = meshNameStem(name).toUtf8();
    return SceneGraph::murmurHash3_x86_32(bytes.constData(), size_t(bytes.size()), 0);
}

bool meshIgnoresBackfaces(const QString& name)
{
    return name.contains(MeshNameSuffixes::get(MeshNameSuffixes::IgnoreBackface), Qt::CaseSensitive);
}

} // namespace Ond::Baking
