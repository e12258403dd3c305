// Lists the windows of an application, or shares one to a file:
//   demo windows PREFIX
//   demo share PREFIX FILE.h264 SECONDS
using System;
using System.Diagnostics;
using System.Globalization;
using System.IO;
using System.Text;
using System.Threading;

namespace Velmora {
  static class Demo {
    static int List(string prefix) {
      var windows = Windows.Of(prefix);
      foreach (var one in windows) {
        string title = Encoding.UTF8.GetString(one.title).Split('\0')[0];
        Console.WriteLine("0x{0:x8} {1}x{2}+{3}+{4} {5}", one.windowId, one.width, one.height,
                          one.left, one.top, title);
      }
      return windows.Count > 0 ? 0 : 1;
    }

    static int Share(string prefix, string path, double seconds) {
      Frame last = null;
      var watch = Stopwatch.StartNew();
      using (var file = File.Create(path))
      using (new Capture(Windows.Find(prefix), 30, frame => Volatile.Write(ref last, frame))) {
        while (Volatile.Read(ref last) == null && watch.Elapsed.TotalSeconds < seconds)
          Thread.Sleep(33);
        Frame first = Volatile.Read(ref last);
        if (first == null) return 1;
        using (var encoder = new Encoder(first.Width, first.Height, 30, 8000000,
                                         (unit, key, pts) => file.Write(unit, 0, unit.Length))) {
          while (watch.Elapsed.TotalSeconds < seconds) { // a still window gets sharper
            encoder.Encode(Volatile.Read(ref last), watch.ElapsedMilliseconds * 1000000, false);
            Thread.Sleep(33);
          }
        }
      }
      return 0;
    }

    static int Main(string[] words) {
      if (words.Length == 2 && words[0] == "windows") return List(words[1]);
      if (words.Length == 4 && words[0] == "share")
        return Share(words[1], words[2], double.Parse(words[3], CultureInfo.InvariantCulture));
      Console.Error.WriteLine("usage: demo windows PREFIX | share PREFIX FILE.h264 SECONDS");
      return 2;
    }
  }
}
