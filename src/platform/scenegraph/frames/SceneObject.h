// What every object of the scene graph has: a name and a number that the host gives a meaning.
#pragma once

#include "base/Variant.h"

#include <cstdint>
#include <string>

namespace lumora
{

class SceneObject : public Object
{
public:
    const std::string& Name() const { return name_; }
    void SetName(std::string name) { name_ = std::move(name); }

    /// 32-bit application data, 0 at first. On a visual it decides whether picks see it.
    std::int32_t GetAppData() const;
    void SetAppData(std::int32_t data);

private:
    std::string name_;
    std::int32_t appData_ = 0;
};

/// Something a frame shows.
class Visual : public SceneObject
{
};

} // namespace lumora
