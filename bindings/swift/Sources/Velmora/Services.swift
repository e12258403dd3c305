import CVelmora

/// Secrets in the system's keychain.
public enum Secrets {
  public static func set(_ service: String, _ account: String, _ secret: [UInt8]) -> Bool {
    guard let size = Int32(exactly: secret.count) else { return false }
    return secret.withUnsafeBufferPointer { bytes in
      // An empty array has no address, which would be no secret at all.
      withUnsafePointer(to: UInt8(0)) { vlm_secret_set(service, account, bytes.baseAddress ?? $0, size) }
    }
  }

  /// nil when there is none or it is empty. The caller wipes it.
  public static func get(_ service: String, _ account: String) -> [UInt8]? {
    var found = [UInt8]()
    while true {
      let length = vlm_secret_get(service, account, &found, Int32(found.count))
      if length == 0 { return nil }
      if length > 0 { return Array(found.prefix(Int(length))) }
      found = [UInt8](repeating: 0, count: Int(-length))
    }
  }

  public static func delete(_ service: String, _ account: String) -> Bool {
    vlm_secret_delete(service, account)
  }
}

public enum Machine {
  /// A UUID in its text form.
  public static var id: String? {
    var text = [CChar](repeating: 0, count: 64)
    return vlm_machine_id(&text, Int32(text.count)) > 0 ? String(cString: text) : nil
  }

  /// The version of the loaded library's interface.
  public static var abiVersion: Int32 { vlm_abi_version() }
}

public enum Permissions {
  public static func screenRecording(request: Bool = false) -> Bool {
    vlm_perm_screen_recording(request)
  }

  public static func accessibility(prompt: Bool = false) -> Bool { vlm_perm_accessibility(prompt) }

  /// "screen", "accessibility" or "microphone"; nil opens the general page.
  public static func openSettings(_ kind: String? = nil) -> Bool { vlm_perm_open_settings(kind) }
}
