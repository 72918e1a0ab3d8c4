#pragma once
// An importer's stage as a part of its caller's progress: the stage's 0..1
// lands on [start, start + span].

#include "program/ProgressInterface.h"

namespace Ond::SceneLoad {

class SubProgress : public Core::ProgressInterface
{
public:
    SubProgress(Core::ProgressInterface* parent, double start, double span)
        : m_parent(parent), m_start(start), m_span(span)
    {
    }
    void setText(const QString& text) override { m_parent->setText(text); }
    void setValue(double fraction) override { m_parent->setValue(m_start + m_span * fraction); }
    bool isCancelled() const override { return m_parent->isCancelled(); }

private:
    Core::ProgressInterface* m_parent;
    double m_start;
    double m_span;
};

} // namespace Ond::SceneLoad
