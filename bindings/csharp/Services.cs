using System;
using System.Text;

namespace Velmora {
  /// <summary>Secrets in the system's keychain.</summary>
  public static class Secrets {
    static T At<T>(string service, string account, Func<IntPtr, IntPtr, T> call) {
      return Memory.WithText(service, first => Memory.WithText(
          account, second => call(first, second)));
    }

    public static bool Set(string service, string account, byte[] secret) {
      return Memory.With(secret, data => At(service, account,
          (first, second) => Native.vlm_secret_set(first, second, data, secret.Length)));
    }

    /// <summary>null when there is none or it is empty. The caller wipes it.</summary>
    public static byte[] Get(string service, string account) {
      var found = new byte[0];
      while (true) {
        int length = Memory.With(found, into => At(service, account,
            (first, second) => Native.vlm_secret_get(first, second, into, found.Length)));
        if (length == 0) return null;
        if (length == found.Length) return found;
        found = new byte[Math.Abs(length)];
      }
    }

    public static bool Delete(string service, string account) {
      return At(service, account, (first, second) => Native.vlm_secret_delete(first, second));
    }
  }

  public static class Machine {
    /// <summary>A UUID in its text form; empty when the computer has none.</summary>
    public static string Id {
      get {
        var text = new byte[64];
        int length = Memory.With(text, into => Native.vlm_machine_id(into, text.Length));
        return Encoding.UTF8.GetString(text, 0, length);
      }
    }

    /// <summary>The version of the loaded library's interface.</summary>
    public static int AbiVersion { get { return Native.vlm_abi_version(); } }
  }

  public static class Permissions {
    public static bool ScreenRecording(bool request = false) {
      return Native.vlm_perm_screen_recording(request);
    }

    public static bool Accessibility(bool prompt = false) {
      return Native.vlm_perm_accessibility(prompt);
    }

    /// <param name="kind">"screen", "accessibility", "microphone"; null is the general page.</param>
    public static bool OpenSettings(string kind = null) {
      return Memory.WithText(kind, text => Native.vlm_perm_open_settings(text));
    }
  }
}
