"""The Python binding: names, results, sinks, and a garbage collector on another thread.

    python3 binding.py FOLDER-OF-lumora.py libLumoraViewport.so
"""

import gc
import sys
import threading

sys.path.insert(0, sys.argv[1])
import lumora  # noqa: E402


def names_results_and_sinks(library):
    host = library.create("LumoraViewport.Host")
    heard = []
    host.CreateControl().on("CameraMoved", lambda *place: heard.append(place))
    gc.collect()  # the object that connected the sink is gone, the control is not
    host.Load(None)
    assert heard and len(heard[0]) == 9, heard
    viewport = host.Viewport
    assert not hasattr(viewport, "NoSuch") and getattr(viewport, "NoSuch", 7) == 7 and hasattr(viewport, "Scene")
    try:
        viewport.NoSuch = 1
        raise AssertionError("this was to fail")
    except lumora.Error as failure:
        assert failure.number == 438
    assert viewport.Pick(1, 0, 0, True, True)[:2] == (None, None)


class Cycle:
    """Only the garbage collector ends it."""

    def __init__(self, *held):
        self.itself, self.held = self, held


def use(library):
    host = library.create("LumoraViewport.Host")
    viewport, factory = host.CreateLive(None), host.RetainedMode
    for number in range(30):
        frame = factory.CreateFrame(viewport.Scene)
        frame.SetPosition(None, number, 0, 0)
        Cycle(frame, factory.CreateMeshBuilder(), host.Viewport)
        assert frame.GetPosition(viewport.Scene)[0] == number
    return host


def collect_beside(library):
    """A second thread collects all the time, and ends the controls too that were left behind."""
    done = threading.Event()

    def collect():
        while not done.is_set():
            gc.collect()

    gc.disable()
    collector = threading.Thread(target=collect)
    collector.start()
    for _ in range(10):
        Cycle(use(library), library.create("LumoraViewport.Viewport"))
    done.set()
    collector.join()
    gc.enable()


def main():
    library = lumora.Library(sys.argv[2])
    for step in (names_results_and_sinks, collect_beside, use):
        step(library)
        gc.collect()
    print("all released" if library.can_unload() else "something is left")


main()
