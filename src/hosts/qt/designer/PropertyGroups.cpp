#include "hosts/qt/designer/PropertyGroups.h"

#include "properties/PropertyGroups.h"

#include <QWidget>
#include <QtDesigner/QDesignerFormEditorInterface>
#include <QtDesigner/QDesignerPropertySheetExtension>
#include <QtDesigner/QExtensionManager>
#include <string>

namespace lumora
{

void GroupProperties(QDesignerFormEditorInterface& designer, QWidget& widget)
{
    auto* const sheet = qt_extension<QDesignerPropertySheetExtension*>(designer.extensionManager(), &widget);
    if (!sheet)
        return;
    for (const PropertyRow& row : PropertyTable())
    {
        const int index = sheet->indexOf(QString::fromStdString(std::string{row.name}));
        if (index >= 0)
            sheet->setPropertyGroup(index, "Viewport: " + QString::fromStdString(std::string{GroupOf(row)}));
    }
}

} // namespace lumora
