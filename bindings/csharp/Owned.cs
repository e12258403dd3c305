using System;
using System.Collections.Concurrent;
using System.Runtime.InteropServices;
using System.Threading;

namespace Velmora {
  /// <summary>A call of the library failed; the reason is in the system's log.</summary>
  public class NativeException : Exception {
    public NativeException(string text) : base(text) {}
  }

  /// <summary>
  /// Owns one object of the library. It ends once: in Dispose when no call uses it any more, or when
  /// nothing refers to it. Later calls throw ObjectDisposedException.
  /// </summary>
  public abstract class Owned : SafeHandle {
    // Callbacks come through static delegates, which are never collected; the user pointer is a key.
    static readonly ConcurrentDictionary<IntPtr, Delegate> targets =
        new ConcurrentDictionary<IntPtr, Delegate>();
    static int lastKey;
    [ThreadStatic] static IntPtr running;
    readonly Action<IntPtr> end;
    readonly IntPtr key;

    internal Owned(Action<IntPtr> end, Delegate target, Func<IntPtr, IntPtr> start)
        : base(IntPtr.Zero, true) {
      this.end = end;
      if (target != null) {
        key = (IntPtr)Interlocked.Increment(ref lastKey);
        targets[key] = target;
      }
      SetHandle(start(key));
      if (!IsInvalid) return;
      Forget(key);
      throw new NativeException(GetType().Name + " could not be made");
    }

    public override bool IsInvalid { get { return handle == IntPtr.Zero; } }

    internal T Use<T>(Func<IntPtr, T> call) {
      bool added = false;
      DangerousAddRef(ref added);
      try {
        return call(handle);
      } finally {
        DangerousRelease();
      }
    }

    internal void Use(Action<IntPtr> call) {
      Use(used => {
        call(used);
        return true;
      });
    }

    internal static void Run<T>(IntPtr user, Action<T> call) where T : class {
      Delegate target;
      if (!targets.TryGetValue(user, out target)) return;
      IntPtr outer = running;
      running = user;
      try {
        call((T)(object)target);
      } catch (Exception thrown) {
        // It must not run through the library's frames.
        Console.Error.WriteLine(thrown);
      } finally {
        running = outer;
      }
    }

    protected override bool ReleaseHandle() {
      IntPtr ended = handle;
      if (key != IntPtr.Zero && running == key)
        new Thread(() => Finish(ended)).Start(); // it must not wait for its own callback
      else
        Finish(ended);
      return true;
    }

    void Finish(IntPtr ended) {
      end(ended);
      Forget(key);
    }

    static void Forget(IntPtr key) {
      Delegate target;
      targets.TryRemove(key, out target);
    }
  }

  /// <summary>What several threads may share: they take turns.</summary>
  public abstract class TakingTurns : Owned {
    readonly object turn = new object();

    internal TakingTurns(Action<IntPtr> end, Delegate target, Func<IntPtr, IntPtr> start)
        : base(end, target, start) {}

    internal T Alone<T>(Func<IntPtr, T> call) {
      lock (turn) return Use(call);
    }

    internal void Alone(Action<IntPtr> call) {
      lock (turn) Use(call);
    }
  }
}
