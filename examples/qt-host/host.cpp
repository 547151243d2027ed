// A host program with Qt: a window that is a control, with a square in it. The middle button moves the camera.
#include "platform/qt/ViewportWidget.h"

#include <QApplication>

int main(int argc, char** argv)
{
    QApplication application{argc, argv};
    lumora::ViewportWidget widget;
    const auto scene = lumora::Frame::Make();
    const auto square = lumora::MeshBuilder::Make();
    const lumora::Vector corners[] = {{-1, -1, 0}, {-1, 1, 0}, {1, 1, 0}, {1, -1, 0}};
    const std::int32_t face[] = {4, 0, 1, 2, 3, 0};
    square->AddFaces(corners, {}, face);
    scene->AddVisual(square);
    widget.setScene(scene);
    widget.viewport().InitializeCameraPositionAndOrientation(lumora::tdlFrontView);
    widget.setFieldOfView(0.1);
    widget.setEnabled(true); // draws
    widget.show();
    return QApplication::exec();
}
