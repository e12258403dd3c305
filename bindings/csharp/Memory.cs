using System;
using System.Runtime.InteropServices;
using System.Text;

namespace Velmora {
  /// <summary>Points in global display space.</summary>
  public struct Rectangle {
    public double X, Y, Width, Height;
  }

  /// <summary>Memory that the library reads or writes during one call.</summary>
  static class Memory {
    public static T With<T>(Array values, Func<IntPtr, T> call) {
      var pinned = GCHandle.Alloc(values, GCHandleType.Pinned);
      try {
        return call(pinned.AddrOfPinnedObject());
      } finally {
        pinned.Free();
      }
    }

    /// <summary>null becomes NULL; a text with a NUL in it ends there.</summary>
    public static T WithText<T>(string text, Func<IntPtr, T> call) {
      return text == null ? call(IntPtr.Zero) : With(Encoding.UTF8.GetBytes(text + "\0"), call);
    }

    public static string Text(byte[] bytes) {
      int end = Array.IndexOf(bytes, (byte)0);
      return Encoding.UTF8.GetString(bytes, 0, end < 0 ? bytes.Length : end);
    }

    public static IntPtr Place<T>(IntPtr first, int index) {
      return first + index * Marshal.SizeOf(typeof(T));
    }

    internal delegate bool AskForRectangle(IntPtr x, IntPtr y, IntPtr width, IntPtr height);

    public static Rectangle? Rectangle(AskForRectangle ask) {
      var r = new double[4];
      if (!With(r, x => ask(x, Place<double>(x, 1), Place<double>(x, 2), Place<double>(x, 3))))
        return null;
      return new Rectangle { X = r[0], Y = r[1], Width = r[2], Height = r[3] };
    }
  }
}
