using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;

namespace Velmora {
  public struct Window {
    public uint Id;
    public int Left, Top, Width, Height;
    public bool IsMain;
    public string Title;
  }

  /// <summary>Windows of other processes.</summary>
  public static class Windows {
    /// <summary>The visible windows of a process, at most 256.</summary>
    public static List<Window> Of(int pid) {
      const int Most = 256;
      int size = Marshal.SizeOf(typeof(Native.WindowEntry));
      var found = new List<Window>();
      Memory.With(new byte[size * Most], entries => {
        int count = Native.vlm_window_enumerate(pid, entries, Most);
        for (int i = 0; i < count; ++i) found.Add(Read(entries + i * size));
        return count;
      });
      return found;
    }

    static Window Read(IntPtr place) {
      var e = (Native.WindowEntry)Marshal.PtrToStructure(place, typeof(Native.WindowEntry));
      return new Window { Id = e.windowId, Left = e.left, Top = e.top, Width = e.width,
                          Height = e.height, IsMain = e.isMain != 0, Title = Memory.Text(e.title) };
    }

    /// <summary>The process of an application; 0 when there is none.</summary>
    public static int FindPid(string bundlePrefix) {
      return Memory.WithText(bundlePrefix, prefix => Native.vlm_window_find_pid(prefix));
    }

    /// <summary>The process of the application in front; 0 when there is none.</summary>
    public static int FrontmostPid { get { return Native.vlm_frontmost_pid(); } }

    public static Rectangle? Bounds(uint windowId) {
      return Memory.Rectangle((x, y, w, h) => Native.vlm_window_get_bounds(windowId, x, y, w, h));
    }

    public static Rectangle? FocusedBounds(int pid) {
      return Memory.Rectangle((x, y, w, h) => Native.vlm_window_focused_bounds(pid, x, y, w, h));
    }
  }

  public enum Change { Moved, Resized, Focused, Deactivated, Closed }

  /// <summary>
  /// Follows the windows of a process while the main loop runs, on its thread, until Dispose.
  /// </summary>
  public sealed class Tracker : Owned {
    static readonly Native.TrackCallback onChange = (what, x, y, width, height, user) =>
        Run<Action<Change, Rectangle>>(user, target => target(
            (Change)what, new Rectangle { X = x, Y = y, Width = width, Height = height }));

    public Tracker(int pid, Action<Change, Rectangle> changes)
        : base(Native.vlm_window_untrack, changes,
               key => Native.vlm_window_track(pid, onChange, key)) {}
  }
}
