#pragma once
// Records the arguments of each emission of one signal, for as long as the
// recorder lives.

#include <QObject>

#include <tuple>
#include <type_traits>
#include <vector>

namespace SceneTest {

template <typename Obj, typename... Args>
class SignalRecorder
{
public:
    using Call = std::tuple<std::decay_t<Args>...>;

    SignalRecorder(Obj* sender, void (Obj::*signal)(Args...))
    {
        QObject::connect(sender, signal, &m_context, [this](Args... args) { calls.emplace_back(args...); });
    }

    int count() const { return int(calls.size()); }
    template <size_t I>
    auto arg(size_t call) const
    {
        return std::get<I>(calls.at(call));
    }

    std::vector<Call> calls;

private:
    QObject m_context;
};

} // namespace SceneTest
