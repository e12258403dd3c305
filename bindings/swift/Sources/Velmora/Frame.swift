import CVelmora

public typealias OnFrame = @Sendable (Frame) -> Void

/// A picture with a reference to its buffer, so a callback may keep it. A capture skips frames while
/// more than five of its frames are kept.
public final class Frame: @unchecked Sendable {
  let pixbuf: Handle
  public let width: Int32
  public let height: Int32
  public let ptsNs: Int64

  init(_ pixbuf: Handle, _ width: Int32, _ height: Int32, _ ptsNs: Int64) {
    vlm_pixbuf_retain(pixbuf)
    self.pixbuf = pixbuf
    self.width = width
    self.height = height
    self.ptsNs = ptsNs
  }

  deinit { vlm_pixbuf_release(pixbuf) }

  public struct Planes {
    public let luma: UnsafeRawBufferPointer
    public let lumaStride: Int
    public let chroma: UnsafeRawBufferPointer
    public let chromaStride: Int
  }

  /// The planes in place, for the time of the call; nil for a BGRA frame.
  public func withPlanes<T>(_ body: (Planes) throws -> T) rethrows -> T? {
    var luma: UnsafeMutablePointer<UInt8>?
    var chroma: UnsafeMutablePointer<UInt8>?
    var (lumaStride, chromaStride) = (Int32(0), Int32(0))
    guard vlm_pixbuf_lock(pixbuf, &luma, &lumaStride, &chroma, &chromaStride) else { return nil }
    defer { vlm_pixbuf_unlock(pixbuf) }
    func plane(_ base: UnsafeMutablePointer<UInt8>?, _ stride: Int32, _ rows: Int32, _ width: Int32)
      -> UnsafeRawBufferPointer
    {
      UnsafeRawBufferPointer(start: base, count: Int(stride) * Int(rows - 1) + Int(width))
    }
    return try body(
      Planes(
        luma: plane(luma, lumaStride, height, width), lumaStride: Int(lumaStride),
        chroma: plane(chroma, chromaStride, (height + 1) / 2, (width + 1) / 2 * 2),
        chromaStride: Int(chromaStride)))
  }

  public func bgra() -> [UInt8]? {
    var picture = [UInt8](repeating: 0, count: Int(width) * Int(height) * 4)
    return vlm_pixbuf_to_bgra(pixbuf, &picture, Int32(picture.count)) ? picture : nil
  }
}
