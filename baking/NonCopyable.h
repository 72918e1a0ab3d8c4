#pragma once
// Base that forbids copies of objects with identity (bakers).

namespace Ond::noncopyable_ {

class noncopyable
{
protected:
    noncopyable() = default;
    ~noncopyable() = default;

public:
    noncopyable(const noncopyable&) = delete;
    noncopyable& operator=(const noncopyable&) = delete;
};

} // namespace Ond::noncopyable_
