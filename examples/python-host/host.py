"""A form with a viewport, driven from Python: builds a scene, moves the camera, writes what a person would see.

    python3 host.py libLumoraViewport.so picture.png
"""

import array
import sys

import lumora

POINT_LIGHT = 2
LABEL = (8, 8, 128, 36)  # left, top, right, bottom


def build_pyramid(factory):
    mesh = factory.CreateMeshBuilder()
    corners = array.array("f", (-1, 0, -1, 1, 0, -1, 1, 0, 1, -1, 0, 1, 0, 2, 0))
    faces = array.array("i", (3, 0, 4, 1, 3, 1, 4, 2, 3, 2, 4, 3, 3, 3, 4, 0, 4, 0, 1, 2, 3, 0))
    mesh.AddFaces(corners, None, faces)
    mesh.GenerateNormals(0.0)
    mesh.GetFace(0).Color = 0xFFE04030
    mesh.GetFace(3).Color = 0xFF3060E0
    return mesh


def draw_label(surface, text):
    """On the picture before it is shown: a plate written into its pixels, then letters and a frame."""
    left, top, right, bottom = LABEL
    row, pitch = array.array("I", [0x102840]) * (right - left), surface.Pitch
    with surface.locked() as pixels:
        for y in range(top, bottom):
            pixels[y * pitch + left:y * pitch + right] = row
    with surface.drawing() as context:
        context.WriteText(left + 7, top + 5, text, 0xFFFFFF, 2)
        context.FrameRectangle(left, top, right, bottom, 0x20A0FF)


def main(library_path, picture_path):
    library = lumora.Library(library_path)
    host = library.create("LumoraViewport.Host")
    host.ResizeWindow(320, 240)
    viewport = host.CreateLive(None)
    factory = host.RetainedMode

    scene = factory.CreateFrame(None)
    pyramid = factory.CreateFrame(scene)
    pyramid.AddVisual(build_pyramid(factory))
    pyramid.AddRotation(2, 0, 1, 0, 0.6)
    lamp = factory.CreateFrame(scene)
    lamp.SetPosition(None, 3, 5, -4)
    lamp.AddLight(factory.CreateLight(POINT_LIGHT, 1, 1, 1))
    scene.SetSceneBackgroundRGB(0.1, 0.15, 0.2)

    moves = []
    viewport.on("CameraMoved", lambda *place: moves.append(place[:3]))
    viewport.on("DDSurfaceAvailable", lambda: draw_label(viewport.DirectDrawSurface, "Pyramid 1"))
    viewport.ExposeDDSurface = True
    viewport.Scene = scene
    viewport.Enabled = True
    viewport.FieldOfView = 0.7
    viewport.SetCameraPosition(0, 1, -5)
    left = viewport.AddCameraMovement(0.5, 0.25, 1, 1)
    viewport.RenderScene()

    print("field of view %.4f" % viewport.FieldOfView)
    print("movement %.4f %.4f %.4f" % left[:3])
    print("camera %.4f %.4f %.4f" % viewport.GetCameraPosition())
    print("events %d, last at %.4f %.4f %.4f" % (len(moves), *moves[-1]))
    print("screen %.4f %.4f %.4f %.4f" % viewport.ViewportTransform(0, 1, 0))
    print("faces %d" % pyramid.Visual(0).FaceCount)
    print("same scene %s" % ("yes" if viewport.Scene == scene else "no"))
    print("pixel %06X" % host.PixelAt(160, 120))
    try:
        viewport.ViewportState = 0
    except lumora.Error as failure:
        print("error %d" % failure.number)
    host.SavePicture(picture_path)


if __name__ == "__main__":
    main(*sys.argv[1:])
