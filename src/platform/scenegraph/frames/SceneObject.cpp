#include "platform/scenegraph/frames/SceneObject.h"

#include "base/Faults.h"

namespace lumora
{

std::int32_t SceneObject::GetAppData() const
{
    faults::Point("SceneObject.GetAppData");
    return appData_;
}

void SceneObject::SetAppData(std::int32_t data)
{
    faults::Point("SceneObject.SetAppData");
    appData_ = data;
}

} // namespace lumora
