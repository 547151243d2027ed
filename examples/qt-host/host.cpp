// A host program with Qt: a window that is a control, with a square in it. The middle button moves the camera.
#include "hosts/qt/ViewportWidget.h"

#include <QApplication>

namespace
{

std::shared_ptr<lumora::Frame> Square()
{
    const auto square = lumora::MeshBuilder::Make();
    const lumora::Vector corners[] = {{-1, -1, 0}, {-1, 1, 0}, {1, 1, 0}, {1, -1, 0}};
    const std::int32_t face[] = {4, 0, 1, 2, 3, 0};
    square->AddFaces(corners, {}, face);
    const auto scene = lumora::Frame::Make();
    scene->AddVisual(square);
    return scene;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application{argc, argv};
    lumora::ViewportWidget widget;
    widget.setScene(Square());
    widget.viewport().InitializeCameraPositionAndOrientation(lumora::tdlFrontView);
    widget.setFieldOfView(0.1);
    QObject::connect(&widget, &lumora::ViewportWidget::CameraMoved, [] { /* the camera is somewhere else */ });
    widget.setEnabled(true); // draws
    widget.show();           // the middle button walks, orbits and pans; RenderScene draws whatever moved since
    return QApplication::exec();
}
