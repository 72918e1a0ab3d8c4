#pragma once
// What the main function registers at start-up, in its fixed order.

namespace Ond::Program {
class ClassicProgramOptions;
}

namespace Zmf {

// The codec factories, in order: DDS, FreeImage, LYD.
void registerCodecs();

// The colour-map baker factory, one command per baker key (in key order),
// then `run` and `info`.
void registerCommands(Ond::Program::ClassicProgramOptions& options);

} // namespace Zmf
