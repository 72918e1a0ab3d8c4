#include "scene/graph/MetadataDict.h"

namespace Ond::SceneGraph {

MetadataDict::MetadataDict() = default;

void MetadataDict::setValue(const QString& key, const QVariant& value)
{
    const auto it = m_values.constFind(key);
    if (it != m_values.constEnd() && it.value() == value)
        return;
    m_values.insert(key, value);
    emit changed();
}

void MetadataDict::remove(const QString& key)
{
    if (m_values.remove(key) > 0)
        emit changed();
}

void MetadataDict::clear()
{
    if (m_values.isEmpty())
        return;
    m_values.clear();
    emit changed();
}

} // namespace Ond::SceneGraph
