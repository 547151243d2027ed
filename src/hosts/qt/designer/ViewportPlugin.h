// The control in the widget box of Qt's form designer, and in forms that are loaded at run time.
#pragma once

#include <QtUiPlugin/QDesignerCustomWidgetInterface>

namespace lumora
{

/// The designer introduces itself before it creates widgets: these are for design time. Whoever loads a form at run
/// time does not, and gets live controls.
class ViewportPlugin : public QObject, public QDesignerCustomWidgetInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QDesignerCustomWidgetInterface")
    Q_INTERFACES(QDesignerCustomWidgetInterface)

public:
    bool isContainer() const override { return false; }
    bool isInitialized() const override { return designer_ != nullptr; }
    void initialize(QDesignerFormEditorInterface* designer) override;
    QIcon icon() const override;
    QString domXml() const override;
    QString group() const override;
    QString includeFile() const override;
    QString name() const override;
    QString toolTip() const override;
    QString whatsThis() const override;
    QWidget* createWidget(QWidget* parent) override;

private:
    QDesignerFormEditorInterface* designer_ = nullptr;
};

} // namespace lumora
