using System;
using System.Runtime.InteropServices;

namespace Velmora {
  public delegate void Encoded(byte[] unit, bool keyframe, long ptsNs);

  public sealed class Encoder : TakingTurns {
    static readonly Native.EncodedCallback onEncoded = (data, size, keyframe, ptsNs, user) => {
      var unit = new byte[size];
      Marshal.Copy(data, unit, 0, size);
      Run<Encoded>(user, target => target(unit, keyframe, ptsNs));
    };

    public Encoder(int width, int height, Encoded units, int fps = 30, int bitrate = 8000000,
                   bool lowLatency = true)
        : base(Native.vlm_enc_destroy, units, key => Native.vlm_enc_create(
              width, height, fps, bitrate, lowLatency, onEncoded, key)) {}

    public bool Encode(Frame frame, long ptsNs, bool keyframe = false) {
      return Alone(encoder => frame.Use(
          pixbuf => Native.vlm_enc_encode(encoder, pixbuf, ptsNs, keyframe)));
    }

    /// <summary>Rows of stride bytes, of which the last may end with its last pixel.</summary>
    public bool EncodeBgra(byte[] bgra, int width, int height, int stride, long ptsNs,
                           bool keyframe = false) {
      long row = width * 4L;
      if (width < 1 || height < 1 || stride < row || bgra.Length < (height - 1L) * stride + row)
        throw new ArgumentException("the rows are not in the array");
      return Memory.With(bgra, first => Alone(encoder => Native.vlm_enc_encode_bgra(
          encoder, first, width, height, stride, ptsNs, keyframe)));
    }

    public void SetBitrate(int bitrate) {
      Alone(encoder => Native.vlm_enc_set_bitrate(encoder, bitrate));
    }
  }

  public sealed class Decoder : TakingTurns {
    /// <param name="bgra">'BGRA' frames in place of '420v' ones.</param>
    public Decoder(Action<Frame> frames, bool bgra = false)
        : base(Native.vlm_dec_destroy, frames, key => bgra
              ? Native.vlm_dec_create_bgra(Frame.Received, key)
              : Native.vlm_dec_create(Frame.Received, key)) {}

    public bool Decode(byte[] unit, long ptsNs) {
      return Memory.With(unit, data => Alone(
          decoder => Native.vlm_dec_decode(decoder, data, unit.Length, ptsNs)));
    }

    /// <summary>Waits until every frame was delivered; never in the decoder's own delegate.</summary>
    public void Flush() { Alone(Native.vlm_dec_flush); }
  }
}
