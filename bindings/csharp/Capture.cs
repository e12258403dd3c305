using System;
using System.Runtime.InteropServices;

namespace Velmora {
  /// <summary>Interleaved samples, the number of channels, frames a second.</summary>
  public delegate void SystemSound(float[] samples, int channels, int sampleRate);

  /// <summary>
  /// Delivers frames, and sound where it is asked for, until Dispose. Both delegates run on one thread
  /// of the library.
  /// </summary>
  public sealed class Capture : Owned {
    // One target for both callbacks: a frame, or a block of sound.
    delegate void Target(Frame frame, float[] samples, int channels, int sampleRate);

    static readonly Native.FrameCallback onFrame = (pixbuf, width, height, ptsNs, user) =>
        Run<Target>(user, target => target(new Frame(pixbuf, width, height, ptsNs), null, 0, 0));
    static readonly Native.AudioCallback onSound = (samples, frames, channels, sampleRate, user) => {
      var copy = new float[frames * channels];
      Marshal.Copy(samples, copy, 0, copy.Length);
      Run<Target>(user, target => target(null, copy, channels, sampleRate));
    };

    delegate IntPtr Start(Native.FrameCallback frame, Native.AudioCallback audio, IntPtr user);

    Capture(Action<Frame> frames, SystemSound sound, Start start)
        : base(Native.vlm_capture_stop, Joined(frames, sound),
               key => start(onFrame, sound == null ? null : onSound, key)) {}

    static Target Joined(Action<Frame> frames, SystemSound sound) {
      if (frames == null) throw new ArgumentNullException("frames");
      return (frame, samples, channels, sampleRate) => {
        if (frame != null)
          frames(frame);
        else
          sound(samples, channels, sampleRate);
      };
    }

    /// <param name="maxWidth">0 in it or in maxHeight is no limit.</param>
    public static Capture Window(uint windowId, Action<Frame> frames, SystemSound sound = null,
                                 int fps = 30, int maxWidth = 0, int maxHeight = 0) {
      return new Capture(frames, sound, (frame, audio, user) => Native.vlm_capture_start_window(
          windowId, fps, maxWidth, maxHeight, frame, audio, user));
    }

    public static Capture App(string bundlePrefix, Action<Frame> frames, SystemSound sound = null,
                              int fps = 30, int maxWidth = 0, int maxHeight = 0) {
      return new Capture(frames, sound, (frame, audio, user) => Memory.WithText(
          bundlePrefix, prefix => Native.vlm_capture_start_app(
              prefix, fps, maxWidth, maxHeight, frame, audio, user)));
    }

    /// <param name="displayId">0 is the first display.</param>
    public static Capture Display(uint displayId, Action<Frame> frames, SystemSound sound = null,
                                  int fps = 30, int maxWidth = 0, int maxHeight = 0) {
      return new Capture(frames, sound, (frame, audio, user) => Native.vlm_capture_start_display(
          displayId, fps, maxWidth, maxHeight, frame, audio, user));
    }

    /// <summary>What was captured when the capture started.</summary>
    public Rectangle? Bounds {
      get {
        return Use(capture => Memory.Rectangle(
            (x, y, w, h) => Native.vlm_capture_bounds(capture, x, y, w, h)));
      }
    }

    /// <summary>Whether the screen can be captured now.</summary>
    public static bool Ready { get { return Native.vlm_screen_capture_ready(); } }

    /// <summary>The first such window, front to back; null is any, 0 is none.</summary>
    public static uint FindWindow(string bundlePrefix, string titlePart = null) {
      return Memory.WithText(bundlePrefix, prefix => Memory.WithText(
          titlePart, title => Native.vlm_capture_find_window(prefix, title)));
    }
  }
}
