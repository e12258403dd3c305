import CVelmora
import Foundation

/// Pointer and keyboard: what the host of a session does for a viewer.
public enum Input {
  public enum Button: Int32 {
    case left, right, centre
  }

  public struct Modifiers: OptionSet {
    public let rawValue: UInt64
    public init(rawValue: UInt64) { self.rawValue = rawValue }
    public static let capsLock = Modifiers(rawValue: 0x10000)
    public static let shift = Modifiers(rawValue: 0x20000)
    public static let control = Modifiers(rawValue: 0x40000)
    public static let option = Modifiers(rawValue: 0x80000)
    public static let command = Modifiers(rawValue: 0x100000)
  }

  public static func move(_ x: Double, _ y: Double) { vlm_input_mouse_move(x, y) }

  /// Without any event.
  public static func warp(_ x: Double, _ y: Double) { vlm_input_warp_cursor(x, y) }

  public static func press(_ button: Button, down: Bool, _ x: Double, _ y: Double) {
    vlm_input_mouse_button(button.rawValue, down, x, y)
  }

  public static func wheel(horizontal: Double, vertical: Double) {
    vlm_input_mouse_wheel(horizontal, vertical)
  }

  /// keyCode is a macOS virtual key code.
  public static func key(_ keyCode: UInt16, down: Bool, _ flags: Modifiers = []) {
    vlm_input_key(keyCode, down, flags.rawValue)
  }

  public static var pointer: (x: Double, y: Double)? {
    var (x, y) = (0.0, 0.0)
    return vlm_input_cursor_pos(&x, &y) ? (x, y) : nil
  }

  private final class Watcher: @unchecked Sendable {
    private let lock = NSLock()
    private var onKey: (@Sendable (Int32) -> Void)?

    func replace(_ next: (@Sendable (Int32) -> Void)?) {
      lock.lock()
      let earlier = onKey
      onKey = next
      lock.unlock()
      withExtendedLifetime(earlier) {}
    }

    func call(_ key: Int32) {
      lock.lock()
      let current = onKey
      lock.unlock()
      current?(key)
    }
  }

  private static let watcher = Watcher()

  /// One watcher a process, on the main thread and while the main loop runs; it replaces another.
  @discardableResult
  public static func watchKeys(_ onKey: @escaping @Sendable (Int32) -> Void) -> Bool {
    watcher.replace(onKey)
    return vlm_hotkey_monitor_start { Input.watcher.call($0) }
  }

  public static func stopWatchingKeys() {
    vlm_hotkey_monitor_stop()
    watcher.replace(nil)
  }
}
