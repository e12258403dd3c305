// Lists the windows of an application, shares one to a file, shows such a file, or reaches for the
// rest: says which machine this is, puts the pointer somewhere and looks into a sound file:
//   Demo windows PREFIX
//   Demo share PREFIX FILE.h264 SECONDS
//   Demo view FILE.h264 SECONDS
//   Demo services X Y SOUND
import Foundation
import Velmora

let frameSeconds = 1.0 / 30

final class Last: @unchecked Sendable {
  private let lock = NSLock()
  private var kept: Frame?

  var frame: Frame? {
    get {
      lock.lock()
      defer { lock.unlock() }
      return kept
    }
    set {
      lock.lock()
      defer { lock.unlock() }
      kept = newValue
    }
  }
}

func nanoseconds() -> Int64 { Int64(DispatchTime.now().uptimeNanoseconds) }

func list(_ prefix: String) -> Bool {
  guard let pid = Window.findPid(prefix) else { return false }
  for one in Window.of(pid: pid) {
    let id = String(format: "0x%08x", one.id)
    print("\(id) \(one.width)x\(one.height)+\(one.left)+\(one.top) \(one.title)")
  }
  return true
}

func share(_ prefix: String, _ path: String, _ seconds: Double) -> Bool {
  let last = Last()
  let end = Date(timeIntervalSinceNow: seconds)
  guard let window = Capture.findWindow(prefix),
    let capture = Capture(.window(window), onFrame: { last.frame = $0 }),
    FileManager.default.createFile(atPath: path, contents: nil),
    let file = FileHandle(forWritingAtPath: path)
  else { return false }
  while last.frame == nil && Date() < end { Thread.sleep(forTimeInterval: frameSeconds) }
  guard let first = last.frame,
    let encoder = Encoder(width: first.width, height: first.height, onEncoded: { unit, _, _ in
      file.write(Data(unit))
    })
  else { return false }
  while Date() < end {  // a still window is submitted again: it gets sharper
    if let frame = last.frame { encoder.encode(frame, ptsNs: nanoseconds()) }
    Thread.sleep(forTimeInterval: frameSeconds)
  }
  withExtendedLifetime(capture) {}
  return true
}

/// Cuts in front of parameter sets and first slices, whatever comes first after a slice.
func accessUnits(_ stream: [UInt8]) -> [[UInt8]] {
  var (units, start, afterSlice) = ([[UInt8]](), 0, false)
  for at in 0..<max(stream.count - 5, 0) where stream[at..<at + 4].elementsEqual([0, 0, 0, 1]) {
    let kind = stream[at + 4] & 31
    let isSlice = kind == 1 || kind == 5
    if afterSlice && (stream[at + 5] >= 128 || !isSlice) {
      units.append(Array(stream[start..<at]))
      (start, afterSlice) = (at, false)
    }
    afterSlice = afterSlice || isSlice
  }
  return units + [Array(stream[start...])]
}

func view(_ path: String, _ seconds: Double) -> Bool {
  let last = Last()
  guard let stream = FileManager.default.contents(atPath: path), let presenter = Presenter(),
    window(around: presenter.view, title: "Velmora view", width: 640, height: 480),
    let decoder = Decoder(onFrame: { last.frame = $0 })
  else { return false }
  var units = accessUnits([UInt8](stream)).makeIterator()
  var shown = 0
  let end = Date(timeIntervalSinceNow: seconds)
  while Date() < end {
    if let unit = units.next() { decoder.decode(unit, ptsNs: nanoseconds()) }
    if let frame = last.frame, presenter.show(frame) == .ok { shown += 1 }
    turnMainLoop()
    Thread.sleep(forTimeInterval: frameSeconds)
  }
  return shown > 0
}

func services(_ x: Double, _ y: Double, _ path: String) -> Bool {
  print(Machine.id ?? "")
  Input.move(x, y)
  guard let at = Input.pointer, let sound = Sound(path: path) else { return false }
  print(Int(at.x), Int(at.y))
  print(sound.duration)
  return true
}

let words = Array(CommandLine.arguments.dropFirst())
let done: Bool
switch (words.first, words.count) {
case ("windows", 2): done = list(words[1])
case ("share", 4): done = share(words[1], words[2], Double(words[3]) ?? 1)
case ("view", 3): done = view(words[1], Double(words[2]) ?? 1)
case ("services", 4): done = services(Double(words[1]) ?? 0, Double(words[2]) ?? 0, words[3])
default: exit(2)
}
exit(done ? 0 : 1)
