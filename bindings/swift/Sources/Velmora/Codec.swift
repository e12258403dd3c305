import CVelmora

/// An access unit, whether it is a key frame, its time stamp.
public typealias OnEncoded = @Sendable ([UInt8], Bool, Int64) -> Void

public final class Encoder: Object, @unchecked Sendable {
  public init?(
    width: Int32, height: Int32, fps: Int32 = 30, bitrate: Int32 = 8_000_000,
    lowLatency: Bool = true, onEncoded: @escaping OnEncoded
  ) {
    super.init(vlm_enc_destroy, Target<OnEncoded>(onEncoded)) { user in
      vlm_enc_create(
        width, height, fps, bitrate, lowLatency,
        { data, size, keyframe, ptsNs, user in
          let unit = Array(UnsafeBufferPointer(start: data, count: Int(size)))
          Target<OnEncoded>.run(user) { $0(unit, keyframe, ptsNs) }
        }, user)
    }
  }

  @discardableResult
  public func encode(_ frame: Frame, ptsNs: Int64, keyframe: Bool = false) -> Bool {
    alone { vlm_enc_encode($0, frame.pixbuf, ptsNs, keyframe) }
  }

  /// Rows of stride bytes, of which the last may end with its last pixel.
  public func encode(
    bgra: [UInt8], width: Int32, height: Int32, stride: Int32, ptsNs: Int64, keyframe: Bool = false
  ) -> Bool {
    let row = Int(width) * 4
    guard width > 0, height > 0, stride >= row,
      bgra.count >= (Int(height) - 1) * Int(stride) + row
    else { return false }
    return alone { vlm_enc_encode_bgra($0, bgra, width, height, stride, ptsNs, keyframe) }
  }

  public func setBitrate(_ bitrate: Int32) {
    alone { vlm_enc_set_bitrate($0, bitrate) }
  }
}

public final class Decoder: Object, @unchecked Sendable {
  /// With bgra it delivers 'BGRA' frames in place of '420v' ones.
  public init?(bgra: Bool = false, onFrame: @escaping OnFrame) {
    let callback: vlm_frame_cb = { pixbuf, width, height, ptsNs, user in
      guard let pixbuf = pixbuf else { return }
      Target<OnFrame>.run(user) { $0(Frame(pixbuf, width, height, ptsNs)) }
    }
    super.init(vlm_dec_destroy, Target<OnFrame>(onFrame)) { user in
      bgra ? vlm_dec_create_bgra(callback, user) : vlm_dec_create(callback, user)
    }
  }

  @discardableResult
  public func decode(_ unit: [UInt8], ptsNs: Int64) -> Bool {
    alone { vlm_dec_decode($0, unit, Int32(clamping: unit.count), ptsNs) }
  }

  /// Waits until every frame was delivered; never in the decoder's own closure.
  public func flush() {
    alone { vlm_dec_flush($0) }
  }
}
