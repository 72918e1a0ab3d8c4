#pragma once
// Errors of one OBJ read. Any thread may add, in any order.

#include "scene/obj/ObjTypes.h"

#include <mutex>
#include <vector>

namespace Ond::SceneLoad {

class ObjErrorList
{
public:
    void add(int kind, const QString& text)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_errors.push_back({kind, text});
    }

    std::vector<ObjError> list() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_errors;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<ObjError> m_errors;
};

} // namespace Ond::SceneLoad
