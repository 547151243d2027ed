/* A form with a viewport, driven from C by late binding: builds a scene, moves the camera, writes what a person would
 * see. Nothing but libdl is linked.
 *
 *     cc -I<where the library was installed>/include host.c -o host -ldl
 *     ./host <where the library was installed>/lib/libLumoraViewport.so picture.png
 */
#include "LumoraViewport.h"

#include <dlfcn.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum
{
    MaximumArguments = 9
};

static void Give_up(const char* what, const LumoraError* error)
{
    fprintf(stderr, "%s failed", what);
    if (error != NULL)
    {
        fprintf(stderr, ": error %d: ", (int)error->number);
        for (const uint16_t* unit = error->description; unit != NULL && *unit != 0; ++unit)
            fputc(*unit < 128 ? *unit : '?', stderr);
    }
    fputc('\n', stderr);
    exit(1);
}

/* Fills values from a list of C values: i number, f float, b boolean, s text, n numbers (a LumoraBuffer*), o object. */
static int32_t Fill(LumoraDispatch* object, LumoraValue* values, const char* types, va_list list)
{
    const int32_t count = (int32_t)strlen(types);
    memset(values, 0, sizeof *values * MaximumArguments);
    for (int32_t i = 0; i < count; ++i)
    {
        switch (types[i])
        {
        case 'i':
            values[i].type = LumoraLong;
            values[i].value.number = va_arg(list, int);
            break;
        case 'f':
            values[i].type = LumoraSingle;
            values[i].value.single = (float)va_arg(list, double);
            break;
        case 'b':
            values[i].type = LumoraBoolean;
            values[i].value.integer = va_arg(list, int) ? -1 : 0;
            break;
        case 's':
            values[i].type = LumoraString;
            values[i].value.text = object->functions->MakeTextFromUtf8(object, va_arg(list, const char*));
            break;
        case 'n':
            values[i].type = LumoraNumbers;
            values[i].value.buffer = va_arg(list, LumoraBuffer*);
            break;
        default:
            values[i].type = LumoraObject;
            values[i].value.object = va_arg(list, LumoraDispatch*);
            if (values[i].value.object != NULL)
                values[i].value.object->functions->AddRef(values[i].value.object);
            break;
        }
    }
    return count;
}

/* Uses a member. Floats that it wrote into its arguments go to `results`, where that is not null; answers the error's
 * number, and stops the program where `number` is null. */
static LumoraValue Use(LumoraDispatch* object, const char* name, uint32_t kinds, float* results, int32_t* number,
                       const char* types, va_list list)
{
    LumoraValue arguments[MaximumArguments], result;
    LumoraError error;
    int32_t id = 0;
    if (object->functions->GetIdOfName(object, name, &id, &error) < 0)
        Give_up(name, &error);
    const int32_t count = Fill(object, arguments, types, list);
    const LumoraResult answer = object->functions->Invoke(object, id, kinds, arguments, count, &result, &error);
    if (answer < 0 && number == NULL)
        Give_up(name, &error);
    if (number != NULL)
        *number = error.number;
    object->functions->FreeText(object, error.source);
    object->functions->FreeText(object, error.description);
    for (int32_t i = 0; i < count; ++i)
    {
        if (results != NULL && arguments[i].type == LumoraSingle)
            *results++ = arguments[i].value.single;
        object->functions->ClearValue(object, &arguments[i]);
    }
    return result;
}

static LumoraValue Call(LumoraDispatch* object, const char* name, const char* types, ...)
{
    va_list list;
    va_start(list, types);
    const LumoraValue result = Use(object, name, LUMORA_METHOD, NULL, NULL, types, list);
    va_end(list);
    return result;
}

static void Ask(LumoraDispatch* object, const char* name, float* results, const char* types, ...)
{
    va_list list;
    va_start(list, types);
    Use(object, name, LUMORA_METHOD, results, NULL, types, list);
    va_end(list);
}

static LumoraValue Get(LumoraDispatch* object, const char* name, const char* none, ...)
{
    va_list list;
    va_start(list, none);
    const LumoraValue result = Use(object, name, LUMORA_GET, NULL, NULL, "", list);
    va_end(list);
    return result;
}

static int32_t Put(LumoraDispatch* object, const char* name, const char* type, ...)
{
    int32_t number = 0;
    va_list list;
    va_start(list, type);
    Use(object, name, LUMORA_PUT | LUMORA_PUT_REFERENCE, NULL, &number, type, list);
    va_end(list);
    return number;
}

static LumoraDispatch* Pyramid(LumoraDispatch* factory)
{
    LumoraDispatch* mesh = Call(factory, "CreateMeshBuilder", "").value.object;
    float corners[] = {-1, 0, -1, 1, 0, -1, 1, 0, 1, -1, 0, 1, 0, 2, 0};
    int32_t faceList[] = {3, 0, 4, 1, 3, 1, 4, 2, 3, 2, 4, 3, 3, 3, 4, 0, 4, 0, 1, 2, 3, 0};
    LumoraBuffer vertices = {corners, sizeof corners / sizeof corners[0], LumoraElementSingle, 0};
    LumoraBuffer polygons = {faceList, sizeof faceList / sizeof faceList[0], LumoraElementLong, 0};
    Call(mesh, "AddFaces", "non", &vertices, NULL, &polygons);
    Call(mesh, "GenerateNormals", "f", 0.0);
    const int32_t faces[] = {0, 3};
    const uint32_t colors[] = {0xFFE04030u, 0xFF3060E0u};
    for (int i = 0; i < 2; ++i)
    {
        LumoraDispatch* face = Call(mesh, "GetFace", "i", (int)faces[i]).value.object;
        Put(face, "Color", "i", (int)colors[i]);
        face->functions->Release(face);
    }
    return mesh;
}

/* On the picture before it is shown: letters on a plate with a frame. Colors have red in the low byte. */
static void Draw_label(LumoraDispatch* viewport, const char* text)
{
    enum
    {
        Left = 8,
        Top = 8,
        Right = 128,
        Bottom = 36
    };
    LumoraDispatch* surface = Get(viewport, "DirectDrawSurface", "").value.object;
    LumoraDispatch* context = Call(surface, "GetDC", "").value.object;
    Call(context, "FillRectangle", "iiiii", Left, Top, Right, Bottom, 0x402810);
    Call(context, "WriteText", "iisii", Left + 7, Top + 5, text, 0xFFFFFF, 2);
    Call(context, "FrameRectangle", "iiiii", Left, Top, Right, Bottom, 0x20A0FF);
    Call(surface, "ReleaseDC", "o", context);
    context->functions->Release(context);
    surface->functions->Release(surface);
}

/* What the control told. */
typedef struct Moves
{
    LumoraDispatch* viewport;
    int count;
    float last[3];
} Moves;

static LumoraResult On_event(void* context, int32_t id, LumoraValue* arguments, int32_t count, LumoraError* error)
{
    enum
    {
        CameraMoved = 1,
        SurfaceAvailable = 10
    };
    Moves* moves = context;
    (void)error;
    if (id == SurfaceAvailable)
        Draw_label(moves->viewport, "Pyramid 1");
    if (id != CameraMoved || count < 3)
        return LUMORA_OK;
    ++moves->count;
    for (int i = 0; i < 3; ++i)
        moves->last[i] = arguments[i].value.single;
    return LUMORA_OK;
}

static void Run(LumoraDispatch* host, const char* picture)
{
    enum
    {
        PointLight = 2
    };
    Call(host, "ResizeWindow", "ii", 320, 240);
    LumoraDispatch* viewport = Call(host, "CreateLive", "o", NULL).value.object;
    LumoraDispatch* factory = Get(host, "RetainedMode", "").value.object;
    LumoraDispatch* scene = Call(factory, "CreateFrame", "o", NULL).value.object;
    LumoraDispatch* pyramid = Call(factory, "CreateFrame", "o", scene).value.object;
    LumoraDispatch* mesh = Pyramid(factory);
    Call(pyramid, "AddVisual", "o", mesh);
    Call(pyramid, "AddRotation", "iffff", 2, 0.0, 1.0, 0.0, 0.6);
    LumoraDispatch* lamp = Call(factory, "CreateFrame", "o", scene).value.object;
    Call(lamp, "SetPosition", "offf", NULL, 3.0, 5.0, -4.0);
    LumoraDispatch* light = Call(factory, "CreateLight", "ifff", (int)PointLight, 1.0, 1.0, 1.0).value.object;
    Call(lamp, "AddLight", "o", light);
    Call(scene, "SetSceneBackgroundRGB", "fff", 0.1, 0.15, 0.2);

    Moves moves = {viewport, 0, {0, 0, 0}};
    const LumoraSink sink = {&moves, On_event, NULL};
    uint32_t connection = 0;
    if (viewport->functions->Advise(viewport, &sink, &connection, NULL) < 0)
        Give_up("Advise", NULL);

    float left[4], camera[3], screen[7];
    Put(viewport, "ExposeDDSurface", "b", 1);
    Put(viewport, "Scene", "o", scene);
    Put(viewport, "Enabled", "b", 1);
    Put(viewport, "FieldOfView", "f", 0.7);
    Call(viewport, "SetCameraPosition", "fff", 0.0, 1.0, -5.0);
    Ask(viewport, "AddCameraMovement", left, "fffi", 0.5, 0.25, 1.0, 1);
    Call(viewport, "RenderScene", "");
    Ask(viewport, "GetCameraPosition", camera, "fff", 0.0, 0.0, 0.0);
    Ask(viewport, "ViewportTransform", screen, "fffffff", 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 0.0);

    LumoraDispatch* sceneAgain = Get(viewport, "Scene", "").value.object;
    printf("field of view %.4f\n", (double)Get(viewport, "FieldOfView", "").value.single);
    printf("movement %.4f %.4f %.4f\n", (double)left[0], (double)left[1], (double)left[2]);
    printf("camera %.4f %.4f %.4f\n", (double)camera[0], (double)camera[1], (double)camera[2]);
    printf("events %d, last at %.4f %.4f %.4f\n", moves.count, (double)moves.last[0], (double)moves.last[1],
           (double)moves.last[2]);
    printf("screen %.4f %.4f %.4f %.4f\n", (double)screen[3], (double)screen[4], (double)screen[5], (double)screen[6]);
    printf("faces %d\n", (int)Get(mesh, "FaceCount", "").value.number);
    printf("same scene %s\n", sceneAgain == scene ? "yes" : "no");
    printf("pixel %06X\n", (unsigned)Call(host, "PixelAt", "ii", 160, 120).value.number);
    printf("error %d\n", (int)Put(viewport, "ViewportState", "i", 0));
    Call(host, "SavePicture", "s", picture);

    viewport->functions->Unadvise(viewport, connection);
    LumoraDispatch* held[] = {sceneAgain, light, lamp, mesh, pyramid, scene, factory, viewport};
    for (size_t i = 0; i < sizeof held / sizeof held[0]; ++i)
        held[i]->functions->Release(held[i]);
}

int main(int count, char** arguments)
{
    typedef LumoraResult (*GetClassObject)(const LumoraId*, const LumoraId*, void**);
    typedef LumoraResult (*CanUnloadNow)(void);
    const LumoraId hostClass = LUMORA_CLASS_HOST, dispatch = LUMORA_INTERFACE_DISPATCH;
    const LumoraId classObject = LUMORA_INTERFACE_CLASS_OBJECT;
    if (count != 3)
    {
        fprintf(stderr, "usage: host libLumoraViewport.so picture.png\n");
        return 2;
    }
    void* library = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    if (library == NULL)
    {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    GetClassObject getClassObject;
    CanUnloadNow canUnloadNow;
    *(void**)&getClassObject = dlsym(library, "DllGetClassObject");
    *(void**)&canUnloadNow = dlsym(library, "DllCanUnloadNow");
    LumoraClassObject* creator = NULL;
    LumoraDispatch* host = NULL;
    if (getClassObject(&hostClass, &classObject, (void**)&creator) < 0 ||
        creator->functions->CreateInstance(creator, NULL, &dispatch, (void**)&host) < 0)
        Give_up("Creating a host", NULL);
    creator->functions->Release(creator);
    Run(host, arguments[2]);
    host->functions->Release(host);
    if (canUnloadNow() != LUMORA_OK)
        Give_up("Letting everything go", NULL);
    dlclose(library);
    return 0;
}
