// Frames and mesh builders from a checked result.
#pragma once

#include "import/Import.h"
#include "import/ModelReader.h"

#include <functional>

namespace lumora
{

/// Builds the model. `tick` hears the part done, 0..1, before each mesh; when it answers false building stops and the
/// root stays nothing.
ImportedModel BuildModel(const ModelReader& reader, const std::function<bool(double)>& tick);

} // namespace lumora
