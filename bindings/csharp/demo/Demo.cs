// Lists the windows of an application, shares one to a file, shows such a file, or reaches for the
// rest: says which machine this is, puts the pointer somewhere and looks into a sound file:
//   demo windows PREFIX
//   demo share PREFIX FILE.h264 SECONDS
//   demo view FILE.h264 SECONDS
//   demo services X Y SOUND
using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.Globalization;
using System.IO;
using System.Linq;
using System.Threading;
using Velmora;

// The last frame that came. It is not disposed of while somebody uses it.
sealed class LastFrame : IDisposable {
  Frame frame;

  public void Replace(Frame next) {
    lock (this) {
      Dispose();
      frame = next;
    }
  }

  public bool Use(Action<Frame> action) {
    lock (this) {
      if (frame != null) action(frame);
      return frame != null;
    }
  }

  public void Dispose() {
    if (frame != null) frame.Dispose();
  }
}

static class Demo {
  const int FrameMs = 33;

  static long Nanoseconds(Stopwatch watch) { return watch.ElapsedMilliseconds * 1000000; }

  static int List(string prefix) {
    var windows = Windows.Of(Windows.FindPid(prefix));
    foreach (var one in windows)
      Console.WriteLine("0x{0:x8} {1}x{2}+{3}+{4} {5}", one.Id, one.Width, one.Height, one.Left,
                        one.Top, one.Title);
    return windows.Count > 0 ? 0 : 1;
  }

  static int Share(string prefix, string path, double seconds) {
    var watch = Stopwatch.StartNew();
    using (var last = new LastFrame())
    using (var file = File.Create(path))
    using (Capture.Window(Capture.FindWindow(prefix), last.Replace)) {
      int width = 0, height = 0;
      while (!last.Use(frame => { width = frame.Width; height = frame.Height; })) {
        if (watch.Elapsed.TotalSeconds > seconds) return 1;
        Thread.Sleep(FrameMs);
      }
      using (var encoder = new Encoder(width, height,
                                       (unit, key, pts) => file.Write(unit, 0, unit.Length))) {
        while (watch.Elapsed.TotalSeconds < seconds) { // a still window gets sharper
          last.Use(frame => encoder.Encode(frame, Nanoseconds(watch)));
          Thread.Sleep(FrameMs);
        }
      }
    }
    return 0;
  }

  // Cuts in front of parameter sets and first slices, whatever comes first after a slice.
  static IEnumerable<byte[]> AccessUnits(byte[] stream) {
    int start = 0;
    bool afterSlice = false;
    for (int at = 0; at + 5 < stream.Length; ++at) {
      if (stream[at] != 0 || stream[at + 1] != 0 || stream[at + 2] != 0 || stream[at + 3] != 1)
        continue;
      int kind = stream[at + 4] & 31;
      bool isSlice = kind == 1 || kind == 5, isFirst = stream[at + 5] >= 128;
      if (afterSlice && (isFirst || !isSlice)) {
        yield return new ArraySegment<byte>(stream, start, at - start).ToArray();
        start = at;
        afterSlice = false;
      }
      afterSlice |= isSlice;
    }
    yield return new ArraySegment<byte>(stream, start, stream.Length - start).ToArray();
  }

  static int View(string path, double seconds) {
    var watch = Stopwatch.StartNew();
    int shown = 0;
    using (var last = new LastFrame())
    using (var presenter = new Presenter()) {
      Host.WindowAround(presenter.X11View, "Velmora view", 640, 480);
      using (var units = AccessUnits(File.ReadAllBytes(path)).GetEnumerator())
      using (var decoder = new Decoder(last.Replace)) {
        while (watch.Elapsed.TotalSeconds < seconds) {
          if (units.MoveNext()) decoder.Decode(units.Current, Nanoseconds(watch));
          last.Use(frame => shown += presenter.Show(frame) == Shown.Ok ? 1 : 0);
          Host.TurnMainLoop();
          Thread.Sleep(FrameMs);
        }
      }
    }
    return shown > 0 ? 0 : 1;
  }

  static int Services(double x, double y, string path) {
    Console.WriteLine(Machine.Id);
    Input.Move(x, y);
    Console.WriteLine("{0} {1}", Input.Pointer.Item1, Input.Pointer.Item2);
    using (var sound = new Sound(path))
      Console.WriteLine(sound.Duration.ToString(CultureInfo.InvariantCulture));
    return 0;
  }

  static double Number(string word) { return double.Parse(word, CultureInfo.InvariantCulture); }

  static int Main(string[] words) {
    if (words.Length == 2 && words[0] == "windows") return List(words[1]);
    if (words.Length == 4 && words[0] == "share") return Share(words[1], words[2], Number(words[3]));
    if (words.Length == 3 && words[0] == "view") return View(words[1], Number(words[2]));
    if (words.Length == 4 && words[0] == "services")
      return Services(Number(words[1]), Number(words[2]), words[3]);
    Console.Error.WriteLine("usage: demo windows PREFIX | share PREFIX FILE.h264 SECONDS | " +
                            "view FILE.h264 SECONDS | services X Y SOUND");
    return 2;
  }
}
