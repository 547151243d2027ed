#include "platform/scenegraph/frames/Material.h"

#include "base/Faults.h"
#include "platform/scenegraph/frames/Checks.h"

namespace lumora
{

namespace
{
constexpr const char* Source = "Material";
}

Material::Material(float power)
{
    RequireFiniteNotNegative(Source, {power});
    surface_.power = power;
}

void Material::SetPower(float power)
{
    faults::Point("Material.SetPower");
    RequireFiniteNotNegative(Source, {power});
    surface_.power = power;
    ++revision_;
}

void Material::SetSpecular(float red, float green, float blue)
{
    faults::Point("Material.SetSpecular");
    RequireFiniteNotNegative(Source, {red, green, blue});
    surface_.specular = {red, green, blue};
    ++revision_;
}

void Material::SetEmissive(float red, float green, float blue)
{
    faults::Point("Material.SetEmissive");
    RequireFiniteNotNegative(Source, {red, green, blue});
    surface_.emissive = {red, green, blue};
    ++revision_;
}

} // namespace lumora
