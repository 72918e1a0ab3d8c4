#pragma once
// A baker whose result is vector data (bytes of a text format), not a surface.

#include "baking/AbstractBaker.h"

#include <QByteArray>

namespace Ond::Baking {

class VectorialMapBaker : public AbstractBaker
{
public:
    // The last result; replaced by each run.
    const QByteArray& data() const { return m_data; }

protected:
    QByteArray& mutableData() { return m_data; }

private:
    QByteArray m_data;
};

} // namespace Ond::Baking
