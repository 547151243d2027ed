#include "hosts/qt/designer/ViewportPlugin.h"

#include "hosts/qt/FormMistakes.h"
#include "hosts/qt/QtDialogs.h"
#include "hosts/qt/ViewportWidget.h"
#include "hosts/qt/designer/PropertyGroups.h"

#include <QDebug>
#include <QFile>
#include <QTimer>
#include <QtDesigner/QDesignerFormEditorInterface>
#include <QtDesigner/QDesignerFormWindowInterface>
#include <QtDesigner/QDesignerFormWindowManagerInterface>

namespace lumora
{

namespace
{

// The designer shows warnings that begin like this to the person.
void TellMistakes(const QString& path)
{
    QFile file{path};
    if (path.isEmpty() || !file.open(QFile::ReadOnly))
        return;
    for (const QString& mistake : FormMistakes(file))
        qWarning().noquote() << QStringLiteral("Designer: %1").arg(mistake);
}

} // namespace

void ViewportPlugin::initialize(QDesignerFormEditorInterface* designer)
{
    if (designer_)
        return;
    designer_ = designer;
    // A form has its file only after it was added.
    connect(designer->formWindowManager(), &QDesignerFormWindowManagerInterface::formWindowAdded, this,
            [](QDesignerFormWindowInterface* form)
            { QTimer::singleShot(0, form, [form] { TellMistakes(form->fileName()); }); });
}

QIcon ViewportPlugin::icon() const
{
    return ViewportIcon();
}

QString ViewportPlugin::name() const
{
    return QStringLiteral("lumora::ViewportWidget");
}

QString ViewportPlugin::group() const
{
    return QStringLiteral("Lumora");
}

QString ViewportPlugin::includeFile() const
{
    return QStringLiteral("hosts/qt/ViewportWidget.h");
}

QString ViewportPlugin::toolTip() const
{
    return QStringLiteral("A viewport on a three-dimensional scene");
}

QString ViewportPlugin::whatsThis() const
{
    return QStringLiteral("Shows a scene that the program gives it, and moves the camera as a person drags.");
}

// A viewport that was just placed draws as soon as the program runs.
QString ViewportPlugin::domXml() const
{
    return QStringLiteral(R"(<ui language="c++" displayname="Viewport">
<widget class="lumora::ViewportWidget" name="viewport">
 <property name="geometry"><rect><x>0</x><y>0</y><width>320</width><height>240</height></rect></property>
 <property name="Enabled"><bool>true</bool></property>
</widget>
<customwidgets><customwidget>
 <class>lumora::ViewportWidget</class>
 <extends>QWidget</extends>
 <propertyspecifications><stringpropertyspecification name="BackgroundTexture" type="singleline" notr="true"/></propertyspecifications>
</customwidget></customwidgets>
</ui>)");
}

QWidget* ViewportPlugin::createWidget(QWidget* parent)
{
    ViewportWidget::Options options;
    options.mode = designer_ ? ViewportWidget::Mode::DesignTime : ViewportWidget::Mode::Live;
    auto* const widget = new ViewportWidget{options, parent};
    if (designer_)
        GroupProperties(*designer_, *widget);
    return widget;
}

} // namespace lumora
