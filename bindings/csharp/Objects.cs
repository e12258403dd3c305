using System;
using System.Collections.Concurrent;
using System.Collections.Generic;
using System.Runtime.InteropServices;
using System.Text;
using System.Threading;

namespace Velmora {
  /// <summary>A call of the library failed; the reason is in the system's log.</summary>
  public class NativeException : Exception {
    public NativeException(string text) : base(text) {}
  }

  /// <summary>
  /// Owns one object of the library. It ends once: in Dispose when no call uses it any more, or when
  /// nothing refers to it. Later calls throw ObjectDisposedException.
  /// </summary>
  public abstract class Owned : SafeHandle {
    // Callbacks come through static delegates, which are never collected; the user pointer is a key.
    static readonly ConcurrentDictionary<IntPtr, Delegate> targets =
        new ConcurrentDictionary<IntPtr, Delegate>();
    static int lastKey;
    [ThreadStatic] static IntPtr running;
    readonly Action<IntPtr> end;
    readonly IntPtr key;

    protected Owned(Action<IntPtr> end, Delegate target, Func<IntPtr, IntPtr> start)
        : base(IntPtr.Zero, true) {
      this.end = end;
      if (target != null) {
        key = (IntPtr)Interlocked.Increment(ref lastKey);
        targets[key] = target;
      }
      SetHandle(start(key));
      if (!IsInvalid) return;
      Forget(key);
      throw new NativeException(GetType().Name + " could not be made");
    }

    public override bool IsInvalid { get { return handle == IntPtr.Zero; } }

    internal T Use<T>(Func<IntPtr, T> call) {
      bool added = false;
      DangerousAddRef(ref added);
      try {
        return call(handle);
      } finally {
        DangerousRelease();
      }
    }

    protected static void Run<T>(IntPtr user, Action<T> call) where T : class {
      Delegate target;
      if (!targets.TryGetValue(user, out target)) return;
      IntPtr outer = running;
      running = user;
      try {
        call((T)(object)target);
      } catch (Exception thrown) {
        // It must not run through the library's frames.
        Console.Error.WriteLine(thrown);
      } finally {
        running = outer;
      }
    }

    protected override bool ReleaseHandle() {
      IntPtr ended = handle;
      if (key != IntPtr.Zero && running == key)
        new Thread(() => Finish(ended)).Start(); // it must not wait for its own callback
      else
        Finish(ended);
      return true;
    }

    void Finish(IntPtr ended) {
      end(ended);
      Forget(key);
    }

    static void Forget(IntPtr key) {
      Delegate target;
      targets.TryRemove(key, out target);
    }
  }

  /// <summary>A picture with a reference to its buffer, so a callback may keep it.</summary>
  public sealed class Frame : Owned {
    public readonly int Width, Height;
    public readonly long PtsNs;

    internal Frame(IntPtr pixbuf, int width, int height, long ptsNs)
        : base(Native.vlm_pixbuf_release, null, key => Retained(pixbuf)) {
      Width = width;
      Height = height;
      PtsNs = ptsNs;
    }

    static IntPtr Retained(IntPtr pixbuf) {
      Native.vlm_pixbuf_retain(pixbuf);
      return pixbuf;
    }

    public byte[] ToBgra() {
      var picture = new byte[Width * Height * 4];
      var pinned = GCHandle.Alloc(picture, GCHandleType.Pinned);
      try {
        IntPtr start = pinned.AddrOfPinnedObject();
        if (!Use(pixbuf => Native.vlm_pixbuf_to_bgra(pixbuf, start, picture.Length)))
          throw new NativeException("the picture can't be converted");
        return picture;
      } finally {
        pinned.Free();
      }
    }
  }

  public sealed class Capture : Owned {
    static readonly Native.FrameCallback onFrame = (pixbuf, width, height, ptsNs, user) =>
        Run<Action<Frame>>(user, target => target(new Frame(pixbuf, width, height, ptsNs)));

    public Capture(uint windowId, int fps, Action<Frame> frames)
        : base(Native.vlm_capture_stop, frames, key => Native.vlm_capture_start_window(
              windowId, fps, 0, 0, onFrame, null, key)) {}
  }

  public delegate void Encoded(byte[] unit, bool keyframe, long ptsNs);

  /// <summary>Threads that share an encoder take turns.</summary>
  public sealed class Encoder : Owned {
    readonly object turn = new object();
    static readonly Native.EncodedCallback onEncoded = (data, size, keyframe, ptsNs, user) => {
      var unit = new byte[size];
      Marshal.Copy(data, unit, 0, size);
      Run<Encoded>(user, target => target(unit, keyframe, ptsNs));
    };

    public Encoder(int width, int height, int fps, int bitrate, Encoded units)
        : base(Native.vlm_enc_destroy, units, key => Native.vlm_enc_create(
              width, height, fps, bitrate, true, onEncoded, key)) {}

    public bool Encode(Frame frame, long ptsNs, bool keyframe) {
      lock (turn) {
        return Use(encoder => frame.Use(
            pixbuf => Native.vlm_enc_encode(encoder, pixbuf, ptsNs, keyframe)));
      }
    }
  }

  public static class Windows {
    public static T WithText<T>(string text, Func<IntPtr, T> call) {
      byte[] bytes = Encoding.UTF8.GetBytes(text + "\0");
      var pinned = GCHandle.Alloc(bytes, GCHandleType.Pinned);
      try {
        return call(pinned.AddrOfPinnedObject());
      } finally {
        pinned.Free();
      }
    }

    public static uint Find(string prefix) {
      return WithText(prefix, text => Native.vlm_capture_find_window(text, IntPtr.Zero));
    }

    internal static List<Native.WindowEntry> Of(string prefix) {
      const int Most = 256;
      int size = Marshal.SizeOf(typeof(Native.WindowEntry));
      int pid = WithText(prefix, text => Native.vlm_window_find_pid(text));
      IntPtr entries = Marshal.AllocHGlobal(size * Most);
      try {
        var found = new List<Native.WindowEntry>();
        int count = Native.vlm_window_enumerate(pid, entries, Most);
        for (int i = 0; i < count; ++i)
          found.Add((Native.WindowEntry)Marshal.PtrToStructure(
              entries + i * size, typeof(Native.WindowEntry)));
        return found;
      } finally {
        Marshal.FreeHGlobal(entries);
      }
    }
  }
}
