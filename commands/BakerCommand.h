#pragma once
// The subcommand of one baker. Its options are a fixed input/output group
// and one option per property of the baker, generated from the catalogue.

#include "program/ProgramCommand.h"

#include <QByteArray>

#include <memory>

namespace Ond::Baking {
class AbstractMapBaker;
}

namespace Vrn::Baking {
class BakingContext;
}

namespace ProgramCommand {

class BakerSettingsMap;

// The ray tracing switches of the settings into the context.
void applyGpuOptions(Vrn::Baking::BakingContext& context, const BakerSettingsMap& settings);

class BakerCommand : public Ond::Program::ProgramCommand
{
public:
    // Creates the baker registered under `bakerKey` in GLMapBakerManager;
    // the command is named after the baker's subcommand.
    explicit BakerCommand(const QByteArray& bakerKey);
    ~BakerCommand() override;

    using Ond::Program::ProgramCommand::process;
    QString implicitOptionName() const override;
    int process(const Ond::Program::ParsedValues& values) override;

    const std::shared_ptr<Ond::Baking::AbstractMapBaker>& baker() const { return m_baker; }

private:
    std::shared_ptr<Ond::Baking::AbstractMapBaker> m_baker;
};

} // namespace ProgramCommand
