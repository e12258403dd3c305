// The functions of VelmoraMacNative.h, which is the manual, with its names.
using System;
using System.Runtime.InteropServices;

namespace Velmora {
  static class Native {
    const string Library = "libVelmoraMacNative.so.3";

    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    public delegate void FrameCallback(IntPtr pixbuf, int width, int height, long ptsNs, IntPtr user);
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    public delegate void AudioCallback(IntPtr samples, int frames, int channels, int sampleRate, IntPtr user);
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    public delegate void EncodedCallback(IntPtr data, int size, [MarshalAs(UnmanagedType.U1)] bool keyframe, long ptsNs, IntPtr user);
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    public delegate void TrackCallback(int what, double x, double y, double width, double height, IntPtr user);
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    public delegate void HotkeyCallback(int key);
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    public delegate void MicrophoneCallback(IntPtr samples, int count, IntPtr user);

    [StructLayout(LayoutKind.Sequential)]
    public struct WindowEntry {
      public uint windowId;
      public int left;
      public int top;
      public int width;
      public int height;
      public int isMain;
      [MarshalAs(UnmanagedType.ByValArray, SizeConst = 128)]
      public byte[] title;
    }

    public const int VLM_PRESENT_OK = 0;
    public const int VLM_PRESENT_BUSY = 1;
    public const int VLM_PRESENT_FAIL = -1;
    public const int VLM_PRESENT_ARG = -2;

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern int vlm_abi_version();

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_screen_capture_ready();

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern uint vlm_capture_find_window(IntPtr bundlePrefix, IntPtr titlePart);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr vlm_capture_start_window(uint windowId, int fps, int maxW, int maxH, FrameCallback frameCb, AudioCallback audioCb, IntPtr user);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr vlm_capture_start_app(IntPtr bundlePrefix, int fps, int maxW, int maxH, FrameCallback frameCb, AudioCallback audioCb, IntPtr user);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr vlm_capture_start_display(uint displayId, int fps, int maxW, int maxH, FrameCallback frameCb, AudioCallback audioCb, IntPtr user);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_capture_bounds(IntPtr handle, IntPtr x, IntPtr y, IntPtr width, IntPtr height);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_capture_stop(IntPtr handle);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_pixbuf_retain(IntPtr pixbuf);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_pixbuf_release(IntPtr pixbuf);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_pixbuf_lock(IntPtr pixbuf, IntPtr lumaBase, IntPtr lumaStride, IntPtr chromaBase, IntPtr chromaStride);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_pixbuf_unlock(IntPtr pixbuf);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_pixbuf_to_bgra(IntPtr pixbuf, IntPtr dst, int capacity);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr vlm_enc_create(int width, int height, int fps, int bitrateBps, [MarshalAs(UnmanagedType.U1)] bool lowLatency, EncodedCallback cb, IntPtr user);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_enc_encode(IntPtr handle, IntPtr pixbuf, long ptsNs, [MarshalAs(UnmanagedType.U1)] bool forceKeyframe);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_enc_encode_bgra(IntPtr handle, IntPtr bgra, int width, int height, int stride, long ptsNs, [MarshalAs(UnmanagedType.U1)] bool forceKeyframe);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_enc_set_bitrate(IntPtr handle, int bitrateBps);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_enc_destroy(IntPtr handle);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr vlm_dec_create(FrameCallback cb, IntPtr user);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr vlm_dec_create_bgra(FrameCallback cb, IntPtr user);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_dec_decode(IntPtr handle, IntPtr data, int size, long ptsNs);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_dec_flush(IntPtr handle);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_dec_destroy(IntPtr handle);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr vlm_present_create();

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr vlm_present_view(IntPtr handle);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern int vlm_present_enqueue(IntPtr handle, IntPtr pixbuf, long ptsNs);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_present_clear(IntPtr handle);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_present_destroy(IntPtr handle);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern int vlm_window_enumerate(int pid, IntPtr into, int capacity);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern int vlm_window_find_pid(IntPtr bundlePrefix);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_window_get_bounds(uint windowId, IntPtr x, IntPtr y, IntPtr width, IntPtr height);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_window_focused_bounds(int pid, IntPtr x, IntPtr y, IntPtr width, IntPtr height);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr vlm_window_track(int pid, TrackCallback cb, IntPtr user);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_window_untrack(IntPtr handle);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_input_mouse_move(double x, double y);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_input_warp_cursor(double x, double y);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_input_mouse_button(int button, [MarshalAs(UnmanagedType.U1)] bool down, double x, double y);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_input_mouse_wheel(double horizontal, double vertical);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_input_key(ushort keyCode, [MarshalAs(UnmanagedType.U1)] bool down, ulong flags);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_input_cursor_pos(IntPtr x, IntPtr y);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern int vlm_frontmost_pid();

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_hotkey_monitor_start(HotkeyCallback cb);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_hotkey_monitor_stop();

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_secret_set(IntPtr service, IntPtr account, IntPtr data, int size);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern int vlm_secret_get(IntPtr service, IntPtr account, IntPtr into, int capacity);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_secret_delete(IntPtr service, IntPtr account);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern int vlm_machine_id(IntPtr into, int capacity);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_perm_screen_recording([MarshalAs(UnmanagedType.U1)] bool request);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_perm_accessibility([MarshalAs(UnmanagedType.U1)] bool prompt);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_perm_open_settings(IntPtr kind);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern int vlm_audio_devices_json(int input, IntPtr into, int capacity);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr vlm_audio_in_start(IntPtr deviceUid, MicrophoneCallback cb, IntPtr user);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_audio_in_stop(IntPtr handle);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr vlm_audio_out_start(IntPtr deviceUid, int channels);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_audio_out_write(IntPtr handle, IntPtr samples, int count);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_audio_out_stop(IntPtr handle);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern IntPtr vlm_sfx_create(IntPtr path);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_sfx_play(IntPtr handle, double volume, int loops);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_sfx_play_from(IntPtr handle, double startSeconds, double volume);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_sfx_stop(IntPtr handle);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_sfx_seek(IntPtr handle, double seconds);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern double vlm_sfx_position(IntPtr handle);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern double vlm_sfx_duration(IntPtr handle);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static extern bool vlm_sfx_is_playing(IntPtr handle);

    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
    public static extern void vlm_sfx_destroy(IntPtr handle);
  }
}
