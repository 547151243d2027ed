// Material properties of a dozen formats reduced to one model of a surface.
#include "import/worker/Materials.h"

#include <algorithm>
#include <array>
#include <assimp/GltfMaterial.h>
#include <cmath>

namespace lumora
{

using namespace modelstream;

namespace
{

constexpr float MostPower = 1000;

float Unit(float value)
{
    return value > 0 ? std::min(value, 1.0F) : 0.0F; // not a number becomes 0 too
}

float Encoded(float light)
{
    return light <= 0.0031308F ? light * 12.92F : 1.055F * std::pow(light, 1 / 2.4F) - 0.055F;
}

std::uint32_t Packed(aiColor4D color, bool isLinear)
{
    const auto byte = [&](float component, bool encode)
    {
        const float value = Unit(component);
        return static_cast<std::uint32_t>(std::lround((encode ? Encoded(value) : value) * 255.0F));
    };
    return byte(color.a, false) << 24 | byte(color.r, isLinear) << 16 | byte(color.g, isLinear) << 8 |
           byte(color.b, isLinear);
}

aiColor4D ColorOf(const aiMaterial& material, const char* key, unsigned type, unsigned index, aiColor4D fallback)
{
    aiColor4D color = fallback;
    return material.Get(key, type, index, color) == aiReturn_SUCCESS ? color : fallback;
}

float NumberOf(const aiMaterial& material, const char* key, unsigned type, unsigned index, float fallback)
{
    float number = fallback;
    return material.Get(key, type, index, number) == aiReturn_SUCCESS ? number : fallback;
}

bool IsMatt(const aiMaterial& material)
{
    int model = aiShadingMode_Phong;
    material.Get(AI_MATKEY_SHADING_MODEL, model);
    return model == aiShadingMode_Flat || model == aiShadingMode_Gouraud || model == aiShadingMode_NoShading;
}

void SetHighlight(Look& look, const aiMaterial& material)
{
    const float shininess = NumberOf(material, AI_MATKEY_SHININESS, 0);
    if (IsMatt(material) || !(shininess > 0))
        return;
    const float strength = NumberOf(material, AI_MATKEY_SHININESS_STRENGTH, 1);
    const aiColor4D specular = ColorOf(material, AI_MATKEY_COLOR_SPECULAR, {0, 0, 0, 1});
    look.surface.specular = {Unit(specular.r * strength), Unit(specular.g * strength), Unit(specular.b * strength)};
    const bool shines = std::ranges::any_of(look.surface.specular, [](float component) { return component > 0; });
    look.surface.power = shines ? std::min(shininess, MostPower) : 0;
}

void SetPicture(Look& look, const aiMaterial& material, bool keepAlpha, Pictures& pictures)
{
    for (const aiTextureType type : {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR})
    {
        aiString name;
        if (material.GetTexture(type, 0, &name) != aiReturn_SUCCESS || name.length == 0)
            continue;
        look.surface.texture = pictures.Load(name.C_Str(), keepAlpha);
        if (look.surface.texture == NoIndex)
            return;
        look.uvChannel = 0;
        material.Get(AI_MATKEY_UVWSRC(type, 0), look.uvChannel);
        look.uvChannel = std::clamp(look.uvChannel, 0, AI_MAX_NUMBER_OF_TEXTURECOORDS - 1);
        return;
    }
}

} // namespace

Look MakeLook(const aiMaterial& material, Pictures& pictures)
{
    Look look;
    aiString text;
    if (material.Get(AI_MATKEY_NAME, text) == aiReturn_SUCCESS)
        look.name = text.C_Str();

    bool keepAlpha = true;
    look.diffuse = ColorOf(material, AI_MATKEY_COLOR_DIFFUSE, {1, 1, 1, 1});
    if (material.Get(AI_MATKEY_GLTF_ALPHAMODE, text) == aiReturn_SUCCESS)
    {
        look.isLinear = true;
        keepAlpha = std::string(text.C_Str()) != "OPAQUE";
        look.diffuse = ColorOf(material, AI_MATKEY_BASE_COLOR, look.diffuse);
        look.diffuse.a = keepAlpha ? Unit(look.diffuse.a) : 1; // Assimp repeats it as opacity
    }
    else
    {
        look.diffuse.a = Unit(NumberOf(material, AI_MATKEY_OPACITY, 1));
        if (look.diffuse.a == 0)
            look.diffuse.a = 1; // exporters confuse opacity with transparency; nobody means a surface that is not seen
    }

    SetHighlight(look, material);
    const aiColor4D emissive = ColorOf(material, AI_MATKEY_COLOR_EMISSIVE, {0, 0, 0, 1});
    const auto shown = [&](float component) { return look.isLinear ? Encoded(Unit(component)) : Unit(component); };
    look.surface.emissive = {shown(emissive.r), shown(emissive.g), shown(emissive.b)};
    SetPicture(look, material, keepAlpha, pictures);
    // A picture on black would not be seen; exporters that write black there mean the picture alone.
    if (look.surface.texture != NoIndex && look.diffuse.IsBlack())
        look.diffuse = {1, 1, 1, look.diffuse.a};
    look.surface.color = Packed(look.diffuse, look.isLinear);
    if (look.name == AI_DEFAULT_MATERIAL_NAME) // made up by Assimp: vertex colours stand alone
        look.diffuse = {1, 1, 1, 1};
    return look;
}

std::uint32_t FaceColor(const Look& look, const aiColor4D* const* colors, int count)
{
    aiColor4D sum(0, 0, 0, 0);
    for (int i = 0; i < count; ++i)
        sum += *colors[i];
    return Packed(sum * (1.0F / static_cast<float>(count)) * look.diffuse, look.isLinear);
}

} // namespace lumora
