using System;
using System.Runtime.InteropServices;

namespace Velmora {
  /// <summary>
  /// A picture with a reference to its buffer, so a callback may keep it. A capture skips frames while
  /// more than five of its frames are kept: dispose of them early.
  /// </summary>
  public sealed class Frame : Owned {
    public readonly int Width, Height;
    public readonly long PtsNs;

    internal Frame(IntPtr pixbuf, int width, int height, long ptsNs)
        : base(Native.vlm_pixbuf_release, null, key => Retained(pixbuf)) {
      Width = width;
      Height = height;
      PtsNs = ptsNs;
    }

    internal static readonly Native.FrameCallback Received = (pixbuf, width, height, ptsNs, user) =>
        Run<Action<Frame>>(user, target => target(new Frame(pixbuf, width, height, ptsNs)));

    internal static IntPtr Retained(IntPtr pixbuf) {
      Native.vlm_pixbuf_retain(pixbuf);
      return pixbuf;
    }

    /// <summary>The planes in place, locked until they are disposed of.</summary>
    public Planes Lock() {
      var bases = new IntPtr[2];
      var strides = new int[2];
      return Use(pixbuf => {
        if (!Memory.With(bases, plane => Memory.With(strides, stride => Native.vlm_pixbuf_lock(
                pixbuf, plane, stride, Memory.Place<IntPtr>(plane, 1), Memory.Place<int>(stride, 1)))))
          throw new NativeException("the buffer has no two planes, or the system refuses");
        return new Planes(this, pixbuf, bases, strides);
      });
    }

    public byte[] ToBgra() {
      var picture = new byte[checked(Width * Height * 4)];
      if (!Memory.With(picture, start => Use(
              pixbuf => Native.vlm_pixbuf_to_bgra(pixbuf, start, picture.Length))))
        throw new NativeException("the picture can't be converted");
      return picture;
    }
  }

  public sealed class Planes : Owned {
    readonly IntPtr luma, chroma;
    readonly int width, height, lumaStride, chromaStride;

    internal Planes(Frame frame, IntPtr pixbuf, IntPtr[] bases, int[] strides)
        : base(Unlock, null, key => Frame.Retained(pixbuf)) {
      width = frame.Width;
      height = frame.Height;
      luma = bases[0];
      chroma = bases[1];
      lumaStride = strides[0];
      chromaStride = strides[1];
    }

    static void Unlock(IntPtr pixbuf) {
      Native.vlm_pixbuf_unlock(pixbuf);
      Native.vlm_pixbuf_release(pixbuf);
    }

    /// <summary>A copy of one row of the luma plane.</summary>
    public byte[] LumaRow(int y) { return Row(luma, lumaStride, y, height, width); }

    /// <summary>A copy of one row of Cb, Cr pairs; there are half as many.</summary>
    public byte[] ChromaRow(int y) {
      return Row(chroma, chromaStride, y, (height + 1) / 2, (width + 1) / 2 * 2);
    }

    byte[] Row(IntPtr plane, int stride, int y, int rows, int bytes) {
      if (y < 0 || y >= rows) throw new ArgumentOutOfRangeException("y");
      var row = new byte[bytes];
      Use(pixbuf => Marshal.Copy(plane + y * stride, row, 0, bytes));
      return row;
    }
  }
}
