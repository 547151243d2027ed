// What a material of Assimp's looks like with the means at hand: a colour, a highlight, an emission, a picture.
#pragma once

#include "import/ModelStream.h"
#include "import/worker/Pictures.h"

#include <assimp/material.h>
#include <assimp/mesh.h>
#include <string>

namespace lumora
{

struct Look
{
    modelstream::SurfaceLook surface; ///< its name stays empty
    std::string name;
    int uvChannel = -1;            ///< of the picture; -1 without one
    aiColor4D diffuse{1, 1, 1, 1}; ///< with opacity as alpha, as vertex colours are multiplied by it
    bool isLinear = false;         ///< colours are amounts of light, to be encoded for the screen
};

Look MakeLook(const aiMaterial& material, Pictures& pictures);

/// 0xAARRGGBB of the average of `count` vertex colours under this look.
std::uint32_t FaceColor(const Look& look, const aiColor4D* const* colors, int count);

} // namespace lumora
