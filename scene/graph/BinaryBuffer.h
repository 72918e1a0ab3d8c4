#pragma once
// Typed arrays that hold all geometry. The interface is virtual so that a
// buffer may live elsewhere than in a std::vector; the one implementation
// here owns a vector that is moved in, never copied.

#include <Eigen/Core>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace Ond::SceneGraph {

template <typename T>
class BinaryBuffer
{
public:
    using ValueType = T;

    virtual ~BinaryBuffer() = default;
    virtual T* data() = 0;
    virtual const T* data() const = 0;
    // Unchecked: index must be below size().
    virtual T* at(size_t index) = 0;
    virtual const T* at(size_t index) const = 0;
    // Number of elements, not bytes.
    virtual size_t size() const = 0;
    // A deep copy, always a VectorBinaryBuffer.
    virtual std::unique_ptr<BinaryBuffer<T>> clone() const = 0;

    bool empty() const { return size() == 0; }
    T& operator[](size_t index) { return *at(index); }
    const T& operator[](size_t index) const { return *at(index); }
    T* begin() { return data(); }
    T* end() { return data() + size(); }
    const T* begin() const { return data(); }
    const T* end() const { return data() + size(); }
};

template <typename T>
class VectorBinaryBuffer : public BinaryBuffer<T>
{
public:
    VectorBinaryBuffer() = default;
    explicit VectorBinaryBuffer(std::vector<T>&& values) : m_values(std::move(values)) {}

    T* data() override { return m_values.data(); }
    const T* data() const override { return m_values.data(); }
    T* at(size_t index) override { return m_values.data() + index; }
    const T* at(size_t index) const override { return m_values.data() + index; }
    size_t size() const override { return m_values.size(); }
    std::unique_ptr<BinaryBuffer<T>> clone() const override
    {
        return std::make_unique<VectorBinaryBuffer<T>>(std::vector<T>(m_values));
    }

    std::vector<T>& values() { return m_values; }
    const std::vector<T>& values() const { return m_values; }

private:
    std::vector<T> m_values;
};

using IndexBuffer = BinaryBuffer<uint32_t>;
using Vec2Buffer = BinaryBuffer<Eigen::Vector2f>;
using Vec3Buffer = BinaryBuffer<Eigen::Vector3f>;
using Vec4Buffer = BinaryBuffer<Eigen::Vector4f>;
using IndexBufferUPtr = std::unique_ptr<IndexBuffer>;
using Vec2BufferUPtr = std::unique_ptr<Vec2Buffer>;
using Vec3BufferUPtr = std::unique_ptr<Vec3Buffer>;
using Vec4BufferUPtr = std::unique_ptr<Vec4Buffer>;

// Wraps a vector into an owned buffer without copying it.
template <typename T>
std::unique_ptr<BinaryBuffer<T>> makeBuffer(std::vector<T>&& values)
{
    return std::make_unique<VectorBinaryBuffer<T>>(std::move(values));
}

// Deep copy of a buffer that may be null.
template <typename T>
std::unique_ptr<BinaryBuffer<T>> cloneBuffer(const std::unique_ptr<BinaryBuffer<T>>& buffer)
{
    return buffer ? buffer->clone() : nullptr;
}

} // namespace Ond::SceneGraph
