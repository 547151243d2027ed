// What is drawn when nobody names a model.
#pragma once

#include "stage/Models.h"

namespace lumora::stage
{

enum class Sky
{
    Evening, ///< all around, as a part of the scene
    Plain,   ///< the background's colour: nothing stands between the scene and a camera far away
};

/// A still life on a polished floor: the same at every run.
Stage MakeBuiltInScene(Sky sky);

} // namespace lumora::stage
