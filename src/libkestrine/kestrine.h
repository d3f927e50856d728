/*
 * kestrine.h: the C interface of libkestrine, which converts pictures.
 *
 *     kestrine_picture* picture;
 *     if (kestrine_open_path("in.heic", &picture) != KESTRINE_OK
 *         || kestrine_convert_to_path(picture, "{\"longest\": 1200}", "out.jpg") != KESTRINE_OK)
 *         fprintf(stderr, "%s\n", kestrine_error_text());
 *     kestrine_close(picture);
 *
 * Threads: any thread may call any function except kestrine_use_workers(). Different pictures may be used by
 * several threads at the same time, one picture by one thread at a time.
 *
 * fork(): the child may use the library, too, if no other thread used it during fork(). Pictures and buffers
 * are copied; each process closes and frees its own. With kestrine_use_workers(), the child starts its own
 * workers, even for pictures that were opened before. The parent is not affected.
 *
 * Stability: programs that were built with an older version of this header keep working with newer libraries
 * of the same soname. Structures that may grow have a first member that holds their size.
 *
 * Strings are UTF-8 and end with a zero byte; paths are passed to the system unchanged. Pointers to results
 * may not be null. After a failure, opened pictures are null and buffers are empty.
 */
#ifndef KESTRINE_H
#define KESTRINE_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define KESTRINE_API __attribute__((visibility("default")))

/** What a function returns. kestrine_error_text() has more in words. Later versions may add numbers. */
typedef enum kestrine_status {
    KESTRINE_OK = 0,
    KESTRINE_WRONG_ARGUMENT = 1, /**< a null pointer, or options that are not as documented */
    KESTRINE_NOT_FOUND = 2,      /**< no file or folder has that name */
    KESTRINE_ALREADY_EXISTS = 3, /**< a file has that name and must not be replaced */
    KESTRINE_NOT_PERMITTED = 4,  /**< the system denied access */
    KESTRINE_NOT_A_FILE = 5,     /**< a folder, pipe, device or socket */
    KESTRINE_UNSUPPORTED = 6,    /**< not a picture, or a kind of picture that is not read or written here */
    KESTRINE_MALFORMED = 7,      /**< the bytes violate their format, or end too early */
    KESTRINE_DAMAGED = 8,        /**< pixels had to be made up; the option "acceptDamaged" permits it */
    KESTRINE_TOO_LARGE = 9, /**< above a limit of the library, of the format or of the option "maxBytes" */
    KESTRINE_NO_SPACE = 10, /**< the disk is full or a quota is reached */
    KESTRINE_INPUT_OUTPUT = 11,  /**< any other error of the system */
    KESTRINE_OUT_OF_MEMORY = 12, /**< there is not enough memory */
    KESTRINE_DECODER_ENDED = 13, /**< a worker process crashed, or took too much time, with this file */
    KESTRINE_CANCELLED = 14,     /**< the progress function asked for it */
    KESTRINE_INTERNAL = 15       /**< a defect of the library */
} kestrine_status;

/** The version of the library, such as "1.2.3". */
KESTRINE_API const char* kestrine_version(void);

/** Why the last function that failed in this thread did so: a sentence without full stop, at most 511 bytes.
 * It stays until the next failure in this thread. Never null. It is UTF-8, but names of files in it are as
 * the system has them. */
KESTRINE_API const char* kestrine_error_text(void);

/** An opened picture. */
typedef struct kestrine_picture kestrine_picture;

/** Opens the regular file at `path` and reads its header. Close it with kestrine_close(). The file may be
 * moved or removed meanwhile, but must not be changed. */
KESTRINE_API kestrine_status kestrine_open_path(const char* path, kestrine_picture** picture);

/** The same for a descriptor of a regular file that is open for reading. The descriptor is duplicated; its
 * position is neither used nor changed. */
KESTRINE_API kestrine_status kestrine_open_descriptor(int descriptor, kestrine_picture** picture);

/** The same for a file in memory. The bytes are not copied: they must stay as they are until
 * kestrine_close(). */
KESTRINE_API kestrine_status kestrine_open_memory(const void* bytes, size_t length,
                                                  kestrine_picture** picture);

/** Frees the picture. Null is permitted. */
KESTRINE_API void kestrine_close(kestrine_picture* picture);

/** What a file holds, of which the main picture may be only a part. Later versions may add numbers. */
typedef enum kestrine_contents {
    KESTRINE_PICTURE = 0,   /**< one picture */
    KESTRINE_ANIMATION = 1, /**< several frames; the first is the main picture */
    KESTRINE_PAGES = 2,     /**< several pages */
    KESTRINE_LAYERS = 3,    /**< layers, which the main picture shows together */
    KESTRINE_RAW = 4,       /**< what the sensor of a camera recorded */
    KESTRINE_DRAWING = 5    /**< shapes; width and height are the natural ones */
} kestrine_contents;

/** What a picture is. */
typedef struct kestrine_info {
    size_t size;          /**< set it to sizeof(kestrine_info) before the call */
    char format[16];      /**< its usual name, such as "JPEG" */
    uint32_t width;       /**< in pixels, as the picture is stored */
    uint32_t height;      /**< in pixels, as the picture is stored */
    uint32_t orientation; /**< 1 to 8, as in EXIF: how viewers turn it; the option "upright" does the same */
    uint32_t bits;        /**< per sample, 8 or 16 */
    uint32_t is_gray;     /**< 1 for grey, 0 for colour */
    uint32_t has_alpha;   /**< 1 if pixels may be transparent */
    uint32_t has_profile; /**< 1 if the file has a colour profile */
    uint32_t contents;    /**< a kestrine_contents */
    uint32_t count;       /**< of frames, pages or layers, else 1 */
} kestrine_info;

/** Describes a picture. Decodes nothing, but may read the whole file to count its frames. */
KESTRINE_API kestrine_status kestrine_describe(kestrine_picture* picture, kestrine_info* info);

/** Receives the progress of a conversion. `share` grows from 0 to 0.99 with the rows that were made; encoders
 * that need the whole picture continue after the last row. It is 1 when the result is ready. Returns 0 to
 * continue, anything else to cancel. Called by one thread at a time, which may differ from the one that
 * called the library. It must not call the library with the same picture. */
typedef int (*kestrine_progress)(double share, void* user);

/** `progress` is called by conversions of this picture from now on; null ends that. While pictures are
 * decoded in workers, it is called only before and after a conversion. */
KESTRINE_API kestrine_status kestrine_set_progress(kestrine_picture* picture, kestrine_progress progress,
                                                   void* user);

/** Bytes that the library allocated. */
typedef struct kestrine_buffer {
    void* bytes;   /**< null for none */
    size_t length; /**< their number */
} kestrine_buffer;

/** Converts into memory. Free the result with kestrine_free().
 *
 * `options` is a JSON object; null stands for "{}". Names and values are those of the options of
 * `kestrinectl convert`:
 *
 * - "longest", "width", "height": pixels. Sides that are not given follow; "width" with "height" stretches.
 * - "percent": of both sides.
 * - "fit", "cover": a box such as "1200x800". The result lies inside it, or fills it and is cropped.
 * - "gravity", for "cover" and "pad": "center" (default), "north", "northeast" and so on.
 * - "pad": a colour that fills the rest of the box of "fit".
 * - "enlarge": true (default), or false: a picture that would get larger keeps its size.
 * - "format": "jpeg", "png", "tiff", "gif", "webp", "jxl" or "avif". By default that of the source; if it is
 *   not written, PNG with transparency and JPEG without.
 * - "quality": 0 to 100, default 80.
 * - "lossless", "progressive": true, or false (default).
 * - "effort": "fast", "normal" (default) or "max".
 * - "maxBytes": 200000 or "200k". The result has the highest quality that fits.
 * - "upright": true (default), or false.
 * - "background": a colour for transparent parts.
 * - "metadata": "none", "rights", "exif" (default) or "all".
 * - "profile": "keep" (default) or "srgb".
 * - "acceptDamaged": true, or false (default). Converts what can be decoded of a damaged file.
 * - "overwrite": true, or false (default). kestrine_convert_to_path() replaces a file of that name.
 * - "threads": 0 (default) for as many as help, or 1. The result does not depend on it.
 *
 * Anything else fails with KESTRINE_WRONG_ARGUMENT. */
KESTRINE_API kestrine_status kestrine_convert_to_memory(kestrine_picture* picture, const char* options,
                                                        kestrine_buffer* result);

/** Frees the bytes and clears the buffer. */
KESTRINE_API void kestrine_free(kestrine_buffer* buffer);

/** Converts into a file, which appears complete or not at all. Fails with KESTRINE_ALREADY_EXISTS if there is
 * a file of that name, unless the option "overwrite" is true. Folders are not made. */
KESTRINE_API kestrine_status kestrine_convert_to_path(kestrine_picture* picture, const char* options,
                                                      const char* path);

/** Converts and writes the result to a descriptor that is open for writing and waits when it cannot write at
 * once, from its position on. After an error of the system, a part may be written. Writing to a pipe that
 * nobody reads raises SIGPIPE, as any write does; KESTRINE_INPUT_OUTPUT if the program ignores that signal.
 */
KESTRINE_API kestrine_status kestrine_convert_to_descriptor(kestrine_picture* picture, const char* options,
                                                            int descriptor);

/** From now on, pictures are decoded and encoded in worker processes without rights, for the whole process.
 * `program` is the path of kestrine-worker; null for the one that was installed with the library, even if
 * both were moved. Call it before any picture is opened, while no other thread uses the library. Starts a
 * worker as a test: fails with KESTRINE_NOT_FOUND if there is no such program, with KESTRINE_NOT_PERMITTED if
 * no worker starts, and with KESTRINE_UNSUPPORTED if the system cannot take all rights from it (Linux before
 * 5.13, for example). A failure changes nothing; after a success, further calls do nothing. The program runs
 * as a child of this process and starts the workers. If it ends, running conversions fail with
 * KESTRINE_DECODER_ENDED, and the next conversion starts it again. */
KESTRINE_API kestrine_status kestrine_use_workers(const char* program);

#ifdef __cplusplus
}
#endif

#endif
