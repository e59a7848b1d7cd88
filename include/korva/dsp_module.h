/// The interface between the Korva audio object and a DSP module, in C11 and C++20. It needs no other header
/// of Korva's, and no library.
///
/// A module is a shared library that lies in the folder of the audio object: NAME.so on Linux, NAME.dll on
/// Windows. The host loads it, looks up the fourteen functions below, makes an instance, and hands it eight
/// planes of sound, block by block. A module with `ZRDSPAPI_Create`, `ZRDSPAPI_Free`, `ZRDSPAPI_Initialize`
/// and `ZRDSPAPI_Process` is heard; what each other function costs when it is missing stands beside it.
///
/// The life of an instance, in calls of the host:
///
///     Create -> ( format tests, Initialize -> ( SetParameter, Clear, process ... ) -> Uninitialize ) ... ->
///     Free
///
/// Each comment ends in the thread that calls, and in the state that the instance is in then:
///
///     [owner]    one thread of the host, the same for all the life of an instance. Another instance of
///                the module may have another owner that calls at the same time, so instances have no
///                state in common.
///     [audio]    the thread that sound comes on. It may neither lock, allocate, wait nor call the system.
///     created    between Create and Free.
///     active     between Initialize and Uninitialize.
///
/// The two threads call at the same time: SetParameter, SetGetData, WakeUp and the format tests run while
/// process does, and the module makes them safe against each other.
///
/// Pointers belong to the caller, and hold for the length of a call. The module copies what it keeps.
///
/// Numbers are little-endian, samples 32-bit floats of which 1.0 is full scale. A sample may be anything that
/// fits into one, an infinity and what is no number among it. Functions have the platform's C calling
/// convention, throw nothing, and leave the rules of the processor's arithmetic (rounding, denormals) as they
/// found them.
#pragma once

#include <stdint.h>

// What exports a function: compilers for Windows have a word for it, and others a visibility.
#if defined(_MSC_VER) || defined(__declspec)
#define ZRDSPAPI_EXPORT __declspec(dllexport)
#else
#define ZRDSPAPI_EXPORT __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// The planes of the bus, and where in `DspBlock::channels` each one is.
enum {
    KORVA_FRONT_LEFT = 0,
    KORVA_FRONT_RIGHT = 1,
    KORVA_FRONT_CENTER = 2,
    KORVA_LOW_FREQUENCY = 3,
    KORVA_BACK_LEFT = 4,
    KORVA_BACK_RIGHT = 5,
    KORVA_SIDE_LEFT = 6,
    KORVA_SIDE_RIGHT = 7,
    KORVA_PLANES = 8
};

/// Frames in a block at most.
enum { KORVA_BLOCK_FRAMES = 512 };

/// One side's stream format, and its map from interleaved channels to planes: 28 bytes. All zero: none is
/// set. More channels than planes, and several channels on one plane, are possible; what comes to a plane
/// last is on it.
typedef struct EngineFormat {
    uint32_t channelMask;       ///< Speakers of the channels, as bits; the order of WAVEFORMATEXTENSIBLE.
    int32_t channelCount;       ///< Channels in a frame of the stream.
    uint32_t sampleRate;        ///< Frames per second.
    uint8_t planeOfChannel[8];  ///< Plane of the n-th interleaved channel, 0 to 7.
    uint8_t speakerOfPlane[8];  ///< Speaker of the last channel on a plane: its bit plus 1; 0: none.
} EngineFormat;

/// One block of sound, to be changed in place: 32 bytes.
///
/// Planes that no input channel lands on are silence at the start of a call, as far as `frames` goes. The
/// module leaves its result on the planes that the output format has channels on, and silence where neither
/// side has one; what remains on a plane that only the input has isn't heard. Planes are aligned to 64 bytes,
/// and don't overlap. From `frames` to `maxFrames` a plane holds nothing: a module may write there, and reads
/// nothing of use. After the call the host reads the planes, and nothing of this record.
typedef struct DspBlock {
    float* const* channels;  ///< `KORVA_PLANES` planes of `maxFrames` samples.
    uint32_t maxChannels;    ///< Always `KORVA_PLANES`.
    uint32_t maxFrames;      ///< Always `KORVA_BLOCK_FRAMES`.
    uint32_t inChannels;     ///< Channels of the input stream, at most 8: a count, which names no planes.
    uint32_t outChannels;    ///< Channels of the output stream, at most 8.
    uint32_t frames;         ///< Samples of each plane that hold sound: 1 to `maxFrames`, any number.
    uint32_t reserved;       ///< 0.
} DspBlock;

/// What `ZRDSPAPI_Create` gives: an object that begins with a pointer to this table. The module's own fields
/// follow:
///
///     struct MyEffect {
///         DspInstance instance;  // first
///         float gain;
///     };
typedef struct DspInstance {
    const struct DspInstanceTable* table;  ///< Constant from Create to Free.
} DspInstance;

/// Fourteen functions, of which the host calls three. Sound goes through the table and not through the
/// exports, which saves a jump.
typedef struct DspInstanceTable {
    /// Entries 0 to 10. The host calls none of them, and a module fills them all the same: with functions of
    /// its own choice, or with one that does nothing.
    void (*unused[11])(void);

    /// Entry 11. Works on a block in place. Not called where `ZRDSPAPI_Process` is missing.  [audio; active]
    void (*process)(DspInstance* instance, DspBlock* block);

    /// Entry 12. The same for sound that is recorded. The host does not call it so far.  [audio; active]
    void (*capture)(DspInstance* instance, DspBlock* block);

    /// Entry 13. Non-zero if the hardware that the instance was made for is there and can be used. Asked of a
    /// module of the hardware platform only, and again of an instance that stays while the host selects anew.
    /// With 0 the host frees the instance and goes on with the module of the float platform.  [owner;
    /// created]
    uint32_t (*isHardwareAvailable)(DspInstance* instance);
} DspInstanceTable;

/// Makes an instance. `text` is a JSON object of `length` bytes of UTF-8, without a terminator; it is freed
/// right after the call. Its members, of which a module ignores those that it doesn't know:
///
///     EngineId             text    which of the module's engines, "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}"
///     OutEndpointId        text    the endpoint that sound goes to; may be empty
///     PlatformModuleNames  array   the module's name
///     PlatformName         text    "Float", or "iSST" for the hardware platform
///     PresetVersion        number  of the settings that follow, unsigned, 32 bits
///     Hardware             true    on the hardware platform only
///     Simulation           true    on a simulated hardware platform only
///
/// Gives null if it can't: the host then goes on with the module of the float platform, and where this was
/// that one plays without an effect. Without this function nothing of a module is used.  [owner]
ZRDSPAPI_EXPORT DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length);

/// Ends an instance with all that it has started, threads too: no call follows, and with its last instance
/// the library is unloaded. The host ignores the result. Where it is missing, the instance leaks.  [owner;
/// created, not active]
ZRDSPAPI_EXPORT uint32_t ZRDSPAPI_Free(DspInstance* instance);

/// What a format test answers. The host tests bit 0: a value that has it accepts with a change.
enum {
    KORVA_FORMAT_ACCEPTED = 0,  ///< As it is. Also what the host takes a missing test for.
    KORVA_FORMAT_CHANGED = 1,   ///< Accepted with what the module has written into `requested`.
    KORVA_FORMAT_REFUSED = 2
};

/// Whether the module can work with `requested` on one side while `opposite` is on the other (all zero if
/// that is not known yet). A module that accepts two sides that differ does the fold or the conversion
/// itself: with a module in place the host doesn't. The rate must be the same on both sides for a stream to
/// start.  [owner; created, active or not]
ZRDSPAPI_EXPORT uint32_t ZRDSPAPI_IsInputFormatSupported(DspInstance* instance, EngineFormat* requested,
                                                         EngineFormat* opposite);
ZRDSPAPI_EXPORT uint32_t ZRDSPAPI_IsOutputFormatSupported(DspInstance* instance, EngineFormat* requested,
                                                          EngineFormat* opposite);

/// The same for sound that is recorded. The host does not call it so far.  [owner; created, active or not]
ZRDSPAPI_EXPORT uint32_t ZRDSPAPI_IsCaptureFormatSupported(DspInstance* instance, EngineFormat* requested);

/// Makes ready for sound: here memory is allocated that process will use. `capture` is all zero. Non-zero if
/// it could; the host ignores it, and goes on to process: a module that couldn't leaves the planes as they
/// are. Each Initialize has its Uninitialize. It begins as `ZRDSPAPI_Clear` leaves it, and all parameters
/// come again after it, before the first block. Where it is missing, process runs all the same.
///
/// The formats may be ones that no test has asked about: the host makes instances while a stream runs, too.
/// The channel layout of a later stream may differ from `in` and `out` without another Initialize, as long as
/// its rate is the same: a block's own counts hold.  [owner; created, not active]
ZRDSPAPI_EXPORT uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                                            EngineFormat* capture);

/// The other end of `ZRDSPAPI_Initialize`. No process runs any more. Where it is missing, a module takes the
/// next Initialize for the end of the one before.  [owner; active]
ZRDSPAPI_EXPORT void ZRDSPAPI_Uninitialize(DspInstance* instance);

/// Forgets the sound that went by (`which` is -1: all of it), and keeps the parameters. Called before each
/// stream, while no process runs. Where it is missing, what a module keeps of one stream is heard in the
/// next.  [owner; created, active or not]
ZRDSPAPI_EXPORT void ZRDSPAPI_Clear(DspInstance* instance, int32_t which);

/// Banks of parameters: those that every engine has, and from 0 up those of the engine's parts.
enum { KORVA_BANK_ENGINE = -1, KORVA_BANK_ENDPOINT = 4 };

/// Parameters that the host itself has a meaning for. All others come from the settings of the endpoint, as
/// they are stored there: `korva catalogue --engine GUID` lists them with their sizes and defaults.
enum {
    KORVA_PARAMETER_EFFECTS_DISABLED = -18,  ///< Bank -1; 1 byte, 0 or 1: system effects are switched off.
    KORVA_PARAMETER_VOLUME_DB = 24,  ///< Bank 4; 4-byte float: master volume in dB, -130 at the least.

    // Bank -1, 4 bytes each: the host keeps a copy of what it sends, and has no use for it so far.
    KORVA_PARAMETER_COPIED_27 = -27,  ///< Float; 50.0 until it is sent.
    KORVA_PARAMETER_COPIED_28 = -28,  ///< Float; 0.707 until it is sent.
    KORVA_PARAMETER_COPIED_31 = -31,  ///< Float; 1.0 until it is sent.
    KORVA_PARAMETER_COPIED_32 = -32   ///< Unsigned; 0 until it is sent.
};

/// Takes over a parameter's bytes: `size` of them at `data`, null where `size` is 0. `index` is -1. After
/// each Initialize all parameters come in their order, before the first block; later single ones whenever
/// they change, while process runs. One that has no bytes by default, and was never set, doesn't come. A
/// parameter or a size that the module doesn't know is ignored. The host ignores the result. Where it is
/// missing, nothing can be set.  [owner; active]
ZRDSPAPI_EXPORT uint32_t ZRDSPAPI_SetParameter(DspInstance* instance, int32_t bank, int32_t id, int32_t index,
                                               const void* data, uint32_t size);

/// What the host asks of `ZRDSPAPI_SetGetData`, in bank -1.
enum {
    KORVA_DATA_MODULE_VERSION = -32,  ///< Out 4 bytes: the module's version, as it likes to count.
    KORVA_DATA_CYCLE_COUNT = -33,     ///< Out 4 bytes: processor cycles of the last block, or none.
    KORVA_DATA_FRAME_COUNT = -34,     ///< Out 4 bytes: frames processed; wraps.
    // Levels are linear, those of the time since they were last asked for or of now, as the module likes.
    KORVA_DATA_INPUT_METERS = -36,    ///< Out 32 bytes: 8 floats, the level of each plane as it came in.
    KORVA_DATA_OUTPUT_METERS = -37,   ///< Out 32 bytes: 8 floats, the level of each plane as it left.
    KORVA_DATA_METERS_ENABLED = -38,  ///< In 1 byte: 0 turns the meters off, 1 on.
    // Bytes of all parameters that came, known to the module or not, since the count was restarted.
    KORVA_DATA_PARAMETER_BYTES = -39,  ///< In 4 bytes, value 0: restarts the count. Out 4 bytes: the count.
    KORVA_DATA_BYTES_RECEIVED = -43,   ///< Out 12 bytes: `DspByteCount` of parameters that came.
    KORVA_DATA_BYTES_SENT = -44        ///< Out 12 bytes: `DspByteCount` of parameters passed on to hardware.
};

/// Bytes of parameters, and when the first and the last of them went by: 12 bytes. The clock is the module's
/// own, in milliseconds.
typedef struct DspByteCount {
    uint32_t bytes;
    uint32_t clockStart;
    uint32_t clockEnd;
} DspByteCount;

/// Takes `inSize` bytes at `in`, writes at most `outSize` bytes to `out`, and gives the count of bytes that
/// it wrote. An empty side is null with size 0. The host uses the data only if the count is the one that it
/// expects: for what a module doesn't serve it gives 0. Without this function nothing of a module is shown to
/// diagnostic tools.  [owner; created, active or not]
ZRDSPAPI_EXPORT uint32_t ZRDSPAPI_SetGetData(DspInstance* instance, int32_t bank, int32_t id, const void* in,
                                             uint32_t inSize, void* out, uint32_t outSize);

/// Says that the endpoint has clients. Nothing is expected of it.  [owner; created, active or not]
ZRDSPAPI_EXPORT void ZRDSPAPI_WakeUp(DspInstance* instance);

/// Sets a gain ahead of everything. The host does not call it so far, and its unit is open.  [owner; created,
/// active or not]
ZRDSPAPI_EXPORT void ZRDSPAPI_SetInputGain(DspInstance* instance, float gain);

/// That these two are there tells the host that entries 11 and 12 of the table may be called. The functions
/// themselves it doesn't call: they do what the entries do, for others that load a module.  [audio; active]
ZRDSPAPI_EXPORT void ZRDSPAPI_Process(DspInstance* instance, DspBlock* block);
ZRDSPAPI_EXPORT void ZRDSPAPI_Capture(DspInstance* instance, DspBlock* block);

#ifdef __cplusplus
}
#endif
