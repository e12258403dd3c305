#pragma once

namespace vlm::bench {

// What this process holds of the system.
struct ProcessState {
  long residentKb = 0;
  long threads = 0;
  long descriptors = 0;
  long sharedSegments = 0;  // mapped pieces of memory that have a descriptor or a key

  static ProcessState now();
};

}  // namespace vlm::bench
