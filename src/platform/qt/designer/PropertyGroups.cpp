#include "platform/qt/designer/PropertyGroups.h"

#include "properties/PropertyTable.h"

#include <QWidget>
#include <QtDesigner/QDesignerFormEditorInterface>
#include <QtDesigner/QDesignerPropertySheetExtension>
#include <QtDesigner/QExtensionManager>
#include <string>
#include <string_view>

namespace lumora
{

namespace
{

// Rows of the property table from this one on.
struct Group
{
    std::string_view first;
    const char* heading;
};

constexpr Group Groups[] = {
    {"Direct3DDevice", "Viewport: Device"},
    {"BackColor", "Viewport: Window"},
    {"Scene", "Viewport: Scene"},
    {"NavMouseButton", "Viewport: Navigation"},
    {"NavControlPrimary", "Viewport: On-screen controls"},
    {"NavMouseSensitivity", "Viewport: Mouse navigation"},
    {"AntiAlias", "Viewport: Picture"},
    {"NavMouseX", "Viewport: Mouse navigation"},
    {"ProjectionType", "Viewport: Picture"},
    {"CenterNavigation", "Viewport: Mouse navigation"},
    {"TextureQuality", "Viewport: Picture"},
    {"ConstrainX", "Viewport: For the program"},
    {"BackgroundTexture", "Viewport: Picture"},
    {"BackClippingPlane", "Viewport: Camera"},
    {"ViewportID", "Viewport: For the program"},
    {"SceneOriginX", "Viewport: Camera"},
    {"ViewportState", "Viewport: Device"},
    {"CollisionDetection", "Viewport: Collision and limits"},
    {"KeyVelocityMove", "Viewport: Keys"},
    {"CameraMinX", "Viewport: Collision and limits"},
    {"KeyMoveForward", "Viewport: Keys"},
    {"Camera", "Viewport: Device"},
};

} // namespace

void GroupProperties(QDesignerFormEditorInterface& designer, QWidget& widget)
{
    auto* const sheet = qt_extension<QDesignerPropertySheetExtension*>(designer.extensionManager(), &widget);
    if (!sheet)
        return;
    const char* heading = "";
    for (const PropertyRow& row : PropertyTable())
    {
        for (const Group& group : Groups)
            if (group.first == row.name)
                heading = group.heading;
        const int index = sheet->indexOf(QString::fromStdString(std::string{row.name}));
        if (index >= 0)
            sheet->setPropertyGroup(index, QString::fromUtf8(heading));
    }
}

} // namespace lumora
