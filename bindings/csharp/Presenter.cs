using System;
using System.Runtime.InteropServices;

namespace Velmora {
  public enum Shown {
    Ok = Native.VLM_PRESENT_OK,
    /// <summary>Drop it, or try again when no other frame comes.</summary>
    Busy = Native.VLM_PRESENT_BUSY,
    Fail = Native.VLM_PRESENT_FAIL
  }

  /// <summary>
  /// The view that shows frames in a window of the host; made on the main thread, or while the main
  /// loop runs there.
  /// </summary>
  public sealed class Presenter : Owned {
    readonly object turn = new object();

    public Presenter() : base(Native.vlm_present_destroy, null, key => Native.vlm_present_create()) {}

    /// <summary>
    /// On macOS the NSView; what it points to is on Linux the id that X11View reads.
    /// </summary>
    public IntPtr View { get { return Use(Native.vlm_present_view); } }

    /// <summary>
    /// The id of an X11 window. Ask again after a call that destroys the window around it.
    /// </summary>
    public uint X11View {
      get {
        lock (turn) return Use(handle => (uint)Marshal.ReadInt32(Native.vlm_present_view(handle)));
      }
    }

    public Shown Show(Frame frame) {
      return (Shown)Use(handle => frame.Use(
          pixbuf => Native.vlm_present_enqueue(handle, pixbuf, frame.PtsNs)));
    }

    public void Clear() { Use(Native.vlm_present_clear); }
  }
}
