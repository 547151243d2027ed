// The headings under which the form designer lists the control's properties.
#pragma once

class QDesignerFormEditorInterface;
class QWidget;

namespace lumora
{

void GroupProperties(QDesignerFormEditorInterface& designer, QWidget& widget);

} // namespace lumora
