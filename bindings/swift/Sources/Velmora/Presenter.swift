import CVelmora

public enum Shown {
  case ok
  /// Drop it, or try again when no other frame comes.
  case busy
  case failed
}

/// The view that shows frames in a window of the host; made on the main thread, or while the main
/// loop runs there.
public final class Presenter: Object, @unchecked Sendable {
  public init?() {
    super.init(vlm_present_destroy) { _ in vlm_present_create() }
  }

  #if os(macOS)
    /// The NSView, lent.
    public var view: Handle { vlm_present_view(handle) }
  #else
    /// The id of an X11 window. Ask again after a call that destroys the window around it.
    public var view: UInt32 { alone { vlm_present_view($0).load(as: UInt32.self) } }
  #endif

  public func show(_ frame: Frame) -> Shown {
    switch Int(vlm_present_enqueue(handle, frame.pixbuf, frame.ptsNs)) {
    case VLM_PRESENT_OK: return .ok
    case VLM_PRESENT_BUSY: return .busy
    default: return .failed
    }
  }

  public func clear() { vlm_present_clear(handle) }
}
