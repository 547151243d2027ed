// What is drawn when nobody names a model.
#pragma once

#include "lumora-render/Models.h"

namespace lumora::render
{

/// A still life on a polished floor under an evening sky: the same at every run.
Stage MakeBuiltInScene();

} // namespace lumora::render
