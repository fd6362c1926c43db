/**
 * @file deimg.h
 * The interface of the deimg library: one function, two structures and the constants that go with
 * them. Plain C; usable from C and C++.
 *
 * A host calls DEImg_DevelopM480() once per picture. Everything happens inside that call, through
 * the two streams the host supplies, whose operations are called on the calling thread alone;
 * nothing is kept afterwards. Different threads may each run a call of their own at the same time.
 *
 * The environment variable DEIMG_THREADS, read at every call, lets a call use helping threads: a
 * number from 1 to 64, or "all" (or 0) for one thread per core, the calling one included. Without
 * it, or with anything else, no thread is started. The picture is the same in any case.
 */
#ifndef DEIMG_DEIMG_H
#define DEIMG_DEIMG_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#if defined(DEIMG_BUILDING_SHARED)
#define DEIMG_API __declspec(dllexport)
#else
#define DEIMG_API
#endif
#elif defined(__GNUC__)
#define DEIMG_API __attribute__((visibility("default")))
#else
#define DEIMG_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Job kinds: the `flags` argument, compared as a whole 32-bit value. */
enum DEImgJob {
  DEIMG_JOB_FULL = 0,          /**< full development of the image area */
  DEIMG_JOB_QUICK = 0x20,      /**< full size with the quick settings */
  DEIMG_JOB_PREVIEW = 0x100,   /**< one sixth in each direction, quick settings, always 8 bits */
  DEIMG_JOB_THUMBNAIL = 0x200, /**< 160 x 120 pixels, letterboxed, always 8 bits */
};

/** Size of a thumbnail, in pixels. */
#define DEIMG_THUMBNAIL_WIDTH 160
#define DEIMG_THUMBNAIL_HEIGHT 120

/** Output sample formats: the low 8 bits of the `format` argument. */
enum DEImgFormat {
  DEIMG_FORMAT_8BIT = 4,  /**< three bytes per pixel: red, green, blue */
  DEIMG_FORMAT_16BIT = 7, /**< three unsigned 16-bit little-endian values per pixel */
};

/** Modes handed to CallerStream::Open. */
enum DEImgOpenMode {
  DEIMG_OPEN_READ = 1,     /**< existing contents, for reading */
  DEIMG_OPEN_UPDATE = 2,   /**< reading and writing, contents kept, created when absent */
  DEIMG_OPEN_TRUNCATE = 3, /**< reading and writing, emptied, created when absent */
};

/** Origins handed to CallerStream::Seek. */
enum DEImgSeekOrigin {
  DEIMG_SEEK_BEGINNING = 1,
  DEIMG_SEEK_CURRENT = 2,
  DEIMG_SEEK_END = 3,
};

/** Values of CallerStream::progressMode; any other value asks for the final report (100) only. */
enum DEImgProgressMode {
  DEIMG_PROGRESS_NEVER = 1,
  DEIMG_PROGRESS_FINAL = 2,
  DEIMG_PROGRESS_ALL = 3,
};

/**
 * Result codes of the library. Any other value returned by DEImg_DevelopM480() is a code that one
 * of the host's own stream operations stored in its error word.
 */
enum DEImgResult {
  DEIMG_OK = 0,
  DEIMG_BAD_TUNING = 1,     /**< the file's tuning data contradict themselves */
  DEIMG_BAD_DATA = 2,       /**< the coded sensor data do not fit their code, or end too early */
  DEIMG_OUT_OF_MEMORY = 3,  /**< a buffer of the job could not be allocated */
  DEIMG_BAD_REQUEST = 7,    /**< unknown job kind */
  DEIMG_NOT_STARTED = 8,    /**< internal: a component was advanced before it was started */
  DEIMG_NO_WORK_FILE = 32,  /**< the work stream or the preview's temporary file is unusable */
  DEIMG_FILE_NOT_OPEN = 35, /**< temporary file: could not be opened */
  DEIMG_FILE_SEEK = 37,     /**< temporary file: seek failed */
  DEIMG_FILE_TELL = 38,     /**< temporary file: position unknown */
  DEIMG_FILE_READ = 39,     /**< temporary file: read failed */
  DEIMG_FILE_WRITE = 40,    /**< temporary file: write failed (for instance, the disk is full) */
  DEIMG_NOT_A_BLOCK = 64,   /**< internal: a pointer that is not a memory block of the library */
  DEIMG_UNSUPPORTED = 96,   /**< unsupported format, setting, sensitivity, geometry or point */
  DEIMG_MISSING = 98,       /**< a stream or one of its operations is missing; exposure range */
  DEIMG_PROPS_OUT_OF_MEMORY = 0x04000003, /**< out of memory while reading the properties */
  DEIMG_PROPS_UNREADABLE = 0x0400002C,    /**< not a raw file, or its properties are broken */
  DEIMG_PROPS_DIRECTORY_TOO_LARGE =
      0x0400002D,                         /**< the property directory is 32,768 bytes or more */
  DEIMG_NO_TEMPORARY_STREAM = 0x20100000, /**< no temporary file could be set up */
};

/** Level fields of DevelopParams: take the value recorded in the raw file. */
#define DEIMG_AS_RECORDED (-10)

/** Values of DevelopParams::wbPreset with a meaning of their own; 0 to 5 are the file's presets. */
enum DEImgWhiteBalance {
  DEIMG_WB_POINT = -1, /**< from the picture at (wbPointX, wbPointY), unless gains are given */
  DEIMG_WB_GAINS = 6,  /**< the gains of the WhiteBalanceBlock; without them, the file's entry 6 */
};

/** White-balance gains have this value for a factor of 1. */
#define DEIMG_WB_GAIN_ONE 1024

/**
 * A stream: a context pointer and the operations on it. Used for the raw file (input) and for the
 * developed picture (output).
 *
 * Every operation takes the cookie first and an error word last. It stores 0 in the word on
 * success and a code of the host's own on failure; a nonzero word ends the job and is returned
 * from DEImg_DevelopM480() unchanged. Read and Write take the wanted byte count through `count`
 * and store the count transferred there.
 *
 * The input stream needs Open, Close, Read, Seek and Tell; the output stream Open, Close and
 * Write. Progress is used on the output stream only and may be null.
 */
typedef struct CallerStream {
  void* cookie;          /**< passed unchanged to every operation */
  uint8_t unused4;       /**< not read */
  uint8_t unused5;       /**< not read */
  uint16_t progressMode; /**< output stream: DEImgProgressMode */
  /** Opens the stream and rewinds it; `mode` is a DEImgOpenMode (input: 1, output: 3). */
  void (*Open)(void* cookie, uint16_t mode, uint32_t* error);
  void (*Close)(void* cookie, uint32_t* error);
  void (*Read)(void* cookie, void* buffer, uint32_t* count, uint32_t* error);
  /** The buffer is valid during the call only. */
  void (*Write)(void* cookie, const void* buffer, uint32_t* count, uint32_t* error);
  /** `origin` is a DEImgSeekOrigin. */
  void (*Seek)(void* cookie, uint16_t origin, int32_t offset, uint32_t* error);
  uint32_t (*Tell)(void* cookie, uint32_t* error);
  /** `percent` is 0 to 100. Storing a nonzero code cancels the job with that code. */
  void (*Progress)(void* cookie, uint16_t percent, uint32_t* error);
} CallerStream;

#pragma pack(push, 1)

/** White-balance gains inside DevelopParams (44 bytes). 1024 is a factor of 1. */
typedef struct WhiteBalanceBlock {
  uint16_t wbGainsSet; /**< 1: the gains are valid */
  uint8_t unused2[4];
  uint32_t wbGains[4]; /**< red, green of red lines, green of blue lines, blue */
  uint8_t unused22[22];
} WhiteBalanceBlock;

/**
 * Development settings (288 bytes). Optional; without them the picture is developed as recorded.
 *
 * With `filled` other than 1 the library writes the defaults. It also writes back the gains that
 * were used, with wbGainsSet = 1, before the first line is delivered. Quick, preview and thumbnail
 * jobs overwrite three fields with what they are made with: processingSet (3), chromaMedian (-1)
 * and matrixSelect (0).
 */
typedef struct DevelopParams {
  uint8_t unused0[2];
  uint16_t filled; /**< 1: the host filled the block */
  uint8_t unused4[2];
  uint16_t matrixSelect;  /**< 0 full processing, 1 plain processing */
  int16_t toneLevel;      /**< -1, 0, 1 or DEIMG_AS_RECORDED */
  int16_t matrixLevel;    /**< -1, 0, 1 or DEIMG_AS_RECORDED */
  int16_t processingSet;  /**< -1, 0, 1, 3 (quick) or DEIMG_AS_RECORDED */
  int16_t colourLevel;    /**< -1, 0, 1 or DEIMG_AS_RECORDED */
  int16_t chromaMedian;   /**< -1: colour-difference median off; has no default of its own */
  int16_t exposureAdjust; /**< tenths of a stop, -20 to 20 */
  uint8_t unused20[24];
  int16_t wbPreset; /**< 0 to 5, DEImgWhiteBalance or DEIMG_AS_RECORDED */
  uint8_t unused46[2];
  int32_t wbPointX; /**< column of the white-balance point inside the image area */
  int32_t wbPointY; /**< line of the white-balance point inside the image area */
  WhiteBalanceBlock whiteBalance;
  uint8_t unused100[188];
} DevelopParams;

#pragma pack(pop)

/**
 * Develops one raw file.
 *
 * @param input   the raw file; opened, read and closed by the library.
 * @param flags   a DEImgJob.
 * @param format  a DEImgFormat in the low 8 bits; preview and thumbnail are always 8 bits.
 * @param params  settings, or null. Updated as described at DevelopParams.
 * @param output  receives one Write per line of the picture, top line first, and progress reports.
 *                After a failure its Close is not called.
 * @return 0, a DEImgResult, or the code that a stream operation stored in its error word.
 */
DEIMG_API uint32_t DEImg_DevelopM480(CallerStream* input, uint32_t flags, uint32_t format,
                                     DevelopParams* params, CallerStream* output);

#ifdef __cplusplus
} /* extern "C" */
#endif

/* The two structures are a binary interface; these hold on every build. */
#if defined(__cplusplus)
#define DEIMG_LAYOUT(condition) static_assert(condition, #condition)
#else
#define DEIMG_LAYOUT(condition) _Static_assert(condition, #condition)
#endif
DEIMG_LAYOUT(sizeof(WhiteBalanceBlock) == 44);
DEIMG_LAYOUT(offsetof(WhiteBalanceBlock, wbGains) == 6);
DEIMG_LAYOUT(sizeof(DevelopParams) == 288);
DEIMG_LAYOUT(offsetof(DevelopParams, filled) == 2);
DEIMG_LAYOUT(offsetof(DevelopParams, matrixSelect) == 6);
DEIMG_LAYOUT(offsetof(DevelopParams, toneLevel) == 8);
DEIMG_LAYOUT(offsetof(DevelopParams, matrixLevel) == 10);
DEIMG_LAYOUT(offsetof(DevelopParams, processingSet) == 12);
DEIMG_LAYOUT(offsetof(DevelopParams, colourLevel) == 14);
DEIMG_LAYOUT(offsetof(DevelopParams, chromaMedian) == 16);
DEIMG_LAYOUT(offsetof(DevelopParams, exposureAdjust) == 18);
DEIMG_LAYOUT(offsetof(DevelopParams, wbPreset) == 44);
DEIMG_LAYOUT(offsetof(DevelopParams, wbPointX) == 48);
DEIMG_LAYOUT(offsetof(DevelopParams, wbPointY) == 52);
DEIMG_LAYOUT(offsetof(DevelopParams, whiteBalance) == 56);
DEIMG_LAYOUT(offsetof(CallerStream, progressMode) == sizeof(void*) + 2);
DEIMG_LAYOUT(offsetof(CallerStream, Open) == sizeof(void*) + 4 + (sizeof(void*) - 4) % 8);
DEIMG_LAYOUT(sizeof(void*) != 4 || sizeof(CallerStream) == 36);
DEIMG_LAYOUT(offsetof(CallerStream, Progress) ==
             offsetof(CallerStream, Open) + 6 * sizeof(void (*)(void)));
#undef DEIMG_LAYOUT

#endif /* DEIMG_DEIMG_H */
