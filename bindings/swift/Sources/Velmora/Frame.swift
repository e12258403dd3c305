import CVelmora

/// A picture with a reference to its buffer, so a callback may keep it.
public final class Frame: @unchecked Sendable {
  let pixbuf: UnsafeMutableRawPointer
  public let width: Int32
  public let height: Int32
  public let ptsNs: Int64

  init(_ pixbuf: UnsafeMutableRawPointer, _ width: Int32, _ height: Int32, _ ptsNs: Int64) {
    vlm_pixbuf_retain(pixbuf)
    self.pixbuf = pixbuf
    self.width = width
    self.height = height
    self.ptsNs = ptsNs
  }

  deinit { vlm_pixbuf_release(pixbuf) }
}
