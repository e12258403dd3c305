using System;
using System.Runtime.InteropServices;
using System.Text;

namespace Velmora {
  public static class Devices {
    /// <summary>An array of objects with "name" and "uid".</summary>
    public static string Json(bool inputs) {
      for (int capacity = 4096;;) {
        var text = new byte[capacity];
        int length = Memory.With(text, into => Native.vlm_audio_devices_json(
            inputs ? 1 : 0, into, capacity));
        if (length == 0) throw new NativeException("the list can't be made");
        if (length > 0) return Encoding.UTF8.GetString(text, 0, length);
        capacity = -length;
      }
    }
  }

  /// <summary>Mono at 48000 Hz until Dispose.</summary>
  public sealed class Microphone : Owned {
    static readonly Native.MicrophoneCallback onSamples = (samples, count, user) => {
      var copy = new float[count];
      Marshal.Copy(samples, copy, 0, count);
      Run<Action<float[]>>(user, target => target(copy));
    };

    /// <param name="uid">null or an unknown one is the default input.</param>
    public Microphone(Action<float[]> samples, string uid = null)
        : base(Native.vlm_audio_in_stop, samples, key => Memory.WithText(
              uid, device => Native.vlm_audio_in_start(device, onSamples, key))) {}
  }

  /// <summary>Plays interleaved samples at 48000 Hz; disposed of, it ends at once.</summary>
  public sealed class Playback : Owned {
    public Playback(int channels = 2, string uid = null)
        : base(Native.vlm_audio_out_stop, null, key => Memory.WithText(
              uid, device => Native.vlm_audio_out_start(device, channels))) {}

    /// <summary>What half a second can't hold is lost.</summary>
    public void Write(float[] samples) {
      Memory.With(samples, first => {
        Use(handle => Native.vlm_audio_out_write(handle, first, samples.Length));
        return true;
      });
    }
  }

  /// <summary>A sound file.</summary>
  public sealed class Sound : TakingTurns {
    public Sound(string path)
        : base(Native.vlm_sfx_destroy, null,
               key => Memory.WithText(path, file => Native.vlm_sfx_create(file))) {}

    /// <param name="loops">Negative ones never end.</param>
    public void Play(double volume = 1, int loops = 0) {
      Alone(sound => Native.vlm_sfx_play(sound, volume, loops));
    }

    public void PlayFrom(double seconds, double volume = 1) {
      Alone(sound => Native.vlm_sfx_play_from(sound, seconds, volume));
    }

    public void Stop() { Alone(Native.vlm_sfx_stop); }
    public void Seek(double seconds) { Alone(sound => Native.vlm_sfx_seek(sound, seconds)); }
    public double Position { get { return Alone<double>(Native.vlm_sfx_position); } }
    public double Duration { get { return Alone<double>(Native.vlm_sfx_duration); } }
    public bool IsPlaying { get { return Alone<bool>(Native.vlm_sfx_is_playing); } }
  }
}
