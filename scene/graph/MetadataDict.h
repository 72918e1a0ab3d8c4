#pragma once
// Free-form key/value data attached to an entity.

#include <QObject>
#include <QString>
#include <QVariant>
#include <QVariantMap>

namespace Ond::SceneGraph {

class MetadataDict : public QObject
{
    Q_OBJECT

public:
    MetadataDict();

    bool contains(const QString& key) const { return m_values.contains(key); }
    QVariant value(const QString& key) const { return m_values.value(key); }
    const QVariantMap& values() const { return m_values; }
    // Raises changed only when the stored value differs.
    void setValue(const QString& key, const QVariant& value);
    void remove(const QString& key);
    void clear();

signals:
    void changed();

private:
    QVariantMap m_values;
};

} // namespace Ond::SceneGraph
