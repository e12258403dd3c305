#pragma once

// The names of the library's threads, as a debugger shows them, at most 15 characters each. The
// thread of a queue has the queue's label.
namespace vlm::platform::thread_names {

inline constexpr const char* kEncoder = "vlm.encoder";         // encodes, calls vlm_encoded_cb
inline constexpr const char* kDecoder = "vlm.decoder";         // decodes, calls vlm_frame_cb
inline constexpr const char* kScreen = "vlm.screen";           // makes a capture's pictures
inline constexpr const char* kView = "vlm.view";               // shows a view's pictures
inline constexpr const char* kSound = "vlm.sound";             // talks with the sound server
inline constexpr const char* kMixture = "vlm.mixture";         // mixes the audio of a capture
inline constexpr const char* kSearch = "vlm.search";           // looks for a sound server
inline constexpr const char* kDeadline = "vlm.deadline";       // ends a wait for the session bus
inline constexpr const char* kMainLoopWatch = "vlm.mainloop";  // sees that the main loop is served

}  // namespace vlm::platform::thread_names
