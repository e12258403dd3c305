import CVelmora

/// Interleaved samples, the number of channels, frames a second.
public typealias OnSound = @Sendable ([Float], Int32, Int32) -> Void

private typealias Handlers = (frame: OnFrame, sound: OnSound?)

private let frameCallback: vlm_frame_cb = { pixbuf, width, height, ptsNs, user in
  guard let pixbuf = pixbuf else { return }
  Target<Handlers>.run(user) { $0.frame(Frame(pixbuf, width, height, ptsNs)) }
}

private let audioCallback: vlm_audio_cb = { samples, frames, channels, rate, user in
  let block = Array(UnsafeBufferPointer(start: samples, count: Int(frames) * Int(channels)))
  Target<Handlers>.run(user) { $0.sound?(block, channels, rate) }
}

/// Delivers frames, and sound where it is asked for. Both closures run on one thread of the library.
public final class Capture: Object, @unchecked Sendable {
  public enum Source {
    case window(UInt32)
    /// By the beginning of its bundle identifier.
    case app(String)
    /// 0 is the first one.
    case display(UInt32)
  }

  /// maxSize is in pixels; 0 in either is no limit.
  public init?(
    _ source: Source, fps: Int32 = 30, maxSize: (width: Int32, height: Int32) = (0, 0),
    onSound: OnSound? = nil, onFrame: @escaping OnFrame
  ) {
    let (w, h, frame) = (maxSize.width, maxSize.height, frameCallback)
    let audio = onSound == nil ? nil : audioCallback
    super.init(vlm_capture_stop, Target<Handlers>((onFrame, onSound))) { user in
      switch source {
      case .window(let id): return vlm_capture_start_window(id, fps, w, h, frame, audio, user)
      case .app(let prefix): return vlm_capture_start_app(prefix, fps, w, h, frame, audio, user)
      case .display(let id): return vlm_capture_start_display(id, fps, w, h, frame, audio, user)
      }
    }
  }

  /// What was captured when the capture started.
  public var bounds: Rectangle? {
    Rectangle.asked { vlm_capture_bounds(handle, $0, $1, $2, $3) }
  }

  /// Whether the screen can be captured now.
  public static var ready: Bool { vlm_screen_capture_ready() }

  /// The first such window, front to back; nil is any.
  public static func findWindow(_ bundlePrefix: String?, title: String? = nil) -> UInt32? {
    let id = vlm_capture_find_window(bundlePrefix, title)
    return id == 0 ? nil : id
  }
}
