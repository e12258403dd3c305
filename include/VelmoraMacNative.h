/*
 * VelmoraMacNative: the native media layer of a screen-sharing application.
 *
 * This header is the whole boundary and its manual. It is valid C99 and C++. Conventions that hold
 * for every function are here once, as numbered rules; the block in front of each function says
 * what it does beyond them, always under the same headings:
 *
 *   What, Parameters (units, ownership), Result, Errors, Thread, Lifetime.
 *
 * RULES
 *
 *  1. Loading. The library runs no code when it is loaded and needs no set-up call. Every object
 *     lives from the call that makes it to the call that ends it.
 *  2. Handles. A handle is an opaque void*. A making call (create, start) returns one that the
 *     caller owns, or NULL when the object could not be made; nothing is kept of a failed attempt.
 *     The matching ending call (destroy, stop) winds the object down and gives it up; it is made
 *     exactly once and the handle is dead afterwards. Every other call borrows the handle: the
 *     object stays alive while the call runs.
 *  3. Null. A NULL handle makes any function do nothing and return its failure value: nothing,
 *     false, NULL or 0 (vlm_present_enqueue: VLM_PRESENT_ARG).
 *  4. Errors. They reach the caller only as the function's result. Nothing is thrown, and no
 *     error text is returned. What a person may want to know is written to the system's log (on
 *     Linux: standard error), one line an event, each beginning with "[vlm] ". Nothing is ever
 *     written to standard output.
 *  5. Out-parameters. Each may be NULL, which skips that one value. They are written only when
 *     the function returns true and otherwise keep what they held.
 *  6. Text in is UTF-8, ends with a NUL and is copied; the caller may free it when the call
 *     returns. NULL means "not given" where a function says so.
 *  7. Callbacks and their user pointer are given when an object is made and kept for its life. The
 *     user pointer is never looked at and comes back as the last argument. What is passed to a
 *     callback (bytes, samples, pixel buffer handles) is valid until the callback returns; copy it
 *     or retain it to keep it. Callbacks run on threads of the library or the system, never on
 *     the thread that made the object, except where a function says so.
 *  8. Pixel buffer handles are not made by the caller. A frame callback lends one for the time of
 *     the call. vlm_pixbuf_retain takes a reference that the caller owns, vlm_pixbuf_release gives
 *     it back. No function takes over or drops the caller's reference.
 *  9. Threads. A function may be called from any thread unless it says otherwise. One encoder or
 *     decoder is used by one thread at a time. An object's callback must not make the call that
 *     ends that object or waits for its frames, except where a function says that it may.
 * 10. Units. Time stamps are nanoseconds (ptsNs); those of captured frames are of the system's
 *     clock that never jumps (on Linux CLOCK_MONOTONIC). Coordinates and sizes given as double are
 *     points in global display space: origin at the top-left corner of the main display, y
 *     downward. Sizes given as int32_t are pixels. Bit rates are bits a second.
 * 11. Waiting. Only these calls wait without a time limit: vlm_screen_capture_ready,
 *     vlm_capture_find_window, the three capture starts and vlm_capture_stop (for the system's
 *     capture service), and vlm_present_create off the main thread (for the main thread). Calls
 *     that end an encoder or decoder, and vlm_dec_flush, wait until the frames in flight have been
 *     delivered.
 *
 * LINUX
 *
 *   The main thread is the process's first thread, and the main loop is GLib's default main
 *   context: a host with GTK or Qt runs it already, any other host iterates it (or runs a
 *   GMainLoop on it) on that thread. Where nothing does so for some seconds while something waits
 *   for it (QT_NO_GLIB=1 is one cause), one line is logged. A host with an event loop of its own
 *   can sleep in GLib and be woken by its X connection; with SDL 2, where `display` is from
 *   SDL_GetWindowWMInfo:
 *
 *     static gboolean woken(gint fd, GIOCondition condition, gpointer user) {
 *       return G_SOURCE_CONTINUE;
 *     }
 *     ...
 *     g_unix_fd_add(ConnectionNumber(display), G_IO_IN, woken, NULL);
 *     while (running) {
 *       while (SDL_PollEvent(&event)) handle(&event);
 *       if (XPending(display) == 0) g_main_context_iteration(NULL, TRUE);
 *     }
 *
 *   Events that other threads push there need g_main_context_wakeup. A host that must sleep in a
 *   call of its own gets the descriptors and the time to wait from g_main_context_query
 *   (examples/main_loop_poll.c).
 *
 *   One point is one pixel. A window id is the X11 window's id, a bundle identifier is the class
 *   part of the window's WM_CLASS. Calls that ask the X server or make a view wait while the server
 *   does not answer; the sound server and the keyring get a few seconds.
 *
 *   A host that wants the log's lines sets a function void (*)(const char* line) of its own:
 *   g_dataset_set_data(g_main_context_default(), "VelmoraMacNative.log", (gpointer)function).
 *   It is called on any thread, must not call the library, and replaces the line on standard
 *   error. NULL brings that back.
 */
#ifndef VELMORA_MAC_NATIVE_H
#define VELMORA_MAC_NATIVE_H

#include <stdbool.h>
#include <stdint.h>

#if defined(_WIN32)
#error "VelmoraMacNative has no Windows build"
#endif
/* The release that this header belongs to; vlm_abi_version says which interface is loaded. */
#define VLM_VERSION_MAJOR 3
#define VLM_VERSION_MINOR 0
#define VLM_VERSION_PATCH 0

#define VLM_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Types ---------------------------------------------------------------------------------- */

/*
 * A frame: captured or decoded.
 *   pixbuf         pixel buffer handle, lent (rule 8)
 *   width, height  its size in pixels
 *   ptsNs          its time stamp in nanoseconds
 */
typedef void (*vlm_frame_cb)(void* pixbuf, int32_t width, int32_t height, int64_t ptsNs,
                             void* user);

/*
 * A block of captured system audio.
 *   samples     frames x channels interleaved 32-bit floats, lent
 *   frames      samples for each channel
 *   channels    channels in a frame
 *   sampleRate  frames a second
 */
typedef void (*vlm_audio_cb)(const float* samples, int32_t frames, int32_t channels,
                             int32_t sampleRate, void* user);

/*
 * One encoded access unit: H.264 Annex B with 4-byte start codes. A key frame begins with its
 * parameter sets.
 *   data, size  the bytes, lent, and their number
 *   keyframe    true when decoding can start here
 *   ptsNs       the time stamp the frame was submitted with, or 1 ns less (it passes through a
 *               double)
 */
typedef void (*vlm_encoded_cb)(const uint8_t* data, int32_t size, bool keyframe, int64_t ptsNs,
                               void* user);

/* One window of a process, as vlm_window_enumerate reports it: 152 bytes without padding. */
typedef struct VlmWindowEntry {
  uint32_t windowId; /* the number by which the window is captured and looked up */
  int32_t left;      /* frame in points, global display space */
  int32_t top;
  int32_t width;
  int32_t height;
  int32_t isMain;     /* 1 for the application's main window, else 0 */
  uint8_t title[128]; /* UTF-8, at most 127 bytes and a NUL, cut between characters */
} VlmWindowEntry;

/*
 * An event of a tracked process, with the frame that its focused window has at that moment (zeros
 * when there is none).
 *   event                0 a window moved, 1 a window was resized, 2 the focused window changed or
 *                        the application was activated, 3 the application was deactivated, 4 a
 *                        window was closed
 *   x, y, width, height  the frame in points
 */
typedef void (*vlm_track_cb)(int32_t event, double x, double y, double width, double height,
                             void* user);

/*
 * A key press: its Windows-style virtual-key code; of a key that has no translation, such as those
 * of the keypad and the punctuation, its macOS virtual key code. A host that needs context keeps it
 * itself.
 */
typedef void (*vlm_hotkey_cb)(int32_t key);

/*
 * A block of microphone audio: mono 32-bit floats at 48000 Hz.
 *   samples, count  the samples, lent, and their number, above 0
 */
typedef void (*vlm_mic_cb)(const float* samples, int32_t count, void* user);

/* Results of vlm_present_enqueue. */
enum {
  VLM_PRESENT_OK = 0,    /* the frame was handed to the display */
  VLM_PRESENT_BUSY = 1,  /* the display could not take it now; see vlm_present_enqueue */
  VLM_PRESENT_FAIL = -1, /* the frame could not be wrapped for display */
  VLM_PRESENT_ARG = -2   /* the presenter or the pixel buffer was NULL */
};

/* ---- Library -------------------------------------------------------------------------------- */

/*
 * What:       The version of this interface.
 * Parameters: none.
 * Result:     3, always.
 * Errors:     none.
 * Thread:     any.
 * Lifetime:   may be called at any time, before any other call too.
 */
VLM_API int32_t vlm_abi_version(void);

/* ---- Capture -------------------------------------------------------------------------------- */

/*
 * What:       Whether the screen can be captured now.
 * Parameters: none.
 * Result:     true when the system answered what there is to capture.
 * Errors:     false; the system's reason is logged.
 * Thread:     any; waits for the system.
 * Lifetime:   asks afresh on every call and keeps nothing.
 */
VLM_API bool vlm_screen_capture_ready(void);

/*
 * What:       Finds a window on the screen by its application and title.
 * Parameters: bundlePrefix  beginning of the application's bundle identifier, case counts; NULL or
 *                           empty for any application.
 *             titlePart     text that the title contains, case does not count; NULL for any title,
 *                           an empty text for none.
 * Result:     the id of the first such window, front to back, that belongs to an application and
 *             is at least 100 x 100 points.
 * Errors:     0 when there is none or the system did not answer.
 * Thread:     any; waits for the system.
 * Lifetime:   the id names the window until the window is closed.
 */
VLM_API uint32_t vlm_capture_find_window(const char* bundlePrefix, const char* titlePart);

/*
 * What:       Captures one window, whatever covers it and wherever it moves. The first picture
 *             comes at once, then one whenever something changed; a still window yields none.
 * Parameters: windowId    a window on the screen.
 *             fps         frames a second, an upper limit; 1 or less means one a second.
 *             maxW, maxH  largest size of a frame in pixels. The frame is made smaller to fit and
 *                         keeps its shape; 0 or less in either switches the limit off. Width and
 *                         height of a frame are even and fixed for the capture's life; a window
 *                         that is resized later is stretched into them, its shape not kept.
 *             frameCb     gets every frame; must not be NULL. Frames are '420v'. Keep at most 5;
 *                         while you do, new ones are skipped.
 *             audioCb     gets what the machine plays, less what this process plays, as stereo at
 *                         48,000 Hz; NULL for none. On Linux blocks of 20 ms, silent ones
 *                         included; without a sound server all are silent until one comes.
 *             user        passed to both callbacks.
 * Result:     a capture handle.
 * Errors:     NULL when frameCb is NULL (at once), no such window is on the screen, or the capture
 *             can't be started (logged).
 * Thread:     any; waits for the system. Both callbacks run on one private serial queue, one call
 *             at a time.
 * Lifetime:   ended by vlm_capture_stop, also when the system ended the stream by itself (a closed
 *             window, a lost display: logged, and no more frames come).
 */
VLM_API void* vlm_capture_start_window(uint32_t windowId, int32_t fps, int32_t maxW, int32_t maxH,
                                       vlm_frame_cb frameCb, vlm_audio_cb audioCb, void* user);

/*
 * What:       Captures one application: its windows, at their places, on the display that its
 *             largest window is on, and nothing of any other application.
 * Parameters: bundlePrefix  beginning of the application's bundle identifier; the first running
 *                           application that matches is taken. Must not be NULL or empty.
 *             fps, maxW, maxH, frameCb, audioCb, user
 *                           as for vlm_capture_start_window.
 * Result:     a capture handle; its frames have the shape of the display.
 * Errors:     NULL when frameCb is NULL, no application matches, there is no display, or the
 *             capture can't be started (logged).
 * Thread:     as for vlm_capture_start_window.
 * Lifetime:   as for vlm_capture_start_window.
 */
VLM_API void* vlm_capture_start_app(const char* bundlePrefix, int32_t fps, int32_t maxW,
                                    int32_t maxH, vlm_frame_cb frameCb, vlm_audio_cb audioCb,
                                    void* user);

/*
 * What:       Captures one display.
 * Parameters: displayId  0 or the id of no display means the first display: compare
 *                        vlm_capture_bounds with the place of the one that is meant. On Linux the
 *                        id is the atom of the monitor's name: what xcb_intern_atom gives for the
 *                        name that `xrandr --listmonitors` prints ("DP-1"), or the field `name` of
 *                        a monitor from xcb_randr_get_monitors. It is the same as long as the
 *                        server runs. A server without RandR 1.5 has one display, whose id is that
 *                        of the root window. In a Wayland session a person picks the display in a
 *                        dialog of the desktop, unless they did so before.
 *             fps, maxW, maxH, frameCb, audioCb, user
 *                        as for vlm_capture_start_window.
 * Result:     a capture handle.
 * Errors:     NULL when frameCb is NULL, there is no display, or the capture can't be started
 *             (logged).
 * Thread:     as for vlm_capture_start_window. A person who is asked is waited for.
 * Lifetime:   as for vlm_capture_start_window.
 */
VLM_API void* vlm_capture_start_display(uint32_t displayId, int32_t fps, int32_t maxW, int32_t maxH,
                                        vlm_frame_cb frameCb, vlm_audio_cb audioCb, void* user);

/*
 * What:       The rectangle that was captured when the capture started. It does not follow a
 *             window that moves or is resized.
 * Parameters: handle               a capture.
 *             x, y, width, height  out, points.
 * Result:     true when the rectangle is known and was written.
 * Errors:     false when it is empty.
 * Thread:     any.
 * Lifetime:   borrows the handle.
 */
VLM_API bool vlm_capture_bounds(void* handle, double* x, double* y, double* width, double* height);

/*
 * What:       Ends a capture.
 * Parameters: handle  a capture.
 * Result:     none.
 * Errors:     none.
 * Thread:     any, the capture's own callbacks included. It waits until the system has stopped
 *             and, when called from elsewhere, until the last callback has returned: hold no lock
 *             that they take, and let them wait for nothing that this thread does.
 * Lifetime:   ends the handle. Pixel buffers that the caller retained stay valid.
 */
VLM_API void vlm_capture_stop(void* handle);

/* ---- Pixel buffers -------------------------------------------------------------------------- */

/*
 * What:       Takes a reference to a pixel buffer, to keep it after the callback that lent it.
 * Parameters: pixbuf  a pixel buffer.
 * Result:     none.
 * Errors:     none.
 * Thread:     any.
 * Lifetime:   the reference belongs to the caller until vlm_pixbuf_release.
 */
VLM_API void vlm_pixbuf_retain(void* pixbuf);

/*
 * What:       Gives back one reference that vlm_pixbuf_retain took.
 * Parameters: pixbuf  a pixel buffer.
 * Result:     none.
 * Errors:     none.
 * Thread:     any.
 * Lifetime:   the buffer may be gone afterwards.
 */
VLM_API void vlm_pixbuf_release(void* pixbuf);

/*
 * What:       Opens the two planes of a bi-planar 4:2:0 buffer for reading in place.
 * Parameters: pixbuf        a pixel buffer.
 *             lumaBase      out, first byte of the luma plane: width x height bytes.
 *             lumaStride    out, bytes from one luma row to the next.
 *             chromaBase    out, first byte of the chroma plane: Cb, Cr pairs, half the width by
 *                           half the height.
 *             chromaStride  out, bytes from one chroma row to the next.
 * Result:     true when the buffer is locked.
 * Errors:     false for a buffer that is not bi-planar ('BGRA'), or when the system refuses.
 * Thread:     any.
 * Lifetime:   the planes may be read until the matching vlm_pixbuf_unlock.
 */
VLM_API bool vlm_pixbuf_lock(void* pixbuf, uint8_t** lumaBase, int32_t* lumaStride,
                             uint8_t** chromaBase, int32_t* chromaStride);

/*
 * What:       Ends one successful vlm_pixbuf_lock.
 * Parameters: pixbuf  a pixel buffer.
 * Result:     none.
 * Errors:     none.
 * Thread:     any.
 * Lifetime:   the planes must not be read afterwards.
 */
VLM_API void vlm_pixbuf_unlock(void* pixbuf);

/*
 * What:       Writes the whole picture as packed BGRA: rows from top to bottom without padding, 4
 *             bytes a pixel in the order blue, green, red, alpha. YCbCr pictures are converted
 *             with the ITU-R BT.601 matrix and alpha 255; '420v' keeps its video range: black is 0
 *             but white 234, and colours are as weak. A host that shows or stores such a picture
 *             converts the planes of vlm_pixbuf_lock instead, as examples/screenshot.c does. BGRA
 *             pictures are copied as they are.
 * Parameters: pixbuf    a pixel buffer in '420v', '420f' or 'BGRA'.
 *             dst       the caller's memory.
 *             capacity  its size in bytes, at least width x height x 4.
 * Result:     true when width x height x 4 bytes were written.
 * Errors:     false when dst is NULL, the capacity is too small (nothing is written), the format
 *             is another one, or the system refuses.
 * Thread:     any.
 * Lifetime:   borrows the buffer.
 */
VLM_API bool vlm_pixbuf_to_bgra(void* pixbuf, uint8_t* dst, int32_t capacity);

/* ---- Encoder -------------------------------------------------------------------------------- */

/*
 * What:       Makes an H.264 encoder for interactive sharing: Main profile, automatic level, no
 *             frame reordering, key frames at the start, on request and after 30000 frames or 600
 *             seconds.
 * Parameters: width, height  size of the frames in pixels; a frame of another size later rebuilds
 *                            the encoder by itself.
 *             fps            expected frames a second.
 *             bitrateBps     average bit rate; any one second may take a quarter more.
 *             lowLatency     asks for the rate control that keeps every frame small.
 *             cb             gets every access unit; must not be NULL.
 *             user           passed to cb.
 * Result:     an encoder handle.
 * Errors:     NULL when cb is NULL or the system has no such encoder (logged).
 * Thread:     any. cb runs on a codec thread, in the order of the frames.
 * Lifetime:   ended by vlm_enc_destroy.
 */
VLM_API void* vlm_enc_create(int32_t width, int32_t height, int32_t fps, int32_t bitrateBps,
                             bool lowLatency, vlm_encoded_cb cb, void* user);

/*
 * What:       Submits one frame. A size other than the last frame's first delivers what is in
 *             flight and then rebuilds the encoder; the frame becomes a key frame.
 *             A still screen yields no frames, and what it shows last is often too large to be
 *             sent sharp at once. So keep the last frame and, while no other comes, submit it
 *             again at the frame rate with new time stamps: each time the encoder sharpens a part
 *             of what is shown, and what changed last comes first. That is worth while until no
 *             access unit of the last two seconds had more than 500 bytes. From then on, until the
 *             screen changes, it would bring nothing that can be seen. Where the rate is too small
 *             for a change, a part of the change waits for up to about a second; a host that does
 *             not submit the last frame again may then never send it.
 * Parameters: handle         an encoder.
 *             pixbuf         the frame, '420v', '420f' or 'BGRA'; may be released after the call.
 *             ptsNs          its time stamp in nanoseconds, rising from frame to frame.
 *             forceKeyframe  true makes it a key frame.
 * Result:     true when the frame was accepted. An accepted frame may still be dropped when the
 *             encoder can't keep up: then no callback comes for it.
 * Errors:     false when the frame was refused (logged), or a rebuild failed earlier and the size
 *             is still the same.
 * Thread:     one thread at a time for one encoder.
 * Lifetime:   borrows both handles.
 */
VLM_API bool vlm_enc_encode(void* handle, void* pixbuf, int64_t ptsNs, bool forceKeyframe);

/*
 * What:       Submits a frame from the caller's own memory, copied during the call; else as
 *             vlm_enc_encode.
 * Parameters: handle         an encoder.
 *             bgra           first byte of the top row; 4 bytes a pixel: blue, green, red, alpha.
 *             width, height  its size in pixels, at least 1.
 *             stride         bytes from one row to the next; (height - 1) x stride + width x 4
 *                            bytes are readable.
 *             ptsNs, forceKeyframe
 *                            as for vlm_enc_encode.
 * Result:     as for vlm_enc_encode.
 * Errors:     false also when bgra is NULL, or width or height is below 1.
 * Thread:     as for vlm_enc_encode.
 * Lifetime:   borrows the handle; bgra may be reused when the call returns.
 */
VLM_API bool vlm_enc_encode_bgra(void* handle, const uint8_t* bgra, int32_t width, int32_t height,
                                 int32_t stride, int64_t ptsNs, bool forceKeyframe);

/*
 * What:       Changes the target bit rate from the next frame on, without a key frame.
 * Parameters: handle      an encoder.
 *             bitrateBps  average bit rate; any one second may take a quarter more.
 * Result:     none.
 * Errors:     none; a value that the system refuses is ignored by it.
 * Thread:     one thread at a time for one encoder.
 * Lifetime:   borrows the handle; the value holds for rebuilt encoders too.
 */
VLM_API void vlm_enc_set_bitrate(void* handle, int32_t bitrateBps);

/*
 * What:       Delivers the frames in flight and ends the encoder. No callback follows.
 * Parameters: handle  an encoder.
 * Result:     none.
 * Errors:     none.
 * Thread:     any but the encoder's own callback; waits for the frames in flight.
 * Lifetime:   ends the handle.
 */
VLM_API void vlm_enc_destroy(void* handle);

/* ---- Decoder -------------------------------------------------------------------------------- */

/*
 * What:       Makes an H.264 decoder that delivers '420v' frames.
 * Parameters: cb    gets every frame; must not be NULL.
 *             user  passed to cb.
 * Result:     a decoder handle.
 * Errors:     NULL when cb is NULL.
 * Thread:     any. cb runs on a codec thread, in the order of the access units.
 * Lifetime:   ended by vlm_dec_destroy.
 */
VLM_API void* vlm_dec_create(vlm_frame_cb cb, void* user);

/*
 * What:       Makes an H.264 decoder that delivers 'BGRA' frames; else as vlm_dec_create.
 * Parameters: cb, user  as for vlm_dec_create.
 * Result:     a decoder handle.
 * Errors:     NULL when cb is NULL.
 * Thread:     as for vlm_dec_create.
 * Lifetime:   ended by vlm_dec_destroy.
 */
VLM_API void* vlm_dec_create_bgra(vlm_frame_cb cb, void* user);

/*
 * What:       Submits one access unit. Parameter sets are taken from the stream wherever they
 *             are; changed ones rebuild the decoder.
 * Parameters: handle      a decoder.
 *             data, size  one Annex B access unit (start codes of 3 or 4 bytes), copied.
 *             ptsNs       its time stamp in nanoseconds, passed through to the frame.
 * Result:     true when the unit was accepted, also when it held nothing to show, or the decoder
 *             could not be built for its parameter sets (logged; the next unit tries again).
 * Errors:     false when data is NULL, size is below 1, no parameter sets have arrived yet, or the
 *             system refused the unit (logged).
 * Thread:     one thread at a time for one decoder.
 * Lifetime:   borrows the handle; data may be reused when the call returns.
 */
VLM_API bool vlm_dec_decode(void* handle, const uint8_t* data, int32_t size, int64_t ptsNs);

/*
 * What:       Waits until every submitted frame has been delivered. The decoder stays usable.
 * Parameters: handle  a decoder.
 * Result:     none.
 * Errors:     none.
 * Thread:     one thread at a time for one decoder; never the decoder's own callback.
 * Lifetime:   borrows the handle.
 */
VLM_API void vlm_dec_flush(void* handle);

/*
 * What:       Delivers the frames in flight and ends the decoder. No callback follows.
 * Parameters: handle  a decoder.
 * Result:     none.
 * Errors:     none.
 * Thread:     any but the decoder's own callback; waits for the frames in flight.
 * Lifetime:   ends the handle.
 */
VLM_API void vlm_dec_destroy(void* handle);

/* ---- Presentation --------------------------------------------------------------------------- */

/*
 * What:       Makes a presenter: a view that shows frames as they come, stretched to its bounds,
 *             black while there is none. It takes no mouse events.
 * Parameters: none.
 * Result:     a presenter handle.
 * Errors:     NULL when the system can't make a view.
 * Thread:     any; off the main thread it waits until the main thread has made the view.
 * Lifetime:   ended by vlm_present_destroy.
 */
VLM_API void* vlm_present_create(void);

/*
 * What:       The view, for the host to place in a window of its own.
 * Parameters: handle  a presenter.
 * Result:     on macOS the NSView. On Linux a pointer to the uint32_t id of an X11 window, which
 *             the host reparents into its own window and maps. A host that does no more gets a view
 *             that fills its window and follows its size. Once the host sizes the view itself, as
 *             QWidget::createWindowContainer does, that size holds, and the host goes on sizing it.
 * Errors:     NULL for a NULL handle.
 * Thread:     any; on Linux it asks the X server, for a second at most.
 * Lifetime:   lent: the host never ends it. It lives as long as its presenter. On Linux the id at
 *             the pointer may change with a call of this function, and only then. X destroys the
 *             view together with a window that it is in. A new one is then made, outside of every
 *             window: until the host has asked for its id here and placed it, frames are answered
 *             with VLM_PRESENT_BUSY. Among the calls that destroy a host's X window are
 *             gtk_container_remove, QWidget::setWindowFlag and SDL_CreateRenderer. A host asks
 *             after such a call (and after XSync, where the toolkit sends its requests late), and
 *             never uses an id from before. To keep the view as it is, reparent it to the root
 *             window before the call.
 */
VLM_API void* vlm_present_view(void* handle);

/*
 * What:       Shows a frame as soon as possible, or says at once that it can't.
 * Parameters: handle  a presenter.
 *             pixbuf  the frame; may be released after the call.
 *             ptsNs   not used: frames are shown as they come.
 * Result:     VLM_PRESENT_OK, or VLM_PRESENT_BUSY when the display still works on an earlier
 *             frame, is recovering from a failure, or (on Linux) has lost its window. Then drop the
 *             frame when another one comes soon. On a still screen none does: keep it, and try
 *             again after some milliseconds.
 * Errors:     VLM_PRESENT_FAIL, VLM_PRESENT_ARG.
 * Thread:     any; never waits for the display.
 * Lifetime:   borrows both handles.
 */
VLM_API int32_t vlm_present_enqueue(void* handle, void* pixbuf, int64_t ptsNs);

/*
 * What:       Removes the picture; the view shows black.
 * Parameters: handle  a presenter.
 * Result:     none.
 * Errors:     none.
 * Thread:     any; off the main thread it is done a little later there.
 * Lifetime:   borrows the handle.
 */
VLM_API void vlm_present_clear(void* handle);

/*
 * What:       Removes the picture, takes the view out of the host's window and ends the presenter.
 * Parameters: handle  a presenter.
 * Result:     none.
 * Errors:     none.
 * Thread:     any; off the main thread the view is removed a little later there.
 * Lifetime:   ends the handle; the view ends when it has been removed.
 */
VLM_API void vlm_present_destroy(void* handle);

/* ---- Windows -------------------------------------------------------------------------------- */

/*
 * What:       Lists the visible windows of a process, those that are not minimised.
 * Parameters: pid       the process.
 *             out       the caller's array; entries beyond the result stay untouched.
 *             capacity  the number of entries it holds.
 * Result:     the number of entries written, front ones not necessarily first.
 * Errors:     -1 when pid or capacity is below 1 or out is NULL; 0 when the process has no such
 *             windows or they can't be read.
 * Thread:     any.
 * Lifetime:   a snapshot; nothing is kept.
 */
VLM_API int32_t vlm_window_enumerate(int32_t pid, VlmWindowEntry* out, int32_t capacity);

/*
 * What:       Finds the process of an application.
 * Parameters: bundlePrefix  beginning of its bundle identifier, case counts.
 * Result:     the process id of the first running application that matches, in the order in which
 *             the system lists them. On Linux: front to back, by each one's frontmost window.
 * Errors:     0 when none does, or the prefix is NULL or empty.
 * Thread:     any.
 * Lifetime:   asks afresh on every call.
 */
VLM_API int32_t vlm_window_find_pid(const char* bundlePrefix);

/*
 * What:       The frame of one window.
 * Parameters: windowId             a window's number.
 *             x, y, width, height  out, points.
 * Result:     true when the window exists and its frame was written.
 * Errors:     false.
 * Thread:     any.
 * Lifetime:   asks afresh on every call.
 */
VLM_API bool vlm_window_get_bounds(uint32_t windowId, double* x, double* y, double* width,
                                   double* height);

/*
 * What:       The frame of an application's main window, or of its focused window when it has no
 *             main one.
 * Parameters: pid                  the process.
 *             x, y, width, height  out, points.
 * Result:     true when the frame was written.
 * Errors:     false, also while that window is minimised.
 * Thread:     any.
 * Lifetime:   asks afresh on every call.
 */
VLM_API bool vlm_window_focused_bounds(int32_t pid, double* x, double* y, double* width,
                                       double* height);

/*
 * What:       Follows the windows of a process: moves, sizes, focus, activation, closing.
 * Parameters: pid   the process.
 *             cb    gets every event; must not be NULL.
 *             user  passed to cb.
 * Result:     a tracker handle.
 * Errors:     NULL when cb is NULL, pid is below 1, or the process can't be observed. On macOS that
 *             is one that does not exist, or any while the right to accessibility is missing; on
 *             Linux every process can be, one that has no window yet included, unless the X server
 *             can't be reached or takes no more clients.
 * Thread:     any. cb runs on the main thread, and only while the main loop runs.
 * Lifetime:   ended by vlm_window_untrack.
 */
VLM_API void* vlm_window_track(int32_t pid, vlm_track_cb cb, void* user);

/*
 * What:       Ends a tracker. No callback follows.
 * Parameters: handle  a tracker.
 * Result:     none.
 * Errors:     none.
 * Thread:     any, the tracker's own callback included; on another thread it waits for a callback
 *             that is running.
 * Lifetime:   ends the handle.
 */
VLM_API void vlm_window_untrack(void* handle);

/* ---- Input ---------------------------------------------------------------------------------- */

/*
 * What:       Moves the pointer, as the mouse does. Also between a press and a release: a drag.
 * Parameters: x, y  the new position in points.
 * Result:     none.
 * Errors:     none; what the system refuses does not happen.
 * Thread:     any; the events of one thread arrive in order.
 * Lifetime:   nothing is kept.
 */
VLM_API void vlm_input_mouse_move(double x, double y);

/*
 * What:       Puts the pointer somewhere without any event.
 * Parameters: x, y  the new position in points.
 * Result:     none.
 * Errors:     none.
 * Thread:     any.
 * Lifetime:   nothing is kept.
 */
VLM_API void vlm_input_warp_cursor(double x, double y);

/*
 * What:       Presses or releases a mouse button.
 * Parameters: button  1 right, 2 centre, anything else left.
 *             down    true presses, false releases.
 *             x, y    where, in points.
 * Result:     none.
 * Errors:     none.
 * Thread:     any; the events of one thread arrive in order.
 * Lifetime:   nothing is kept.
 */
VLM_API void vlm_input_mouse_button(int32_t button, bool down, double x, double y);

/*
 * What:       Turns the wheel.
 * Parameters: horizontal  pixels, above 0 to the left; whole ones: fractions are dropped.
 *             vertical    pixels, above 0 up, which shows what is further up; whole ones.
 * Result:     none.
 * Errors:     none. On Linux, where a wheel has steps, the platform adds amounts up to steps of 40
 *             pixels; turning back starts afresh.
 * Thread:     any; the events of one thread arrive in order.
 * Lifetime:   nothing is kept by the library.
 */
VLM_API void vlm_input_mouse_wheel(double horizontal, double vertical);

/*
 * What:       Presses or releases a key. A press of a key that is down is one more press, as the
 *             keyboard repeats it. On Linux the server repeats a key that is held, with the
 *             modifiers of its press, until its release; the release presses none again.
 * Parameters: keyCode  a macOS virtual key code: a place on the keyboard, whatever the layout.
 *             down     true presses, false releases.
 *             flags    the modifiers that the key is seen with, and no others: 0x10000 caps lock,
 *                      0x20000 shift, 0x40000 control, 0x80000 option, 0x100000 command. On Linux
 *                      AltGr is the right option key: key code 0x3D, or 0x80040 in the flags, where
 *                      0x40 says right and 0x20 left. Without a side option is the key that is
 *                      held, else the left one (Alt). The flags of a modifier's own key count for
 *                      nothing.
 * Result:     none.
 * Errors:     none.
 * Thread:     any; the events of one thread arrive in order.
 * Lifetime:   nothing is kept.
 */
VLM_API void vlm_input_key(uint16_t keyCode, bool down, uint64_t flags);

/*
 * What:       Where the pointer is.
 * Parameters: x, y  out, points.
 * Result:     true when the position was written.
 * Errors:     false when it can't be asked for, as in a Wayland session.
 * Thread:     any.
 * Lifetime:   asks afresh on every call.
 */
VLM_API bool vlm_input_cursor_pos(double* x, double* y);

/*
 * What:       The process of the application in front.
 * Parameters: none.
 * Result:     its process id.
 * Errors:     0 when no application is in front.
 * Thread:     any.
 * Lifetime:   asks afresh on every call.
 */
VLM_API int32_t vlm_frontmost_pid(void);

/*
 * What:       Watches key presses, whichever application has the keyboard; repeats of a held key
 *             included. A monitor that runs is replaced.
 * Parameters: cb  gets each pressed key; must not be NULL.
 * Result:     true.
 * Errors:     false when cb is NULL: what runs goes on.
 * Thread:     any; off the main thread it takes effect a little later. cb runs on the main thread,
 *             and only while the main loop runs.
 * Lifetime:   until vlm_hotkey_monitor_stop or the next start.
 */
VLM_API bool vlm_hotkey_monitor_start(vlm_hotkey_cb cb);

/*
 * What:       Ends the watching of key presses.
 * Parameters: none.
 * Result:     none.
 * Errors:     none; does nothing when none runs.
 * Thread:     any; off the main thread it takes effect a little later.
 * Lifetime:   the callback is forgotten.
 */
VLM_API void vlm_hotkey_monitor_stop(void);

/* ---- System services ------------------------------------------------------------------------ */

/*
 * What:       Stores a secret in the system's keychain (on Linux: the Secret Service), in the
 *             place of any at the same address.
 * Parameters: service, account  the secret's address; must not be NULL.
 *             data, size        its bytes, any number from 0; data must not be NULL.
 * Result:     true when the secret was stored.
 * Errors:     false; an earlier secret may then be gone. A keychain that is locked
 *             or missing, or that would ask a person, is a failure at once, and a secret that
 *             another process could not read back is not stored.
 * Thread:     any.
 * Lifetime:   kept until it is deleted, beyond the end of the process.
 */
VLM_API bool vlm_secret_set(const char* service, const char* account, const uint8_t* data,
                            int32_t size);

/*
 * What:       Reads a secret. With capacity 0 it returns how long the secret is.
 * Parameters: service, account  the secret's address; must not be NULL.
 *             out               the caller's memory; NULL copies nothing.
 *             capacity          its size in bytes.
 * Result:     the secret's length when it is at most capacity: its bytes are in out, without a NUL;
 *             minus its length when it is more: nothing is written.
 * Errors:     0 when there is no such secret, it is empty, or it can't be read.
 * Thread:     any.
 * Lifetime:   out belongs to the caller, who wipes it when it is no longer needed.
 */
VLM_API int32_t vlm_secret_get(const char* service, const char* account, uint8_t* out,
                               int32_t capacity);

/*
 * What:       Deletes a secret.
 * Parameters: service, account  the secret's address; must not be NULL.
 * Result:     true when there was one and it is gone.
 * Errors:     false.
 * Thread:     any.
 * Lifetime:   final.
 */
VLM_API bool vlm_secret_delete(const char* service, const char* account);

/*
 * What:       A stable identifier of this computer: a UUID in its text form of 36 characters, the
 *             same for every user and process.
 * Parameters: out       the caller's memory.
 *             capacity  its size in bytes; the text and its NUL must fit.
 * Result:     the length of the text, its NUL not counted.
 * Errors:     0 when the computer has none, out is NULL or the capacity too small; nothing is
 *             written, and the size that is needed can't be asked for.
 * Thread:     any.
 * Lifetime:   kept by the system, not by this library.
 */
VLM_API int32_t vlm_machine_id(char* out, int32_t capacity);

/*
 * What:       Whether this process may record the screen.
 * Parameters: request  true asks the user where the right is not granted yet.
 * Result:     true when it may. On Linux: when the X display can be reached and has the extensions
 *             that capture needs; in a Wayland session when a person agreed.
 * Errors:     false.
 * Thread:     any. In a Wayland session a person who is asked is waited for.
 * Lifetime:   asks afresh on every call.
 */
VLM_API bool vlm_perm_screen_recording(bool request);

/*
 * What:       Whether this process may watch and drive the windows and input of others.
 * Parameters: prompt  true asks the user where the right is not granted yet.
 * Result:     true when it may. On Linux: when the X display can be reached and has the extensions
 *             that input needs; in a Wayland session while a person lets it use pointer and keys.
 * Errors:     false.
 * Thread:     any. In a Wayland session a person who is asked is waited for.
 * Lifetime:   asks afresh on every call.
 */
VLM_API bool vlm_perm_accessibility(bool prompt);

/*
 * What:       Opens the system's settings where the user grants a right.
 * Parameters: kind  "screen", "accessibility" or "microphone", case counts; anything else and NULL
 *                   open the general privacy page.
 * Result:     true when a page was opened. On Linux: the nearest page of the desktop in use.
 * Errors:     false when nothing on this system opens it.
 * Thread:     any.
 * Lifetime:   the settings program lives on its own.
 */
VLM_API bool vlm_perm_open_settings(const char* kind);

/* ---- Audio ---------------------------------------------------------------------------------- */

/*
 * What:       Lists the audio devices as JSON: an array of objects with "name" and "uid".
 * Parameters: input     0 for output devices, anything else for input devices.
 *             out       the caller's memory for UTF-8 text.
 *             capacity  its size in bytes; the text and its NUL must fit.
 * Result:     the length of the text, its NUL not counted; ~length, that is -(length + 1), with
 *             nothing written, when out is NULL or the capacity too small.
 * Errors:     0 when the list can't be made.
 * Thread:     any.
 * Lifetime:   a snapshot; a uid stays the same from run to run.
 */
VLM_API int32_t vlm_audio_devices_json(int32_t input, char* out, int32_t capacity);

/*
 * What:       Records from a microphone: mono, 48000 Hz, whatever the device gives.
 * Parameters: deviceUid  a device's uid; NULL, empty or unknown for the default input.
 *             cb         gets every block; must not be NULL.
 *             user       passed to cb.
 * Result:     a microphone handle.
 * Errors:     NULL when cb is NULL, there is no input, or it can't be started.
 * Thread:     any. cb runs on a thread of the audio system.
 * Lifetime:   ended by vlm_audio_in_stop. While the device is gone no callback comes; it goes on
 *             when the device is back.
 */
VLM_API void* vlm_audio_in_start(const char* deviceUid, vlm_mic_cb cb, void* user);

/*
 * What:       Ends a recording, when a callback that runs has returned. No callback follows.
 * Parameters: handle  a microphone.
 * Result:     none.
 * Errors:     none.
 * Thread:     any but the microphone's own callback.
 * Lifetime:   ends the handle.
 */
VLM_API void vlm_audio_in_stop(void* handle);

/*
 * What:       Makes ready to play 32-bit float samples at 48000 Hz. Playing begins when 60 ms have
 *             been written, and begins so again after it ran dry.
 * Parameters: deviceUid  a device's uid; NULL, empty or unknown for the default output.
 *             channels   2 or more for stereo, else mono.
 * Result:     a playback handle.
 * Errors:     NULL when the output can't be started.
 * Thread:     any.
 * Lifetime:   ended by vlm_audio_out_stop. While the device is gone what is written is lost; it
 *             goes on when the device is back.
 */
VLM_API void* vlm_audio_out_start(const char* deviceUid, int32_t channels);

/*
 * What:       Adds samples to what is to be played. Half a second is kept; what does not fit is
 *             lost.
 * Parameters: handle   a playback.
 *             samples  interleaved, copied.
 *             count    the number of floats, not of frames.
 * Result:     none.
 * Errors:     none.
 * Thread:     any; never waits for the device.
 * Lifetime:   borrows the handle; samples may be reused when the call returns.
 */
VLM_API void vlm_audio_out_write(void* handle, const float* samples, int32_t count);

/*
 * What:       Ends a playback at once; what has not been played is dropped.
 * Parameters: handle  a playback.
 * Result:     none.
 * Errors:     none.
 * Thread:     any.
 * Lifetime:   ends the handle.
 */
VLM_API void vlm_audio_out_stop(void* handle);

/*
 * What:       Opens a sound file, to be played on the default output.
 * Parameters: path  the file.
 * Result:     a sound handle.
 * Errors:     NULL when path is NULL or the file can't be opened or decoded.
 * Thread:     any; one sound is used by one thread at a time, here and below.
 * Lifetime:   ended by vlm_sfx_destroy.
 */
VLM_API void* vlm_sfx_create(const char* path);

/*
 * What:       Plays a sound from its beginning.
 * Parameters: handle  a sound.
 *             volume  0 to 1; anything else becomes the nearer of the two.
 *             loops   repetitions after the first time; negative for endless.
 * Result:     none.
 * Errors:     none.
 * Thread:     one thread at a time.
 * Lifetime:   borrows the handle.
 */
VLM_API void vlm_sfx_play(void* handle, double volume, int32_t loops);

/*
 * What:       Plays a sound once from a place in it.
 * Parameters: handle        a sound.
 *             startSeconds  the place; before the beginning or after the end becomes that.
 *             volume        0 to 1; anything else becomes the nearer of the two.
 * Result:     none.
 * Errors:     none.
 * Thread:     one thread at a time.
 * Lifetime:   borrows the handle.
 */
VLM_API void vlm_sfx_play_from(void* handle, double startSeconds, double volume);

/*
 * What:       Stops a sound where it is.
 * Parameters: handle  a sound.
 * Result:     none.
 * Errors:     none.
 * Thread:     one thread at a time.
 * Lifetime:   borrows the handle.
 */
VLM_API void vlm_sfx_stop(void* handle);

/*
 * What:       Goes to another place in a sound; a sound that does not play starts there.
 * Parameters: handle   a sound.
 *             seconds  the place; before the beginning or after the end becomes that.
 * Result:     none.
 * Errors:     none.
 * Thread:     one thread at a time.
 * Lifetime:   borrows the handle.
 */
VLM_API void vlm_sfx_seek(void* handle, double seconds);

/*
 * What:       Where a sound is.
 * Parameters: handle  a sound.
 * Result:     seconds from its beginning.
 * Errors:     0 for a NULL handle.
 * Thread:     one thread at a time.
 * Lifetime:   borrows the handle.
 */
VLM_API double vlm_sfx_position(void* handle);

/*
 * What:       How long a sound is.
 * Parameters: handle  a sound.
 * Result:     seconds.
 * Errors:     0 for a NULL handle.
 * Thread:     one thread at a time.
 * Lifetime:   borrows the handle.
 */
VLM_API double vlm_sfx_duration(void* handle);

/*
 * What:       Whether a sound plays.
 * Parameters: handle  a sound.
 * Result:     true while it does.
 * Errors:     false for a NULL handle.
 * Thread:     one thread at a time.
 * Lifetime:   borrows the handle.
 */
VLM_API bool vlm_sfx_is_playing(void* handle);

/*
 * What:       Stops a sound and closes it.
 * Parameters: handle  a sound.
 * Result:     none.
 * Errors:     none.
 * Thread:     one thread at a time.
 * Lifetime:   ends the handle.
 */
VLM_API void vlm_sfx_destroy(void* handle);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VELMORA_MAC_NATIVE_H */
