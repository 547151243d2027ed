"""Viewport objects by late binding: names are looked up in the library when they are used.

    library = lumora.Library("libLumoraViewport.so")
    host = library.create("LumoraViewport.Host")
    viewport = host.CreateLive(None)
    viewport.on("CameraMoved", print)
    viewport.FieldOfView = 0.7
    viewport.RenderScene()

A method answers its result, and after it whatever it wrote into its arguments: `x, y, z = viewport.GetCameraPosition()`.
Arguments that are only written may be left out from the end. A handler that returns something not None writes it back
into the event's arguments (a tuple for more than one). Failures are `lumora.Error`; a name that no member has is an
AttributeError too, so that hasattr and getattr with a default work. One thread makes all calls; objects may be dropped
on any, as the garbage collector does. Needs nothing but Python itself.

Many numbers cross as buffers. Anything with the buffer protocol (array.array, bytes, memoryview, arrays of numpy) is
read where it lies when it is contiguous and of 32-bit whole numbers, Singles, Doubles or bytes, and converted otherwise.
Results are memoryviews of the library's memory, which stays as long as they do.
"""

import array
import contextlib
import ctypes
import itertools
import os
from ctypes import (CFUNCTYPE, POINTER, Structure, Union, byref, c_char_p, c_double, c_float, c_int16, c_int32,
                    c_ubyte, c_uint32, c_uint64, c_void_p)

METHOD, GET, PUT, PUT_REFERENCE = 1, 2, 4, 8
EMPTY, INTEGER, LONG, SINGLE, DOUBLE, STRING, OBJECT, BOOLEAN = 0, 2, 3, 4, 5, 8, 9, 11
NUMBERS, WRITABLE = 0x2000, 1


class Id(Structure):
    _fields_ = [("bytes", c_ubyte * 16)]


def _id(last):
    return Id((c_ubyte * 16)(0x01, 0x5A, 0x3D, 0x8E, 0x47, 0x2C, 0x9B, 0x4F, 0xA6, 0x10, 0x7D, 0xE2, 0x35, 0xC8, 0x90, last))


CLASSES = {"LumoraViewport.Viewport": _id(1), "LumoraViewport.clsTDLViewportPNC": _id(2),
           "LumoraViewport.Host": _id(3), "LumoraViewport.RetainedMode": _id(4)}
DISPATCH, CLASS_OBJECT = _id(0x20), _id(0x21)


class _Content(Union):
    _fields_ = [("integer", c_int16), ("number", c_int32), ("single", c_float), ("real", c_double),
                ("text", c_void_p), ("object", c_void_p), ("buffer", c_void_p)]


class Value(Structure):
    _fields_ = [("type", c_int32), ("reserved", c_int32), ("content", _Content)]


class BufferRecord(Structure):
    _fields_ = [("data", c_void_p), ("count", c_uint64), ("elementType", c_int32), ("flags", c_uint32)]


class ErrorRecord(Structure):
    _fields_ = [("number", c_int32), ("reserved", c_int32), ("source", c_void_p), ("description", c_void_p)]


class ArgumentRecord(Structure):
    _fields_ = [("name", c_char_p), ("typeName", c_char_p), ("type", c_int32), ("byReference", c_int32)]


class MemberRecord(Structure):
    _fields_ = [("name", c_char_p), ("typeName", c_char_p), ("help", c_char_p), ("id", c_int32), ("type", c_int32),
                ("kinds", c_uint32), ("argumentCount", c_int32)]


ON_EVENT = CFUNCTYPE(c_int32, c_void_p, c_int32, POINTER(Value), c_int32, POINTER(ErrorRecord))
RELEASED = CFUNCTYPE(None, c_void_p)


class Sink(Structure):
    _fields_ = [("context", c_void_p), ("OnEvent", ON_EVENT), ("Released", RELEASED)]


def _table(*functions):
    """A structure of function pointers, each given as (name, result, arguments after the object)."""
    class Table(Structure):
        _fields_ = [(name, CFUNCTYPE(result, c_void_p, *arguments)) for name, result, *arguments in functions]
    return Table


_UNKNOWN = (("QueryInterface", c_int32, POINTER(Id), POINTER(c_void_p)), ("AddRef", c_uint32), ("Release", c_uint32))
DispatchTable = _table(
    *_UNKNOWN,
    ("GetClassName", c_char_p),
    ("GetMember", c_int32, c_int32, POINTER(MemberRecord)),
    ("GetMemberArgument", c_int32, c_int32, c_int32, POINTER(ArgumentRecord)),
    ("GetEvent", c_int32, c_int32, POINTER(MemberRecord)),
    ("GetEventArgument", c_int32, c_int32, c_int32, POINTER(ArgumentRecord)),
    ("GetIdOfName", c_int32, c_char_p, POINTER(c_int32), POINTER(ErrorRecord)),
    ("Invoke", c_int32, c_int32, c_uint32, POINTER(Value), c_int32, POINTER(Value), POINTER(ErrorRecord)),
    ("Advise", c_int32, POINTER(Sink), POINTER(c_uint32), POINTER(ErrorRecord)),
    ("Unadvise", c_int32, c_uint32),
    ("MakeText", c_void_p, c_char_p, c_uint32),
    ("MakeTextFromUtf8", c_void_p, c_char_p),
    ("FreeText", None, c_void_p),
    ("ClearValue", None, POINTER(Value)))
ClassTable = _table(
    *_UNKNOWN,
    ("CreateInstance", c_int32, c_void_p, POINTER(Id), POINTER(c_void_p)),
    ("LockServer", c_int32, c_int32),
    ("GetTypeLibrary", c_int32, POINTER(c_void_p)),
    ("FreeText", None, c_void_p))


class Error(Exception):
    def __init__(self, number, source, description):
        super().__init__(description)
        self.number, self.source, self.description = number, source, description


class UnknownName(Error, AttributeError):
    """Error 438: no member or event has this name."""


_WRONG_THREAD = -2147417842
_SENTENCES = {_WRONG_THREAD: "Another thread owns this library: make this call on the thread that made the first one, "
                             "or release every object before this thread makes its first call"}
_MISSING = object()  # stands for an argument that was left out: the empty value of its type


def _functions(pointer, table):
    return ctypes.cast(ctypes.cast(pointer, POINTER(c_void_p))[0], POINTER(table))[0]


def _text(pointer):
    if not pointer:
        return ""
    length = ctypes.cast(pointer - 4, POINTER(c_uint32))[0]
    return ctypes.string_at(pointer, length).decode("utf-16-le")


def _has_buffer(content):
    try:
        memoryview(content).release()
        return True
    except TypeError:
        return False


def _check(answer, what):
    if answer < 0:
        sentence = _SENTENCES.get(answer, f"{what} failed: 0x{answer & 0xFFFFFFFF:08X}")
        raise Error(answer, "LumoraViewport", sentence)


class _View(Structure):
    """What Python tells of an object with the buffer protocol."""
    _fields_ = [("buf", c_void_p), ("obj", c_void_p), ("len", ctypes.c_ssize_t), ("itemsize", ctypes.c_ssize_t),
                ("readonly", ctypes.c_int), ("ndim", ctypes.c_int), ("format", c_char_p), ("shape", c_void_p),
                ("strides", c_void_p), ("suboffsets", c_void_p), ("internal", c_void_p)]


ELEMENTS = {3: "i", 4: "f", 5: "d", 17: "B", 19: "I"}  # types of a buffer's elements, and Python's letters for them


class _Lent:
    """A record of Python's own memory, for the length of a call."""

    def __init__(self, content):
        view = memoryview(content)
        letter, size = view.format.lstrip("@=<"), view.itemsize
        if letter in tuple("hHlLqQ"):
            letter, size = "i", 4
            view = memoryview(array.array("i", array.array(view.format.lstrip("@=<"), view.tobytes())))
        kinds = [kind for kind, known in ELEMENTS.items() if known == letter]
        if not kinds:
            raise TypeError(f'numbers of the format "{view.format}" cannot cross to the library')
        self._view = _View()
        self._lent = view if view.c_contiguous else view.tobytes()
        ctypes.pythonapi.PyObject_GetBuffer(ctypes.py_object(self._lent), byref(self._view), 0)
        self.record = BufferRecord(self._view.buf, self._view.len // size, kinds[0], 0)

    def __del__(self):
        if self.__dict__.get("record") is not None:
            ctypes.pythonapi.PyBuffer_Release(byref(self._view))


class _Kept:
    """A value of the library's that is cleared when no view of its memory is left."""

    def __init__(self, owner, value):
        self._owner, self._value = owner, Value.from_buffer_copy(value)
        value.type = EMPTY

    def __del__(self):
        self._owner._functions.ClearValue(self._owner._pointer, byref(self._value))

    def view(self):
        record = ctypes.cast(self._value.content.buffer, POINTER(BufferRecord))[0]
        letter = ELEMENTS[record.elementType]
        if record.count == 0:
            return memoryview(array.array(letter))
        memory = (c_ubyte * (record.count * array.array(letter).itemsize)).from_address(record.data)
        memory.kept = self
        view = memoryview(memory).cast("B").cast(letter)
        return view if record.flags & WRITABLE else view.toreadonly()


class Library:
    """The library by its path or name. A name alone is looked for in the tree that this module was installed to, then
    where the system looks for libraries."""

    def __init__(self, path):
        installed = os.path.join(os.path.dirname(os.path.realpath(__file__)), "..", "..", path)
        self._library = ctypes.CDLL(installed if path == os.path.basename(path) and os.path.exists(installed) else path)

    def _class_object(self, name):
        pointer = c_void_p()
        _check(self._library.DllGetClassObject(byref(CLASSES[name]), byref(CLASS_OBJECT), byref(pointer)), name)
        return pointer, _functions(pointer, ClassTable)

    def create(self, name):
        pointer, functions = self._class_object(name)
        try:
            created = c_void_p()
            _check(functions.CreateInstance(pointer, None, byref(DISPATCH), byref(created)), name)
            return Object(created.value)
        finally:
            functions.Release(pointer)

    def type_library(self):
        """The JSON document that describes every class."""
        pointer, functions = self._class_object("LumoraViewport.Host")
        try:
            text = c_void_p()
            _check(functions.GetTypeLibrary(pointer, byref(text)), "GetTypeLibrary")
            document = _text(text.value)
            functions.FreeText(pointer, text)
            return document
        finally:
            functions.Release(pointer)

    def can_unload(self):
        return self._library.DllCanUnloadNow() == 0


class Member:
    def __init__(self, record, arguments):
        self.name, self.help = record.name.decode(), record.help.decode()
        self.id, self.kinds, self.type_name = record.id, record.kinds, record.typeName.decode()
        self.arguments = [(a.name.decode(), bool(a.byReference)) for a in arguments]


class Object:
    """One object of the library; the same one is equal to itself wherever it came from."""

    _classes = {}  # members and events of each class, read once

    def __init__(self, pointer):
        """Takes over a reference."""
        self.__dict__["_pointer"] = pointer
        self.__dict__["_functions"] = _functions(pointer, DispatchTable)
        self.__dict__["_members"], self.__dict__["_events"] = self._describe()

    def __del__(self):
        pointer = self.__dict__.get("_pointer")
        if pointer:
            self._functions.Release(pointer)

    def __eq__(self, other):
        return isinstance(other, Object) and other._pointer == self._pointer

    def __hash__(self):
        return hash(self._pointer)

    def __repr__(self):
        return f"<{self.class_name()}>"

    def __dir__(self):
        return [member.name for member in self._members.values()]

    def class_name(self):
        return self._functions.GetClassName(self._pointer).decode()

    def _describe(self):
        name = self.class_name()
        if name not in Object._classes:
            functions = self._functions
            Object._classes[name] = (self._rows(functions.GetMember, functions.GetMemberArgument),
                                     self._rows(functions.GetEvent, functions.GetEventArgument))
        return Object._classes[name]

    def _rows(self, get_row, get_argument):
        rows, record = {}, MemberRecord()
        while (answer := get_row(self._pointer, len(rows), byref(record))) == 0:
            arguments = []
            for place in range(record.argumentCount):
                arguments.append(ArgumentRecord())
                get_argument(self._pointer, len(rows), place, byref(arguments[-1]))
            rows[record.name.decode().lower()] = Member(record, arguments)
        _check(answer, "Reading the members")
        return rows

    # Values.

    def _fill(self, value, content, lent=None):
        """Buffers are only lent: what keeps them goes into the list `lent`."""
        if content is _MISSING:
            value.type = EMPTY
        elif content is None:
            value.type, value.content.object = OBJECT, None
        elif isinstance(content, bool):
            value.type, value.content.integer = BOOLEAN, -1 if content else 0
        elif isinstance(content, int) and -2**31 <= content < 2**31:
            value.type, value.content.number = LONG, content
        elif isinstance(content, (int, float)):
            value.type, value.content.real = DOUBLE, content
        elif isinstance(content, str):
            units = content.encode("utf-16-le", "surrogatepass")
            value.type, value.content.text = STRING, self._functions.MakeText(self._pointer, units, len(units) // 2)
        elif isinstance(content, Object):
            content._functions.AddRef(content._pointer)
            value.type, value.content.object = OBJECT, content._pointer
        elif lent is not None and _has_buffer(content):
            lent.append(_Lent(content))
            value.type, value.content.buffer = NUMBERS, ctypes.addressof(lent[-1].record)
        else:
            raise TypeError(f"{type(content).__name__} cannot cross to the library")

    def _read(self, value):
        kind, content = value.type, value.content
        if kind == STRING:
            return _text(content.text)
        if kind == OBJECT:
            if not content.object:
                return None
            self._functions.AddRef(content.object)
            return Object(content.object)
        if kind == BOOLEAN:
            return content.integer != 0
        if kind == NUMBERS:
            return _Kept(self, value).view()
        return {INTEGER: content.integer, LONG: content.number, SINGLE: content.single,
                DOUBLE: content.real}.get(kind)

    def _raise(self, answer, error, kind=Error):
        source, description = _text(error.source), _text(error.description)
        self._functions.FreeText(self._pointer, error.source)
        self._functions.FreeText(self._pointer, error.description)
        raise kind(error.number or answer, source, description or f"failed: 0x{answer & 0xFFFFFFFF:08X}")

    def _invoke(self, member, kinds, contents):
        values, result, error, lent = (Value * len(contents))(), Value(), ErrorRecord(), []
        try:
            for value, content in zip(values, contents):
                self._fill(value, content, lent)
            answer = self._functions.Invoke(self._pointer, member.id, kinds, values, len(contents), byref(result),
                                            byref(error))
            if answer < 0:
                self._raise(answer, error)
            written = [self._read(value) for value, (_, by_reference) in zip(values, member.arguments)
                       if by_reference and kinds == METHOD]
            answers = ([] if result.type == EMPTY else [self._read(result)]) + written
            return answers[0] if len(answers) == 1 else tuple(answers) or None
        finally:
            for value in (*values, result):
                self._functions.ClearValue(self._pointer, byref(value))

    # Members by name.

    def _find(self, name):
        member = self._members.get(name.lower())
        if member is None:
            place, error = c_int32(), ErrorRecord()
            answer = self._functions.GetIdOfName(self._pointer, name.encode(), byref(place), byref(error))
            self._raise(answer, error, UnknownName if error.number == 438 else Error)
        return member

    def __getattr__(self, name):
        if name.startswith("__"):
            raise AttributeError(name)
        member = self._find(name)
        if member.kinds & GET:
            return self._invoke(member, GET, [])

        def method(*contents):
            missing = member.arguments[len(contents):]
            if all(by_reference for _, by_reference in missing):
                contents += (_MISSING,) * len(missing)
            return self._invoke(member, METHOD, contents)
        return method

    def __setattr__(self, name, content):
        kind = PUT_REFERENCE if content is None or isinstance(content, Object) else PUT
        self._invoke(self._find(name), kind, [content])

    # Surfaces.

    @contextlib.contextmanager
    def locked(self):
        """A surface's pixels (0x00RRGGBB) as a writable memoryview, `Pitch` for each row, locked within the block."""
        pixels = self.Lock()
        try:
            yield pixels
        finally:
            self.Unlock()

    @contextlib.contextmanager
    def drawing(self):
        """A surface's device context, given back at the end of the block."""
        context = self.GetDC()
        try:
            yield context
        finally:
            self.ReleaseDC(context)

    # Events.

    def on(self, name, handler):
        """Calls handler(*arguments) at each event of this name; returns a number for `off`.

        The control keeps the handler. One that refers to the control keeps it in turn, until `off`.
        """
        event = self._events.get(name.lower())
        if event is None:
            raise UnknownName(438, self.class_name(), f'{self.class_name()} has no event "{name}"')
        key, connection, error = next(_handler_keys), c_uint32(), ErrorRecord()
        values = object.__new__(Object)  # reads and fills values, and holds no object
        values.__dict__.update(_pointer=None, _functions=self._functions)
        _handlers[key] = (event.id, handler, values)
        answer = self._functions.Advise(self._pointer, byref(Sink(key, _ON_EVENT, _RELEASED)), byref(connection),
                                        byref(error))
        if answer < 0:
            _handlers.pop(key, None)
            self._raise(answer, error)
        return connection.value

    def off(self, connection):
        _check(self._functions.Unadvise(self._pointer, connection), "Unadvise")


# What the library calls at events. The control keeps a sink for longer than Python keeps the object that connected it,
# so these two live as long as the process, and a handler until the library lets its sink go.
_handlers, _handler_keys = {}, itertools.count(1)


def _on_event(key, place, arguments, count, error, handlers=_handlers):
    event, handler, values = handlers.get(key, (None, None, None))
    if place != event:
        return 0
    functions = values._functions
    try:
        changes = handler(*(values._read(arguments[i]) for i in range(count)))
        changes = () if changes is None else changes if isinstance(changes, tuple) else (changes,)
        for i, change in enumerate(changes):
            functions.ClearValue(None, byref(arguments[i]))
            values._fill(arguments[i], change)
        return 0
    except Exception as failure:  # it goes back to whoever made the control raise the event
        error[0].number = getattr(failure, "number", 5)
        error[0].source = functions.MakeTextFromUtf8(None, type(failure).__name__.encode())
        error[0].description = functions.MakeTextFromUtf8(None, str(failure).encode())
        return -2147352567


def _released(key, handlers=_handlers):
    handlers.pop(key, None)


_ON_EVENT, _RELEASED = ON_EVENT(_on_event), RELEASED(_released)
for _callback in (_ON_EVENT, _RELEASED):  # a control may end while Python does
    ctypes.pythonapi.Py_IncRef(ctypes.py_object(_callback))
