/* The binary interface of libLumoraViewport.so, for any language that can call C functions.
 *
 *     void* library = dlopen("libLumoraViewport.so", RTLD_NOW);
 *     DllGetClassObject(class id, interface id, &object)  ->  LumoraClassObject*  ->  CreateInstance  ->
 * LumoraDispatch*
 *
 * Every object starts with a pointer to a table of functions whose first three are QueryInterface, AddRef and Release;
 * each function's first argument is the object. A function that fails answers a negative number and leaves its results
 * empty: nothing (C++ exceptions included) ever leaves it otherwise.
 *
 * Threads: the library belongs to the thread of the first call while any object is held, and to none when none is.
 * Calls from another thread answer LUMORA_WRONG_THREAD and do nothing. Exempt, and safe on any thread, are
 * QueryInterface, AddRef, Release, GetClassName, MakeText, MakeTextFromUtf8, FreeText, ClearValue and DllCanUnloadNow:
 * what another thread releases last is destroyed at the owner's next call or release. Events come on the owner's
 * thread.
 *
 * References: whatever hands out an object, as a result or within a LumoraValue, has added a reference that the
 * receiver releases. Arguments stay the caller's. The same object is always the same pointer while a reference to it
 * is held, so pointers tell whether two objects are one.
 */
#ifndef LUMORA_VIEWPORT_H
#define LUMORA_VIEWPORT_H

#include <stdint.h>

#ifdef __cplusplus
extern "C"
{
#endif

    /* Answers of functions: 0 done, 1 done and false, negative not done. Failures of members and of lookups are the
     * number of the error itself where it is negative, else 0x800A0000 plus the number (13 type mismatch: 0x800A000D).
     */
    typedef int32_t LumoraResult;
#define LUMORA_OK ((LumoraResult)0)
#define LUMORA_FALSE ((LumoraResult)1)
#define LUMORA_POINTER ((LumoraResult)0x80004003)        /* a null pointer where a result goes */
#define LUMORA_NO_INTERFACE ((LumoraResult)0x80004002)   /* the object has no such interface */
#define LUMORA_NO_AGGREGATION ((LumoraResult)0x80040110) /* an outer object was given */
#define LUMORA_NO_CLASS ((LumoraResult)0x80040111)       /* the library has no such class */
#define LUMORA_REGISTRATION ((LumoraResult)0x80040201)   /* the registry could not be read or written */
#define LUMORA_WRONG_THREAD                                                                                            \
    ((LumoraResult)0x8001010E)                          /* make the call on the thread that made the first one, or     \
                                                         * release every object before this thread's first call */
#define LUMORA_NO_CONNECTION ((LumoraResult)0x80040200) /* no sink of this number is connected */

    /* An identifier: 4, 2 and 2 bytes with the lowest byte first, then 8 bytes. */
    typedef struct LumoraId
    {
        uint8_t bytes[16];
    } LumoraId;

#define LUMORA_ID(last)                                                                                                \
    {                                                                                                                  \
        {                                                                                                              \
            0x01, 0x5A, 0x3D, 0x8E, 0x47, 0x2C, 0x9B, 0x4F, 0xA6, 0x10, 0x7D, 0xE2, 0x35, 0xC8, 0x90, last             \
        }                                                                                                              \
    }
#define LUMORA_CLASS_VIEWPORT LUMORA_ID(1)      /* LumoraViewport.Viewport */
#define LUMORA_CLASS_PNC LUMORA_ID(2)           /* LumoraViewport.clsTDLViewportPNC */
#define LUMORA_CLASS_HOST LUMORA_ID(3)          /* LumoraViewport.Host */
#define LUMORA_CLASS_RETAINED_MODE LUMORA_ID(4) /* LumoraViewport.RetainedMode */
#define LUMORA_INTERFACE_DISPATCH LUMORA_ID(0x20)
#define LUMORA_INTERFACE_CLASS_OBJECT LUMORA_ID(0x21)
#define LUMORA_INTERFACE_UNKNOWN                                                                                       \
    {                                                                                                                  \
        {                                                                                                              \
            0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46                                                       \
        }                                                                                                              \
    }
#define LUMORA_INTERFACE_CLASS_FACTORY                                                                                 \
    {                                                                                                                  \
        {                                                                                                              \
            1, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46                                                       \
        }                                                                                                              \
    }

    /* A text: UTF-16 units in the machine's byte order, ended by a 0 that is not counted; the four bytes before the
     * first unit hold the length in bytes. A null pointer is the empty text. Only the functions below make and free
     * texts. Longer ones than LUMORA_MAXIMUM_TEXT units are refused by error 14. */
    typedef uint16_t* LumoraText;
#define LUMORA_MAXIMUM_TEXT 16777216

    enum LumoraType
    {
        LumoraEmpty = 0,
        LumoraInteger = 2, /* 16 bits, in `integer` */
        LumoraLong = 3,    /* 32 bits, in `number` */
        LumoraSingle = 4,
        LumoraDouble = 5,
        LumoraString = 8,
        LumoraObject = 9,      /* a null pointer is nothing */
        LumoraBoolean = 11,    /* -1 is True and 0 False, in `integer`; any other value counts as True */
        LumoraVariant = 12,    /* only as the type of an argument: any of the others */
        LumoraNumbers = 0x2000 /* many numbers, in `buffer` */
    };

    /* Types of a buffer's elements. */
    enum LumoraElement
    {
        LumoraElementLong = 3, /* 32 bits, signed */
        LumoraElementSingle = 4,
        LumoraElementDouble = 5,
        LumoraElementByte = 17,
        LumoraElementUnsignedLong = 19 /* 32 bits: pixels and colors */
    };

    /* Many numbers of one type, one after another. As an argument it is the caller's record of the caller's memory,
     * which is only looked at during the call and may have any alignment; ClearValue leaves both alone. As a result,
     * record and memory are the library's, valid until ClearValue; writing to them counts where LUMORA_WRITABLE is set.
     * Null with a count, or a type there is not, raises error 13; more than LUMORA_MAXIMUM_BUFFER bytes error 7. */
    typedef struct LumoraBuffer
    {
        void* data;
        uint64_t count; /* elements */
        int32_t elementType;
        uint32_t flags; /* 0, or LUMORA_WRITABLE */
    } LumoraBuffer;
#define LUMORA_WRITABLE 1u
#define LUMORA_MAXIMUM_BUFFER 4294967296u

    struct LumoraDispatch;

    /* 16 bytes (with 64-bit pointers). Other types than the above raise error 13. */
    typedef struct LumoraValue
    {
        int32_t type;
        int32_t reserved; /* 0 */
        union
        {
            int16_t integer;
            int32_t number;
            float single;
            double real;
            LumoraText text;
            struct LumoraDispatch* object;
            LumoraBuffer* buffer;
            uint64_t bits;
        } value;
    } LumoraValue;

    /* What failed. Texts belong to the receiver, who frees both. */
    typedef struct LumoraError
    {
        int32_t number;
        int32_t reserved;
        LumoraText source;
        LumoraText description;
    } LumoraError;

/* What is done with a member; a caller that cannot tell a method from a property gives both. */
#define LUMORA_METHOD 1u
#define LUMORA_GET 2u
#define LUMORA_PUT 4u
#define LUMORA_PUT_REFERENCE 8u

    /* Texts of these two are UTF-8, ended by 0, and live as long as the library is loaded. */
    typedef struct LumoraArgument
    {
        const char* name;
        const char* typeName;
        int32_t type;
        int32_t byReference; /* 1: the member writes a result back */
    } LumoraArgument;

    typedef struct LumoraMember
    {
        const char* name;
        const char* typeName; /* of the property, or of the method's result */
        const char* help;
        int32_t id;
        int32_t type;
        uint32_t kinds; /* LUMORA_METHOD and so on; 0 for events */
        int32_t argumentCount;
    } LumoraMember;

    /* Who is told of events. `OnEvent` may change the arguments (ClearValue what was there first), may call back, and
     * fails by answering a negative number with `error` filled in (texts made by the functions below; the library frees
     * them); a failure counts as one of the call that raised the event. `Released`, which may be null, is called once,
     * when the library lets the sink go. */
    typedef struct LumoraSink
    {
        void* context;
        LumoraResult (*OnEvent)(void* context, int32_t id, LumoraValue* arguments, int32_t count, LumoraError* error);
        void (*Released)(void* context);
    } LumoraSink;

    typedef struct LumoraDispatchFunctions
    {
        LumoraResult (*QueryInterface)(struct LumoraDispatch* self, const LumoraId* interfaceId, void** object);
        uint32_t (*AddRef)(struct LumoraDispatch* self);
        uint32_t (*Release)(struct LumoraDispatch* self);

        /* "Viewport", "Frame" and so on. */
        const char* (*GetClassName)(struct LumoraDispatch* self);

        /* Members and events in the order of their declaration; LUMORA_FALSE, and an empty record, past the last. */
        LumoraResult (*GetMember)(struct LumoraDispatch* self, int32_t index, LumoraMember* member);
        LumoraResult (*GetMemberArgument)(struct LumoraDispatch* self, int32_t index, int32_t argument,
                                          LumoraArgument* info);
        LumoraResult (*GetEvent)(struct LumoraDispatch* self, int32_t index, LumoraMember* event);
        LumoraResult (*GetEventArgument)(struct LumoraDispatch* self, int32_t index, int32_t argument,
                                         LumoraArgument* info);

        /* The id of a member by its UTF-8 name, the case of A to Z apart; error 438. */
        LumoraResult (*GetIdOfName)(struct LumoraDispatch* self, const char* name, int32_t* id, LumoraError* error);

        /* Calls a member with all of its arguments, in order; a write takes one, the value. By-reference arguments are
         * replaced by their results: what was in them is cleared by the library. `result` and `error` may be null; what
         * was in them before is not looked at. */
        LumoraResult (*Invoke)(struct LumoraDispatch* self, int32_t id, uint32_t kinds, LumoraValue* arguments,
                               int32_t count, LumoraValue* result, LumoraError* error);

        /* Connects a sink (a copy of the record is kept); error 459 for an object without events. */
        LumoraResult (*Advise)(struct LumoraDispatch* self, const LumoraSink* sink, uint32_t* connection,
                               LumoraError* error);
        LumoraResult (*Unadvise)(struct LumoraDispatch* self, uint32_t connection);

        /* Texts and values, on any thread and of no object in particular: `self` may be null. They answer null when
         * there is no memory or the text is too long. */
        LumoraText (*MakeText)(struct LumoraDispatch* self, const uint16_t* units, uint32_t count);
        LumoraText (*MakeTextFromUtf8)(struct LumoraDispatch* self, const char* text);
        void (*FreeText)(struct LumoraDispatch* self, LumoraText text);

        /* Frees a value's text or buffer or releases its object, and leaves it empty. */
        void (*ClearValue)(struct LumoraDispatch* self, LumoraValue* value);
    } LumoraDispatchFunctions;

    typedef struct LumoraDispatch
    {
        const LumoraDispatchFunctions* functions;
    } LumoraDispatch;

    struct LumoraClassObject;

    /* The first five are a class factory's as everybody knows it. */
    typedef struct LumoraClassObjectFunctions
    {
        LumoraResult (*QueryInterface)(struct LumoraClassObject* self, const LumoraId* interfaceId, void** object);
        uint32_t (*AddRef)(struct LumoraClassObject* self);
        uint32_t (*Release)(struct LumoraClassObject* self);
        LumoraResult (*CreateInstance)(struct LumoraClassObject* self, void* outer, const LumoraId* interfaceId,
                                       void** object);
        LumoraResult (*LockServer)(struct LumoraClassObject* self, int32_t lock);

        /* The JSON document that describes every class and enumeration; FreeText it. */
        LumoraResult (*GetTypeLibrary)(struct LumoraClassObject* self, LumoraText* document);
        void (*FreeText)(struct LumoraClassObject* self, LumoraText text);
    } LumoraClassObjectFunctions;

    typedef struct LumoraClassObject
    {
        const LumoraClassObjectFunctions* functions;
    } LumoraClassObject;

    /* The four entry points. */

    /* The class object of a class, by LUMORA_INTERFACE_CLASS_OBJECT, _CLASS_FACTORY or _UNKNOWN. */
    LumoraResult DllGetClassObject(const LumoraId* classId, const LumoraId* interfaceId, void** object);

    /* On any thread: LUMORA_OK while no object of this library is held and none is locked, else LUMORA_FALSE. */
    LumoraResult DllCanUnloadNow(void);

    /* Writes the classes into the registry file of this user, $XDG_DATA_HOME/lumora/registry, and LumoraViewport.json,
     * the type library, beside it; takes both away again. */
    LumoraResult DllRegisterServer(void);
    LumoraResult DllUnregisterServer(void);

#ifdef __cplusplus
}
#endif

#endif
