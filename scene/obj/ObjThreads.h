#pragma once
// The OBJ reader's short parallel passes: body(t) for t in [0, count), the
// first on the calling thread, the others on threads of their own, all
// joined before the call returns.

#include <cstddef>
#include <thread>
#include <vector>

namespace Ond::SceneLoad {

template <typename Body>
void runOnThreads(size_t count, const Body& body)
{
    std::vector<std::thread> threads;
    for (size_t t = 1; t < count; ++t)
        threads.emplace_back([&body, t] { body(t); });
    body(size_t(0));
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace Ond::SceneLoad
