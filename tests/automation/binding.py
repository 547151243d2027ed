"""The Python binding: names, results, sinks, and what other threads may do.

    python3 binding.py FOLDER-OF-lumora.py libLumoraViewport.so
"""

import gc
import sys
import threading

sys.path.insert(0, sys.argv[1])
import lumora  # noqa: E402

WRONG_THREAD = -2147417842


def on_another_thread(work):
    thread = threading.Thread(target=work)
    thread.start()
    return thread


def failure_of(call):
    try:
        call()
    except lumora.Error as failure:
        return failure.number, str(failure)
    raise AssertionError("this was to fail")


def names_results_and_sinks(library):
    host = library.create("LumoraViewport.Host")
    heard = []
    host.CreateControl().on("CameraMoved", lambda *place: heard.append(place))
    gc.collect()  # the object that connected the sink is gone, the control is not
    host.Load(None)
    assert heard and len(heard[0]) == 9, heard
    viewport = host.Viewport
    assert not hasattr(viewport, "NoSuch") and getattr(viewport, "NoSuch", 7) == 7 and hasattr(viewport, "Scene")
    assert failure_of(lambda: setattr(viewport, "NoSuch", 1))[0] == 438
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
    collector = on_another_thread(collect)
    for _ in range(10):
        Cycle(use(library), library.create("LumoraViewport.Viewport"))
    done.set()
    collector.join()
    gc.enable()


def two_controls(library):
    held, failures = [use(library)], []

    def refused():
        failures.extend(failure_of(call) for call in (lambda: use(library), lambda: held[0].DriverCount,
                                                      lambda: held[0].NoSuch, lambda: held[0].PaintNow()))
        held.clear()  # nothing is held any more: the library may be another thread's
        gc.collect()
        use(library)

    on_another_thread(refused).join()
    assert len(failures) == 4 and not held, failures
    assert all(number == WRONG_THREAD and "thread" in text for number, text in failures), failures


def main():
    library = lumora.Library(sys.argv[2])
    for step in (names_results_and_sinks, collect_beside, two_controls, use):
        step(library)
        gc.collect()
    print("all released" if library.can_unload() else "something is left")


main()
