using System;
using System.Threading;

namespace Velmora {
  public enum Button { Left, Right, Centre }

  [Flags]
  public enum Modifiers : ulong {
    None = 0,
    CapsLock = 0x10000,
    Shift = 0x20000,
    Control = 0x40000,
    Option = 0x80000,
    Command = 0x100000
  }

  /// <summary>Pointer and keyboard: what the host of a session does for a viewer.</summary>
  public static class Input {
    static Action<int> watcher;
    static readonly Native.HotkeyCallback onKey = key => {
      try {
        var current = Volatile.Read(ref watcher);
        if (current != null) current(key);
      } catch (Exception thrown) {
        Console.Error.WriteLine(thrown);
      }
    };

    public static void Move(double x, double y) { Native.vlm_input_mouse_move(x, y); }

    /// <summary>Without any event.</summary>
    public static void Warp(double x, double y) { Native.vlm_input_warp_cursor(x, y); }

    public static void Press(Button button, bool down, double x, double y) {
      Native.vlm_input_mouse_button((int)button, down, x, y);
    }

    public static void Wheel(double horizontal, double vertical) {
      Native.vlm_input_mouse_wheel(horizontal, vertical);
    }

    /// <param name="keyCode">A macOS virtual key code.</param>
    public static void Key(ushort keyCode, bool down, Modifiers flags = Modifiers.None) {
      Native.vlm_input_key(keyCode, down, (ulong)flags);
    }

    /// <summary>x and y; null when they can't be asked for.</summary>
    public static Tuple<double, double> Pointer {
      get {
        var at = new double[2];
        return Memory.With(at, x => Native.vlm_input_cursor_pos(x, Memory.Place<double>(x, 1)))
            ? Tuple.Create(at[0], at[1]) : null;
      }
    }

    /// <summary>One watcher a process, on the main thread and while the main loop runs.</summary>
    public static bool WatchKeys(Action<int> keys) {
      if (keys == null) throw new ArgumentNullException("keys");
      Volatile.Write(ref watcher, keys);
      return Native.vlm_hotkey_monitor_start(onKey);
    }

    public static void StopWatchingKeys() {
      Native.vlm_hotkey_monitor_stop();
      Volatile.Write(ref watcher, null);
    }
  }
}
