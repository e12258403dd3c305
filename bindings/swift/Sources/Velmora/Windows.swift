import CVelmora

public struct Window: Sendable {
  public let id: UInt32
  public let left, top, width, height: Int32
  public let isMain: Bool
  public let title: String

  init(_ entry: VlmWindowEntry) {
    (id, isMain) = (entry.windowId, entry.isMain != 0)
    (left, top, width, height) = (entry.left, entry.top, entry.width, entry.height)
    title = withUnsafeBytes(of: entry.title) { String(decoding: $0.prefix { $0 != 0 }, as: UTF8.self) }
  }

  /// The visible windows of a process, at most 256.
  public static func of(pid: Int32) -> [Window] {
    var entries = [VlmWindowEntry](repeating: VlmWindowEntry(), count: 256)
    let count = vlm_window_enumerate(pid, &entries, Int32(entries.count))
    return entries.prefix(Int(max(count, 0))).map(Window.init)
  }

  /// The process of an application.
  public static func findPid(_ bundlePrefix: String) -> Int32? {
    let pid = vlm_window_find_pid(bundlePrefix)
    return pid == 0 ? nil : pid
  }

  /// The process of the application in front.
  public static var frontmostPid: Int32? {
    let pid = vlm_frontmost_pid()
    return pid == 0 ? nil : pid
  }

  public static func bounds(_ id: UInt32) -> Rectangle? {
    Rectangle.asked { vlm_window_get_bounds(id, $0, $1, $2, $3) }
  }

  public static func focusedBounds(pid: Int32) -> Rectangle? {
    Rectangle.asked { vlm_window_focused_bounds(pid, $0, $1, $2, $3) }
  }
}

public enum Change: Int32, Sendable {
  case moved, resized, focused, deactivated, closed
}

public typealias OnChange = @Sendable (Change, Rectangle) -> Void

/// Follows the windows of a process while the main loop runs, on its thread.
public final class Tracker: Object, @unchecked Sendable {
  public init?(pid: Int32, onChange: @escaping OnChange) {
    super.init(vlm_window_untrack, Target<OnChange>(onChange)) { user in
      vlm_window_track(
        pid,
        { event, x, y, width, height, user in
          guard let change = Change(rawValue: event) else { return }
          let frame = Rectangle(x: x, y: y, width: width, height: height)
          Target<OnChange>.run(user) { $0(change, frame) }
        }, user)
    }
  }
}
