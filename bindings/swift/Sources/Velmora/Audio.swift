import CVelmora

public enum Devices {
  /// An array of objects with "name" and "uid", as JSONDecoder reads it.
  public static func json(inputs: Bool) -> String? {
    var text = [CChar](repeating: 0, count: 4096)
    while true {
      let length = vlm_audio_devices_json(inputs ? 1 : 0, &text, Int32(text.count))
      if length >= 0 { return length == 0 ? nil : String(cString: text) }
      text = [CChar](repeating: 0, count: Int(-length))
    }
  }
}

public typealias OnSamples = @Sendable ([Float]) -> Void

/// Mono at 48000 Hz.
public final class Microphone: Object, @unchecked Sendable {
  /// nil or an unknown uid is the default input.
  public init?(uid: String? = nil, onSamples: @escaping OnSamples) {
    super.init(vlm_audio_in_stop, Target<OnSamples>(onSamples)) { user in
      vlm_audio_in_start(
        uid,
        { samples, count, user in
          let block = Array(UnsafeBufferPointer(start: samples, count: Int(count)))
          Target<OnSamples>.run(user) { $0(block) }
        }, user)
    }
  }
}

/// Plays interleaved samples at 48000 Hz; it ends at once.
public final class Playback: Object, @unchecked Sendable {
  public init?(channels: Int32 = 2, uid: String? = nil) {
    super.init(vlm_audio_out_stop) { _ in vlm_audio_out_start(uid, channels) }
  }

  /// What half a second can't hold is lost.
  public func write(_ samples: [Float]) {
    vlm_audio_out_write(handle, samples, Int32(clamping: samples.count))
  }
}

/// A sound file.
public final class Sound: Object, @unchecked Sendable {
  public init?(path: String) {
    super.init(vlm_sfx_destroy) { _ in vlm_sfx_create(path) }
  }

  /// Negative loops never end.
  public func play(volume: Double = 1, loops: Int32 = 0) {
    alone { vlm_sfx_play($0, volume, loops) }
  }

  public func play(from seconds: Double, volume: Double = 1) {
    alone { vlm_sfx_play_from($0, seconds, volume) }
  }

  public func stop() { alone { vlm_sfx_stop($0) } }
  public func seek(_ seconds: Double) { alone { vlm_sfx_seek($0, seconds) } }
  public var position: Double { alone { vlm_sfx_position($0) } }
  public var duration: Double { alone { vlm_sfx_duration($0) } }
  public var isPlaying: Bool { alone { vlm_sfx_is_playing($0) } }
}
