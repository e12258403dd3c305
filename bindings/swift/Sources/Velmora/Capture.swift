import CVelmora

public typealias OnFrame = @Sendable (Frame) -> Void

final class Target {
  let onFrame: OnFrame
  init(_ onFrame: @escaping OnFrame) { self.onFrame = onFrame }
}

/// A capture of a window, which ends with its last reference.
public final class Capture {
  private let handle: UnsafeMutableRawPointer
  private let target: Unmanaged<Target>

  public init?(window: UInt32, fps: Int32, onFrame: @escaping OnFrame) {
    let target = Unmanaged.passRetained(Target(onFrame))
    let started = vlm_capture_start_window(
      window, fps, 0, 0,
      { pixbuf, width, height, ptsNs, user in
        guard let pixbuf = pixbuf, let user = user else { return }
        // Retained for the call: the capture may end in it.
        let target = Unmanaged<Target>.fromOpaque(user).takeUnretainedValue()
        target.onFrame(Frame(pixbuf, width, height, ptsNs))
      }, nil, target.toOpaque())
    guard let handle = started else {
      target.release()
      return nil
    }
    self.handle = handle
    self.target = target
  }

  deinit {
    vlm_capture_stop(handle)
    target.release()
  }
}
