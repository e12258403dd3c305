import Foundation

public typealias Handle = UnsafeMutableRawPointer

class AnyTarget {
  var runsHere: Bool { false }
}

/// A closure that the library calls. What the user pointer points to lives until its object has ended.
final class Target<Call>: AnyTarget {
  private let call: Call
  private let lock = NSLock()
  private var thread: pthread_t?

  init(_ call: Call) { self.call = call }

  static func run(_ user: Handle?, _ body: (Call) -> Void) {
    guard let user = user else { return }
    let target = Unmanaged<Target>.fromOpaque(user).takeUnretainedValue()
    let outer = target.exchange(pthread_self())
    body(target.call)
    _ = target.exchange(outer)
  }

  private func exchange(_ next: pthread_t?) -> pthread_t? {
    lock.lock()
    defer { lock.unlock() }
    let earlier = thread
    thread = next
    return earlier
  }

  override var runsHere: Bool {
    lock.lock()
    defer { lock.unlock() }
    return thread.map { pthread_equal($0, pthread_self()) != 0 } ?? false
  }
}

private struct Life: @unchecked Sendable {
  let handle: Handle
  let end: (Handle) -> Void
  let target: AnyTarget?

  func finish() {
    end(handle)
    withExtendedLifetime(target) {}
  }
}

/// Owns one object of the library, which ends with its last reference.
public class Object: @unchecked Sendable {
  private let life: Life
  private let turn = NSLock()
  var handle: Handle { life.handle }

  init?(_ end: @escaping (Handle) -> Void, _ target: AnyTarget? = nil, start: (Handle?) -> Handle?) {
    guard let handle = start(target.map { Unmanaged.passUnretained($0).toOpaque() }) else { return nil }
    life = Life(handle: handle, end: end, target: target)
  }

  deinit {
    let life = life
    // In its own callback it must not wait for itself, so another thread ends it.
    if life.target?.runsHere ?? false {
      Thread.detachNewThread { life.finish() }
    } else {
      life.finish()
    }
  }

  /// For what one thread at a time may use: threads take turns.
  func alone<T>(_ body: (Handle) -> T) -> T {
    turn.lock()
    defer { turn.unlock() }
    return body(handle)
  }
}

/// Points in global display space.
public struct Rectangle: Equatable, Sendable {
  public var x = 0.0, y = 0.0, width = 0.0, height = 0.0

  typealias Out = UnsafeMutablePointer<Double>
  static func asked(_ ask: (Out, Out, Out, Out) -> Bool) -> Rectangle? {
    var r = Rectangle()
    return ask(&r.x, &r.y, &r.width, &r.height) ? r : nil
  }
}
